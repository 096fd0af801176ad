#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "editor/entry_form.h"
#include "platform/sim_result.h"
#include "sim/ril_ext_phonebook.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::editor {

// What the card has of an extended field, or has room for.
struct FieldContent {
  bool available = false;
  // The field is there, or may be, and did not come. An empty text is no reason to clear it.
  bool unread = false;
  std::u16string text;
  std::u16string label;  // the number's name; empty: the field's own label
  std::uint32_t nameId = 0;
  std::uint32_t record = sim::kNoRecord;
};

// The groups of an entry, and whether they can be chosen.
struct GroupContent {
  bool available = false;
  GroupSelection groups;
  std::size_t count = 0;  // bytes of the card's record
};

// All that a dialog shows when it opens.
struct EntryContent {
  std::uint32_t location = 0;  // 0: a new entry, and the card is full
  bool hasBasics = false;      // name and number were read
  std::u16string name;
  std::u16string number;
  // Free extension records, 0 for none.
  std::uint32_t firstExtension = 0;
  std::uint32_t secondExtension = 0;
  std::array<FieldContent, kExtendedFieldCount> fields;  // as ExtendedFields()
  bool numberNames = false;                              // the numbers' names can be picked
  GroupContent group;
  // False when reading ended before all of it was read; `failure` is what the card says then, and
  // what was not read is not available.
  bool complete = false;
  platform::SimResult failure = platform::SimResult::kOk;
};

// Whether the file of a field that is not there yet has a record to spare in this set.
bool HasRoomForNew(const sim::RilExtPhonebook& book, std::uint32_t set, sim::FieldSlot slot);

// The content for a new entry, at the first free location. Any thread but the screen's, as below.
EntryContent PrepareNewEntry(app::AppState& state);
// The content of the entry at `location`, read from the card. Any thread but the screen's, which
// it would hold up; it ends early when `stop` is set.
EntryContent ReadEntryContent(app::AppState& state, std::uint32_t location,
                              const std::atomic<bool>& stop);
// What a dialog without an entry has.
EntryContent PrepareNoEntry(app::AppState& state);

}  // namespace kelpin::editor
