#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "ui/dialog.h"
#include "ui/geometry.h"
#include "ui/templates.h"

namespace kelpin::ui {

// Owner and own window of the program, before and behind its dialogs.
struct WindowClass {
  std::u16string name;
  bool horizontalRedraw = false;
  bool verticalRedraw = false;
  bool whiteBackground = false;
  int icon = 0;
  int menu = 0;
  int extraBytes = 0;
};

enum class AnchorStyle { kDisabled, kVisible };  // kDisabled is not visible

enum class BoxButtons { kOk, kYesNo };
enum class BoxIcon { kStop, kExclamation, kInformation };
enum class BoxAnswer { kOk = 1, kCancel = 2, kYes = 6, kNo = 7 };

struct BoxStyle {
  BoxButtons buttons = BoxButtons::kOk;
  BoxIcon icon = BoxIcon::kInformation;
  bool operator==(const BoxStyle&) const = default;
};

inline constexpr BoxStyle kBoxError = {BoxButtons::kOk, BoxIcon::kStop};
inline constexpr BoxStyle kBoxNotice = {BoxButtons::kOk, BoxIcon::kInformation};
inline constexpr BoxStyle kBoxWarning = {BoxButtons::kOk, BoxIcon::kExclamation};
inline constexpr BoxStyle kBoxQuestion = {BoxButtons::kYesNo, BoxIcon::kExclamation};

// The port a screen implements. Screen thread unless said otherwise.
class Screen {
 public:
  virtual ~Screen() = default;

  virtual Metrics GetMetrics() = 0;  // any thread

  // The anchor window: found by other copies of the program, owner of the main dialog.
  virtual bool RegisterWindowClass(const WindowClass& windowClass) = 0;
  // 0 when it cannot be made.
  virtual WindowHandle CreateAnchorWindow(std::u16string_view className, std::u16string_view title,
                                          AnchorStyle style) = 0;
  // A visible or invisible anchor window of any copy of the program; an empty title is any. 0 when
  // there is none.
  virtual WindowHandle FindWindow(std::u16string_view className, std::u16string_view title) = 0;
  // Brings the window's program forward. The lowest bit set: its owned windows too. A stale
  // handle changes nothing.
  virtual void SetForegroundWindow(WindowHandle window) = 0;

  // Makes and initialises (OnInit, OnSize) a modeless dialog, not yet shown. `handler` outlives it.
  // Null when it cannot be made.
  virtual std::shared_ptr<Dialog> CreateDialog(const DialogTemplate& resource, WindowHandle owner,
                                               DialogHandler& handler) = 0;
  virtual void ShowDialog(Dialog& dialog) = 0;
  // Any thread: shown on the screen thread, returns the dialog's result when it has ended. When
  // the message loop is over: returns at once, kDialogDone, nothing shown.
  virtual int DialogBox(const DialogTemplate& resource, WindowHandle owner,
                        DialogHandler& handler) = 0;
  // Any thread, as DialogBox. Escape and the close box answer kOk of a box with OK alone, kNo of
  // a question. When the message loop is over: that same answer at once.
  virtual BoxAnswer MessageBox(WindowHandle owner, std::u16string_view text,
                               std::u16string_view caption, BoxStyle style) = 0;
  virtual void SetWaitCursor(bool wait) = 0;  // any thread

  virtual bool HasClipboardText() = 0;
  virtual void SetClipboardText(std::u16string_view text) = 0;
  virtual std::u16string ClipboardText() = 0;

  // Serves posted work and the user until PostQuit; returns its code.
  virtual int RunMessageLoop() = 0;
  virtual void PostQuit(int code) = 0;  // any thread

  virtual bool IsScreenThread() const = 0;                    // any thread
  virtual void PostToScreen(std::function<void()> work) = 0;  // any thread
};

}  // namespace kelpin::ui
