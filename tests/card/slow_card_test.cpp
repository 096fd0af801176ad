#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "device/card/sim_service.h"
#include "platform/mutex.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"

// A card that has gone silent, and a program that ends.
namespace kelpin::device::card {
namespace {

using platform::SimResult;

// Passes everything on, and holds a command back for as long as the test likes.
class GatedChannel final : public CardChannel {
 public:
  explicit GatedChannel(CardChannel& card) : card_(card) {}

  // From now on each command with this instruction waits; 0: every command; -1: none any more.
  void Hold(int instruction) {
    const std::lock_guard lock(mutex_);
    held_ = instruction;
    changed_.notify_all();
  }
  void WaitUntilHolding() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return holding_; });
  }
  std::vector<std::uint8_t> Instructions() {
    const std::lock_guard lock(mutex_);
    return passed_;
  }

  TransportError Connect(std::vector<std::uint8_t>& atr) override { return card_.Connect(atr); }
  void Disconnect() override { card_.Disconnect(); }
  TransportError Transmit(std::span<const std::uint8_t> command,
                          std::vector<std::uint8_t>& response) override {
    {
      std::unique_lock<std::mutex> lock(mutex_);
      const auto silent = [&] { return held_ == 0 || held_ == command[1]; };
      if (silent()) {
        holding_ = true;
        changed_.notify_all();
        changed_.wait(lock, [&] { return !silent(); });
        holding_ = false;
      }
      passed_.push_back(command[1]);
    }
    return card_.Transmit(command, response);
  }
  TransportError BeginTransaction() override { return card_.BeginTransaction(); }
  void EndTransaction() override { card_.EndTransaction(); }
  void SetListener(CardChannelListener* listener) override { card_.SetListener(listener); }
  std::string Description() const override { return card_.Description(); }

 private:
  CardChannel& card_;
  EndingMutex mutex_;
  std::condition_variable changed_;
  int held_ = -1;
  bool holding_ = false;
  std::vector<std::uint8_t> passed_;
};

constexpr int kUpdateRecord = 0xDC;
constexpr std::chrono::milliseconds kNoTime(0);
constexpr std::chrono::milliseconds kLong(30000);

class SlowCard : public ::testing::Test {
 protected:
  SoftCard card_{"usim-empty"};
  GatedChannel channel_{card_.Channel()};
};

TEST_F(SlowCard, ACallThatWaitsForASilentCardComesBackWhenTheProgramEnds) {
  SimService service(channel_);
  SimClient sim(service);
  channel_.Hold(0);
  std::uint32_t used = 77;
  std::uint32_t total = 77;
  SimResult result = SimResult::kOk;
  std::thread caller([&] { result = sim.Status(used, total); });
  channel_.WaitUntilHolding();
  EXPECT_FALSE(service.WaitForRest(kNoTime));
  service.Abandon();
  caller.join();
  EXPECT_EQ(result, SimResult::kNotReady);
  EXPECT_EQ(used, 77U);
  EXPECT_EQ(total, 77U);
  EXPECT_EQ(sim.Status(used, total), SimResult::kNotReady);
  EXPECT_FALSE(service.Changing());
  channel_.Hold(-1);
  EXPECT_TRUE(service.WaitForRest(kLong));
  // What was under way ended before its next command to the card.
  EXPECT_LE(channel_.Instructions().size(), 2U);
}

TEST_F(SlowCard, ASessionClosesWhileTheCardIsSilentAndIsNotCalledAfterwards) {
  SimService service(channel_);
  std::atomic<int> results = 0;
  platform::RilHandle ril = 0;
  ASSERT_EQ(service.RIL_Initialize(
                platform::kRilPort,
                [](std::uint32_t, std::int32_t, const void*, std::uint32_t, void* parameter) {
                  ++*static_cast<std::atomic<int>*>(parameter);
                },
                nullptr, 0, &results, ril),
            0);
  channel_.Hold(0);
  EXPECT_GE(service.RIL_ReadPhonebookEntries(ril, 1, 10), 0);
  EXPECT_GE(service.RIL_ReadPhonebookEntries(ril, 11, 20), 0);
  channel_.WaitUntilHolding();
  service.Abandon();
  EXPECT_EQ(service.RIL_Deinitialize(ril), 0);
  channel_.Hold(-1);
  EXPECT_TRUE(service.WaitForRest(kLong));
  EXPECT_EQ(results, 0);
}

TEST_F(SlowCard, AnUpdateThatIsUnderWayGoesOnToItsEnd) {
  SimService service(channel_);
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  channel_.Hold(kUpdateRecord);
  SimResult result = SimResult::kOk;
  std::thread caller([&] { result = sim.Write(1, u"Anna", u"0123456789012345678901234567890"); });
  channel_.WaitUntilHolding();
  EXPECT_TRUE(service.Changing());
  service.Abandon();
  caller.join();
  EXPECT_EQ(result, SimResult::kNotReady);
  channel_.Hold(-1);
  EXPECT_TRUE(service.WaitForRest(kLong));
  EXPECT_FALSE(service.Changing());
  // The number needs a record of its own beside the entry's: both are there.
  SimService later(card_.Channel());
  SimClient reader(later);
  EXPECT_EQ(reader.Text(1), u"Anna|0123456789012345678901234567890");
}

TEST_F(SlowCard, NoUpdateBeginsOnceTheProgramEnds) {
  SimService service(channel_);
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  service.Abandon();
  EXPECT_EQ(sim.Write(1, u"Anna", u"1"), SimResult::kNotReady);
  EXPECT_TRUE(service.WaitForRest(kLong));
  const auto sent = channel_.Instructions();
  EXPECT_EQ(std::count(sent.begin(), sent.end(), kUpdateRecord), 0);
}

}  // namespace
}  // namespace kelpin::device::card
