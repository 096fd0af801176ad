#pragma once

#include <memory>

#include "ui/notification.h"

namespace kelpin::ui {
class Dialog;
class Menu;
class Screen;
}  // namespace kelpin::ui

namespace kelpin::app {

// The pop-up of one edit: Cut, Copy, Paste, Clear and Select All. The dialog's handler attaches it
// in OnInit and passes it the notifications and commands it gets. Screen thread.
class EditContextMenu {
 public:
  explicit EditContextMenu(ui::Screen& screen) : screen_(screen) {}
  ~EditContextMenu() { Detach(); }
  EditContextMenu(const EditContextMenu&) = delete;
  EditContextMenu& operator=(const EditContextMenu&) = delete;

  // `dialog` is there until Detach.
  void Attach(ui::Dialog& dialog, int control);
  // From now on the edit's presses and commands are not taken.
  void Detach();

  // True when it was the gesture on this edit, which opens the menu where it was made.
  bool OnNotify(const ui::Notification& notification);
  // True when it was one of the menu's commands for this edit: the menu belongs to the edit that
  // has the focus.
  bool OnCommand(int command);

 private:
  // What can be done with the edit now.
  std::shared_ptr<ui::Menu> MakeMenu() const;
  bool Writable() const;
  void Paste();

  ui::Screen& screen_;
  ui::Dialog* dialog_ = nullptr;
  int control_ = 0;
};

}  // namespace kelpin::app
