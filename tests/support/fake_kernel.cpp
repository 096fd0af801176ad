#include "tests/support/fake_kernel.h"

#include <chrono>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "tests/support/call_text.h"

namespace kelpin::test {
namespace {

using platform::EventAction;
using platform::WaitResult;

constexpr std::uint64_t kNever = ~std::uint64_t{0};

const char* ActionText(EventAction action) {
  switch (action) {
    case EventAction::kPulse:
      return "pulse";
    case EventAction::kReset:
      return "reset";
    case EventAction::kSet:
      return "set";
  }
  return "unknown";
}

}  // namespace

class FakeKernel::System {
 public:
  struct Waiter {
    std::uint64_t deadline = kNever;  // by the fake clock
    bool done = false;
    WaitResult result = WaitResult::kTimeout;
  };

  struct EventState {
    std::u16string name;
    bool set = false;
    std::deque<Waiter*> waiters;
  };

  System(Journal& journal, FakeClock* clock) : journal_(journal), clock_(clock) {}

  void Add(std::string line) { journal_.Add(std::move(line)); }

  std::shared_ptr<EventState> Create(std::u16string_view name) {
    MutexLock lock(lock_);
    std::erase_if(events_, [](const auto& event) { return event.expired(); });
    if (!name.empty()) {
      for (const auto& event : Open()) {
        if (event->name == name) return event;
      }
    }
    auto state = std::make_shared<EventState>();
    state->name = name;
    events_.push_back(state);
    return state;
  }

  bool Modify(EventState& event, EventAction action) {
    MutexLock lock(lock_);
    event.set = false;
    if (action == EventAction::kReset) return true;
    if (!event.waiters.empty()) {
      Finish(*event.waiters.front(), WaitResult::kSignaled);
      event.waiters.pop_front();
    } else if (action == EventAction::kSet) {
      event.set = true;
    }
    return true;
  }

  WaitResult Wait(EventState& event, std::uint32_t milliseconds) {
    MutexLock lock(lock_);
    if (ended_) return WaitResult::kAbandoned;
    if (event.set) {
      event.set = false;
      return WaitResult::kSignaled;
    }
    if (milliseconds == 0) return WaitResult::kTimeout;
    Waiter waiter;
    event.waiters.push_back(&waiter);
    const bool finite = milliseconds != platform::kInfinite;
    const auto realDeadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    if (finite && clock_ != nullptr) waiter.deadline = clock_->Milliseconds() + milliseconds;
    changed_.notify_all();
    while (!waiter.done) {
      if (!finite || clock_ != nullptr) {
        changed_.wait(lock_);
      } else if (changed_.wait_until(lock_, realDeadline) == std::cv_status::timeout &&
                 !waiter.done) {
        break;
      }
    }
    std::erase(event.waiters, &waiter);
    changed_.notify_all();
    return waiter.result;
  }

  void Expire() {
    MutexLock lock(lock_);
    const std::uint64_t now = clock_->Milliseconds();
    for (const auto& event : Open()) {
      for (Waiter* waiter : event->waiters) {
        if (waiter->deadline <= now) Finish(*waiter, WaitResult::kTimeout);
      }
      std::erase_if(event->waiters, [](const Waiter* waiter) { return waiter->done; });
    }
  }

  void End() {
    MutexLock lock(lock_);
    ended_ = true;
    for (const auto& event : Open()) {
      for (Waiter* waiter : event->waiters) Finish(*waiter, WaitResult::kAbandoned);
      event->waiters.clear();
    }
  }

  std::size_t Waiters(std::u16string_view name) {
    MutexLock lock(lock_);
    return WaitersLocked(name);
  }

  void AwaitWaiters(std::u16string_view name, std::size_t count) {
    MutexLock lock(lock_);
    while (WaitersLocked(name) < count) changed_.wait(lock_);
  }

  bool Exists(std::u16string_view name) {
    MutexLock lock(lock_);
    for (const auto& event : Open()) {
      if (event->name == name) return true;
    }
    return false;
  }

  bool IsSet(std::u16string_view name) {
    MutexLock lock(lock_);
    for (const auto& event : Open()) {
      if (event->name == name && event->set) return true;
    }
    return false;
  }

  std::size_t OpenEvents() {
    MutexLock lock(lock_);
    return openEvents_;
  }

  void CountOpen(int change) {
    MutexLock lock(lock_);
    openEvents_ += static_cast<std::size_t>(change);
  }

  // True when the name was free.
  bool TakeMutex(const std::u16string& name) {
    MutexLock lock(lock_);
    return mutexes_.insert(name).second;
  }

  void DropMutex(const std::u16string& name) {
    MutexLock lock(lock_);
    mutexes_.erase(name);
  }

 private:
  std::vector<std::shared_ptr<EventState>> Open() REQUIRES(lock_) {
    std::vector<std::shared_ptr<EventState>> open;
    for (const auto& event : events_) {
      if (auto state = event.lock()) open.push_back(std::move(state));
    }
    return open;
  }

  void Finish(Waiter& waiter, WaitResult result) REQUIRES(lock_) {
    waiter.done = true;
    waiter.result = result;
    changed_.notify_all();
  }

