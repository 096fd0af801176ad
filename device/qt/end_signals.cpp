#include "device/qt/end_signals.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <QApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <iterator>
#include <utility>

namespace kelpin::qt {
namespace {

// Behind a box that is closed another may come up; nobody is there to answer it.
constexpr std::chrono::milliseconds kAgain(100);

}  // namespace

// A session manager that is done with its programs says so to the toolkit, which would ask the
// windows once and stay when one does not close.
class EndSignals::SessionEnd : public QObject {
 public:
  explicit SessionEnd(EndSignals& ends) : ends_(ends) { qApp->installEventFilter(this); }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched != qApp || event->type() != QEvent::Quit) {
      return false;
    }
    ends_.Tell();
    ends_.CloseWindows();
    return true;
  }

 private:
  EndSignals& ends_;
};

EndSignals::EndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    sigaddset(&signals, number);
  }
  if (pthread_sigmask(SIG_BLOCK, &signals, nullptr) == 0) {
    descriptor_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  }
  if (descriptor_ < 0) {
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  }
}

EndSignals::~EndSignals() {
  if (watcher_.joinable()) {
    const std::uint64_t one = 1;
    static_cast<void>(write(stop_, &one, sizeof one) == sizeof one);
    watcher_.join();
  }
  session_.reset();
  notifier_.reset();
  again_.reset();
  for (const int descriptor : {descriptor_, stop_}) {
    if (descriptor >= 0) {
      close(descriptor);
    }
  }
}

void EndSignals::OnRequest(std::function<void()> told) {
  const MutexLock lock(lock_);
  told_ = std::move(told);
}

void EndSignals::Tell() {
  const MutexLock lock(lock_);
  if (told_) {
    told_();
  }
}

bool EndSignals::TakeRequests() const {
  bool taken = false;
  signalfd_siginfo info{};
  while (read(descriptor_, &info, sizeof info) == sizeof info) {
    taken = true;
  }
  return taken;
}

void EndSignals::CloseWindows() {
  QApplication::closeAllWindows();
  again_->start();
}

// The screen thread may be waiting for the card when the request comes.
void EndSignals::Watch() {
  pollfd events[] = {{descriptor_, POLLIN, 0}, {stop_, POLLIN, 0}};
  for (;;) {
    if (poll(events, std::size(events), -1) < 0) {
      continue;
    }
    if (events[1].revents != 0) {
      return;
    }
    if (TakeRequests()) {
      Tell();
      QMetaObject::invokeMethod(
          again_.get(), [this] { CloseWindows(); }, Qt::QueuedConnection);
    }
  }
}

void EndSignals::Listen() {
  again_ = std::make_unique<QTimer>();
  again_->setInterval(kAgain);
  QObject::connect(again_.get(), &QTimer::timeout, again_.get(), &QApplication::closeAllWindows);
  session_ = std::make_unique<SessionEnd>(*this);
  if (descriptor_ < 0) {
    return;
  }
  notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] {
    // The watcher may have been quicker.
    if (TakeRequests()) {
      Tell();
      CloseWindows();
    }
  });
  stop_ = eventfd(0, EFD_CLOEXEC);
  if (stop_ >= 0) {
    watcher_ = std::thread([this] { Watch(); });
  }
}

}  // namespace kelpin::qt
