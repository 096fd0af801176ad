#include "device/qt/end_signals.h"

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <QApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <csignal>

namespace kelpin::qt {
namespace {

// Behind a box that is closed another may come up; nobody is there to answer it.
constexpr std::chrono::milliseconds kAgain(100);

}  // namespace

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
  notifier_.reset();
  again_.reset();
  if (descriptor_ >= 0) {
    close(descriptor_);
  }
}

void EndSignals::Listen() {
  if (descriptor_ < 0) {
    return;
  }
  notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] {
    signalfd_siginfo info{};
    while (read(descriptor_, &info, sizeof info) == sizeof info) {
    }
    QApplication::closeAllWindows();
    again_->start();
  });
  again_ = std::make_unique<QTimer>();
  again_->setInterval(kAgain);
  QObject::connect(again_.get(), &QTimer::timeout, again_.get(), &QApplication::closeAllWindows);
}

}  // namespace kelpin::qt