  std::size_t WaitersLocked(std::u16string_view name) REQUIRES(lock_) {
    std::size_t count = 0;
    for (const auto& event : Open()) {
      if (event->name == name) count += event->waiters.size();
    }
    return count;
  }

  Journal& journal_;
  FakeClock* const clock_;
  Mutex lock_;
  Condition changed_;
  bool ended_ GUARDED_BY(lock_) = false;
  std::vector<std::weak_ptr<EventState>> events_ GUARDED_BY(lock_);
  std::set<std::u16string> mutexes_ GUARDED_BY(lock_);
  std::size_t openEvents_ GUARDED_BY(lock_) = 0;
};

namespace {

class FakeEvent : public platform::Event {
 public:
  FakeEvent(std::shared_ptr<FakeKernel::System> system, std::u16string_view name)
      : system_(std::move(system)), state_(system_->Create(name)) {
    system_->CountOpen(1);
  }
  ~FakeEvent() override {
    system_->Add(CallText("CloseEvent", state_->name));
    system_->CountOpen(-1);
  }

  bool EventModify(EventAction action) override {
    system_->Add(CallText("EventModify", state_->name, ActionText(action)));
    return system_->Modify(*state_, action);
  }

  WaitResult Wait(std::uint32_t milliseconds) override {
    return system_->Wait(*state_, milliseconds);
  }

 private:
  const std::shared_ptr<FakeKernel::System> system_;
  const std::shared_ptr<FakeKernel::System::EventState> state_;
};

class FakeNamedMutex : public platform::NamedMutex {
 public:
  // `first`: this object took the name, and gives it back.
  FakeNamedMutex(std::shared_ptr<FakeKernel::System> system, std::u16string_view name, bool first)
      : system_(std::move(system)), name_(name), first_(first) {}
  ~FakeNamedMutex() override {
    system_->Add(CallText("CloseMutex", name_));
    if (first_) system_->DropMutex(name_);
  }

  void Release() override { system_->Add(CallText("ReleaseMutex", name_)); }

 private:
  const std::shared_ptr<FakeKernel::System> system_;
  const std::u16string name_;
  const bool first_;
};

}  // namespace

FakeKernel::FakeKernel(Journal& journal, FailPlan& failures, FakeClock* clock)
    : journal_(journal), failures_(failures), system_(std::make_shared<System>(journal, clock)) {
  if (clock != nullptr) {
    clock->OnAdvance([system = std::weak_ptr<System>(system_)] {
      if (const auto alive = system.lock()) alive->Expire();
    });
  }
}

FakeKernel::~FakeKernel() {
  EndThreads();
}

std::unique_ptr<platform::NamedMutex> FakeKernel::CreateMutex(std::u16string_view name,
                                                              bool initiallyOwned,
                                                              bool& alreadyExists) {
  journal_.Add(CallText("CreateMutex", name, initiallyOwned ? "owned" : "not owned"));
  if (failures_.Fails("CreateMutex")) return nullptr;
  alreadyExists = !system_->TakeMutex(std::u16string(name));
  return std::make_unique<FakeNamedMutex>(system_, name, !alreadyExists);
}

std::unique_ptr<platform::Event> FakeKernel::CreateEvent(std::u16string_view name) {
  journal_.Add(CallText("CreateEvent", name));
  if (failures_.Fails("CreateEvent")) return nullptr;
  return std::make_unique<FakeEvent>(system_, name);
}

int FakeKernel::CreateThread(std::function<void()> body) {
  journal_.Add("CreateThread()");
  if (failures_.Fails("CreateThread")) return 0;
  MutexLock lock(threadsLock_);
  if (threadMode_ == ThreadMode::kHold) {
    held_.push_back(std::move(body));
  } else {
    threads_.emplace_back(std::move(body));
  }
  return 1;
}

void FakeKernel::EndThreads() {
  system_->End();
  for (;;) {
    std::vector<std::thread> ending;
    {
      MutexLock lock(threadsLock_);
      ending.swap(threads_);
    }
    if (ending.empty()) return;
    for (std::thread& thread : ending) thread.join();
  }
}

void FakeKernel::SetMutexExists(std::u16string_view name, bool exists) {
  if (exists) {
    system_->TakeMutex(std::u16string(name));
  } else {
    system_->DropMutex(std::u16string(name));
  }
}

void FakeKernel::SetThreadMode(ThreadMode mode) {
  MutexLock lock(threadsLock_);
  threadMode_ = mode;
}

std::size_t FakeKernel::RunHeldThreads() {
  std::vector<std::function<void()>> bodies;
  {
    MutexLock lock(threadsLock_);
    bodies.swap(held_);
  }
  for (const auto& body : bodies) body();
  return bodies.size();
}

std::size_t FakeKernel::Waiters(std::u16string_view name) const {
  return system_->Waiters(name);
}

void FakeKernel::AwaitWaiters(std::u16string_view name, std::size_t count) const {
  system_->AwaitWaiters(name, count);
}

bool FakeKernel::EventExists(std::u16string_view name) const {
  return system_->Exists(name);
}

bool FakeKernel::EventIsSet(std::u16string_view name) const {
  return system_->IsSet(name);
}

std::size_t FakeKernel::OpenEvents() const {
  return system_->OpenEvents();
}

}  // namespace kelpin::test
