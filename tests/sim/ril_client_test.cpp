#include "sim/ril_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <vector>

#include "tests/sim/sim_bench.h"

namespace kelpin::sim {
namespace {

using platform::kRilResultError;
using platform::kRilResultOk;
using ::testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

// A client whose commands the test answers itself.
class RilClientTest : public ::testing::Test {
 protected:
  void OpenByHand() {
    bench_.radio.SetManual(true);
    ASSERT_TRUE(client_.Open(0));
    bench_.journal.Clear();
  }

  // Sends a bulk read from a thread of its own, and returns when its result is awaited.
  std::future<bool> Send(Bytes& response) {
    std::future<bool> sent = std::async(std::launch::async, [this, &response] {
      return client_.ReadPhonebookEntries(1, 10, response);
    });
    bench_.kernel.AwaitWaiters({}, 1);
    return sent;
  }

  void Deliver(std::uint32_t code, std::int32_t id, const Bytes& data) {
    bench_.radio.Deliver(1, code, id, data);
  }

  test::SimBench bench_;
  RilClient client_{bench_.radio, bench_.kernel, bench_.devices};
};

TEST_F(RilClientTest, MakesItsThreeEventsWhenItIsMade) {
  EXPECT_THAT(bench_.journal.Entries(),
              ElementsAre("CreateEvent(OEM_MY_RIL_MSISDNS_EVENT_OEM)",
                          "CreateEvent(OEM_MY_RIL_SIMPB_EVENT_OEM)", "CreateEvent()"));
  EXPECT_FALSE(bench_.kernel.EventIsSet(kOwnNumbersEventName));
  EXPECT_FALSE(bench_.kernel.EventIsSet(kPhonebookEventName));
}

TEST_F(RilClientTest, GivesItsEventsBackWhenItGoesAway) {
  {
    const RilClient other(bench_.radio, bench_.kernel, bench_.devices);
    EXPECT_EQ(bench_.kernel.OpenEvents(), 6u);
  }
  EXPECT_EQ(bench_.kernel.OpenEvents(), 3u);
}

TEST_F(RilClientTest, OpensASessionOnPortOneWithTheClassesAskedFor) {
  bench_.journal.Clear();
  EXPECT_TRUE(client_.Open(0x80C00000));
  EXPECT_TRUE(client_.IsOpen());
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre("RIL_Initialize(1, 0x80C00000)"));
}

TEST_F(RilClientTest, ASessionTheRadioRefusesIsNotOpen) {
  bench_.radio.SetInitializeFails(true);
  EXPECT_FALSE(client_.Open(0));
  EXPECT_FALSE(client_.IsOpen());
}

TEST_F(RilClientTest, CloseEndsTheSessionAndSaysSo) {
  ASSERT_TRUE(client_.Open(0));
  bench_.journal.Clear();
  EXPECT_EQ(client_.Close(), 1);
  EXPECT_FALSE(client_.IsOpen());
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre("RIL_Deinitialize(1)"));
}

TEST_F(RilClientTest, CloseSaysWhenTheRadioCouldNot) {
  ASSERT_TRUE(client_.Open(0));
  bench_.radio.SetDeinitializeFails(true);
  EXPECT_EQ(client_.Close(), 0);
  EXPECT_FALSE(client_.IsOpen());
  bench_.radio.SetDeinitializeFails(false);
}

TEST_F(RilClientTest, CloseWithoutASessionAsksNothing) {
  bench_.journal.Clear();
  EXPECT_EQ(client_.Close(), 0);
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre());
}

TEST_F(RilClientTest, GoingAwayEndsTheSession) {
  {
    RilClient other(bench_.radio, bench_.kernel, bench_.devices);
    ASSERT_TRUE(other.Open(0));
    ASSERT_EQ(bench_.radio.OpenSessions(), 1u);
  }
  EXPECT_EQ(bench_.radio.OpenSessions(), 0u);
}

TEST_F(RilClientTest, OpeningAgainLeavesOneSession) {
  ASSERT_TRUE(client_.Open(0));
  ASSERT_TRUE(client_.Open(0));
  EXPECT_EQ(bench_.radio.OpenSessions(), 1u);
}

