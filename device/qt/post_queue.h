#pragma once

#include <QObject>
#include <deque>
#include <functional>

#include "platform/mutex.h"

namespace kelpin::qt {

// Work for the screen thread, done in order. Long runs of it leave room for painting and input
// between.
class PostQueue : public QObject {
  Q_OBJECT

 public:
  explicit PostQueue(QObject* parent = nullptr);

  void Post(std::function<void()> work);  // any thread
  // Drops what waits and takes nothing more.
  void Close();

 protected:
  bool event(QEvent* event) override;

 private:
  void Drain();
  // Goes on after input and painting.
  void Rest();
  void Wake() REQUIRES(lock_);

  Mutex lock_;
  std::deque<std::function<void()>> work_ GUARDED_BY(lock_);
  bool awake_ GUARDED_BY(lock_) = false;  // an event is on its way
  bool closed_ GUARDED_BY(lock_) = false;
  bool resting_ = false;  // the screen thread alone
};

}  // namespace kelpin::qt
