#include "device/pcsc/deadline_thread.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <vector>

namespace kelpin::device::pcsc {
namespace {

using namespace std::chrono_literals;

constexpr auto kLong = 20s;
constexpr auto kShort = 10ms;

DeadlineThread::Duration NoHurry() {
  return 3600s;
}

// A job that ends when it is let go.
struct Gate {
  std::promise<void> opened;
  std::shared_future<void> open = opened.get_future().share();
  DeadlineThread::Job Job() {
    return [gate = open] { gate.wait(); };
  }
};

TEST(DeadlineThread, JobsAreDoneInTheirOrder) {
  std::vector<int> done;
  DeadlineThread thread(NoHurry, [] {});
  thread.Post([&done] { done.push_back(1); });
  EXPECT_TRUE(thread.Run([&done] { done.push_back(2); }, kLong));
  EXPECT_EQ(done, (std::vector<int>{1, 2}));
}

TEST(DeadlineThread, AJobThatTakesTooLongIsGivenUp) {
  Gate gate;
  DeadlineThread thread(NoHurry, [] {});
  EXPECT_FALSE(thread.Run(gate.Job(), kShort));
  EXPECT_TRUE(thread.Overdue());
  gate.opened.set_value();
}

TEST(DeadlineThread, WhileOneIsOverdueTheNextIsDroppedAtOnce) {
  Gate gate;
  auto ran = std::make_shared<bool>(false);
  DeadlineThread thread(NoHurry, [] {});
  ASSERT_FALSE(thread.Run(gate.Job(), kShort));
  // With this patience the test would not end if it waited.
  EXPECT_FALSE(thread.Run([ran] { *ran = true; }, 3600s));
  gate.opened.set_value();
  while (thread.Overdue()) std::this_thread::yield();
  EXPECT_TRUE(thread.Run([] {}, kLong));
  EXPECT_FALSE(*ran);
}

TEST(DeadlineThread, WhenTheOverdueJobHasEndedTheNextIsDone) {
  Gate gate;
  DeadlineThread thread(NoHurry, [] {});
  ASSERT_FALSE(thread.Run(gate.Job(), kShort));
  gate.opened.set_value();
  while (thread.Overdue()) std::this_thread::yield();
  bool ran = false;
  EXPECT_TRUE(thread.Run([&ran] { ran = true; }, kLong));
  EXPECT_TRUE(ran);
}

TEST(DeadlineThread, IdleIsCalledWhenItWantsToBe) {
  std::promise<void> thrice;
  auto calls = std::make_shared<int>(0);
  {
    DeadlineThread thread(
        [&thrice, calls] {
          if (++*calls == 3) thrice.set_value();
          return *calls < 3 ? DeadlineThread::Duration(1) : NoHurry();
        },
        [] {});
    EXPECT_EQ(thrice.get_future().wait_for(kLong), std::future_status::ready);
  }
}

TEST(DeadlineThread, TheLastJobRunsOnTheThreadAfterAllOthers) {
  auto done = std::make_shared<std::vector<int>>();
  {
    DeadlineThread thread(NoHurry, [done] { done->push_back(9); });
    thread.Post([done] { done->push_back(1); });
    thread.Post([done] { done->push_back(2); });
  }
  EXPECT_EQ(*done, (std::vector<int>{1, 2, 9}));
}

TEST(DeadlineThread, AJobThatNeverEndsDoesNotKeepItsOwner) {
  Gate gate;
  std::promise<void> last;
  {
    DeadlineThread thread(NoHurry, [&last] { last.set_value(); });
    ASSERT_FALSE(thread.Run(gate.Job(), kShort));
  }
  gate.opened.set_value();
  EXPECT_EQ(last.get_future().wait_for(kLong), std::future_status::ready);
}

}  // namespace
}  // namespace kelpin::device::pcsc