TEST_F(RilClientTest, CallbacksWithoutAClientDoNothing) {
  const Bytes data(20, 1);
  RilClient::OnRilResult(kRilResultOk, 1, data.data(), 20, nullptr);
  RilClient::OnRilNotify(0x8000000B, data.data(), 20, nullptr);
  EXPECT_EQ(client_.ResultCode(), 0u);
  EXPECT_EQ(client_.PhonebookReloadPending(), 0u);
}

TEST_F(RilClientTest, WithoutASessionCommandsFailAndSendNothing) {
  Bytes response = {7};
  EXPECT_FALSE(client_.ReadPhonebookEntries(1, 10, response));
  EXPECT_FALSE(client_.GetFileInfo(0x6F40));
  std::uint32_t changed = 5;
  EXPECT_FALSE(client_.PhonebookChanged(changed));
  EXPECT_EQ(changed, 5u);
  EXPECT_EQ(response, Bytes{7});
  EXPECT_TRUE(bench_.radio.Commands().empty());
}

TEST_F(RilClientTest, TheAwaitedResultEndsTheCommandWithItsData) {
  OpenByHand();
  Bytes response;
  std::future<bool> sent = Send(response);
  Bytes data(20);
  for (std::uint8_t i = 0; i < 20; ++i) data[i] = i;
  Deliver(kRilResultOk, 1, data);
  EXPECT_TRUE(sent.get());
  EXPECT_EQ(response, data);
  EXPECT_EQ(client_.Response(), data);
  EXPECT_EQ(client_.ResultCode(), kRilResultOk);
}

TEST_F(RilClientTest, AResultWithoutDataReplacesTheDataBeforeIt) {
  OpenByHand();
  Bytes response;
  std::future<bool> first = Send(response);
  Deliver(kRilResultOk, 1, {1, 2, 3});
  ASSERT_TRUE(first.get());
  std::future<bool> second = Send(response);
  Deliver(kRilResultOk, 2, {});
  EXPECT_TRUE(second.get());
  EXPECT_EQ(response, Bytes{});
  EXPECT_EQ(client_.Response(), Bytes{});
}

TEST_F(RilClientTest, TheDataIsACopy) {
  OpenByHand();
  Bytes response;
  std::future<bool> sent = Send(response);
  Bytes data = {1, 2, 3};
  client_.OnResult(kRilResultOk, 1, data.data(), 3);
  data.assign(3, 9);
  EXPECT_TRUE(sent.get());
  EXPECT_EQ(response, (Bytes{1, 2, 3}));
}

TEST_F(RilClientTest, AnotherCommandsResultLeavesOnlyItsCode) {
  OpenByHand();
  Bytes response;
  std::future<bool> first = Send(response);
  Deliver(kRilResultOk, 1, {1, 2, 3});
  ASSERT_TRUE(first.get());

  std::future<bool> second = Send(response);
  Deliver(77, 1, {9, 9});
  Deliver(78, 99, {8, 8});
  EXPECT_EQ(client_.ResultCode(), 78u);
  EXPECT_EQ(client_.Response(), (Bytes{1, 2, 3}));
  EXPECT_EQ(bench_.kernel.Waiters({}), 1u);  // still awaited
  Deliver(kRilResultOk, 2, {4});
  EXPECT_TRUE(second.get());
  EXPECT_EQ(response, Bytes{4});
}

TEST_F(RilClientTest, AnotherResultBehindTheAwaitedOneSpoilsNothing) {
  OpenByHand();
  Bytes response;
  std::future<bool> sent = Send(response);
  const Bytes data = {4};
  client_.OnResult(kRilResultOk, 1, data.data(), 1);
  client_.OnResult(kRilResultError, 99, nullptr, 0);
  EXPECT_TRUE(sent.get());
  EXPECT_EQ(response, data);
}

TEST_F(RilClientTest, AnyOtherCodeThanSuccessIsFailureAndLeavesTheCallersData) {
  OpenByHand();
  std::int32_t id = 0;
  for (const std::uint32_t code : {0u, 2u, 3u, 0x88000207u}) {
    Bytes response = {7};
    std::future<bool> sent = Send(response);
    Deliver(code, ++id, {1, 2});
    EXPECT_FALSE(sent.get()) << code;
    EXPECT_EQ(response, Bytes{7}) << code;
    EXPECT_EQ(client_.ResultCode(), code);
  }
}

