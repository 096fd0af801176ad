#include "ui/dialog.h"

#include <algorithm>
#include <utility>

namespace kelpin::ui {
namespace {

ControlState FromTemplate(const ControlTemplate& source) {
  const auto has = [&](std::uint32_t style) { return (source.style & style) != 0; };
  ControlState state;
  state.id = source.id;
  state.kind = source.kind;
  state.text = source.text;
  state.style = source.style;
  state.labelledBy = source.labelledBy;
  state.resource = source.resource;
  state.enabled = !has(kStyleDisabled);
  state.visible = !has(kStyleHidden);
  state.readOnly = has(kStyleReadOnly);
  state.bold = has(kStyleBold);
  return state;
}

int Length(const std::u16string& text) {
  return static_cast<int>(text.size());
}

std::pair<std::size_t, std::size_t> Selection(const ControlState& state) {
  const auto [first, last] = std::minmax(state.selectionStart, state.selectionEnd);
  const int length = Length(state.text);
  return {static_cast<std::size_t>(std::clamp(first, 0, length)),
          static_cast<std::size_t>(std::clamp(last, 0, length))};
}

}  // namespace

void DialogHandler::OnClose(Dialog& dialog) {
  dialog.End(kDialogDone);
}

Dialog::Dialog(const DialogTemplate& resource, WindowHandle handle, WindowHandle owner,
               DialogHandler& handler, DialogHost& host)
    : resource_(resource.id),
      handle_(handle),
      owner_(owner),
      helpSection_(resource.helpSection),
      handler_(handler),
      host_(host) {
  items_.reserve(resource.controls.size());
  for (const ControlTemplate& control : resource.controls) {
    Item item;
    item.state = FromTemplate(control);
    if (control.kind == ControlKind::kList) {
      item.list = std::make_unique<ListView>((control.style & kStyleSingleSelection) != 0);
      ListView::Sink sink;
      sink.notify = [this, id = control.id](const Notification& notification) {
        Notification ours = notification;
        ours.control = id;
        Deliver(ours);
      };
      sink.changed = [this] { Changed(); };
      item.list->SetSink(std::move(sink));
    }
    items_.push_back(std::move(item));
  }
}

// Inside.

Dialog::Item* Dialog::Find(int control) {
  const auto found = std::find_if(items_.begin(), items_.end(),
                                  [&](const Item& item) { return item.state.id == control; });
  return found == items_.end() ? nullptr : &*found;
}

const Dialog::Item* Dialog::Find(int control) const {
  const auto found = std::find_if(items_.begin(), items_.end(),
                                  [&](const Item& item) { return item.state.id == control; });
  return found == items_.end() ? nullptr : &*found;
}

template <typename Value>
Value Dialog::Get(int control, Value ControlState::*member) const {
  const MutexLock guard(lock_);
  const Item* item = Find(control);
  return item == nullptr ? Value{} : item->state.*member;
}

bool Dialog::Alive() const {
  const MutexLock guard(lock_);
  return !destroyed_;
}

void Dialog::Changed() {
  if (Alive()) {
    host_.DialogChanged(*this);
  }
}

void Dialog::Deliver(Notification notification) {
  OnScreen([notification](Dialog& dialog) { dialog.handler_.OnNotify(dialog, notification); });
}

void Dialog::OnScreen(std::function<void(Dialog&)> work) {
  if (!Alive()) {
    return;
  }
  if (host_.IsScreenThread()) {
    const std::shared_ptr<Dialog> keep = weak_from_this().lock();
    work(*this);
    return;
  }
  PostWork(std::move(work));
}

void Dialog::PostWork(std::function<void(Dialog&)> work) {
  if (!Alive()) {
    return;
  }
  host_.Post([weak = weak_from_this(), work = std::move(work)] {
    const std::shared_ptr<Dialog> dialog = weak.lock();
    if (dialog && dialog->Alive() && !dialog->Ended()) {
      work(*dialog);
    }
  });
}

// Window.

void Dialog::SetTitle(std::u16string_view title) {
  {
    const MutexLock guard(lock_);
    if (title_ == title) {
      return;
    }
    title_ = title;
  }
  Changed();
}

std::u16string Dialog::Title() const {
  const MutexLock guard(lock_);
  return title_;
}

void Dialog::SetFullScreen(bool done, bool inputPanelDown) {
  {
    const MutexLock guard(lock_);
    doneButton_ = done;
    inputPanelDown_ = inputPanelDown;
  }
  Changed();
}

bool Dialog::HasDoneButton() const {
  const MutexLock guard(lock_);
  return doneButton_;
}

bool Dialog::InputPanelDown() const {
  const MutexLock guard(lock_);
  return inputPanelDown_;
}

// Controls.

void Dialog::PutText(int control, std::u16string_view text, bool unavailable) {
  bool edit = false;
  const bool found = With(control, [&](ControlState& state) {
    state.text = text;
    state.unavailable = unavailable;
    state.selectionStart = 0;
    state.selectionEnd = 0;
    edit = state.kind == ControlKind::kEdit;
  });
  if (found && edit) {
    Deliver({.control = control, .code = NotifyCode::kEditUpdate});
  }
}

void Dialog::SetText(int control, std::u16string_view text) {
  PutText(control, text, false);
}

std::u16string Dialog::Text(int control) const {
  return Get(control, &ControlState::text);
}

void Dialog::SetUnavailableText(int control, std::u16string_view text) {
  PutText(control, text, true);
  Enable(control, false);
}

void Dialog::Enable(int control, bool enabled) {
  With(control, [&](ControlState& state) { state.enabled = enabled; });
  GiveUpFocus(control);
}

bool Dialog::Enabled(int control) const {
  return Get(control, &ControlState::enabled);
}

void Dialog::Show(int control, bool visible) {
  With(control, [&](ControlState& state) { state.visible = visible; });
  GiveUpFocus(control);
}

bool Dialog::Shown(int control) const {
  return Get(control, &ControlState::visible);
}

void Dialog::SetLimit(int control, int units) {
  With(control, [&](ControlState& state) { state.limit = std::max(units, 0); });
}

int Dialog::Limit(int control) const {
  return Get(control, &ControlState::limit);
}

void Dialog::SetInputMode(int control, InputMode mode) {
  With(control, [&](ControlState& state) { state.inputMode = mode; });
}

void Dialog::SetBold(int control, bool bold) {
  With(control, [&](ControlState& state) { state.bold = bold; });
}

void Dialog::SetColor(int control, TextColor color) {
  With(control, [&](ControlState& state) { state.color = color; });
}

void Dialog::SetChecked(int control, bool checked) {
  With(control, [&](ControlState& state) { state.checked = checked; });
}

bool Dialog::Checked(int control) const {
  return Get(control, &ControlState::checked);
}

void Dialog::SetSelection(int control, int start, int end) {
  With(control, [&](ControlState& state) {
    const int length = Length(state.text);
    state.selectionStart = std::clamp(start, 0, length);
    state.selectionEnd = end < 0 ? length : std::clamp(end, 0, length);
  });
}

std::u16string Dialog::SelectedText(int control) const {
  const MutexLock guard(lock_);
  const Item* item = Find(control);
  if (item == nullptr) {
    return {};
  }
  const auto [first, last] = Selection(item->state);
  return item->state.text.substr(first, last - first);
}

void Dialog::SetBounds(int control, Rect bounds) {
  With(control, [&](ControlState& state) { state.bounds = bounds; });
}

Rect Dialog::Bounds(int control) const {
  return Get(control, &ControlState::bounds);
}

void Dialog::SetProgressRange(int control, int minimum, int maximum, int step) {
  With(control, [&](ControlState& state) {
    state.progressMinimum = minimum;
    state.progressMaximum = std::max(minimum, maximum);
    state.progressStep = step;
    state.progressPosition = std::clamp(state.progressPosition, minimum, state.progressMaximum);
  });
}

void Dialog::SetProgress(int control, int position) {
  With(control, [&](ControlState& state) {
    state.progressPosition = std::clamp(position, state.progressMinimum, state.progressMaximum);
  });
}

void Dialog::StepProgress(int control) {
  With(control, [&](ControlState& state) {
    state.progressPosition = std::clamp(state.progressPosition + state.progressStep,
                                        state.progressMinimum, state.progressMaximum);
  });
}

ListView* Dialog::List(int control) {
  const MutexLock guard(lock_);
  const Item* item = Find(control);
  return item == nullptr ? nullptr : item->list.get();
}

std::vector<ControlState> Dialog::Controls() const {
  const MutexLock guard(lock_);
  std::vector<ControlState> states;
  states.reserve(items_.size());
  for (const Item& item : items_) {
    states.push_back(item.state);
  }
  return states;
}

std::optional<ControlState> Dialog::Control(int control) const {
  const MutexLock guard(lock_);
  const Item* item = Find(control);
  return item == nullptr ? std::nullopt : std::optional(item->state);
}

std::vector<int> Dialog::ListControls() const {
  const MutexLock guard(lock_);
  std::vector<int> lists;
  for (const Item& item : items_) {
    if (item.list) {
      lists.push_back(item.state.id);
    }
  }
  return lists;
}

// Soft keys.

MenuBar* Dialog::CreateMenuBar(const MenuBarTemplate& bar) {
  auto made = std::make_shared<MenuBar>(bar);
  made->SetChanged([weak = weak_from_this()] {
    if (const std::shared_ptr<Dialog> dialog = weak.lock()) {
      dialog->Changed();
    }
  });
  {
    const MutexLock guard(lock_);
    bar_ = made;
  }
  Changed();
  return made.get();
}

std::shared_ptr<MenuBar> Dialog::Bar() const {
  const MutexLock guard(lock_);
  return bar_;
}

void Dialog::DestroyMenuBar() {
  std::shared_ptr<MenuBar> gone;
  {
    const MutexLock guard(lock_);
    gone.swap(bar_);
  }
  if (gone) {
    gone->SetChanged(nullptr);
    Changed();
  }
}

void Dialog::SetAccelerators(std::span<const Accelerator> accelerators) {
  const MutexLock guard(lock_);
  accelerators_.assign(accelerators.begin(), accelerators.end());
}

void Dialog::ShowPopup(std::shared_ptr<Menu> menu, Point point) {
  if (Alive() && menu) {
    host_.ShowPopup(*this, std::move(menu), point);
  }
}

// The end.

void Dialog::PostCommand(int command) {
  PostWork([command](Dialog& dialog) { dialog.handler_.OnCommand(dialog, command); });
}

void Dialog::PostMessage(std::uint32_t message, std::uint32_t first, std::uint32_t second) {
  PostWork([=](Dialog& dialog) { dialog.handler_.OnMessage(dialog, message, first, second); });
}

void Dialog::PostClose() {
  PostWork([](Dialog& dialog) { dialog.handler_.OnClose(dialog); });
}

void Dialog::End(int result) {
  // Once it has ended the screen may let go of it while this still runs on another thread.
  const std::shared_ptr<Dialog> keep = weak_from_this().lock();
  {
    const MutexLock guard(lock_);
    if (ended_ || destroyed_) {
      return;
    }
    ended_ = true;
    result_ = result;
  }
  if (host_.IsScreenThread()) {
    host_.DialogEnded(*this);
    return;
  }
  host_.Post([weak = weak_from_this()] {
    const std::shared_ptr<Dialog> dialog = weak.lock();
    if (dialog && dialog->Alive()) {
      dialog->host_.DialogEnded(*dialog);
    }
  });
}

bool Dialog::Ended() const {
  const MutexLock guard(lock_);
  return ended_;
}

int Dialog::Result() const {
  const MutexLock guard(lock_);
  return result_;
}

void Dialog::Destroyed() {
  {
    const MutexLock guard(lock_);
    if (destroyed_) {
      return;
    }
    ended_ = true;
  }
  const std::shared_ptr<Dialog> keep = weak_from_this().lock();
  handler_.OnDestroy(*this);
  const MutexLock guard(lock_);
  destroyed_ = true;
}

}  // namespace kelpin::ui
