// The kernel's objects between processes, some of them killed at any instruction.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "device/kernel/kernel.h"
#include "device/kernel/shared_folder.h"
#include "tests/device/scratch_folder.h"

extern char** environ;

namespace kelpin::device::kernel {
namespace {

using platform::EventAction;
using platform::WaitResult;
using ::testing::HasSubstr;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSlow = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kSlow = true;
#else
constexpr bool kSlow = false;
#endif
#else
constexpr bool kSlow = false;
#endif

constexpr int kKilledWaiters = kSlow ? 150 : 3000;
constexpr int kKilledOwners = kSlow ? 50 : 200;
constexpr int kKilledAnywhere = kSlow ? 50 : 400;
constexpr std::uint32_t kLong = 20000;
constexpr std::u16string_view kName = u"OEM_MY_RIL_SIMPB_EVENT_OEM";

// A child that runs `body`, killed with the object when it still runs.
class Child {
 public:
  explicit Child(const std::function<int()>& body) : process_(::fork()) {
    if (process_ == 0) ::_exit(body());
  }
  ~Child() { Kill(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void KillWithoutReaping() const { ::kill(process_, SIGKILL); }
  void Kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = -1;
  }
  int ExitCode() {
    int status = -1;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  bool IsZombie() const {
    ::siginfo_t info{};
    return ::waitid(P_PID, static_cast<::id_t>(process_), &info, WEXITED | WNOWAIT) == 0;
  }

 private:
  ::pid_t process_;
};

class KernelProcessTest : public ::testing::Test {
 protected:
  std::unique_ptr<Kernel> Open() const {
    std::string why;
    auto kernel = Kernel::Open(folder_.Path(), why);
    EXPECT_NE(kernel, nullptr) << why;
    return kernel;
  }

  std::shared_ptr<EventMemory> Memory() const {
    std::string why;
    return SharedFolder::Open(folder_.Path(), why)->OpenEvent(kName);
  }

  static void AwaitWaiters(EventMemory& memory, std::size_t count) {
    while (memory.Block().Waiters() < count) {
      std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
  }

  // What a child runs: one wait. 0 when it was freed.
  std::function<int()> Waits(std::uint32_t milliseconds) const {
    return [this, milliseconds] {
      const auto kernel = Open();
      const auto event = kernel->CreateEvent(kName);
      return event != nullptr && event->Wait(milliseconds) == WaitResult::kSignaled ? 0 : 1;
    };
  }

  test::ScratchFolder folder_;
  const std::unique_ptr<Kernel> kernel_ = Open();
};

TEST_F(KernelProcessTest, APulseFreesTheWaiterOfAnotherProcess) {
  const auto event = kernel_->CreateEvent(kName);
  const auto memory = Memory();
  Child first(Waits(kLong));
  AwaitWaiters(*memory, 1);
  Child second(Waits(kLong));
  AwaitWaiters(*memory, 2);
  EXPECT_TRUE(event->EventModify(EventAction::kPulse));
  EXPECT_EQ(first.ExitCode(), 0);
  EXPECT_EQ(memory->Block().Waiters(), 1u);
  EXPECT_TRUE(event->EventModify(EventAction::kPulse));
  EXPECT_EQ(second.ExitCode(), 0);
}

TEST_F(KernelProcessTest, ASignalIsKeptForAProcessThatComesLater) {
  const auto event = kernel_->CreateEvent(kName);
  event->EventModify(EventAction::kSet);
  EXPECT_EQ(Child(Waits(0)).ExitCode(), 0);
  EXPECT_EQ(Child(Waits(0)).ExitCode(), 1);
}

// Every other corpse is still a zombie when the pulse comes.
TEST_F(KernelProcessTest, AKilledWaiterNeitherHangsAPulseNorTakesIt) {
  const auto event = kernel_->CreateEvent(kName);
  const auto memory = Memory();
  for (int round = 0; round < kKilledWaiters; ++round) {
    Child killed(Waits(platform::kInfinite));
    AwaitWaiters(*memory, 1);
    WaitResult result = WaitResult::kTimeout;
    std::thread living([&] { result = event->Wait(kLong); });
    AwaitWaiters(*memory, 2);
    if (round % 2 == 0) {
      killed.KillWithoutReaping();
      EXPECT_TRUE(killed.IsZombie());
    } else {
      killed.Kill();
    }
    EXPECT_TRUE(event->EventModify(EventAction::kPulse));
    living.join();
    ASSERT_EQ(result, WaitResult::kSignaled) << "round " << round;
    ASSERT_EQ(memory->Block().Waiters(), 0u) << "round " << round;
  }
}

TEST_F(KernelProcessTest, AnOwnerKilledInsideTheLockLeavesTheEventUsable) {
  const auto event = kernel_->CreateEvent(kName);
  const auto memory = Memory();
  for (int round = 0; round < kKilledOwners; ++round) {
    int ready[2];
    ASSERT_EQ(::pipe2(ready, O_CLOEXEC), 0);
    Child owner([&] {
      const auto own = Memory();
      if (!own->Block().Lock()) return 1;
      if (::write(ready[1], "x", 1) != 1) return 1;
      while (true) ::pause();
    });
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    ::close(ready[0]);
    ::close(ready[1]);
    // The waiter meets the dead owner's lock, then the pulse meets the waiter.
    owner.KillWithoutReaping();
    WaitResult result = WaitResult::kTimeout;
    std::thread living([&] { result = event->Wait(kLong); });
    AwaitWaiters(*memory, 1);
    owner.Kill();
    EXPECT_TRUE(event->EventModify(EventAction::kPulse));
    living.join();
    ASSERT_EQ(result, WaitResult::kSignaled) << "round " << round;
  }
}

TEST_F(KernelProcessTest, AProcessKilledAnywhereLeavesTheEventUsable) {
  const auto event = kernel_->CreateEvent(kName);
  for (int round = 0; round < kKilledAnywhere; ++round) {
    Child busy([this] {
      const auto kernel = Open();
      const auto own = kernel->CreateEvent(kName);
      while (true) {
        own->EventModify(EventAction::kSet);
        own->EventModify(EventAction::kPulse);
        own->Wait(1);
        own->Wait(0);
      }
      return 0;
    });
    std::this_thread::sleep_for(std::chrono::microseconds(300 + 37 * round % 1500));
    busy.Kill();
    ASSERT_TRUE(event->EventModify(EventAction::kReset));
    ASSERT_EQ(event->Wait(0), WaitResult::kTimeout);
    ASSERT_TRUE(event->EventModify(EventAction::kSet));
    ASSERT_EQ(event->Wait(kLong), WaitResult::kSignaled) << "round " << round;
  }
}

TEST_F(KernelProcessTest, AWaiterFreedByAnOwnerThatDiedBeforeWakingItIsWokenByTheNext) {
  const auto memory = Memory();
  EventTicket ticket;
  ASSERT_EQ(memory->Block().Enter(true, ticket), EventBlock::Entry::kRegistered);
  Child owner([this] {
    const auto own = Memory();
    ::_exit(own->Block().Lock() ? 0 : 1);
    return 1;
  });
  ASSERT_EQ(owner.ExitCode(), 0);
  EventBlock::Outcome outcome = EventBlock::Outcome::kWaiting;
  std::thread sleeper([&] {
    EventBlock::Sleep(ticket, std::nullopt);
    outcome = EventBlock::Conclude(ticket);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  ticket.slot->word.store(ticket.Word(EventSlot::kFreed));
  EXPECT_TRUE(memory->Block().Modify(EventAction::kReset));
  sleeper.join();
  EXPECT_EQ(outcome, EventBlock::Outcome::kSignaled);
}

TEST_F(KernelProcessTest, MoreWaitersThanSlotsAreAllFreed) {
  const auto event = kernel_->CreateEvent(kName);
  constexpr std::size_t kThreads = EventBlock::kSlots + 6;
  std::atomic<std::size_t> freed = 0;
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] { freed += event->Wait(kLong) == WaitResult::kSignaled ? 1 : 0; });
  }
  AwaitWaiters(*Memory(), EventBlock::kSlots);
  while (freed < kThreads) {
    event->EventModify(EventAction::kPulse);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Memory()->Block().Waiters(), 0u);
}

TEST_F(KernelProcessTest, TheSlotsOfTheDeadAreGivenToTheLiving) {
  const auto memory = Memory();
  {
    std::vector<std::unique_ptr<Child>> children;
    for (std::size_t i = 0; i < EventBlock::kSlots; ++i) {
      children.push_back(std::make_unique<Child>(Waits(platform::kInfinite)));
    }
    AwaitWaiters(*memory, EventBlock::kSlots);
  }
  EventTicket ticket;
  EXPECT_EQ(memory->Block().Enter(true, ticket), EventBlock::Entry::kRegistered);
  EXPECT_TRUE(EventBlock::Cancel(ticket));
}

TEST_F(KernelProcessTest, TheMutexOfAKilledProcessIsFreeAtOnce) {
  bool exists = false;
  int ready[2];
  ASSERT_EQ(::pipe2(ready, O_CLOEXEC), 0);
  Child owner([&] {
    bool existed = true;
    const auto kernel = Open();
    const auto mutex = kernel->CreateMutex(kName, false, existed);
    if (mutex == nullptr || existed || ::write(ready[1], "x", 1) != 1) return 1;
    while (true) ::pause();
  });
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  auto mutex = kernel_->CreateMutex(kName, false, exists);
  EXPECT_TRUE(exists);
  owner.Kill();
  mutex = kernel_->CreateMutex(kName, false, exists);
  ASSERT_NE(mutex, nullptr);
  EXPECT_FALSE(exists);
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST_F(KernelProcessTest, AProgramStartedMeanwhileDoesNotKeepTheMutex) {
  bool exists = false;
  auto mutex = kernel_->CreateMutex(kName, false, exists);
  ASSERT_NE(mutex, nullptr);
  char program[] = "sleep";
  char seconds[] = "600";
  char* arguments[] = {program, seconds, nullptr};
  ::pid_t process = 0;
  ASSERT_EQ(::posix_spawnp(&process, program, nullptr, nullptr, arguments, environ), 0);
  // The new program may run before the system has closed what it was not to have.
  for (int tries = 0; tries < 4000; ++tries) {
    mutex.reset();
    mutex = kernel_->CreateMutex(kName, false, exists);
    if (!exists) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_FALSE(exists);
  ::kill(process, SIGKILL);
  ::waitpid(process, nullptr, 0);
}

TEST_F(KernelProcessTest, NamesAreToldApartByEveryCharacterAndStayInTheFolder) {
  std::vector<std::unique_ptr<platform::NamedMutex>> held;
  for (const std::u16string_view name :
       {u"a/b", u"a%002Fb", u"A/B", u"..", u"../x", u"ä", u"{3259ED9D-01DC}"}) {
    bool exists = true;
    held.push_back(kernel_->CreateMutex(name, false, exists));
    EXPECT_NE(held.back(), nullptr);
    EXPECT_FALSE(exists);
  }
  std::set<std::string> files;
  for (const auto& file : std::filesystem::directory_iterator(folder_.Path())) {
    files.insert(file.path().filename().string());
    EXPECT_EQ(file.status().permissions(), std::filesystem::perms(0600));
  }
  EXPECT_EQ(files, (std::set<std::string>{"mutex-a%002Fb", "mutex-a%0025002Fb", "mutex-A%002FB",
                                          "mutex-..", "mutex-..%002Fx", "mutex-%00E4",
                                          "mutex-%007B3259ED9D-01DC%007D"}));
  bool exists = false;
  EXPECT_EQ(kernel_->CreateMutex(std::u16string(300, u'n'), false, exists), nullptr);
  EXPECT_EQ(kernel_->CreateEvent(std::u16string(300, u'n')), nullptr);
}

TEST_F(KernelProcessTest, AnEventHasOneFileOfOneSizeWhoeverUsedIt) {
  const auto files = [this] {
    std::map<std::string, std::uintmax_t> sizes;
    for (const auto& file : std::filesystem::directory_iterator(folder_.Path())) {
      sizes[file.path().filename().string()] = file.file_size();
      EXPECT_EQ(file.status().permissions(), std::filesystem::perms(0600));
    }
    return sizes;
  };
  kernel_->CreateEvent(kName)->EventModify(EventAction::kSet);
  const auto before = files();
  EXPECT_EQ(before.size(), 1u);
  for (int round = 0; round < 50; ++round) {
    const auto event = kernel_->CreateEvent(kName);
    Child killed(Waits(platform::kInfinite));
    AwaitWaiters(*Memory(), 1);
    killed.Kill();
    event->EventModify(EventAction::kPulse);
  }
  EXPECT_EQ(files(), before);
}

TEST_F(KernelProcessTest, WhatAnInterruptedMakerLeftIsMadeAnew) {
  test::WriteText(folder_ / "event-OEM_MY_RIL_SIMPB_EVENT_OEM", std::string(5000, '\xFF'));
  const auto event = kernel_->CreateEvent(kName);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->Wait(0), WaitResult::kTimeout);
  event->EventModify(EventAction::kSet);
  EXPECT_EQ(event->Wait(0), WaitResult::kSignaled);
}

TEST_F(KernelProcessTest, ManyProcessesThatOpenAnEventAtOnceShareIt) {
  const auto event = kernel_->CreateEvent(kName);
  std::vector<std::unique_ptr<Child>> children;
  for (int i = 0; i < 12; ++i) children.push_back(std::make_unique<Child>(Waits(kLong)));
  AwaitWaiters(*Memory(), 12);
  for (int i = 0; i < 12; ++i) event->EventModify(EventAction::kPulse);
  for (const auto& child : children) EXPECT_EQ(child->ExitCode(), 0);
}

TEST_F(KernelProcessTest, AFolderThatOthersMayTouchIsRefused) {
  std::string why;
  EXPECT_EQ(Kernel::Open(folder_ / "missing", why), nullptr);
  EXPECT_THAT(why, HasSubstr("cannot be opened"));
  ASSERT_EQ(::mkdir((folder_ / "open").c_str(), 0700), 0);
  ASSERT_EQ(::chmod((folder_ / "open").c_str(), 0770), 0);
  EXPECT_EQ(Kernel::Open(folder_ / "open", why), nullptr);
  EXPECT_THAT(why, HasSubstr("chmod 700"));
  std::filesystem::create_directory_symlink(folder_.Path(), folder_ / "link");
  EXPECT_EQ(Kernel::Open(folder_ / "link", why), nullptr);
  if (::geteuid() == 0) {
    ASSERT_EQ(::mkdir((folder_ / "other").c_str(), 0700), 0);
    ASSERT_EQ(::chown((folder_ / "other").c_str(), 1, 1), 0);
    EXPECT_EQ(Kernel::Open(folder_ / "other", why), nullptr);
    EXPECT_THAT(why, HasSubstr("another user"));
  }
}

TEST_F(KernelProcessTest, NoThreadIsMadeWhenTheProgramIsEnding) {
  kernel_->EndThreads();
  EXPECT_EQ(kernel_->CreateThread([] {}), 0);
}

}  // namespace
}  // namespace kelpin::device::kernel
