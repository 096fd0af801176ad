#pragma once

#include <memory>

class QSocketNotifier;
class QTimer;

namespace kelpin::qt {

// While it lives, a request to end (Ctrl+C, the session's end, kill) closes the windows as the user
// would, so that what is under way is finished or asked about. Made before any other thread, so
// that none of them takes the signal; then Listen, when the screen is there.
class EndSignals {
 public:
  EndSignals();
  ~EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  void Listen();  // screen thread

 private:
  int descriptor_ = -1;
  std::unique_ptr<QSocketNotifier> notifier_;
  std::unique_ptr<QTimer> again_;
};

}  // namespace kelpin::qt
