#include "editor/entry_writer.h"

#include <algorithm>
#include <atomic>

#include "app/app_state.h"
#include "app/card_hold.h"
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

bool SameFields(const EntryContent& left, const EntryContent& right) {
  for (std::size_t i = 0; i < kExtendedFieldCount; ++i) {
    if (left.fields[i].text != right.fields[i].text ||
        left.fields[i].nameId != right.fields[i].nameId) {
      return false;
    }
  }
  return left.group.groups.ids == right.group.groups.ids;
}

// Where the card may have been written to since the entry was read, it is read again. Name and
// number are compared by the write itself.
bool FieldsAreKnown(app::AppState& state, const EntryInput& input) {
  if (input.known == nullptr || app::CardGeneration(state) == input.generation) {
    return true;
  }
  const std::atomic<bool> stop = false;
  const EntryContent now = ReadEntryContent(state, input.location, stop);
  // What cannot be read now cannot be written either.
  return !now.complete || SameFields(*input.known, now);
}

SimResult WriteBasics(app::AppState& state, const EntryInput& input, std::uint32_t& location) {
  sim::SimPhonebook& book = state.simPhonebook;
  if (input.isNew) {
    return book.WriteNewEntry(location, input.name.c_str(), input.number.c_str());
  }
  // What is meant for another card is refused as that.
  if (!app::CardIsExchanged(state) && !FieldsAreKnown(state, input)) {
    return SimResult::kEntryChanged;
  }
  const SimResult result = book.WriteEntry(location, input.name.c_str(), input.number.c_str(),
                                           {input.knownName, input.knownNumber});
  if (Succeeded(result)) {
    book.MarkSlot(location, 1);
  }
  return result;
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
  std::uint32_t location = input.location;
  const SimResult result = WriteBasics(state, input, location);
  if (input.isNew && location == 0) {
    outcome.code = static_cast<std::uint32_t>(SimResult::kSimFull);
    outcome.done = true;
    return outcome;
  }
  if (!Succeeded(result)) {
    outcome.code = static_cast<std::uint32_t>(result);
    outcome.silent = result == SimResult::kSimFull && state.settings.Disable_SIMFullMsg != 0;
    return outcome;
  }
  outcome.stored = true;
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
