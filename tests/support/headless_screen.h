#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/mutex.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"
#include "ui/dialog.h"
#include "ui/screen.h"

namespace kelpin::test {

// A message box that was shown.
struct ShownBox {
  ui::WindowHandle owner = 0;
  std::u16string text;
  std::u16string caption;
  ui::BoxStyle style;
};

// A pop-up that is or was open.
struct ShownPopup {
  int resource = 0;  // of its dialog
  std::vector<ui::MenuItem> items;
  ui::Point point;
};

struct AnchorWindow {
  ui::WindowHandle handle = 0;
  std::u16string className;
  std::u16string title;
  ui::AnchorStyle style = ui::AnchorStyle::kVisible;
};

// A screen without a display that a script drives. The thread that makes it is the screen thread.
//
// Modal dialogs run the script that waits for their template: after OnInit and OnSize and after the
// posted work was served. A script presses keys, serves posted work and ends the dialog; a dialog
// that no script waits for, or that its script left open, fails the test and is closed.
// Message boxes take the scripted answers in order, then the default ones.
//
// The journal gets one line a call of the port; the fail plan is asked by RegisterWindowClass,
// CreateAnchorWindow and CreateDialog.
class HeadlessScreen : public ui::Screen, public ui::DialogHost {
 public:
  using DialogScript = std::function<void(ui::Dialog&)>;

  HeadlessScreen();
  HeadlessScreen(Journal& journal, FailPlan& failures);
  ~HeadlessScreen() override;
  HeadlessScreen(const HeadlessScreen&) = delete;
  HeadlessScreen& operator=(const HeadlessScreen&) = delete;

  // What the user will do. Any thread, before it is wanted.

  // The next boxes' answers, in order.
  void ScriptBox(ui::BoxAnswer answer);
  // The next box is closed with Escape: OK of a box with OK alone, No of a question.
  void ScriptDismissBox();
  // What boxes with an OK button and questions get when no answer is scripted: kOk and kNo.
  void SetDefaultAnswers(ui::BoxAnswer ok, ui::BoxAnswer question);
  // Runs while a box is shown, before it is answered; work may be served in it.
  void OnBox(std::function<void(const ShownBox&)> look);
  // The next modal dialog of this template runs `script`; several queue up.
  void ScriptDialog(int resource, DialogScript script);
  // Every modal dialog of this template that has no queued script does.
  void ScriptEveryDialog(int resource, DialogScript script);
  // The next modal dialog of this template is served until somebody ends it.
  void ScriptWaitForEnd(int resource);
  // Presses an item of the pop-up that was opened last; false when none is open or the item is
  // missing or greyed. The pop-up closes.
  bool ChoosePopup(int command);
  void DismissPopup();

  // Serving. Screen thread.

  // Runs posted work until none is left.
  void RunPending();
  // Serves posted work until `done`; false when that took longer than `seconds`.
  bool RunUntil(const std::function<bool()>& done, int seconds = 30);

  // What the device is like.
  void SetMetrics(const ui::Metrics& metrics);
  void SetClientSize(ui::Size size);  // of every dialog; open ones are told
  // A window of another copy of the program.
  void AddForeignWindow(std::u16string_view className, std::u16string_view title,
                        ui::WindowHandle handle);

  // What was seen. Any thread.
  Journal& Calls() { return journal_; }
  FailPlan& Failures() { return failures_; }
  std::vector<ShownBox> Boxes() const;
  std::vector<ShownPopup> Popups() const;  // all that were ever open
  std::vector<ui::WindowClass> WindowClasses() const;
  std::vector<AnchorWindow> Anchors() const;
  std::vector<ui::WindowHandle> Raised() const;  // arguments of SetForegroundWindow
  bool WaitCursor() const;
  std::vector<bool> WaitCursorLog() const;
  std::uint64_t Repaints() const;
  // The dialog in front, the modal ones before the modeless; null when none. Screen thread.
  std::shared_ptr<ui::Dialog> Front() const;
  // The open dialog of this template that was opened last; null when there is none.
  std::shared_ptr<ui::Dialog> Find(int resource) const;
  bool Shown(const ui::Dialog& dialog) const;
  std::size_t OpenDialogs() const;

