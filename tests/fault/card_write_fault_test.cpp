// Every command of every change of an entry goes wrong once, in every way. Whatever happens: no
// other entry changes, the entry is as before or as wanted, and the code says which.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/fault/card_write_faults.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;

class CardWriteFault : public testing::TestWithParam<std::size_t> {};

TEST_P(CardWriteFault, EveryCommandOfTheChangeMayFail) {
  constexpr std::uint8_t kUpdateRecord = 0xDC;
  const WantedChange change = WantedChanges()[GetParam()];
  SCOPED_TRACE(change.why);
  const WriteFaults faults(change);
  const auto sent = faults.Run(0, Fault::kRefused);
  EXPECT_GE(std::count(sent.begin(), sent.end(), kUpdateRecord), 1);
  for (std::uint32_t command = 1; command <= sent.size() && !HasFailure(); ++command) {
    for (const Fault fault : kFaults) {
      const bool update = sent[command - 1] == kUpdateRecord;
      if (IsAfter(fault) && !update) continue;
      // The many reads of a cold start fail one like another.
      if (change.cold && !update && fault != Fault::kRefused && fault != Fault::kCutBefore)
        continue;
      SCOPED_TRACE("command " + std::to_string(command) + ", fault " +
                   std::to_string(static_cast<int>(fault)));
      faults.Run(command, fault);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Changes, CardWriteFault,
                         testing::Range(std::size_t{0}, WantedChanges().size()));

// The place of the last record update among the commands since Arm.
std::uint32_t LastUpdate(const FaultyChannel& channel) {
  const auto& sent = channel.Sent();
  const auto last = std::find(sent.rbegin(), sent.rend(), std::uint8_t{0xDC});
  return static_cast<std::uint32_t>(sent.rend() - last);
}

// An update that was answered too late is not sent again.
TEST(CardWriteDoubt, AnUpdateIsReadBackAndNeverSentTwice) {
  for (const Fault fault : {Fault::kLostAfter, Fault::kGarbledAfter, Fault::kCutAfter}) {
    SoftCard card("usim");
    FaultyChannel channel(card.Channel());
    SimService service(channel);
    SimClient sim(service);
    ASSERT_EQ(sim.Text(1), u"Bauer, Anna|+12125550100");
    std::vector<std::string> updates;
    card.Channel().SetTrace([&updates](std::string_view line) {
      if (line.size() > 6 && line[0] == '>' && line.substr(4, 2) == "DC") {
        updates.emplace_back(line);
      }
    });
    // What is read once is known from the second time on.
    ASSERT_EQ(sim.Write(1, u"Bauer, Anna", u"3"), SimResult::kOk);
    updates.clear();
    channel.Arm(0, fault);
    EXPECT_EQ(sim.Write(1, u"Bauer, Anna", u"2"), SimResult::kOk);
    const std::uint32_t update = LastUpdate(channel);
    ASSERT_GT(update, 0U);
    EXPECT_EQ(std::exchange(updates, {}).size(), 1U);
    channel.Arm(update, fault);
    EXPECT_EQ(sim.Write(1, u"Bauer, Anna", u"1"), SimResult::kOk);
    EXPECT_TRUE(channel.Fired());
    card.Channel().SetTrace(nullptr);
    EXPECT_EQ(updates.size(), 1U);
    EXPECT_EQ(sim.Text(1), u"Bauer, Anna|1");
  }
}

// Commands of the radio interface tell the truth of an update as well.
TEST(CardWriteDoubt, ARadioUpdateIsReadBack) {
  const std::vector<std::uint8_t> group = {1, 2, 0};
  const struct {
    Fault fault;
    bool done;
  } cases[] = {{Fault::kLostBefore, false},  {Fault::kLostAfter, true},
               {Fault::kCutBefore, false},   {Fault::kCutAfter, true},
               {Fault::kResetBefore, false}, {Fault::kRefused, false}};
  for (const auto& [fault, done] : cases) {
    SCOPED_TRACE(static_cast<int>(fault));
    SoftCard card("usim");
    FaultyChannel channel(card.Channel());
    SimService service(channel);
    RadioClient radio(service);
    ASSERT_EQ(radio.File(platform::kRilSimReadRecord, 3, 1).code, platform::kRilResultOk);
    // What is read once is known from the second time on.
    for (const std::uint8_t before : {std::uint8_t{4}, std::uint8_t{3}}) {
      channel.Arm(0, fault);
      ASSERT_EQ(radio.File(platform::kRilSimUpdateRecord, 3, 249, {before, 0, 0}).code,
                platform::kRilResultOk);
    }
    const std::uint32_t update = LastUpdate(channel);
    ASSERT_GT(update, 0U);
    channel.Arm(update, fault);
    const auto result = radio.File(platform::kRilSimUpdateRecord, 3, 249, group);
    EXPECT_TRUE(channel.Fired());
    EXPECT_EQ(result.code, done ? platform::kRilResultOk : platform::kRilResultError);
    const auto held = RadioClient::Bytes(radio.File(platform::kRilSimReadRecord, 3, 249));
    EXPECT_EQ(held == group, done);
  }
}

}  // namespace
}  // namespace kelpin::device::card
