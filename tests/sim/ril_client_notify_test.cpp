#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "sim/ril_client.h"
#include "tests/sim/sim_bench.h"

namespace kelpin::sim {
namespace {

using platform::WaitResult;
using ::testing::ElementsAre;

constexpr std::uint32_t kRewritten = 0x8000000B;
constexpr std::uint32_t kEquipmentState = 0x00800001;
constexpr std::uint32_t kMiscellaneous = 0x00400008;
constexpr const char* kOwnNumbersPulse = "EventModify(OEM_MY_RIL_MSISDNS_EVENT_OEM, pulse)";
constexpr const char* kPhonebookPulse = "EventModify(OEM_MY_RIL_SIMPB_EVENT_OEM, pulse)";

class RilNotifyTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(client_.Open(0x80C00000));
    bench_.journal.Clear();
  }

  void NotifyReady(std::uint32_t readyState, std::uint32_t size = 20) {
    const std::uint32_t words[] = {20, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, readyState};
    bench_.radio.Notify(kEquipmentState, words, size);
  }

  void NotifyValue(std::int32_t value, std::uint32_t code = kMiscellaneous,
                   std::uint32_t size = 4) {
    bench_.radio.Notify(code, &value, size);
  }

  std::vector<std::string> Pulses() { return bench_.journal.Entries("EventModify"); }

  test::SimBench bench_;
  RilClient client_{bench_.radio, bench_.kernel, bench_.devices};
};

TEST_F(RilNotifyTest, ARewrittenPhonebookIsReadWhenItIsReadyAgain) {
  bench_.radio.Notify(kRewritten, nullptr, 0);
  EXPECT_EQ(client_.PhonebookReloadPending(), 1u);
  EXPECT_THAT(Pulses(), ElementsAre());
  NotifyReady(0x10);
  EXPECT_EQ(client_.PhonebookReloadPending(), 0u);
  EXPECT_THAT(Pulses(), ElementsAre(kPhonebookPulse));
}

TEST_F(RilNotifyTest, TheNewsWaitsUntilThePhonebookIsReady) {
  bench_.radio.Notify(kRewritten, nullptr, 0);
  NotifyReady(0xFFFFFFEF);
  NotifyReady(0);
  EXPECT_EQ(client_.PhonebookReloadPending(), 1u);
  EXPECT_THAT(Pulses(), ElementsAre());
  NotifyReady(0xFFFFFFFF);
  EXPECT_EQ(client_.PhonebookReloadPending(), 0u);
  EXPECT_THAT(Pulses(), ElementsAre(kPhonebookPulse));
}

TEST_F(RilNotifyTest, AReadyPhonebookThatWasNotRewrittenIsNoNews) {
  NotifyReady(0x10);
  EXPECT_THAT(Pulses(), ElementsAre());
  bench_.radio.Notify(kRewritten, nullptr, 0);
  NotifyReady(0x10);
  NotifyReady(0x10);
  EXPECT_THAT(Pulses(), ElementsAre(kPhonebookPulse));
}

TEST_F(RilNotifyTest, AStateTooShortToTellIsIgnored) {
  bench_.radio.Notify(kRewritten, nullptr, 0);
  NotifyReady(0x10, 19);
  bench_.radio.Notify(kEquipmentState, nullptr, 0);
  EXPECT_EQ(client_.PhonebookReloadPending(), 1u);
  EXPECT_THAT(Pulses(), ElementsAre());
}

TEST_F(RilNotifyTest, TheValueSaysWhatWasRewritten) {
  NotifyValue(-1);
  EXPECT_THAT(Pulses(), ElementsAre(kOwnNumbersPulse));
  bench_.journal.Clear();
  NotifyValue(-3);
  EXPECT_THAT(Pulses(), ElementsAre(kPhonebookPulse));
  bench_.journal.Clear();
  NotifyValue(-4);
  EXPECT_THAT(Pulses(), ElementsAre(kOwnNumbersPulse, kPhonebookPulse));
}

TEST_F(RilNotifyTest, OtherValuesAreIgnored) {
  for (const std::int32_t value : {-2, 0, 1, 3, 4, -5, 0xFF, 0xFFFF}) NotifyValue(value);
  NotifyValue(-1, kMiscellaneous, 3);
  EXPECT_THAT(Pulses(), ElementsAre());
}