  // ui::Screen
  ui::Metrics GetMetrics() override;
  bool RegisterWindowClass(const ui::WindowClass& windowClass) override;
  ui::WindowHandle CreateAnchorWindow(std::u16string_view className, std::u16string_view title,
                                      ui::AnchorStyle style) override;
  ui::WindowHandle FindWindow(std::u16string_view className, std::u16string_view title) override;
  void SetForegroundWindow(ui::WindowHandle window) override;
  std::shared_ptr<ui::Dialog> CreateDialog(const ui::DialogTemplate& resource,
                                           ui::WindowHandle owner,
                                           ui::DialogHandler& handler) override;
  void ShowDialog(ui::Dialog& dialog) override;
  int DialogBox(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                ui::DialogHandler& handler) override;
  ui::BoxAnswer MessageBox(ui::WindowHandle owner, std::u16string_view text,
                           std::u16string_view caption, ui::BoxStyle style) override;
  void SetWaitCursor(bool wait) override;
  bool HasClipboardText() override;
  void SetClipboardText(std::u16string_view text) override;
  std::u16string ClipboardText() override;
  int RunMessageLoop() override;
  void PostQuit(int code) override;
  bool IsScreenThread() const override;
  void PostToScreen(std::function<void()> work) override;

  // ui::DialogHost
  void Post(std::function<void()> work) override { PostToScreen(std::move(work)); }
  void DialogChanged(ui::Dialog& dialog) override;
  void DialogEnded(ui::Dialog& dialog) override;
  void ShowPopup(ui::Dialog& dialog, std::shared_ptr<ui::Menu> menu, ui::Point point) override;

 private:
  struct Open {
    std::shared_ptr<ui::Dialog> dialog;
    bool modal = false;
    bool shown = false;
  };

  std::function<void()> TakeWork();
  bool Leaving() const;  // the quit was met
  bool Over() const;     // the message loop has returned
  // Runs `work` on the screen thread and waits for it; false when the loop was over first.
  bool RunOnScreen(std::function<void()> work);
  std::shared_ptr<ui::Dialog> MakeDialog(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                                         ui::DialogHandler& handler, bool modal);
  int RunModal(const ui::DialogTemplate& resource, ui::WindowHandle owner,
               ui::DialogHandler& handler);
  void RunScript(ui::Dialog& dialog);
  ui::BoxAnswer AnswerBox(const ShownBox& box);
  void TakeAway(const std::shared_ptr<ui::Dialog>& dialog);
  void ActivateFront();
  ui::WindowHandle NextHandle() REQUIRES(lock_);

  Journal ownJournal_;
  FailPlan ownFailures_;
  Journal& journal_;
  FailPlan& failures_;
  const std::thread::id screenThread_ = std::this_thread::get_id();

  mutable Mutex lock_;
  Condition changed_;
  std::deque<std::function<void()>> work_ GUARDED_BY(lock_);
  std::optional<int> quit_ GUARDED_BY(lock_);
  bool over_ GUARDED_BY(lock_) = false;
  std::vector<Open> open_ GUARDED_BY(lock_);
  std::deque<std::optional<ui::BoxAnswer>> answers_ GUARDED_BY(lock_);
  ui::BoxAnswer okAnswer_ GUARDED_BY(lock_) = ui::BoxAnswer::kOk;
  ui::BoxAnswer questionAnswer_ GUARDED_BY(lock_) = ui::BoxAnswer::kNo;
  std::function<void(const ShownBox&)> look_ GUARDED_BY(lock_);
  std::map<int, std::deque<DialogScript>> scripts_ GUARDED_BY(lock_);
  std::map<int, DialogScript> standingScripts_ GUARDED_BY(lock_);
  std::weak_ptr<ui::Dialog> popupDialog_ GUARDED_BY(lock_);
  std::shared_ptr<ui::Menu> popupMenu_ GUARDED_BY(lock_);
  ui::Metrics metrics_ GUARDED_BY(lock_);
  ui::Size client_ GUARDED_BY(lock_) = {360, 560};
  std::vector<AnchorWindow> foreign_ GUARDED_BY(lock_);
  std::vector<ShownBox> boxes_ GUARDED_BY(lock_);
  std::vector<ShownPopup> popups_ GUARDED_BY(lock_);
  std::vector<ui::WindowClass> classes_ GUARDED_BY(lock_);
  std::vector<AnchorWindow> anchors_ GUARDED_BY(lock_);
  std::vector<ui::WindowHandle> raised_ GUARDED_BY(lock_);
  std::vector<bool> waitLog_ GUARDED_BY(lock_);
  std::uint64_t repaints_ GUARDED_BY(lock_) = 0;
  std::u16string clipboard_ GUARDED_BY(lock_);
  ui::WindowHandle lastHandle_ GUARDED_BY(lock_) = 0x10000;
};

}  // namespace kelpin::test
