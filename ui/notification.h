#pragma once

#include <cstdint>

#include "ui/geometry.h"

namespace kelpin::ui {

// Codes a control reports to its dialog.
enum class NotifyCode : int {
  // Edits.
  kEditUpdate = 0x400,  // the text changed, by the user or by the program
  kEditFocus = 0x100,   // the edit took the focus
  kEditLeave = 0x200,
  kEditPress = 0x201,  // a press that the shell recognised as the context-menu gesture

  // Lists.
  kContextMenu = 1000,  // tap-and-hold, right click, the menu key
  kItemActivated = 1001,
  kClick = 1002,
  kColumnClick = 1003,
  kItemInserted = 1004,
  kItemChanged = 1005,  // state of one row: selected, focused, state image
};

struct Notification {
  int control = 0;
  NotifyCode code = NotifyCode::kEditUpdate;
  int row = -1;     // lists: the row, -1 when none
  int column = -1;  // lists: kColumnClick, kClick
  int subItem = 0;  // kItemInserted: the position at which the row was inserted
  std::uint32_t oldState = 0;
  std::uint32_t newState = 0;
  Point point = {};  // kContextMenu, kEditPress: where the finger is
};

}  // namespace kelpin::ui
