#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

#include "sim/ril_client.h"
#include "tests/sim/sim_bench.h"

namespace kelpin::sim {
namespace {

using platform::kRilResultOk;
using Bytes = std::vector<std::uint8_t>;

TEST(RilClientThreads, CommandsOfOneClientNeverOverlap) {
  test::SimBench bench;
  bench.radio.SetManual(true);
  RilClient client(bench.radio, bench.kernel, bench.devices);
  ASSERT_TRUE(client.Open(0));
  Bytes firstResponse;
  Bytes secondResponse;
  auto first = std::async(std::launch::async,
                          [&] { return client.ReadPhonebookEntries(1, 10, firstResponse); });
  bench.radio.AwaitCommands(1);
  auto second = std::async(std::launch::async,
                           [&] { return client.ReadPhonebookEntries(11, 20, secondResponse); });
  bench.kernel.AwaitWaiters({}, 1);
  EXPECT_EQ(bench.radio.Commands().size(), 1u);
  bench.radio.Deliver(1, kRilResultOk, 1, {1});
  EXPECT_TRUE(first.get());
  bench.radio.AwaitCommands(2);
  bench.radio.Deliver(1, kRilResultOk, 2, {2});
  EXPECT_TRUE(second.get());
  EXPECT_EQ(firstResponse, Bytes{1});
  EXPECT_EQ(secondResponse, Bytes{2});
}

// Threads that share a client each get the answer to their own question.
TEST(RilClientThreads, EveryCommandGetsItsOwnAnswer) {
  for (const bool answerFirst : {false, true}) {
    test::SimBench bench;
    bench.radio.SetAnswerFirst(answerFirst);
    for (std::uint32_t index = 1; index <= 40; ++index) {
      bench.radio.SetEntry(index, {u"Ada", u"1", 0, 1, {}});
    }
    RilClient client(bench.radio, bench.kernel, bench.devices);
    ASSERT_TRUE(client.Open(0));
    std::vector<std::thread> threads;
    for (std::uint32_t thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&client, thread] {
        for (std::uint32_t round = 0; round < 50; ++round) {
          const std::uint32_t index = thread * 10 + round % 10 + 1;
          Bytes response;
          ASSERT_TRUE(client.ReadPhonebookEntries(index, index, response));
          platform::RilPhonebookEntry entry;
          ASSERT_EQ(response.size(), sizeof(entry));
          std::memcpy(&entry, response.data(), sizeof(entry));
          EXPECT_EQ(entry.index, index);
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
}

TEST(RilClientThreads, ClosingTheSessionEndsAWait) {
  test::SimBench bench;
  bench.radio.SetManual(true);
  RilClient client(bench.radio, bench.kernel, bench.devices);
  ASSERT_TRUE(client.Open(0));
  Bytes response = {7};
  auto sent =
      std::async(std::launch::async, [&] { return client.ReadPhonebookEntries(1, 10, response); });
  bench.kernel.AwaitWaiters({}, 1);
  EXPECT_EQ(client.Close(), 1);
  EXPECT_FALSE(sent.get());
  EXPECT_EQ(response, Bytes{7});
}

TEST(RilClientThreads, ClosingEndsAWaitEvenWhenTheRadioDoesNotEndTheSession) {
  test::SimBench bench;
  RilClient client(bench.radio, bench.kernel, bench.devices);
  ASSERT_TRUE(client.Open(0));
  Bytes response;
  // The success of an earlier command is not taken for the success of the one that was cut off.
  ASSERT_TRUE(client.ReadPhonebookEntries(1, 10, response));
  bench.radio.SetManual(true);
  response = {7};
  auto sent =
      std::async(std::launch::async, [&] { return client.ReadPhonebookEntries(1, 10, response); });
  bench.kernel.AwaitWaiters({}, 1);
  bench.radio.SetDeinitializeFails(true);
  EXPECT_EQ(client.Close(), 0);
  EXPECT_FALSE(sent.get());
  EXPECT_EQ(response, Bytes{7});
  bench.radio.SetDeinitializeFails(false);
}

// Commands that still run when the session goes, or that come after it, end; none hangs.
TEST(RilClientThreads, SessionsComeAndGoUnderCommands) {
  test::SimBench bench;
  bench.radio.SetEntry(1, {u"Ada", u"1", 0, 1, {}});
  RilClient client(bench.radio, bench.kernel, bench.devices);
  std::atomic<bool> done = false;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 3; ++thread) {
    threads.emplace_back([&] {
      while (!done) {
        Bytes response;
        if (client.ReadPhonebookEntries(1, 1, response)) {
          EXPECT_EQ(response.size(), 1044u);
        }
      }
    });
  }
  for (int round = 0; round < 100; ++round) {
    ASSERT_TRUE(client.Open(0));
    std::this_thread::yield();
    ASSERT_EQ(client.Close(), 1);
  }
  done = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(bench.radio.OpenSessions(), 0u);
}

TEST(RilClientThreads, AnEndingProgramEndsAWait) {
  test::SimBench bench;
  bench.radio.SetManual(true);
  RilClient client(bench.radio, bench.kernel, bench.devices);
  ASSERT_TRUE(client.Open(0));
  Bytes response;
  auto sent =
      std::async(std::launch::async, [&] { return client.ReadPhonebookEntries(1, 10, response); });
  bench.kernel.AwaitWaiters({}, 1);
  bench.kernel.EndThreads();
  EXPECT_FALSE(sent.get());
}

// A class of its own sees results and notifications before the client acts on them.
class Counting : public RilClient {
 public:
  using RilClient::RilClient;
  ~Counting() override { Close(); }

  void OnResult(std::uint32_t code, std::int32_t commandId, const void* data,
                std::uint32_t size) override {
    ++results;
    RilClient::OnResult(code, commandId, data, size);
  }
  void OnNotify(std::uint32_t /*code*/, const void* /*data*/, std::uint32_t /*size*/) override {
    ++notifications;
  }

  std::atomic<int> results = 0;
  std::atomic<int> notifications = 0;
};

TEST(RilClientThreads, CallbacksGoToTheDerivedClass) {
  test::SimBench bench;
  Counting client(bench.radio, bench.kernel, bench.devices);
  ASSERT_TRUE(client.Open(0x00400000));
  Bytes response;
  EXPECT_TRUE(client.ReadPhonebookEntries(1, 10, response));
  const std::int32_t both = -4;
  bench.radio.Notify(0x00400008, &both, sizeof(both));
  EXPECT_EQ(client.results, 1);
  EXPECT_EQ(client.notifications, 1);
  EXPECT_EQ(bench.journal.Count("EventModify(OEM_MY_RIL"), 0u);
}

}  // namespace
}  // namespace kelpin::sim
