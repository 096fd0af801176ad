#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/kernel_objects.h"

namespace kelpin::contract {

// What every kernel does. `Maker` is default-constructed for each test and has
//   platform::KernelObjects& Port();
//   platform::KernelObjects& Other();      as another process has it, or the same one
//   void AwaitWaiters(name, count);        returns when that many threads wait on the named event
template <class Maker>
class KernelContract : public ::testing::Test {
 protected:
  using Action = platform::EventAction;
  static constexpr auto kSignaled = platform::WaitResult::kSignaled;
  static constexpr auto kTimeout = platform::WaitResult::kTimeout;
  static constexpr auto kAbandoned = platform::WaitResult::kAbandoned;
  static constexpr std::uint32_t kLong = 20000;  // a wait that fails when it runs out
  static constexpr std::u16string_view kName = u"OEM_MY_SIM_STORED_EVENT_OEM";

  // One wait on a thread of its own.
  class Waiter {
   public:
    Waiter(platform::Event& event, std::uint32_t milliseconds)
        : thread_([this, &event, milliseconds] {
            result_ = event.Wait(milliseconds);
            done_ = true;
          }) {}
    ~Waiter() {
      if (thread_.joinable()) thread_.join();
    }
    bool Done() const { return done_; }
    platform::WaitResult Result() {
      thread_.join();
      return result_;
    }

   private:
    std::atomic<bool> done_ = false;
    platform::WaitResult result_ = kTimeout;
    std::thread thread_;
  };

  platform::KernelObjects& Port() { return maker_.Port(); }
  platform::KernelObjects& Other() { return maker_.Other(); }
  void AwaitWaiters(std::size_t count) { maker_.AwaitWaiters(kName, count); }

