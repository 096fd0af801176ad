#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "editor/entry_editor_state.h"
#include "sim/ext_layout.h"

namespace kelpin::app {
struct AppSettings;
}

namespace kelpin::editor {

// The controls of one field; 0 for one that the field does not have.
struct FieldControls {
  int label = 0;
  int edit = 0;
  int button = 0;
};

// The controls of one of the two entry dialogs, in the order in which they stand.
struct EntryControls {
  int dialog = 0;
  int bar = 0;
  int done = 0;
  int cancel = 0;
  FieldControls location;
  FieldControls name;
  FieldControls nickname;
  FieldControls number;
  FieldControls number2;
  FieldControls number3;
  FieldControls email;
  FieldControls group;
};

extern const EntryControls kNewEntryControls;
extern const EntryControls kEditEntryControls;

// A field beside name and number that has text of its own. Members that a field lacks are null.
struct ExtendedField {
  sim::FieldSlot slot = sim::FieldSlot::kSecondNumber;
  bool isNumber = true;
  int labelText = 0;
  FieldControls EntryControls::*controls = nullptr;
  std::uint32_t FieldAvailability::*available = nullptr;
  std::uint32_t EntryEditorState::*record = nullptr;
  std::uint32_t EntryEditorState::*suppressed = nullptr;
  std::uint32_t EntryEditorState::*nameId = nullptr;
};

inline constexpr std::size_t kExtendedFieldCount = 4;

// In the order in which they are read and written.
const std::array<ExtendedField, kExtendedFieldCount>& ExtendedFields();

// Whether the settings show the field.
bool IsShown(const ExtendedField& field, const app::AppSettings& settings);

// The field that an edit belongs to, null for another control.
const ExtendedField* FieldOfEdit(const EntryControls& controls, int edit);

}  // namespace kelpin::editor
