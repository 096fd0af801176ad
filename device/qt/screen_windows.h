#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "device/qt/dialog_window.h"
#include "device/qt/message_window.h"
#include "device/qt/screen_application.h"
#include "device/qt/worker_request.h"
#include "ui/screen.h"

QT_BEGIN_NAMESPACE
class QEventLoop;
QT_END_NAMESPACE

namespace kelpin::qt {

// Dialogs and message boxes on the screen, modal and modeless, and the loop that serves them.
//
// One asked for on the screen thread runs an event loop of its own. One asked for by a worker does
// not: it stands beside the others until it is answered, and the worker waits alone.
class ScreenWindows : public QObject {
  Q_OBJECT

 public:
  ScreenWindows(ScreenApplication& application, ui::DialogHost& host,
                std::filesystem::path stateFolder, std::optional<ui::Size> size);
  ~ScreenWindows() override;

  std::shared_ptr<ui::Dialog> CreateDialog(const ui::DialogTemplate& resource,
                                           ui::WindowHandle owner, ui::DialogHandler& handler);
  void ShowDialog(ui::Dialog& dialog);
  int DialogBox(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                ui::DialogHandler& handler);
  ui::BoxAnswer MessageBox(ui::WindowHandle owner, const std::u16string& text,
                           const std::u16string& caption, ui::BoxStyle style);
  // Any thread: no box is shown from now on, each is answered as Escape would.
  void StopAsking() { silent_ = true; }

  void Changed(ui::WindowHandle dialog);  // any thread
  void Ended(ui::Dialog& dialog);
  void ShowPopup(ui::Dialog& dialog, const std::shared_ptr<ui::Menu>& menu, ui::Point point);

  // Brings the main window forward, with what it owns. False when there is none.
  bool Raise();
  bool Has(ui::WindowHandle dialog) const { return entries_.count(dialog) != 0; }
  QPixmap Grab();
  // The dialog that was opened last; null when none is open.
  std::shared_ptr<ui::Dialog> Front() const;
  QPixmap GrabFront();

  int Run();
  void Quit(int code);  // any thread

 private:
  struct Entry {
    std::shared_ptr<ui::Dialog> dialog;
    QPointer<DialogWindow> window;
    std::function<void(int result)> done;
    QEventLoop* loop = nullptr;
    bool held = false;  // by who opens it or runs its loop, and takes it away
  };
  struct Box {
    QPointer<MessageWindow> window;
    std::function<void(ui::BoxAnswer)> done;
  };
  // While an event loop runs inside a handler of `owner`, that dialog is not destroyed.
  class Nested;

  ui::WindowHandle Open(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                        ui::DialogHandler& handler, bool modal, std::function<void(int)> done);
  void LetGo(ui::WindowHandle handle);
  void Show(Entry& entry);
  void TakeAway(ui::WindowHandle handle);
  int ModalHere(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                ui::DialogHandler& handler);
  MessageWindow* OpenBox(ui::WindowHandle owner, const std::u16string& text,
                         const std::u16string& caption, ui::BoxStyle style);
  ui::BoxAnswer BoxHere(ui::WindowHandle owner, const std::u16string& text,
                        const std::u16string& caption, ui::BoxStyle style);
  void RunLoop(QEventLoop& loop);
  int Await(const std::shared_ptr<WorkerRequest>& request, std::function<void()> open);
  void Over();

  void KeepKeysInFront();
  DialogWindow* Main() const;
  QWidget* WindowOf(ui::WindowHandle owner) const;
  void PlaceMain(DialogWindow& window);
  void RememberSize(const DialogWindow& window);
  void SyncDirty();

  ScreenApplication& application_;
  ui::DialogHost& host_;
  const std::filesystem::path stateFolder_;
  const std::optional<ui::Size> size_;

  std::map<ui::WindowHandle, Entry> entries_;
  std::vector<QPointer<MessageWindow>> workerBoxes_;
  std::vector<QEventLoop*> loops_;
  std::map<ui::WindowHandle, int> nested_;
  ui::WindowHandle lastHandle_ = 0x10000;
  bool maximize_ = false;
  std::optional<int> quit_;
  std::atomic<bool> silent_ = false;
  QElapsedTimer synced_;

  Mutex lock_;
  std::set<ui::WindowHandle> dirty_ GUARDED_BY(lock_);
  bool syncPosted_ GUARDED_BY(lock_) = false;
  std::set<std::shared_ptr<WorkerRequest>> requests_ GUARDED_BY(lock_);
  bool over_ GUARDED_BY(lock_) = false;
};

}  // namespace kelpin::qt
