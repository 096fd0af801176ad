#include "device/kernel/kernel.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <system_error>
#include <utility>

namespace kelpin::device::kernel {
namespace {

using platform::EventAction;
using platform::WaitResult;

// How often a wait looks again when every slot has a waiter.
constexpr std::chrono::milliseconds kFullPause(10);
constexpr std::uint64_t kMillisecond = 1'000'000;  // nanoseconds

class SharedEvent final : public platform::Event {
 public:
  SharedEvent(std::shared_ptr<EventMemory> memory, std::shared_ptr<WaitGate> gate)
      : memory_(std::move(memory)), gate_(std::move(gate)) {}

  bool EventModify(EventAction action) override { return memory_->Block().Modify(action); }

  WaitResult Wait(std::uint32_t milliseconds) override {
    std::optional<std::uint64_t> deadline;
    if (milliseconds != platform::kInfinite) {
      deadline = EventBlock::Now() + milliseconds * kMillisecond;
    }
    while (!gate_->IsClosed()) {
      EventTicket ticket;
      switch (memory_->Block().Enter(milliseconds != 0, ticket)) {
        case EventBlock::Entry::kSignaled:
          return WaitResult::kSignaled;
        case EventBlock::Entry::kNone:
          return WaitResult::kTimeout;
        case EventBlock::Entry::kRegistered:
          if (const auto result = AwaitTicket(ticket, deadline)) return *result;
          break;
        case EventBlock::Entry::kFull:
        case EventBlock::Entry::kBroken:
          if (deadline && EventBlock::Now() >= *deadline) return WaitResult::kTimeout;
          std::this_thread::sleep_for(kFullPause);
          break;
      }
    }
    return WaitResult::kAbandoned;
  }

 private:
  // Nothing when the ticket was dropped, or the program is ending.
  std::optional<WaitResult> AwaitTicket(const EventTicket& ticket,
                                        std::optional<std::uint64_t> deadline) {
    if (!gate_->Enter(ticket)) {
      if (EventBlock::Cancel(ticket)) return std::nullopt;
    } else {
      EventBlock::Sleep(ticket, deadline);
      gate_->Leave(ticket);
      if (EventBlock::Cancel(ticket)) return WaitResult::kTimeout;
    }
    switch (EventBlock::Conclude(ticket)) {
      case EventBlock::Outcome::kSignaled:
        return WaitResult::kSignaled;
      case EventBlock::Outcome::kAbandoned:
        return WaitResult::kAbandoned;
      case EventBlock::Outcome::kWaiting:
      case EventBlock::Outcome::kDropped:
        break;
    }
    return std::nullopt;
  }

  const std::shared_ptr<EventMemory> memory_;
  const std::shared_ptr<WaitGate> gate_;
};

class LockedFile final : public platform::NamedMutex {
 public:
  explicit LockedFile(File file) : file_(std::move(file)) {}

  // Nobody waits for it, so there is no owner to note: the name is held while this object lives.
  void Release() override {}

 private:
  const File file_;
};

}  // namespace

std::unique_ptr<Kernel> Kernel::Open(const std::filesystem::path& runtimeFolder, std::string& why) {
  std::unique_ptr<SharedFolder> folder = SharedFolder::Open(runtimeFolder, why);
  if (folder == nullptr) return nullptr;
  return std::unique_ptr<Kernel>(new Kernel(std::move(folder)));
}

Kernel::~Kernel() {
  EndThreads();
}

std::unique_ptr<platform::NamedMutex> Kernel::CreateMutex(std::u16string_view name, bool,
                                                          bool& alreadyExists) {
  File file = folder_->OpenMutex(name, alreadyExists);
  if (!file.IsOpen()) return nullptr;
  return std::make_unique<LockedFile>(std::move(file));
}

std::unique_ptr<platform::Event> Kernel::CreateEvent(std::u16string_view name) {
  std::shared_ptr<EventMemory> memory =
      name.empty() ? EventMemory::MakeOwn() : folder_->OpenEvent(name);
  if (memory == nullptr) return nullptr;
  return std::make_unique<SharedEvent>(std::move(memory), gate_);
}

bool Kernel::IsName(std::u16string_view name) {
  return !name.empty() && SharedFolder::IsName(name);
}

bool Kernel::Pulse(std::u16string_view name, bool& freed) {
  const std::shared_ptr<EventMemory> memory = folder_->OpenEvent(name);
  return memory != nullptr && memory->Block().Modify(EventAction::kPulse, &freed);
}

int Kernel::CreateThread(std::function<void()> body) {
  MutexLock lock(lock_);
  // Under the lock, so that EndThreads sees every thread that was made before the gate closed.
  if (gate_->IsClosed()) return 0;
  for (auto worker = workers_.begin(); worker != workers_.end();) {
    if (!worker->ended) {
      ++worker;
      continue;
    }
    worker->thread.join();
    worker = workers_.erase(worker);
  }
  Worker& worker = workers_.emplace_back();
  try {
    worker.thread = std::thread([&worker, run = std::move(body)]() mutable {
      run();
      run = nullptr;
      worker.ended = true;
    });
  } catch (const std::system_error&) {
    workers_.pop_back();
    return 0;
  }
  return 1;
}

void Kernel::EndThreads() {
  gate_->Close();
  std::list<Worker> ending;
  {
    MutexLock lock(lock_);
    ending.splice(ending.begin(), workers_);
  }
  for (Worker& worker : ending) worker.thread.join();
}

}  // namespace kelpin::device::kernel
