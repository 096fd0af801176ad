#pragma once

#include <optional>

#include "platform/mutex.h"

namespace kelpin::qt {

// What a worker waits for while the screen thread asks the user.
class WorkerRequest {
 public:
  explicit WorkerRequest(int whenOver) : whenOver_(whenOver) {}

  int Wait() {
    const MutexLock guard(lock_);
    while (!answer_) {
      answered_.wait(lock_);
    }
    return *answer_;
  }

  // The first answer counts.
  void Answer(int answer) {
    const MutexLock guard(lock_);
    if (!answer_) {
      answer_ = answer;
    }
    answered_.notify_all();
  }
  void GiveUp() { Answer(whenOver_); }

 private:
  const int whenOver_;
  Mutex lock_;
  Condition answered_;
  std::optional<int> answer_ GUARDED_BY(lock_);
};

}  // namespace kelpin::qt
