#include "editor/entry_writer.h"

#include <algorithm>

#include "app/app_state.h"
#include "platform/sim_result.h"
#include "sim/sim_phonebook.h"
#include "sim/sim_text.h"

namespace kelpin::editor {
namespace {

using platform::SimResult;

bool IsAscii(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

// 0 or the program's code for the field that was not written.
std::uint32_t WriteField(app::AppState& state, const ExtendedField& field, std::uint32_t location,
                         const FieldInput& input, std::uint32_t& record) {
  sim::RilExtPhonebook& book = state.extPhonebook;
  return field.isNumber ? book.WriteNumberField(field.slot, location, {input.text, input.nameId},
                                                state.settings.Enable_AAS != 0, record)
                        : book.WriteTextField(field.slot, location, input.text, record);
}

}  // namespace

bool NameFits(std::u16string_view name, std::uint32_t maximum, bool dismissScheme) {
  return name.empty() || sim::IsGsmText(name) == 1 ||
         2 * name.size() < std::size_t{maximum} + (dismissScheme ? 1 : 0);
}

bool NicknameFits(std::u16string_view nickname, int limit) {
  const bool mayBeLong =
      !nickname.empty() && limit >= 0 && static_cast<std::size_t>(limit) <= 2 * nickname.size();
  return !mayBeLong || IsAscii(nickname);
}

bool NumberFits(std::u16string_view number, std::uint32_t maximum) {
  return number.size() <= maximum || sim::IsInternational(number) == 1;
}

SaveOutcome SaveEntry(app::AppState& state, const EntryInput& input,
                      const std::function<void(std::uint32_t location)>& stored) {
  SaveOutcome outcome;
  for (std::size_t i = 0; i < kExtendedFieldCount; ++i) {
    outcome.records[i] = input.fields[i].record;
  }
  const std::uint32_t location = input.isNew ? state.simPhonebook.FirstFreeSlot() : input.location;
  if (input.isNew && location == 0) {
    outcome.code = static_cast<std::uint32_t>(SimResult::kSimFull);
    outcome.done = true;
    return outcome;
  }
  const SimResult result =
      state.simPhonebook.WriteEntry(location, input.name.c_str(), input.number.c_str());
  if (!Succeeded(result)) {
    outcome.code = static_cast<std::uint32_t>(result);
    outcome.silent = result == SimResult::kSimFull && state.settings.Disable_SIMFullMsg != 0;
    return outcome;
  }
  state.simPhonebook.MarkSlot(location, 1);
  stored(location);
  for (std::size_t i = 0; i < kExtendedFieldCount; ++i) {
    if (!input.fields[i].write) {
      continue;
    }
    outcome.code =
        WriteField(state, ExtendedFields()[i], location, input.fields[i], outcome.records[i]);
    if (outcome.code != sim::kFieldWritten) {
      outcome.field = i;
      return outcome;
    }
  }
  if (input.writeGroup) {
    // Nobody is told when the group is not written.
    static_cast<void>(state.extPhonebook.WriteGroup(location, input.groups));
  }
  outcome.done = true;
  return outcome;
}

}  // namespace kelpin::editor
