#include "app/extended_fields.h"

#include <string>

#include "app/app_state.h"
#include "sim/ril_ext_phonebook.h"

namespace kelpin::app {
namespace {

using sim::FieldResult;
using sim::FieldSlot;

void ClearNumber(AppState& state, std::uint32_t index, FieldSlot slot) {
  std::uint32_t existing = sim::kNoRecord;
  sim::NumberField field;
  if (state.extPhonebook.ReadNumberField(slot, index, existing, field) == FieldResult::kRead) {
    static_cast<void>(state.extPhonebook.WriteNumberField(slot, index, {}, false, existing));
  }
}

void ClearText(AppState& state, std::uint32_t index, FieldSlot slot) {
  std::uint32_t existing = sim::kNoRecord;
  std::u16string text;
  if (state.extPhonebook.ReadTextField(slot, index, state.settings.Enable_ASCII != 0, existing,
                                       text) == FieldResult::kRead) {
    static_cast<void>(state.extPhonebook.WriteTextField(slot, index, {}, existing));
  }
}

}  // namespace

void LoadExtendedLayout(AppState& state) {
  const AppSettings& settings = state.settings;
  // A load that failed has closed the session. The card of this one may be another.
  if (!state.extPhonebook.IsOpen() && !state.closing) {
    state.extPhonebook.Open(0);
  }
  // Without a layout the fields are absent; the list is read all the same.
  state.extPhonebook.LoadLayout({settings.Disable_EMAIL != 0, settings.Disable_ANR != 0,
                                 settings.Disable_ANRA != 0, settings.Enable_SNE != 0});
}

void ClearExtendedField(AppState& state, std::uint32_t index, ExtendedField field) {
  switch (field) {
    case ExtendedField::kNumber2:
      ClearNumber(state, index, FieldSlot::kSecondNumber);
      break;
    case ExtendedField::kNumber3:
      ClearNumber(state, index, FieldSlot::kThirdNumber);
      break;
    case ExtendedField::kEmail:
      ClearText(state, index, FieldSlot::kEmail);
      break;
    case ExtendedField::kNickname:
      ClearText(state, index, FieldSlot::kNickname);
      break;
    case ExtendedField::kGroup:
      if (state.extPhonebook.HasGroups()) {
        state.extPhonebook.WriteGroup(index, {});
      }
      break;
  }
}

}  // namespace kelpin::app
