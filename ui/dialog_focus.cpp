#include <utility>

#include "ui/dialog.h"

// Which control has the focus, and which is to be seen.
namespace kelpin::ui {
namespace {

bool CanTakeFocus(const ControlState& state) {
  const bool kind = state.kind == ControlKind::kEdit || state.kind == ControlKind::kButton ||
                    state.kind == ControlKind::kCheckBox || state.kind == ControlKind::kList;
  return kind && state.enabled && state.visible;
}

}  // namespace

int Dialog::NextFocusable(std::size_t from) const {
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const ControlState& state = items_[(from + i) % items_.size()].state;
    if (CanTakeFocus(state)) {
      return state.id;
    }
  }
  return 0;
}

void Dialog::MoveFocus(int control) {
  std::vector<Notification> notifications;
  {
    const MutexLock guard(lock_);
    if (focus_ == control) {
      return;
    }
    const Item* left = Find(focus_);
    if (left != nullptr && left->state.kind == ControlKind::kEdit) {
      notifications.push_back({.control = focus_, .code = NotifyCode::kEditLeave});
    }
    const Item* taken = Find(control);
    if (taken != nullptr && taken->state.kind == ControlKind::kEdit) {
      notifications.push_back({.control = control, .code = NotifyCode::kEditFocus});
    }
    focus_ = control;
  }
  Changed();
  for (const Notification& notification : notifications) {
    Deliver(notification);
  }
}

void Dialog::GiveUpFocus(int control) {
  int next = 0;
  {
    const MutexLock guard(lock_);
    const Item* item = Find(control);
    if (item == nullptr || focus_ != control || CanTakeFocus(item->state)) {
      return;
    }
    next = NextFocusable(static_cast<std::size_t>(item - items_.data()) + 1);
  }
  MoveFocus(next);
}

void Dialog::SetFocus(int control) {
  {
    const MutexLock guard(lock_);
    const Item* item = Find(control);
    if (item == nullptr || !CanTakeFocus(item->state)) {
      return;
    }
  }
  MoveFocus(control);
}

int Dialog::Focus() const {
  const MutexLock guard(lock_);
  return focus_;
}

void Dialog::ScrollIntoView(int control) {
  {
    const MutexLock guard(lock_);
    if (Find(control) == nullptr) {
      return;
    }
    scrollTo_ = control;
  }
  Changed();
}

int Dialog::TakeScrollIntoView() {
  const MutexLock guard(lock_);
  return std::exchange(scrollTo_, 0);
}

}  // namespace kelpin::ui
