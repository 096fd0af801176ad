#include "device/qt/screen_windows.h"

#include <QApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QInputMethod>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <utility>

#include "device/qt/modality.h"
#include "device/qt/theme.h"
#include "device/qt/window_state.h"

namespace kelpin::qt {
namespace {

constexpr qint64 kFrame = 16;  // milliseconds between two drawings of what changes all the time
constexpr ui::Size kSmallest = {320, 300};

ui::Size SizeOf(const QRect& rect) {
  return {rect.width(), rect.height()};
}

// The window behind one that goes is used next; not every window manager sees to it. Behind a box
// that may be another box: the window that both belong to takes no key before that is answered.
void GiveWayTo(QWidget& window) {
  QWidget* next = window.parentWidget();
  QWidget* const modal = QApplication::activeModalWidget();
  if (modal != nullptr && (next == nullptr || IsBlocked(*next))) {
    next = modal;
  }
  if (next != nullptr && next->isVisible()) {
    next->activateWindow();
  }
}

}  // namespace

class ScreenWindows::Nested {
 public:
  Nested(ScreenWindows& windows, ui::WindowHandle owner) : windows_(windows), owner_(owner) {
    ++windows_.nested_[owner_];
  }
  ~Nested() {
    if (--windows_.nested_[owner_] > 0) {
      return;
    }
    windows_.nested_.erase(owner_);
    const auto found = windows_.entries_.find(owner_);
    if (found != windows_.entries_.end() && found->second.dialog->Ended() && !found->second.held) {
      windows_.Ended(*found->second.dialog);
    }
  }
  Nested(const Nested&) = delete;
  Nested& operator=(const Nested&) = delete;

