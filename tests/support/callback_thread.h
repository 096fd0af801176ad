#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <thread>

#include "platform/mutex.h"

namespace kelpin::test {

// The thread on which a fake calls the program back: one callback after the other, in the order
// they were posted. Each belongs to an owner (a session's handle) and goes with it.
class CallbackThread {
 public:
  CallbackThread() = default;
  // Runs what was posted, then ends.
  ~CallbackThread();
  CallbackThread(const CallbackThread&) = delete;
  CallbackThread& operator=(const CallbackThread&) = delete;

  void Post(std::uint32_t owner, std::function<void()> callback);
  // Forgets the owner's callbacks that have not started, and returns when none of them runs. Not
  // from a callback.
  void Drop(std::uint32_t owner);
  // Returns when everything posted so far has run. Not from a callback.
  void Drain();

 private:
  struct Item {
    std::uint32_t owner = 0;
    std::function<void()> callback;
  };

  void Run();

  Mutex lock_;
  Condition changed_;
  std::deque<Item> queue_ GUARDED_BY(lock_);
  bool running_ GUARDED_BY(lock_) = false;
  std::uint32_t runningOwner_ GUARDED_BY(lock_) = 0;
  std::uint64_t posted_ GUARDED_BY(lock_) = 0;
  std::uint64_t finished_ GUARDED_BY(lock_) = 0;  // run or dropped
  bool ending_ GUARDED_BY(lock_) = false;
  std::thread thread_;
};

}  // namespace kelpin::test
