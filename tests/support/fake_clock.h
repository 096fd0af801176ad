#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/mutex.h"
#include "tests/support/call_text.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// Time that passes only when the test, or a Sleep, says so.
class FakeClock : public platform::Clock {
 public:
  explicit FakeClock(Journal& journal) : journal_(journal) {}

  std::uint64_t Milliseconds() override {
    MutexLock lock(lock_);
    return now_;
  }

  // Returns at once, with the time moved on.
  void Sleep(std::uint32_t milliseconds) override {
    journal_.Add(CallText("Sleep", milliseconds));
    Advance(milliseconds);
  }

  void Advance(std::uint64_t milliseconds) {
    std::vector<std::function<void()>> listeners;
    {
      MutexLock lock(lock_);
      now_ += milliseconds;
      listeners = listeners_;
    }
    for (const auto& listener : listeners) listener();
  }

  // `listener` runs on the thread that moved the time, before Advance returns. It must live as
  // long as the clock is moved.
  void OnAdvance(std::function<void()> listener) {
    MutexLock lock(lock_);
    listeners_.push_back(std::move(listener));
  }

 private:
  Journal& journal_;
  Mutex lock_;
  std::uint64_t now_ GUARDED_BY(lock_) = 0;
  std::vector<std::function<void()>> listeners_ GUARDED_BY(lock_);
};

}  // namespace kelpin::test
