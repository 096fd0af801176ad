#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mutex.h"
#include "ui/geometry.h"
#include "ui/list_view.h"
#include "ui/menu.h"
#include "ui/notification.h"
#include "ui/templates.h"

namespace kelpin::ui {

using WindowHandle = std::uint32_t;  // 0 is no window

inline constexpr int kCommandOk = 1;
inline constexpr int kCommandCancel = 2;

enum class InputMode { kSpell = 0, kNumbers = 2 };
enum class TextColor { kNormal, kError };

class Dialog;

// What a dialog of the program does. Screen thread only.
class DialogHandler {
 public:
  virtual ~DialogHandler() = default;
  virtual void OnInit(Dialog& dialog) = 0;
  virtual void OnCommand(Dialog& /*dialog*/, int /*command*/) {}
  virtual void OnNotify(Dialog& /*dialog*/, const Notification& /*notification*/) {}
  // The client area: what lies above the soft keys. First called after OnInit, then on changes.
  virtual void OnSize(Dialog& /*dialog*/, Size /*client*/) {}
  virtual void OnActivate(Dialog& /*dialog*/, bool /*active*/) {}
  // True when the key was used up.
  virtual bool OnHotKey(Dialog& /*dialog*/, int /*virtualKey*/, unsigned /*modifiers*/) {
    return false;
  }
  virtual void OnMessage(Dialog& /*dialog*/, std::uint32_t /*message*/, std::uint32_t /*first*/,
                         std::uint32_t /*second*/) {}
  virtual void OnSettingsChange(Dialog& /*dialog*/) {}
  virtual void OnHelp(Dialog& /*dialog*/) {}
  // The close box, or the close message.
  virtual void OnClose(Dialog& dialog);  // ends the dialog with result 16
  virtual void OnDestroy(Dialog& /*dialog*/) {}
};

inline constexpr int kDialogDone = 16;

// What a dialog needs of the screen that shows it. Any thread.
class DialogHost {
 public:
  virtual ~DialogHost() = default;
  virtual bool IsScreenThread() const = 0;
  // Runs `work` on the screen thread, later, in order.
  virtual void Post(std::function<void()> work) = 0;
  // Something of the dialog is to be drawn again. Calls are gathered by the host.
  virtual void DialogChanged(Dialog& dialog) = 0;
  // Screen thread: the dialog has ended and is to be taken away. Its Destroyed() follows when the
  // handler's routine that runs now has returned.
  virtual void DialogEnded(Dialog& dialog) = 0;
  // Screen thread: show `menu` at `point` ((-1, -1): by the control that has the focus); a choice
  // comes back through Dialog::Command.
  virtual void ShowPopup(Dialog& dialog, std::shared_ptr<Menu> menu, Point point) = 0;
};

// A copy of one control's state, to draw from.
struct ControlState {
  int id = 0;
  ControlKind kind = ControlKind::kLabel;
  std::u16string text;
  std::uint32_t style = 0;
  int labelledBy = 0;
  int resource = 0;
  bool enabled = true;
  bool visible = true;
  bool readOnly = false;
  bool bold = false;
  bool checked = false;      // check boxes
  bool unavailable = false;  // drawn muted and italic: the text is no content
  TextColor color = TextColor::kNormal;
  InputMode inputMode = InputMode::kSpell;
  int limit = 0;           // edits: UTF-16 units, 0 is none
  int selectionStart = 0;  // edits; start == end is the caret
  int selectionEnd = 0;
  int progressMinimum = 0;
  int progressMaximum = 100;
  int progressPosition = 0;
  int progressStep = 10;
  Rect bounds;
  bool operator==(const ControlState&) const = default;
};

// A dialog's whole state, without a toolkit. Made by a Screen. State may be read and changed from
// any thread; handlers run on the screen thread. Controls that a template does not have are
// ignored in writes and empty in reads. Held by a shared_ptr, also by a thread that works on it;
// once Destroyed nothing of the handler runs, whatever such a thread still does.
class Dialog : public std::enable_shared_from_this<Dialog> {
 public:
  Dialog(const DialogTemplate& resource, WindowHandle handle, WindowHandle owner,
         DialogHandler& handler, DialogHost& host);

  int Resource() const { return resource_; }
  WindowHandle Handle() const { return handle_; }
  WindowHandle Owner() const { return owner_; }
  std::u16string HelpSection() const { return helpSection_; }

  void SetTitle(std::u16string_view title);
  std::u16string Title() const;
  void SetFullScreen(bool done, bool inputPanelDown);  // Done button in the title bar
  bool HasDoneButton() const;
  bool InputPanelDown() const;  // the screen lowers the panel when it shows the dialog

  // Controls. SetText on an edit raises kEditUpdate, as typing does; the text is not cut to the
  // limit. The caret goes to the start.
  void SetText(int control, std::u16string_view text);
  std::u16string Text(int control) const;
  void SetUnavailableText(int control, std::u16string_view text);  // also disables the edit
  void Enable(int control, bool enabled);
  bool Enabled(int control) const;
  void Show(int control, bool visible);
  bool Shown(int control) const;
  void SetLimit(int control, int units);
  int Limit(int control) const;
  void SetInputMode(int control, InputMode mode);
  void SetBold(int control, bool bold);
  void SetColor(int control, TextColor color);
  void SetChecked(int control, bool checked);
  bool Checked(int control) const;
  void SetSelection(int control, int start, int end);  // an `end` below 0 is the text's end
  std::u16string SelectedText(int control) const;
  void SetBounds(int control, Rect bounds);
  Rect Bounds(int control) const;
  // Edits that lose and take the focus raise kEditLeave and kEditFocus. A control that is hidden or
  // disabled cannot take it; one that becomes so gives it to the next in Tab order.
  void SetFocus(int control);
  int Focus() const;  // 0 when none
  // For the screen: the control to scroll into view since it last asked, 0 when none.
  void ScrollIntoView(int control);
  int TakeScrollIntoView();
  void SetProgressRange(int control, int minimum, int maximum, int step);
  void SetProgress(int control, int position);
  void StepProgress(int control);
  // Null when the template has no such list. Lives as long as the dialog.
  ListView* List(int control);

