#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/kernel_objects.h"
#include "platform/mutex.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_clock.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// Named mutexes and events of one system that holds one process. With a clock, waits end by the
// clock's time; without one, by real time.
class FakeKernel : public platform::KernelObjects {
 public:
  enum class ThreadMode {
    kRun,   // a thread of its own
    kHold,  // kept until RunHeldThreads
  };

  FakeKernel(Journal& journal, FailPlan& failures, FakeClock* clock = nullptr);
  // Ends the threads first.
  ~FakeKernel() override;

  std::unique_ptr<platform::NamedMutex> CreateMutex(std::u16string_view name, bool initiallyOwned,
                                                    bool& alreadyExists) override;
  std::unique_ptr<platform::Event> CreateEvent(std::u16string_view name) override;
  int CreateThread(std::function<void()> body) override;
  void EndThreads() override;

  // Another process holds the mutex of this name (true), or let it go.
  void SetMutexExists(std::u16string_view name, bool exists);

  void SetThreadMode(ThreadMode mode);
  // Runs the bodies that kHold kept, in order, on the calling thread; how many there were.
  std::size_t RunHeldThreads();

  // Waits under way on the event of this name; the events without a name count together.
  std::size_t Waiters(std::u16string_view name) const;
  // Returns when there are at least `count` of them.
  void AwaitWaiters(std::u16string_view name, std::size_t count) const;
  // Whether the event of this name is open somewhere, and whether it is set.
  bool EventExists(std::u16string_view name) const;
  bool EventIsSet(std::u16string_view name) const;
  std::size_t OpenEvents() const;

  // Shared with the events, which may outlive the kernel.
  class System;

 private:
  Journal& journal_;
  FailPlan& failures_;
  const std::shared_ptr<System> system_;
  Mutex threadsLock_;
  ThreadMode threadMode_ GUARDED_BY(threadsLock_) = ThreadMode::kRun;
  std::vector<std::function<void()>> held_ GUARDED_BY(threadsLock_);
  std::vector<std::thread> threads_ GUARDED_BY(threadsLock_);
};

}  // namespace kelpin::test