 private:
  ScreenWindows& windows_;
  const ui::WindowHandle owner_;
};

ScreenWindows::ScreenWindows(ScreenApplication& application, ui::DialogHost& host,
                             std::filesystem::path stateFolder, std::optional<ui::Size> size)
    : application_(application), host_(host), stateFolder_(std::move(stateFolder)), size_(size) {
  connect(qApp, &QGuiApplication::focusWindowChanged, this, &ScreenWindows::KeepKeysInFront,
          Qt::QueuedConnection);
  connect(&application_, &ScreenApplication::LookChanged, this, [this] {
    std::vector<std::shared_ptr<ui::Dialog>> dialogs;
    for (const auto& [handle, entry] : entries_) {
      dialogs.push_back(entry.dialog);
    }
    for (const std::shared_ptr<ui::Dialog>& dialog : dialogs) {
      dialog->SettingsChanged();
      Changed(dialog->Handle());
    }
  });
}

// Of windows that stand one before the other the front one has the keys, wherever else the focus is
// put: to the toolkit two boxes of one window stand before each other, and the window that both
// belong to, which takes no key then, is what it activates.
void ScreenWindows::KeepKeysInFront() {
  QWidget* const front = QApplication::activeModalWidget();
  const QWindow* at = QGuiApplication::focusWindow();
  if (front == nullptr || at == nullptr || at->type() == Qt::Popup || at->type() == Qt::ToolTip) {
    return;
  }
  while (at != nullptr && at != front->windowHandle()) {
    at = at->transientParent();
  }
  if (at == nullptr) {
    front->activateWindow();
  }
}

// Handlers of dialogs that are still open may be gone: none is told.
ScreenWindows::~ScreenWindows() {
  Over();
  for (auto& [handle, entry] : entries_) {
    if (entry.window != nullptr) {
      entry.window->Finish();
    }
  }
  for (auto& [handle, entry] : entries_) {
    delete entry.window;
  }
}

// Dialogs.

DialogWindow* ScreenWindows::Main() const {
  for (const auto& [handle, entry] : entries_) {
    if (entry.window != nullptr && entry.window->parentWidget() == nullptr) {
      return entry.window;
    }
  }
  return nullptr;
}

// What owns nothing that can be seen (the anchor) is owned by the main window.
QWidget* ScreenWindows::WindowOf(ui::WindowHandle owner) const {
  const auto found = entries_.find(owner);
  if (found != entries_.end() && found->second.window != nullptr &&
      !found->second.dialog->Ended()) {
    return found->second.window;
  }
  return Main();
}

void ScreenWindows::PlaceMain(DialogWindow& window) {
  const QRect room = window.screen()->availableGeometry();
  WindowState state = LoadWindowState(stateFolder_, SizeOf(room)).value_or(WindowState{});
  if (size_) {
    state = {*size_, false};
  } else if (room.width() <= WindowState{}.size.width ||
             room.height() <= WindowState{}.size.height) {
    state.maximized = true;  // a phone
  }
  maximize_ = state.maximized;
  const QSize wish(state.size.width, state.size.height);
  window.resize(size_ ? wish : wish.boundedTo(room.size()));
}

void ScreenWindows::RememberSize(const DialogWindow& window) {
  if (size_ || &window != Main()) {
    return;
  }
  const QSize normal = window.isMaximized() ? window.normalGeometry().size() : window.size();
  const WindowState state{{normal.width(), normal.height()}, window.isMaximized()};
  const ui::Size screen = SizeOf(window.screen()->availableGeometry());
  if (LoadWindowState(stateFolder_, screen) != state) {
    SaveWindowState(stateFolder_, screen, state);
  }
}

ui::WindowHandle ScreenWindows::Open(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                                     ui::DialogHandler& handler, bool modal,
                                     std::function<void(int)> done) {
  lastHandle_ += 2;  // the lowest bit stays free
  const ui::WindowHandle handle = lastHandle_;
  const auto dialog = std::make_shared<ui::Dialog>(resource, handle, owner, handler, host_);
  QWidget* parent = WindowOf(owner);
  auto* window = new DialogWindow(dialog, parent);
  entries_[handle] = Entry{dialog, window, std::move(done), nullptr, true};
  window->setMinimumSize(kSmallest.width, kSmallest.height);
  if (parent == nullptr) {
    window->setWindowFlags(Qt::Window);
    PlaceMain(*window);
  } else {
    window->resize(parent->size());
  }
  if (modal) {
    window->setWindowModality(parent == nullptr ? Qt::ApplicationModal : Qt::WindowModal);
  }
  // Most dialogs have soft keys; the size is told again when it is known.
  dialog->Resize({window->width(), window->height() - SoftKeyBarHeight()});
  dialog->Init();
  window->Sync();
  dialog->Resize(window->ClientSize());
  window->Sync();
  return handle;
}

// The dialog is its own from now on.
void ScreenWindows::LetGo(ui::WindowHandle handle) {
  Entry& entry = entries_.at(handle);
  entry.held = false;
  if (entry.dialog->Ended()) {
    Ended(*entry.dialog);
  }
}

void ScreenWindows::Show(Entry& entry) {
  DialogWindow* window = entry.window;
  if (entry.dialog->Ended() || window == nullptr) {
    return;
  }
  if (entry.dialog->InputPanelDown()) {
    QGuiApplication::inputMethod()->hide();
  }
  const QWidget* parent = window->parentWidget();
  const bool maximize = parent == nullptr ? maximize_ : parent->isMaximized();
  if (parent != nullptr && !maximize) {
    // The place within its frame: what the frame adds is not known of every window yet.
    window->setGeometry(QRect(parent->geometry().topLeft(), window->size()));
  }
  if (maximize) {
    window->showMaximized();
  } else {
    window->show();
  }
  window->raise();
  window->activateWindow();
}

std::shared_ptr<ui::Dialog> ScreenWindows::CreateDialog(const ui::DialogTemplate& resource,
                                                        ui::WindowHandle owner,
                                                        ui::DialogHandler& handler) {
  const ui::WindowHandle handle = Open(resource, owner, handler, false, nullptr);
  const std::shared_ptr<ui::Dialog> dialog = entries_.at(handle).dialog;
  LetGo(handle);
  return dialog;
}

void ScreenWindows::ShowDialog(ui::Dialog& dialog) {
  const auto found = entries_.find(dialog.Handle());
  if (found != entries_.end()) {
    Show(found->second);
  }
}

int ScreenWindows::ModalHere(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                             ui::DialogHandler& handler) {
  if (quit_) {
    return ui::kDialogDone;
  }
  const Nested nested(*this, owner);
  const ui::WindowHandle handle = Open(resource, owner, handler, true, nullptr);
  Entry& entry = entries_.at(handle);
  const std::shared_ptr<ui::Dialog> dialog = entry.dialog;
  QEventLoop loop;
  entry.loop = &loop;
  if (!dialog->Ended()) {
    Show(entry);
    RunLoop(loop);
  }
  dialog->End(ui::kDialogDone);  // only counts when the loop was left for another reason
  TakeAway(handle);
  return dialog->Result();
}

int ScreenWindows::DialogBox(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                             ui::DialogHandler& handler) {
  if (application_.IsScreenThread()) {
    return ModalHere(resource, owner, handler);
  }
  const auto request = std::make_shared<WorkerRequest>(ui::kDialogDone);
  return Await(request, [this, request, &resource, owner, &handler] {
    const ui::WindowHandle handle =
        Open(resource, owner, handler, true, [request](int result) { request->Answer(result); });
    Show(entries_.at(handle));
    LetGo(handle);
  });
}

void ScreenWindows::Ended(ui::Dialog& dialog) {
  const auto found = entries_.find(dialog.Handle());
  if (found == entries_.end()) {
    return;
  }
  Entry& entry = found->second;
  if (entry.window != nullptr) {
    RememberSize(*entry.window);
    const bool wasActive = entry.window->isActiveWindow();
    entry.window->Finish();
    if (wasActive) {
      GiveWayTo(*entry.window);
    }
  }
  if (entry.loop != nullptr) {
    entry.loop->quit();
  } else if (!entry.held && nested_.count(dialog.Handle()) == 0) {
    application_.Queue().Post([this, handle = dialog.Handle()] {
      if (nested_.count(handle) == 0) {
        TakeAway(handle);
      }
    });
  }
}

void ScreenWindows::TakeAway(ui::WindowHandle handle) {
  const auto found = entries_.find(handle);
  if (found == entries_.end()) {
    return;
  }
  Entry entry = std::move(found->second);
  entries_.erase(found);
  entry.dialog->Activate(false);
  entry.dialog->Destroyed();
  if (entry.window != nullptr) {
    // Windows it owns and that are still there stay the program's.
    for (auto& [other, open] : entries_) {
      if (open.window != nullptr && open.window->parentWidget() == entry.window) {
        open.window->setParent(nullptr, open.window->windowFlags());
      }
    }
    entry.window->deleteLater();
  }
  if (entry.done) {
    entry.done(entry.dialog->Result());
  }
}

void ScreenWindows::ShowPopup(ui::Dialog& dialog, const std::shared_ptr<ui::Menu>& menu,
                              ui::Point point) {
  const auto found = entries_.find(dialog.Handle());
  if (found != entries_.end() && found->second.window != nullptr) {
    found->second.window->ShowPopup(menu, point);
  }
}

// Boxes.

MessageWindow* ScreenWindows::OpenBox(ui::WindowHandle owner, const std::u16string& text,
                                      const std::u16string& caption, ui::BoxStyle style) {
  QWidget* parent = WindowOf(owner);
  auto* box = new MessageWindow(text, caption, style,
                                parent != nullptr && parent->isVisible() ? parent : nullptr);
  box->setWindowModality(box->parentWidget() == nullptr ? Qt::ApplicationModal : Qt::WindowModal);
  connect(box, &MessageWindow::Answered, box, [box] { GiveWayTo(*box); });
  box->show();
  box->raise();
  box->activateWindow();
  return box;
}

ui::BoxAnswer ScreenWindows::BoxHere(ui::WindowHandle owner, const std::u16string& text,
                                     const std::u16string& caption, ui::BoxStyle style) {
  if (quit_ || silent_) {
    return MessageWindow::SafeAnswer(style);
  }
  const Nested nested(*this, owner);
  const QPointer<MessageWindow> box = OpenBox(owner, text, caption, style);
  QEventLoop loop;
  connect(box, &MessageWindow::Answered, &loop, &QEventLoop::quit);
  connect(box, &QObject::destroyed, &loop, &QEventLoop::quit);
  RunLoop(loop);
  if (box == nullptr) {
    return MessageWindow::SafeAnswer(style);
  }
  box->hide();
  box->deleteLater();
  return box->Answer();
}

ui::BoxAnswer ScreenWindows::MessageBox(ui::WindowHandle owner, const std::u16string& text,
                                        const std::u16string& caption, ui::BoxStyle style) {
  if (application_.IsScreenThread()) {
    return BoxHere(owner, text, caption, style);
  }
  const auto request =
      std::make_shared<WorkerRequest>(static_cast<int>(MessageWindow::SafeAnswer(style)));
  const int answer = Await(request, [this, request, owner, text, caption, style] {
    if (silent_) {
      request->GiveUp();
      return;
    }
    MessageWindow* box = OpenBox(owner, text, caption, style);
    workerBoxes_.emplace_back(box);
    connect(box, &MessageWindow::Answered, this, [request, box] {
      request->Answer(static_cast<int>(box->Answer()));
      box->deleteLater();
    });
    connect(box, &QObject::destroyed, this, [request] { request->GiveUp(); });
  });
  return static_cast<ui::BoxAnswer>(answer);
}

// Workers.

int ScreenWindows::Await(const std::shared_ptr<WorkerRequest>& request,
                         std::function<void()> open) {
  {
    const MutexLock guard(lock_);
    if (over_) {
      request->GiveUp();
    } else {
      requests_.insert(request);
    }
  }
  application_.Queue().Post([this, open = std::move(open)] {
    if (!quit_) {
      open();
    }
  });
  const int answer = request->Wait();
  const MutexLock guard(lock_);
  requests_.erase(request);
  return answer;
}

// The message loop is over, or the screen goes: what workers wait for will not come.
void ScreenWindows::Over() {
  std::set<std::shared_ptr<WorkerRequest>> waiting;
  {
    const MutexLock guard(lock_);
    over_ = true;
    waiting.swap(requests_);
  }
  std::vector<ui::WindowHandle> asked;
  for (const auto& [handle, entry] : entries_) {
    if (entry.done) {
      asked.push_back(handle);
    }
  }
  for (const ui::WindowHandle handle : asked) {
    entries_[handle].dialog->End(ui::kDialogDone);
    TakeAway(handle);
  }
  for (const QPointer<MessageWindow>& box : workerBoxes_) {
    delete box;
  }
  workerBoxes_.clear();
  for (const std::shared_ptr<WorkerRequest>& request : waiting) {
    request->GiveUp();
  }
}

// The loop.

void ScreenWindows::RunLoop(QEventLoop& loop) {
  loops_.push_back(&loop);
  if (!quit_) {
    loop.exec();
  }
  std::erase(loops_, &loop);
}

int ScreenWindows::Run() {
  QEventLoop loop;
  RunLoop(loop);
  for (const auto& [handle, entry] : entries_) {
    if (entry.window != nullptr) {
      RememberSize(*entry.window);
      entry.window->hide();
    }
  }
  Over();
  return quit_.value_or(0);
}

void ScreenWindows::Quit(int code) {
  application_.Queue().Post([this, code] {
    if (!quit_) {
      quit_ = code;
    }
    for (QEventLoop* loop : loops_) {
      loop->quit();
    }
  });
}

// Drawing.

void ScreenWindows::Changed(ui::WindowHandle dialog) {
  const MutexLock guard(lock_);
  dirty_.insert(dialog);
  if (!syncPosted_) {
    syncPosted_ = true;
    application_.Queue().Post([this] { SyncDirty(); });
  }
}

// A worker that changes a dialog without end costs a drawing a frame, no more.
void ScreenWindows::SyncDirty() {
  if (synced_.isValid() && synced_.elapsed() < kFrame) {
    QTimer::singleShot(static_cast<int>(kFrame - synced_.elapsed()), Qt::PreciseTimer, this,
                       [this] { SyncDirty(); });
    return;
  }
  std::set<ui::WindowHandle> dirty;
  {
    const MutexLock guard(lock_);
    dirty.swap(dirty_);
    syncPosted_ = false;
  }
  for (const ui::WindowHandle handle : dirty) {
    const auto found = entries_.find(handle);
    if (found != entries_.end() && found->second.window != nullptr) {
      found->second.window->Sync();
    }
  }
  synced_.start();
}

bool ScreenWindows::Raise() {
  DialogWindow* main = Main();
  if (main == nullptr || !main->isVisible()) {
    return false;
  }
  QWidget* top = main;
  const auto forward = [](QWidget& window) {
    if (window.isMinimized()) {
      window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    }
    window.raise();
  };
  forward(*main);
  for (const auto& [handle, entry] : entries_) {
    if (entry.window != nullptr && entry.window != main && entry.window->isVisible()) {
      forward(*entry.window);
      top = entry.window;
    }
  }
  if (QWidget* modal = QApplication::activeModalWidget()) {
    modal->raise();
    top = modal;
  }
  top->activateWindow();
  return true;
}

std::shared_ptr<ui::Dialog> ScreenWindows::Front() const {
  return entries_.empty() ? nullptr : entries_.rbegin()->second.dialog;
}

QPixmap ScreenWindows::GrabFront() {
  DialogWindow* const window = entries_.empty() ? nullptr : entries_.rbegin()->second.window.data();
  if (window == nullptr) {
    return {};
  }
  window->Sync();
  return window->grab();
}

QPixmap ScreenWindows::Grab() {
  DialogWindow* main = Main();
  if (main == nullptr) {
    return {};
  }
  main->Sync();
  return main->grab();
}

}  // namespace kelpin::qt
