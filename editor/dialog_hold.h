#pragma once

#include <vector>

namespace kelpin::ui {
class Dialog;
}

namespace kelpin::editor {

// Holds a dialog still while somebody works for it on another thread: its edits, its buttons and,
// as asked, its soft keys are off, and are afterwards as they were. Screen thread.
class DialogHold {
 public:
  enum class Keys { kAll, kAllButLast };

  bool Holds() const { return holds_; }
  void Begin(ui::Dialog& dialog, Keys keys);
  // The control that had the focus has it again where it can.
  void End(ui::Dialog& dialog);
  // The control that had the focus when the hold began, 0 for none.
  int Focus() const { return focus_; }

 private:
  bool holds_ = false;
  int focus_ = 0;
  std::vector<int> controls_;
  std::vector<bool> keys_;  // which soft keys were on
};

}  // namespace kelpin::editor
