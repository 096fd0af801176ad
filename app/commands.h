#pragma once

#include <functional>
#include <map>
#include <memory>

#include "platform/mutex.h"
#include "ui/menu.h"

namespace kelpin::app {

struct AppState;

// What runs when a command of the main dialog is given, and which commands can be given now. A
// command that nobody registered stays greyed, whatever is selected. Registering ends before the
// main dialog opens; the rest from any thread.
class Commands {
 public:
  using Runner = std::function<void()>;

  explicit Commands(AppState& state) : state_(state) {}

  void Register(int command, Runner runner);
  bool Knows(int command) const;
  // Screen thread. False when nobody registered it.
  bool Run(int command) const;

  // Greys what nobody registered. Once, when the menu bar is made.
  void GreyUnknown();
  // The commands that need a selected row.
  void SetCommandsEnabled(bool anySelected);
  // The same for what is selected now. Whichever of two calls comes last, the last state counts.
  void FollowSelection();
  // The left one stays off when nobody registered its command.
  void EnableSoftKeys(bool enabled);
  // Refresh and both soft keys are off while the card is read.
  void SetLoadCommandsEnabled(bool enabled);
  // Takes away what the settings switch off.
  void RemoveSwitchedOff();
  // The list's context menu.
  std::shared_ptr<ui::Menu> ContextMenu() const;

 private:
  ui::Menu* Menu() const;

  AppState& state_;
  std::map<int, Runner> runners_;
  Mutex following_;
};

}  // namespace kelpin::app