  std::vector<ControlState> Controls() const;  // in template order, which is Tab order
  std::optional<ControlState> Control(int control) const;
  std::vector<int> ListControls() const;

  // Soft keys. The pointer lives until DestroyMenuBar, null when there is none.
  MenuBar* CreateMenuBar(const MenuBarTemplate& bar);
  std::shared_ptr<MenuBar> Bar() const;
  void DestroyMenuBar();
  void SetAccelerators(std::span<const Accelerator> accelerators);

  void ShowPopup(std::shared_ptr<Menu> menu, Point point);  // screen thread

  // Posted: OnCommand, OnMessage or OnClose later on the screen thread, in order, and not when the
  // dialog has ended by then. A posted command is the program's own: the menu bar is not asked. Any
  // thread.
  void PostCommand(int command);
  void PostMessage(std::uint32_t message, std::uint32_t first = 0, std::uint32_t second = 0);
  void PostClose();
  // Ends the dialog: any thread; taken away on the screen thread. The first result counts.
  void End(int result);
  bool Ended() const;
  int Result() const;

  // What the user and the screen do. Screen thread.
  void Init();  // OnInit; then the first control that can has the focus, unless one has it
  // Before Init the size is only kept, for OnInit to read. After it OnSize, the first time and when
  // it differs from the last.
  void Resize(Size client);
  Size ClientSize() const;
  void Activate(bool active);
  bool Active() const;
  void Command(int command);             // not delivered when the menu bar has it disabled
  void PressSoftKey(std::size_t index);  // a plain key's command; nothing for a drop-down
  void PressButton(int control);         // OnCommand with the control's id
  void PressCheckBox(int control);       // toggles, then the same
  // Typed or pasted text in place of an edit's selection.
  void ReplaceSelection(int control, std::u16string_view text);
  // The user's new text of an edit: what was put in is cut to the limit, then kEditUpdate. Nothing
  // for an edit that is read-only or disabled.
  void EditByUser(int control, std::u16string_view text, int caret);
  void FocusByUser(int control);
  void LongPressEdit(int control, Point point);
  // A key, with the control that has the focus: list filter, accelerators, list, Enter, Escape,
  // F1, Talk and Back. What an edit needs for editing is no accelerator there. True when it was
  // used up.
  bool KeyDown(const KeyPress& press);
  bool HotKey(int virtualKey, unsigned modifiers);
  void Help();
  void Close();
  void SettingsChanged();
  void Destroyed();

  DialogHandler& Handler() { return handler_; }

 private:
  struct Item {
    ControlState state;
    std::unique_ptr<ListView> list;
  };

  Item* Find(int control) REQUIRES(lock_);
  const Item* Find(int control) const REQUIRES(lock_);
  // Runs `change` on a control's state under the lock and has it drawn again.
  template <typename Change>
  bool With(int control, const Change& change);
  template <typename Value>
  Value Get(int control, Value ControlState::*member) const;
  void PutText(int control, std::u16string_view text, bool unavailable);
  void MoveFocus(int control);
  // The first control at or after `from` in Tab order that can take the focus, else 0.
  int NextFocusable(std::size_t from) const REQUIRES(lock_);
  void GiveUpFocus(int control);
  bool Alive() const;
  bool Accelerate(const KeyPress& press);
  void Changed();
  void Deliver(Notification notification);
  // Runs now on the screen thread, later from any other; not at all once the dialog is gone.
  void OnScreen(std::function<void(Dialog&)> work);
  // Always later, in order; not when the dialog has ended by then.
  void PostWork(std::function<void(Dialog&)> work);

  const int resource_;
  const WindowHandle handle_;
  const WindowHandle owner_;
  const std::u16string helpSection_;
  DialogHandler& handler_;
  DialogHost& host_;

  mutable Mutex lock_;
  std::u16string title_ GUARDED_BY(lock_);
  bool doneButton_ GUARDED_BY(lock_) = false;
  bool inputPanelDown_ GUARDED_BY(lock_) = false;
  std::vector<Item> items_ GUARDED_BY(lock_);
  std::shared_ptr<MenuBar> bar_ GUARDED_BY(lock_);
  std::vector<Accelerator> accelerators_ GUARDED_BY(lock_);
  int focus_ GUARDED_BY(lock_) = 0;
  int scrollTo_ GUARDED_BY(lock_) = 0;
  Size client_ GUARDED_BY(lock_);
  bool initialised_ GUARDED_BY(lock_) = false;
  bool sized_ GUARDED_BY(lock_) = false;
  bool active_ GUARDED_BY(lock_) = false;
  bool ended_ GUARDED_BY(lock_) = false;
  bool destroyed_ GUARDED_BY(lock_) = false;
  int result_ GUARDED_BY(lock_) = 0;
};

template <typename Change>
bool Dialog::With(int control, const Change& change) {
  {
    const MutexLock guard(lock_);
    Item* item = Find(control);
    if (item == nullptr) {
      return false;
    }
    const ControlState before = item->state;
    change(item->state);
    if (item->state == before) {
      return true;
    }
  }
  Changed();
  return true;
}

}  // namespace kelpin::ui
