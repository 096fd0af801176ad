#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/card_lock.h"

namespace kelpin::test {

// A bench has one card whose PIN is 1234 and whose PUK is 12345678, of three and ten tries, and:
//   Bench(int tries, int unblockTries)   the tries left; 0 tries: blocked
//   platform::CardLock& Port()
//   int Sent()                           codes that reached the card
//   int Tries(), UnblockTries()          as the card counts them
//   void Reset()                         the card is powered anew, by whoever
template <typename Bench>
class CardLockContract : public ::testing::Test {
 protected:
  using Result = platform::CardLockResult;
  using LastTry = platform::LastTry;

  void Make(int tries = 3, int unblockTries = 10) {
    bench_ = std::make_unique<Bench>(tries, unblockTries);
  }
  platform::CardLock& Port() { return bench_->Port(); }
  platform::CardLockState State() {
    platform::CardLockState state;
    EXPECT_EQ(Port().GetLockState(state), platform::SimResult::kOk);
    return state;
  }
  Result Verify(std::string_view pin, LastTry lastTry = LastTry::kKeep) {
    return Port().VerifyPin(pin, lastTry, after_);
  }
  Result Unblock(std::string_view puk, std::string_view pin, LastTry lastTry = LastTry::kKeep) {
    return Port().UnblockPin(puk, pin, lastTry, after_);
  }

