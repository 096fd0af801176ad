#include "editor/dialog_hold.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "ui/dialog.h"
#include "ui/menu.h"

namespace kelpin::editor {

void DialogHold::Begin(ui::Dialog& dialog, Keys keys) {
  if (holds_) {
    return;
  }
  holds_ = true;
  focus_ = dialog.Focus();
  controls_.clear();
  for (const ui::ControlState& control : dialog.Controls()) {
    const bool takesInput =
        control.kind == ui::ControlKind::kEdit || control.kind == ui::ControlKind::kButton;
    if (takesInput && control.enabled) {
      controls_.push_back(control.id);
    }
  }
  // The one that has the focus comes last, so that the focus does not walk over the others.
  std::stable_partition(controls_.begin(), controls_.end(),
                        [this](int control) { return control != focus_; });
  for (const int control : controls_) {
    dialog.Enable(control, false);
  }
  keys_.clear();
  if (const std::shared_ptr<ui::MenuBar> bar = dialog.Bar()) {
    const std::size_t count = bar->KeyCount();
    for (std::size_t key = 0; key < count; ++key) {
      keys_.push_back(bar->KeyAt(key).enabled);
      if (keys == Keys::kAll || key + 1 < count) {
        bar->EnableSoftKey(key, false);
      }
    }
  }
}

void DialogHold::End(ui::Dialog& dialog) {
  if (!holds_) {
    return;
  }
  holds_ = false;
  for (auto control = controls_.rbegin(); control != controls_.rend(); ++control) {
    dialog.Enable(*control, true);
    if (*control == focus_) {
      dialog.SetFocus(focus_);
    }
  }
  if (const std::shared_ptr<ui::MenuBar> bar = dialog.Bar()) {
    for (std::size_t key = 0; key < keys_.size(); ++key) {
      bar->EnableSoftKey(key, keys_[key]);
    }
  }
}

}  // namespace kelpin::editor