TEST_F(RilClientTest, ACommandTheRadioDoesNotTakeFailsWithoutWaiting) {
  ASSERT_TRUE(client_.Open(0));
  bench_.radio.SetResponder([](const auto&) {
    return test::FakeRadio::Answer{0, {}, test::FakeRadio::Answering::kNotTaken};
  });
  Bytes response;
  // A wait would not end: the bench's time stands still.
  EXPECT_FALSE(client_.ReadPhonebookEntries(1, 10, response));
  EXPECT_EQ(bench_.radio.Commands().size(), 1u);
}

TEST_F(RilClientTest, AResultThatDoesNotComeWithinAMinuteIsFailure) {
  OpenByHand();
  Bytes response;
  std::future<bool> sent = Send(response);
  bench_.clock.Advance(59999);
  EXPECT_EQ(bench_.kernel.Waiters({}), 1u);
  bench_.clock.Advance(1);
  EXPECT_FALSE(sent.get());
  EXPECT_EQ(bench_.radio.Commands().size(), 1u);  // not sent again
}

TEST_F(RilClientTest, AResultThatComesTooLateIsNotTheNextCommands) {
  OpenByHand();
  Bytes response;
  std::future<bool> first = Send(response);
  bench_.clock.Advance(60000);
  ASSERT_FALSE(first.get());
  Deliver(kRilResultOk, 1, {1});

  std::future<bool> second = Send(response);
  EXPECT_EQ(bench_.kernel.Waiters({}), 1u);
  Deliver(kRilResultOk, 2, {2});
  EXPECT_TRUE(second.get());
  EXPECT_EQ(response, Bytes{2});
}

TEST_F(RilClientTest, AResultThatComesBeforeTheCallHasReturnedIsNotMissed) {
  bench_.radio.SetAnswerFirst(true);
  bench_.radio.SetEntry(3, {u"Ada", u"123", 0, 1, {}});
  ASSERT_TRUE(client_.Open(0));
  Bytes response;
  EXPECT_TRUE(client_.ReadPhonebookEntries(1, 10, response));
  EXPECT_EQ(response.size(), 1044u);
}

TEST_F(RilClientTest, AFailureThatComesBeforeTheCallHasReturnedIsNotMissed) {
  bench_.radio.SetAnswerFirst(true);
  bench_.radio.SetResponder([](const auto&) {
    return test::FakeRadio::Answer{kRilResultError, {}, test::FakeRadio::Answering::kResult};
  });
  ASSERT_TRUE(client_.Open(0));
  Bytes response;
  EXPECT_FALSE(client_.ReadPhonebookEntries(1, 10, response));
  EXPECT_EQ(client_.ResultCode(), kRilResultError);
}

TEST_F(RilClientTest, AnotherCommandsResultDuringTheCallIsNotTaken) {
  ASSERT_TRUE(client_.Open(0));
  // While the first command is being sent, a result comes for an id that is not its own.
  bench_.radio.SetResponder([this](const auto& command) {
    client_.OnResult(kRilResultError, command.id + 1, nullptr, 0);
    return test::FakeRadio::Answer{kRilResultOk, {5}, test::FakeRadio::Answering::kResult};
  });
  Bytes response;
  EXPECT_TRUE(client_.ReadPhonebookEntries(1, 10, response));
  EXPECT_EQ(response, Bytes{5});
}

TEST_F(RilClientTest, WaitGivesTheResultsCodeOnceAndZeroWhenNoneCame) {
  OpenByHand();
  EXPECT_EQ(client_.Wait(0), 0u);
  Bytes response;
  std::future<bool> sent = Send(response);
  Deliver(5, 1, {});
  EXPECT_FALSE(sent.get());
  EXPECT_EQ(client_.Wait(0), 0u);  // the command has taken it
  client_.OnResult(6, 1, nullptr, 0);
  client_.OnResult(9, 99, nullptr, 0);  // of another command
  EXPECT_EQ(client_.Wait(0), 6u);
  EXPECT_EQ(client_.Wait(0), 0u);
}

TEST_F(RilClientTest, WithoutItsCompletionEventNothingIsSent) {
  bench_.failures.FailCallOf("CreateEvent", 3);
  RilClient client(bench_.radio, bench_.kernel, bench_.devices);
  ASSERT_TRUE(client.Open(0));
  Bytes response;
  EXPECT_FALSE(client.ReadPhonebookEntries(1, 10, response));
  EXPECT_EQ(client.Wait(1000), 0u);
  EXPECT_TRUE(bench_.radio.Commands().empty());
}

}  // namespace
}  // namespace kelpin::sim