  std::unique_ptr<Bench> bench_;
  platform::CardLockState after_;
};

TYPED_TEST_SUITE_P(CardLockContract);

TYPED_TEST_P(CardLockContract, TheStateIsToldWithoutACode) {
  this->Make(2);
  const platform::CardLockState state = this->State();
  EXPECT_TRUE(state.wanted);
  EXPECT_FALSE(state.blocked);
  EXPECT_EQ(state.triesLeft, 2);
  EXPECT_EQ(this->bench_->Sent(), 0);
}

TYPED_TEST_P(CardLockContract, TheRightPinOpensTheCardAndGivesTheTriesBack) {
  this->Make(2);
  EXPECT_EQ(this->Verify("1234"), TestFixture::Result::kTaken);
  EXPECT_FALSE(this->after_.wanted);
  EXPECT_FALSE(this->State().wanted);
  EXPECT_EQ(this->bench_->Tries(), 3);
  EXPECT_EQ(this->bench_->Sent(), 1);
  // Nothing is sent to a card that wants nothing.
  EXPECT_EQ(this->Verify("9999"), TestFixture::Result::kTaken);
  EXPECT_EQ(this->bench_->Sent(), 1);
}

TYPED_TEST_P(CardLockContract, AWrongPinCostsATryAndIsNotSentAgain) {
  this->Make();
  EXPECT_EQ(this->Verify("4321"), TestFixture::Result::kRefused);
  EXPECT_TRUE(this->after_.wanted);
  EXPECT_EQ(this->after_.triesLeft, 2);
  EXPECT_EQ(this->Verify("4321"), TestFixture::Result::kRefusedBefore);
  this->bench_->Reset();
  EXPECT_EQ(this->Verify("4321"), TestFixture::Result::kRefusedBefore);
  EXPECT_EQ(this->bench_->Tries(), 2);
  EXPECT_EQ(this->bench_->Sent(), 1);
  EXPECT_EQ(this->Verify("43210"), TestFixture::Result::kRefused);
  EXPECT_EQ(this->bench_->Tries(), 1);
}

TYPED_TEST_P(CardLockContract, WhatIsNoPinIsNotSent) {
  this->Make();
  for (const char* code : {"", "123", "123456789", "12a4", "12 34", "+1234"}) {
    EXPECT_EQ(this->Verify(code), TestFixture::Result::kNoCode) << code;
  }
  EXPECT_EQ(this->bench_->Sent(), 0);
}

TYPED_TEST_P(CardLockContract, TheLastTryIsKeptUnlessItIsToBeRisked) {
  this->Make(1);
  EXPECT_EQ(this->Verify("4321"), TestFixture::Result::kLastTry);
  EXPECT_EQ(this->bench_->Sent(), 0);
  EXPECT_EQ(this->Verify("4321", TestFixture::LastTry::kRisk), TestFixture::Result::kBlocked);
  EXPECT_TRUE(this->after_.wanted);
  EXPECT_TRUE(this->after_.blocked);
  EXPECT_EQ(this->after_.triesLeft, 0);
  EXPECT_EQ(this->after_.unblockTriesLeft, 10);
  EXPECT_EQ(this->Verify("1234", TestFixture::LastTry::kRisk), TestFixture::Result::kBlocked);
  EXPECT_EQ(this->bench_->Sent(), 1);
}

TYPED_TEST_P(CardLockContract, ThePukOpensABlockedCardAndSetsThePin) {
  this->Make(0);
  EXPECT_EQ(this->Unblock("12345678", "2468"), TestFixture::Result::kTaken);
  EXPECT_FALSE(this->after_.wanted);
  EXPECT_FALSE(this->after_.blocked);
  EXPECT_EQ(this->bench_->Tries(), 3);
  this->bench_->Reset();
  EXPECT_EQ(this->Verify("2468"), TestFixture::Result::kTaken);
}

TYPED_TEST_P(CardLockContract, APinThatWasRefusedMayBecomeTheNewOne) {
  this->Make(1);
  EXPECT_EQ(this->Verify("4321", TestFixture::LastTry::kRisk), TestFixture::Result::kBlocked);
  EXPECT_EQ(this->Unblock("12345678", "4321"), TestFixture::Result::kTaken);
  this->bench_->Reset();
  EXPECT_EQ(this->Verify("4321"), TestFixture::Result::kTaken);
}

TYPED_TEST_P(CardLockContract, AWrongPukCostsATryAndIsNotSentAgain) {
  this->Make(0, 3);
  EXPECT_EQ(this->Unblock("87654321", "2468"), TestFixture::Result::kRefused);
  EXPECT_TRUE(this->after_.blocked);
  EXPECT_EQ(this->after_.unblockTriesLeft, 2);
  EXPECT_EQ(this->Unblock("87654321", "1357"), TestFixture::Result::kRefusedBefore);
  EXPECT_EQ(this->bench_->UnblockTries(), 2);
  EXPECT_EQ(this->bench_->Sent(), 1);
}

TYPED_TEST_P(CardLockContract, TheLastTryOfThePukIsKeptUnlessItIsToBeRisked) {
  this->Make(0, 1);
  EXPECT_EQ(this->Unblock("87654321", "2468"), TestFixture::Result::kLastTry);
  EXPECT_EQ(this->bench_->Sent(), 0);
  EXPECT_EQ(this->Unblock("87654321", "2468", TestFixture::LastTry::kRisk),
            TestFixture::Result::kBlocked);
  EXPECT_EQ(this->after_.unblockTriesLeft, 0);
  EXPECT_EQ(this->Unblock("12345678", "2468", TestFixture::LastTry::kRisk),
            TestFixture::Result::kBlocked);
  EXPECT_EQ(this->bench_->Sent(), 1);
}

TYPED_TEST_P(CardLockContract, WhatIsNoPukAndACardThatIsNotBlockedGetNothing) {
  this->Make(0);
  EXPECT_EQ(this->Unblock("1234567", "2468"), TestFixture::Result::kNoCode);
  EXPECT_EQ(this->Unblock("123456789", "2468"), TestFixture::Result::kNoCode);
  EXPECT_EQ(this->Unblock("12345678", "246"), TestFixture::Result::kNoCode);
  EXPECT_EQ(this->bench_->Sent(), 0);
  this->Make(3);
  EXPECT_EQ(this->Unblock("12345678", "2468"), TestFixture::Result::kFailed);
  EXPECT_EQ(this->bench_->Sent(), 0);
}

TYPED_TEST_P(CardLockContract, ACardThatIsPoweredAnewWantsItsPinAgainAndSaysSo) {
  this->Make();
  EXPECT_EQ(this->Verify("1234"), TestFixture::Result::kTaken);
  const std::uint32_t before = this->State().powerUp;
  this->bench_->Reset();
  const platform::CardLockState state = this->State();
  EXPECT_TRUE(state.wanted);
  // At the latest when the word of the reset has come, which may be after it was noticed.
  EXPECT_NE(state.powerUp, before);
}

REGISTER_TYPED_TEST_SUITE_P(
    CardLockContract, TheStateIsToldWithoutACode, TheRightPinOpensTheCardAndGivesTheTriesBack,
    AWrongPinCostsATryAndIsNotSentAgain, WhatIsNoPinIsNotSent, TheLastTryIsKeptUnlessItIsToBeRisked,
    ThePukOpensABlockedCardAndSetsThePin, APinThatWasRefusedMayBecomeTheNewOne,
    AWrongPukCostsATryAndIsNotSentAgain, TheLastTryOfThePukIsKeptUnlessItIsToBeRisked,
    WhatIsNoPukAndACardThatIsNotBlockedGetNothing, ACardThatIsPoweredAnewWantsItsPinAgainAndSaysSo);

}  // namespace kelpin::test
