#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "editor/entry_form.h"
#include "editor/entry_reader.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::editor {

inline constexpr std::size_t kEntryTextLimit = 256;  // UTF-16 units read from an edit

// What a save is told of an extended field.
struct FieldInput {
  bool write = false;
  std::u16string text;
  std::uint32_t nameId = 0;
  std::uint32_t record = sim::kNoRecord;
};

// What a save writes.
struct EntryInput {
  bool isNew = false;
  std::uint32_t location = 0;  // of an existing entry
  // What is known of an existing entry: its name and number, and all that was read of it when the
  // card was of that generation (null: not all could be read).
  std::u16string knownName;
  std::u16string knownNumber;
  std::shared_ptr<const EntryContent> known;
  std::uint32_t generation = 0;
  std::u16string name;
  std::u16string number;
  std::array<FieldInput, kExtendedFieldCount> fields;  // as ExtendedFields()
  bool writeGroup = false;
  std::array<std::uint8_t, kGroupIds> groups = {};
};

struct SaveOutcome {
  static constexpr std::size_t kNoField = kExtendedFieldCount;

  std::uint32_t code = 0;        // for the user; 0 is none
  bool silent = false;           // a code that the settings keep to themselves
  bool done = false;             // the dialog closes
  bool stored = false;           // name and number are on the card
  std::size_t field = kNoField;  // whose write failed
  std::array<std::uint32_t, kExtendedFieldCount> records = {};  // of the fields from now on
};

// Whether the card can hold a name. One in the GSM alphabet is bounded by what can be typed alone.
// Any other takes two bytes a character and one that tells so, which `dismissScheme` leaves out.
bool NameFits(std::u16string_view name, std::uint32_t maximum, bool dismissScheme);
// Whether a nickname fits its record, of which `limit` bytes are for text.
bool NicknameFits(std::u16string_view nickname, int limit);
// Whether a number fits: the '+' of an international one takes no room.
bool NumberFits(std::u16string_view number, std::uint32_t maximum);

// Writes the entry and then its fields, one after the other, until one fails. `stored` runs when
// the entry itself is on the card, before the fields. An existing entry that is no longer what is
// known of it is left alone: kEntryChanged. Any thread but the screen's, which it would
// hold up.
SaveOutcome SaveEntry(app::AppState& state, const EntryInput& input,
                      const std::function<void(std::uint32_t location)>& stored);

}  // namespace kelpin::editor
