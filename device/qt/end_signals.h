#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "platform/mutex.h"

class QSocketNotifier;
class QTimer;

namespace kelpin::qt {

// While it lives, a request to end (Ctrl+C, the session's end, kill) closes the windows, again and
// again until none is left: what is under way ends as it sees fit. Made before any other thread, so
// that none of them takes the signal; then Listen, when the screen is there.
class EndSignals {
 public:
  EndSignals();
  ~EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  void Listen();  // screen thread
  // Called at each request, first of all; for a signal on a thread of its own, whatever the screen
  // thread waits for. Empty:
  // not any more, and no call is under way when this returns.
  void OnRequest(std::function<void()> told);

 private:
  class SessionEnd;

  void Watch();
  void Tell();
  bool TakeRequests() const;
  void CloseWindows();

  int descriptor_ = -1;
  std::unique_ptr<QSocketNotifier> notifier_;
  std::unique_ptr<QTimer> again_;
  std::unique_ptr<SessionEnd> session_;
  Mutex lock_;
  std::function<void()> told_ GUARDED_BY(lock_);
  int stop_ = -1;
  std::thread watcher_;
};

}  // namespace kelpin::qt