  std::unique_ptr<platform::Event> Named(platform::KernelObjects& kernel,
                                         std::u16string_view name = kName) {
    auto event = kernel.CreateEvent(name);
    if (event == nullptr) ADD_FAILURE() << "no event";
    return event;
  }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(KernelContract);

TYPED_TEST_P(KernelContract, ANewEventIsNotSignalled) {
  EXPECT_EQ(this->Named(this->Port())->Wait(0), this->kTimeout);
  EXPECT_EQ(this->Named(this->Port(), u"")->Wait(0), this->kTimeout);
}

TYPED_TEST_P(KernelContract, AWaitThatNobodyFreesEndsWhenItsTimeIsOver) {
  auto event = this->Named(this->Port());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(event->Wait(30), this->kTimeout);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

TYPED_TEST_P(KernelContract, ASetEventFreesOneWaitAndIsResetByIt) {
  auto event = this->Named(this->Port(), u"");
  EXPECT_TRUE(event->EventModify(platform::EventAction::kSet));
  EXPECT_TRUE(event->EventModify(platform::EventAction::kSet));
  EXPECT_EQ(event->Wait(this->kLong), this->kSignaled);
  EXPECT_EQ(event->Wait(0), this->kTimeout);
}

TYPED_TEST_P(KernelContract, ResetTakesTheSignalBack) {
  auto event = this->Named(this->Port());
  event->EventModify(platform::EventAction::kSet);
  EXPECT_TRUE(event->EventModify(platform::EventAction::kReset));
  EXPECT_EQ(event->Wait(0), this->kTimeout);
}

TYPED_TEST_P(KernelContract, APulseIsLostWhenNobodyWaits) {
  auto event = this->Named(this->Port());
  EXPECT_TRUE(event->EventModify(platform::EventAction::kPulse));
  EXPECT_EQ(event->Wait(0), this->kTimeout);
  EXPECT_EQ(event->Wait(20), this->kTimeout);
}

TYPED_TEST_P(KernelContract, APulseFreesExactlyOneWaiterTheOldestFirst) {
  auto event = this->Named(this->Port());
  auto other = this->Named(this->Other());
  typename TestFixture::Waiter first(*event, this->kLong);
  this->AwaitWaiters(1);
  typename TestFixture::Waiter second(*other, this->kLong);
  this->AwaitWaiters(2);
  typename TestFixture::Waiter third(*event, this->kLong);
  this->AwaitWaiters(3);
  other->EventModify(platform::EventAction::kPulse);
  EXPECT_EQ(first.Result(), this->kSignaled);
  EXPECT_FALSE(second.Done());
  EXPECT_FALSE(third.Done());
  event->EventModify(platform::EventAction::kPulse);
  EXPECT_EQ(second.Result(), this->kSignaled);
  EXPECT_FALSE(third.Done());
  event->EventModify(platform::EventAction::kPulse);
  EXPECT_EQ(third.Result(), this->kSignaled);
  EXPECT_EQ(event->Wait(0), this->kTimeout);
}

TYPED_TEST_P(KernelContract, ASetWithAWaiterFreesItAndLeavesNoSignal) {
  auto event = this->Named(this->Port());
  typename TestFixture::Waiter waiter(*event, platform::kInfinite);
  this->AwaitWaiters(1);
  event->EventModify(platform::EventAction::kSet);
  EXPECT_EQ(waiter.Result(), this->kSignaled);
  EXPECT_EQ(event->Wait(0), this->kTimeout);
}

TYPED_TEST_P(KernelContract, OneNameIsOneEventAndAnotherNameAnother) {
  auto event = this->Named(this->Port());
  auto same = this->Named(this->Other());
  auto different = this->Named(this->Other(), u"OEM_MY_SIM_DELETED_EVENT_OEM");
  event->EventModify(platform::EventAction::kSet);
  EXPECT_EQ(different->Wait(0), this->kTimeout);
  EXPECT_EQ(same->Wait(0), this->kSignaled);
  EXPECT_EQ(event->Wait(0), this->kTimeout);
}

TYPED_TEST_P(KernelContract, EventsWithoutANameAreEachTheirOwn) {
  auto one = this->Named(this->Port(), u"");
  auto two = this->Named(this->Port(), u"");
  one->EventModify(platform::EventAction::kSet);
  EXPECT_EQ(two->Wait(0), this->kTimeout);
  EXPECT_EQ(one->Wait(0), this->kSignaled);
}

TYPED_TEST_P(KernelContract, AnEventThatAllHaveClosedStartsUnsignalledAgain) {
  this->Named(this->Port())->EventModify(platform::EventAction::kSet);
  EXPECT_EQ(this->Named(this->Port())->Wait(0), this->kTimeout);
}

TYPED_TEST_P(KernelContract, AMutexExistsForEverybodyElseUntilItIsClosed) {
  bool exists = true;
  auto first = this->Port().CreateMutex(u"KELPIN_{1}", false, exists);
  ASSERT_NE(first, nullptr);
  EXPECT_FALSE(exists);
  auto second = this->Other().CreateMutex(u"KELPIN_{1}", false, exists);
  ASSERT_NE(second, nullptr);
  EXPECT_TRUE(exists);
  second->Release();
  second.reset();
  auto third = this->Other().CreateMutex(u"KELPIN_{1}", false, exists);
  EXPECT_TRUE(exists) << "closing the second's leaves the first's";
  third.reset();
  auto different = this->Other().CreateMutex(u"KELPIN_{2}", false, exists);
  EXPECT_FALSE(exists);
  first->Release();
  first.reset();
  auto again = this->Other().CreateMutex(u"KELPIN_{1}", false, exists);
  ASSERT_NE(again, nullptr);
  EXPECT_FALSE(exists);
}

TYPED_TEST_P(KernelContract, AThreadRunsItsBodyAndEndThreadsWaitsForIt) {
  std::atomic<int> ran = 0;
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(this->Port().CreateThread([&ran] {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
      ++ran;
    }),
              1);
  }
  this->Port().EndThreads();
  EXPECT_EQ(ran, 20);
}

TYPED_TEST_P(KernelContract, EndThreadsEndsEveryWaitNowAndLater) {
  auto named = this->Named(this->Port());
  auto own = this->Named(this->Port(), u"");
  std::atomic<int> abandoned = 0;
  const auto waits = [&abandoned](platform::Event& event) {
    while (event.Wait(platform::kInfinite) == platform::WaitResult::kSignaled) {
    }
    ++abandoned;
  };
  ASSERT_EQ(this->Port().CreateThread([&] { waits(*named); }), 1);
  ASSERT_EQ(this->Port().CreateThread([&] { waits(*own); }), 1);
  this->AwaitWaiters(1);
  this->Port().EndThreads();
  EXPECT_EQ(abandoned, 2);
  named->EventModify(platform::EventAction::kSet);
  EXPECT_EQ(named->Wait(platform::kInfinite), this->kAbandoned);
  EXPECT_EQ(named->Wait(0), this->kAbandoned);
}

REGISTER_TYPED_TEST_SUITE_P(
    KernelContract, ANewEventIsNotSignalled, AWaitThatNobodyFreesEndsWhenItsTimeIsOver,
    ASetEventFreesOneWaitAndIsResetByIt, ResetTakesTheSignalBack, APulseIsLostWhenNobodyWaits,
    APulseFreesExactlyOneWaiterTheOldestFirst, ASetWithAWaiterFreesItAndLeavesNoSignal,
    OneNameIsOneEventAndAnotherNameAnother, EventsWithoutANameAreEachTheirOwn,
    AnEventThatAllHaveClosedStartsUnsignalledAgain, AMutexExistsForEverybodyElseUntilItIsClosed,
    AThreadRunsItsBodyAndEndThreadsWaitsForIt, EndThreadsEndsEveryWaitNowAndLater);

}  // namespace kelpin::contract