TEST_F(RilNotifyTest, OtherNotificationsAreIgnored) {
  for (const std::uint32_t code : {0x8000000Au, 0x8000000Cu, 0x80000000u}) {
    NotifyValue(-4, code);
  }
  EXPECT_EQ(client_.PhonebookReloadPending(), 0u);
  bench_.radio.Notify(kRewritten, nullptr, 0);
  for (const std::uint32_t code : {0x00800000u, 0x00800002u, 0x00400007u, 0x00400009u}) {
    const std::uint32_t words[] = {0xFFFFFFFF, 0, 0, 0, 0x10};
    bench_.radio.Notify(code, words, sizeof(words));
  }
  EXPECT_THAT(Pulses(), ElementsAre());
  EXPECT_EQ(client_.PhonebookReloadPending(), 1u);
}

TEST_F(RilNotifyTest, AClientIsToldOnlyOfItsClasses) {
  RilClient ownNumbers(bench_.radio, bench_.kernel, bench_.devices);
  RilClient silent(bench_.radio, bench_.kernel, bench_.devices);
  ASSERT_TRUE(ownNumbers.Open(0x00400000));
  ASSERT_TRUE(silent.Open(0));
  bench_.journal.Clear();
  bench_.radio.Notify(kRewritten, nullptr, 0);
  EXPECT_EQ(client_.PhonebookReloadPending(), 1u);
  EXPECT_EQ(ownNumbers.PhonebookReloadPending(), 0u);
  EXPECT_EQ(silent.PhonebookReloadPending(), 0u);
  NotifyValue(-1);
  EXPECT_THAT(Pulses(), ElementsAre(kOwnNumbersPulse, kOwnNumbersPulse));
}

TEST_F(RilNotifyTest, AWatcherThatWaitsIsFreedAndOneThatDoesNotHearsNothing) {
  NotifyValue(-4);  // nobody waits
  EXPECT_EQ(client_.WaitOwnNumbers(0), WaitResult::kTimeout);
  EXPECT_EQ(client_.WaitPhonebook(0), WaitResult::kTimeout);
  std::thread ownNumbers([&] { EXPECT_EQ(client_.WaitOwnNumbers(), WaitResult::kSignaled); });
  bench_.kernel.AwaitWaiters(kOwnNumbersEventName, 1);
  NotifyValue(-1);
  ownNumbers.join();
  std::thread phonebook([&] { EXPECT_EQ(client_.WaitPhonebook(), WaitResult::kSignaled); });
  bench_.kernel.AwaitWaiters(kPhonebookEventName, 1);
  NotifyValue(-3);
  phonebook.join();
}

TEST_F(RilNotifyTest, AnotherProgramFreesAWatcherByTheEventsName) {
  const auto event = bench_.kernel.CreateEvent(kPhonebookEventName);
  std::thread watcher([&] { EXPECT_EQ(client_.WaitPhonebook(), WaitResult::kSignaled); });
  bench_.kernel.AwaitWaiters(kPhonebookEventName, 1);
  event->EventModify(platform::EventAction::kPulse);
  watcher.join();
}

TEST_F(RilNotifyTest, WatchersEndWithTheProgram) {
  std::atomic<int> abandoned = 0;
  ASSERT_EQ(bench_.kernel.CreateThread(
                [&] { abandoned += client_.WaitOwnNumbers() == WaitResult::kAbandoned; }),
            1);
  ASSERT_EQ(bench_.kernel.CreateThread(
                [&] { abandoned += client_.WaitPhonebook() == WaitResult::kAbandoned; }),
            1);
  bench_.kernel.EndThreads();
  EXPECT_EQ(abandoned, 2);
}

TEST_F(RilNotifyTest, WithoutTheirEventsWatchersDoNotWait) {
  bench_.failures.FailCallOf("CreateEvent", 1);
  RilClient client(bench_.radio, bench_.kernel, bench_.devices);
  EXPECT_EQ(client.WaitOwnNumbers(), WaitResult::kAbandoned);
  const std::int32_t both = -4;
  client.OnNotify(kMiscellaneous, &both, sizeof(both));
  EXPECT_THAT(Pulses(), ElementsAre(kPhonebookPulse));
}

}  // namespace
}  // namespace kelpin::sim
