#include "device/qt/post_queue.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTimer>
#include <utility>

namespace kelpin::qt {
namespace {

constexpr qint64 kSlice = 8;  // milliseconds of work before the screen has its turn
const int kWakeEvent = QEvent::registerEventType();

}  // namespace

PostQueue::PostQueue(QObject* parent) : QObject(parent) {}

void PostQueue::Post(std::function<void()> work) {
  const MutexLock guard(lock_);
  if (!closed_) {
    work_.push_back(std::move(work));
    Wake();
  }
}

void PostQueue::Close() {
  std::deque<std::function<void()>> dropped;
  const MutexLock guard(lock_);
  closed_ = true;
  dropped.swap(work_);
}

void PostQueue::Wake() {
  if (!awake_) {
    awake_ = true;
    QCoreApplication::postEvent(this, new QEvent(static_cast<QEvent::Type>(kWakeEvent)));
  }
}

bool PostQueue::event(QEvent* event) {
  if (event->type() != kWakeEvent) {
    return QObject::event(event);
  }
  {
    const MutexLock guard(lock_);
    awake_ = false;
  }
  // An event comes before painting, and work that posts its next step would never let it.
  if (!resting_) {
    Drain();
  }
  return true;
}

void PostQueue::Rest() {
  if (!resting_) {
    resting_ = true;
    QTimer::singleShot(0, this, [this] {
      resting_ = false;
      Drain();
    });
  }
}

void PostQueue::Drain() {
  QElapsedTimer timer;
  timer.start();
  while (true) {
    std::function<void()> work;
    {
      const MutexLock guard(lock_);
      if (work_.empty()) {
        return;
      }
      if (timer.elapsed() >= kSlice) {
        Rest();
        return;
      }
      work = std::move(work_.front());
      work_.pop_front();
      // What is done now may run an event loop of its own, which has to find the rest.
      if (!work_.empty()) {
        Wake();
      }
    }
    work();
  }
}

}  // namespace kelpin::qt
