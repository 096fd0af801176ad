#include "views/entry_contact.h"

#include <cstdint>

#include "app/app_state.h"
#include "app/readiness.h"
#include "res/ids.h"
#include "sim/ril_ext_phonebook.h"

namespace kelpin::views {
namespace {

using sim::FieldResult;
using sim::FieldSlot;

std::u16string Limited(const std::u16string& text) {
  return text.substr(0, app::kTextRoom - 1);
}

// Empty when the entry has none, or it cannot be read.
std::u16string ReadNumber(app::AppState& state, FieldSlot slot, std::uint32_t index) {
  std::uint32_t existing = sim::kNoRecord;
  sim::NumberField field;
  const FieldResult result = state.extPhonebook.ReadNumberField(slot, index, existing, field);
  return result == FieldResult::kRead ? Limited(field.number) : std::u16string();
}

std::u16string ReadEmail(app::AppState& state, std::uint32_t index) {
  std::uint32_t existing = sim::kNoRecord;
  std::u16string text;
  const FieldResult result = state.extPhonebook.ReadTextField(
      FieldSlot::kEmail, index, state.settings.Enable_ASCII != 0, existing, text);
  return result == FieldResult::kRead ? Limited(text) : std::u16string();
}

}  // namespace

std::optional<EntryContact> CollectContact(app::AppState& state, bool withEmail) {
  const ui::ListView* const list = state.dialog->List(res::kMainList);
  if (list == nullptr) {
    return std::nullopt;
  }
  int row = list->NextItem(-1, ui::kItemSelected);
  if (row < 0) {
    row = list->FocusedItem();
  }
  if (row < 0 || !app::CardIsReady(state)) {
    return std::nullopt;
  }
  state.ports.screen.SetWaitCursor(true);
  EntryContact contact;
  std::uint32_t index = 0;
  app::GetListRow(state, row, &index, &contact.name, &contact.number);
  if (index >= 1 && index <= kLastExtendedIndex) {
    if (state.settings.Disable_ANR == 0) {
      contact.number2 = ReadNumber(state, FieldSlot::kSecondNumber, index);
    }
    if (state.settings.Disable_ANRA == 0) {
      contact.number3 = ReadNumber(state, FieldSlot::kThirdNumber, index);
    }
    if (withEmail && state.settings.Disable_EMAIL == 0) {
      contact.email = ReadEmail(state, index);
    }
  }
  state.ports.screen.SetWaitCursor(false);
  return contact;
}

}  // namespace kelpin::views
