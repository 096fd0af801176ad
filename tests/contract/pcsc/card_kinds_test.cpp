// Kinds of cards in a reader: listed, changed and asked for their PIN.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/contract/card_kinds_contract.h"
#include "tests/contract/pcsc/reader_card_test.h"

namespace kelpin::contract {
namespace {

using platform::CardLockResult;
using platform::CardLockState;
using platform::LastTry;
using platform::SimResult;

class InReader : public ReaderCardTest {
 protected:
  void Put(const std::string& sample, const device::card::ImageChange& change = nullptr) {
    TearDown();
    // One of T=1 goes where cards come and go.
    if (sample == "usim-local") {
      Insert(sample, change);
    } else {
      Use(sample, change);
    }
  }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Reader, CardKindsContract, InReader);

using CardKindsTest = CardKinds<ReaderCardTest>;

TEST_F(CardKindsTest, ACardThatCannotSearchIsReadRecordByRecord) {
  Use("usim-empty", [](nlohmann::json& image) { image["searchRecord"] = false; });
  EXPECT_EQ(Used(), 0U);
  ASSERT_EQ(sim->Write(3, u"Here", u"12"), SimResult::kOk);
  EXPECT_EQ(Used(), 1U);
  EXPECT_EQ(Listed(250), (std::vector<std::uint32_t>{3}));
}

TEST_F(CardKindsTest, AListOf180EntriesDoesNotSelectItsFileForEach) {
  Use("usim");
  EXPECT_EQ(Used(), 180U);
  const std::uint64_t before = card->Channel().CommandCount();
  // The card is left to others after 30 ms without a command, and once a second: then the file is
  // selected again.
  using Clock = std::chrono::steady_clock;
  const auto since = Clock::now();
  std::atomic<std::uint64_t> left = 0;
  LastingCard().SetPlan([&left, last = since](std::span<const std::uint8_t>) mutable {
    const auto now = Clock::now();
    if (now - std::exchange(last, now) > std::chrono::milliseconds(25)) ++left;
    return Fate::kAnswered;
  });
  EXPECT_EQ(Listed(500).size(), 180U);
  LastingCard().SetPlan(nullptr);
  left += static_cast<std::uint64_t>((Clock::now() - since) / std::chrono::milliseconds(900));
  // One READ RECORD for each entry; the file is found in a few more, each time in up to six.
  EXPECT_LE(card->Channel().CommandCount() - before, 180U + 20U + 6U * left);
}

TEST_F(CardKindsTest, APinIsWantedAgainAfterAnotherProgramResetTheCard) {
  Use("usim", WantPin);
  CardLockState lock;
  ASSERT_EQ(service->VerifyPin("1234", LastTry::kKeep, lock), CardLockResult::kTaken);
  EXPECT_EQ(Used(), 180U);
  const std::uint32_t powerUp = lock.powerUp;
  OtherProgram(LastingCard().Reader()).Reset();
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim->Status(used, total), SimResult::kPinRequired);
  ASSERT_EQ(service->GetLockState(lock), SimResult::kOk);
  EXPECT_TRUE(lock.wanted);
  EXPECT_EQ(lock.triesLeft, 3);
  EXPECT_NE(lock.powerUp, powerUp);
}

TEST_F(CardKindsTest, APinIsNotWantedAgainWhileTheCardRests) {
  Use("usim", WantPin);
  CardLockState lock;
  ASSERT_EQ(service->VerifyPin("1234", LastTry::kKeep, lock), CardLockResult::kTaken);
  // The daemon takes the power from a card that nobody is connected to after some 400 ms.
  std::this_thread::sleep_for(std::chrono::milliseconds(1200));
  EXPECT_EQ(sim->Write(1, u"Awake", u"1"), SimResult::kOk);
}

}  // namespace
}  // namespace kelpin::contract
