#include <algorithm>
#include <utility>

#include "ui/dialog.h"

// What the user and the screen do to a dialog.
namespace kelpin::ui {
namespace {

std::size_t CommonStart(std::u16string_view left, std::u16string_view right) {
  const std::size_t most = std::min(left.size(), right.size());
  return static_cast<std::size_t>(
      std::mismatch(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(most), right.begin())
          .first -
      left.begin());
}

// `text` without what was put into `old` beyond `limit` units; no half of a surrogate pair stays.
std::u16string CutTyped(std::u16string_view old, std::u16string_view text, std::size_t limit) {
  if (limit == 0 || text.size() <= limit) {
    return std::u16string(text);
  }
  const std::size_t start = CommonStart(old, text);
  std::size_t end = 0;
  while (end < std::min(old.size(), text.size()) - start &&
         old[old.size() - 1 - end] == text[text.size() - 1 - end]) {
    ++end;
  }
  std::u16string_view typed = text.substr(start, text.size() - start - end);
  std::size_t room = limit > start + end ? limit - start - end : 0;
  if (room < typed.size() && room > 0 && typed[room - 1] >= 0xD800 && typed[room - 1] <= 0xDBFF) {
    --room;
  }
  typed = typed.substr(0, room);
  std::u16string cut(text.substr(0, start));
  cut += typed;
  cut += text.substr(text.size() - end);
  return cut;
}

// Keys that an edit has for itself: what writes, and what moves or changes within it.
bool IsEditingKey(const KeyPress& press) {
  const unsigned modifiers = press.modifiers & (kControl | kAlt);
  switch (press.key) {
    case Key::kDelete:
    case Key::kBackspace:
    case Key::kLeft:
    case Key::kRight:
    case Key::kHome:
    case Key::kEnd:
    case Key::kSpace:
      return true;
    case Key::kCharacter: {
      if (modifiers == kControl) {
        const char16_t letter = press.character;
        return letter == u'A' || letter == u'C' || letter == u'V' || letter == u'X' ||
               letter == u'Y' || letter == u'Z';
      }
      return modifiers == 0 || modifiers == (kControl | kAlt);  // the latter writes too
    }
    default:
      return false;
  }
}

}  // namespace

void Dialog::Init() {
  const std::shared_ptr<Dialog> keep = weak_from_this().lock();
  handler_.OnInit(*this);
  int focus = 0;
  {
    const MutexLock guard(lock_);
    initialised_ = true;
    if (focus_ == 0) {
      focus = NextFocusable(0);
    }
  }
  if (focus != 0) {
    MoveFocus(focus);
  }
}

void Dialog::Resize(Size client) {
  {
    const MutexLock guard(lock_);
    const bool same = sized_ && client_ == client;
    client_ = client;
    if (!initialised_ || destroyed_ || same) {
      return;
    }
    sized_ = true;
  }
  OnScreen([client](Dialog& dialog) { dialog.handler_.OnSize(dialog, client); });
}

Size Dialog::ClientSize() const {
  const MutexLock guard(lock_);
  return client_;
}

void Dialog::Activate(bool active) {
  {
    const MutexLock guard(lock_);
    if (active_ == active) {
      return;
    }
    active_ = active;
  }
  OnScreen([active](Dialog& dialog) { dialog.handler_.OnActivate(dialog, active); });
}

bool Dialog::Active() const {
  const MutexLock guard(lock_);
  return active_;
}

void Dialog::Command(int command) {
  if (Ended()) {
    return;
  }
  const std::shared_ptr<MenuBar> bar = Bar();
  if (bar && !bar->CommandEnabled(command)) {
    return;
  }
  OnScreen([command](Dialog& dialog) { dialog.handler_.OnCommand(dialog, command); });
}

void Dialog::PressSoftKey(std::size_t index) {
  const std::shared_ptr<MenuBar> bar = Bar();
  if (!bar || index >= bar->KeyCount()) {
    return;
  }
  const SoftKey key = bar->KeyAt(index);
  if (key.enabled && !key.dropDown) {
    Command(key.command);
  }
}

void Dialog::PressButton(int control) {
  const std::optional<ControlState> state = Control(control);
  if (state && state->enabled && state->visible && !Ended()) {
    OnScreen([control](Dialog& dialog) { dialog.handler_.OnCommand(dialog, control); });
  }
}

void Dialog::PressCheckBox(int control) {
  const std::optional<ControlState> state = Control(control);
  if (state && state->kind == ControlKind::kCheckBox && state->enabled && state->visible) {
    SetChecked(control, !state->checked);
    PressButton(control);
  }
}

void Dialog::ReplaceSelection(int control, std::u16string_view text) {
  const std::optional<ControlState> state = Control(control);
  if (!state) {
    return;
  }
  const auto [first, last] = std::minmax(state->selectionStart, state->selectionEnd);
  const auto start = static_cast<std::size_t>(first);
  std::u16string whole = state->text.substr(0, start);
  whole += text;
  whole += state->text.substr(static_cast<std::size_t>(last));
  EditByUser(control, whole, first + static_cast<int>(text.size()));
}

void Dialog::EditByUser(int control, std::u16string_view text, int caret) {
  bool differs = false;
  With(control, [&](ControlState& state) {
    if (state.kind != ControlKind::kEdit || !state.enabled || state.readOnly) {
      return;
    }
    std::u16string fits = CutTyped(state.text, text, static_cast<std::size_t>(state.limit));
    const int lost = static_cast<int>(text.size() - fits.size());
    const int at = std::clamp(caret - lost, 0, static_cast<int>(fits.size()));
    differs = state.text != fits;
    state.text = std::move(fits);
    state.selectionStart = at;
    state.selectionEnd = at;
  });
  if (differs) {
    Deliver({.control = control, .code = NotifyCode::kEditUpdate});
  }
}

void Dialog::FocusByUser(int control) {
  SetFocus(control);
}

void Dialog::LongPressEdit(int control, Point point) {
  const std::optional<ControlState> state = Control(control);
  if (!state || state->kind != ControlKind::kEdit || !state->enabled || !state->visible) {
    return;
  }
  SetFocus(control);
  Deliver({.control = control, .code = NotifyCode::kEditPress, .point = point});
}

bool Dialog::Accelerate(const KeyPress& press) {
  int command = 0;
  {
    const MutexLock guard(lock_);
    const auto found = std::find_if(accelerators_.begin(), accelerators_.end(),
                                    [&](const Accelerator& one) { return one.press == press; });
    if (found == accelerators_.end()) {
      return false;
    }
    command = found->command;
  }
  const std::shared_ptr<MenuBar> bar = Bar();
  if (bar && !bar->CommandEnabled(command)) {
    return false;
  }
  Command(command);
  return true;
}

bool Dialog::KeyDown(const KeyPress& press) {
  if (Ended()) {
    return false;
  }
  const std::shared_ptr<Dialog> keep = weak_from_this().lock();
  const std::optional<ControlState> focused = Control(Focus());
  const ControlKind kind = focused ? focused->kind : ControlKind::kLabel;
  ListView* list = focused ? List(focused->id) : nullptr;
  if (list != nullptr && list->FilterKey(press)) {
    return true;
  }
  if (kind == ControlKind::kEdit && IsEditingKey(press)) {
    return false;
  }
  const bool plain = press.modifiers == kNoModifier;
  const bool presses = plain && (press.key == Key::kSpace || press.key == Key::kEnter);
  if (kind == ControlKind::kButton && presses) {
    PressButton(focused->id);
    return true;
  }
  if (kind == ControlKind::kCheckBox && plain && press.key == Key::kSpace) {
    PressCheckBox(focused->id);
    return true;
  }
  if (Accelerate(press)) {
    return true;
  }
  if (list != nullptr && list->DefaultKey(press)) {
    return true;
  }
  switch (press.key) {
    case Key::kEnter:
      if (plain) {
        Command(kCommandOk);
      }
      return plain;
    case Key::kEscape:
      if (plain) {
        Command(kCommandCancel);
      }
      return plain;
    case Key::kF1:
      if (plain) {
        Help();
      }
      return plain;
    case Key::kTalk:
      return HotKey(kVirtualKeyTalk, press.modifiers);
    case Key::kBack:
      return HotKey(kVirtualKeyBack, press.modifiers);
    default:
      return false;
  }
}

bool Dialog::HotKey(int virtualKey, unsigned modifiers) {
  bool used = false;
  OnScreen([&](Dialog& dialog) { used = dialog.handler_.OnHotKey(dialog, virtualKey, modifiers); });
  return used;
}

void Dialog::Help() {
  OnScreen([](Dialog& dialog) { dialog.handler_.OnHelp(dialog); });
}

void Dialog::Close() {
  if (!Ended()) {
    OnScreen([](Dialog& dialog) { dialog.handler_.OnClose(dialog); });
  }
}

void Dialog::SettingsChanged() {
  OnScreen([](Dialog& dialog) { dialog.handler_.OnSettingsChange(dialog); });
}

}  // namespace kelpin::ui
