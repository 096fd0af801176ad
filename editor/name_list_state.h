#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "editor/pickers.h"
#include "ui/dialog.h"
#include "ui/geometry.h"

namespace kelpin::editor {

inline constexpr std::size_t kNameRoom = 256;        // UTF-16 units, with the end
inline constexpr std::size_t kGroupTextLimit = 259;  // UTF-16 units

// What the dialogs on one of the card's lists of names work on. There is one for each list. Screen
// thread.
struct NameListState {
  std::shared_ptr<ui::Dialog> dialog;  // the list that is open; its bar and controls are its own
  ui::Size size;                       // it was last laid out for
  int idWidth = 0;                     // of the column of record numbers
  std::uint32_t record = 0;            // whose name is edited, 1-based
  std::u16string name;                 // of that record, as it is saved
  int button = 0;                      // which one of an entry dialog opened the picker
  GroupSelection groups;               // what the group picker has chosen
};

}  // namespace kelpin::editor
