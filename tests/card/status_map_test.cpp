#include "device/card/status_map.h"

#include <gtest/gtest.h>

namespace kelpin::device::card {
namespace {

using platform::SimResult;

TEST(StatusMap, EveryStatusWordHasAResult) {
  const std::pair<int, SimResult> table[] = {
      {0x9000, SimResult::kOk},
      {0x9110, SimResult::kOk},
      {0x9203, SimResult::kOk},
      {0x9240, SimResult::kMemoryFailure},
      {0x6581, SimResult::kMemoryFailure},
      {0x6500, SimResult::kMemoryFailure},
      {0x6982, SimResult::kPinRequired},
      {0x9804, SimResult::kPinRequired},
      {0x63C2, SimResult::kIncorrectPassword},
      {0x6983, SimResult::kPukRequired},
      {0x9840, SimResult::kPukRequired},
      {0x6984, SimResult::kUnsupported},
      {0x9810, SimResult::kUnsupported},
      {0x6A82, SimResult::kUnsupported},
      {0x9404, SimResult::kUnsupported},
      {0x6D00, SimResult::kUnsupported},
      {0x6E00, SimResult::kUnsupported},
      {0x6881, SimResult::kUnsupported},
      {0x6A83, SimResult::kInvalidIndex},
      {0x9402, SimResult::kInvalidIndex},
      {0x6A84, SimResult::kSimFull},
      {0x6700, SimResult::kBadParameter},
      {0x6B00, SimResult::kBadParameter},
      {0x6A86, SimResult::kBadParameter},
      {0x9300, SimResult::kToolkitBusy},
      {0x6F00, SimResult::kSimFailure},
      {0x6981, SimResult::kSimFailure},
      {0x9408, SimResult::kSimFailure},
      {0x6986, SimResult::kSimFailure},
      {0x0000, SimResult::kSimFailure},
  };
  for (const auto& [word, result] : table) {
    EXPECT_EQ(ToSimResult(static_cast<StatusWord>(word)), result) << std::hex << word;
    EXPECT_EQ(ToSimResult(CardResult(static_cast<StatusWord>(word))), result) << std::hex << word;
  }
}

TEST(StatusMap, EveryTransportErrorHasAResult) {
  EXPECT_EQ(ToSimResult(TransportError::kNone), SimResult::kOk);
  EXPECT_EQ(ToSimResult(TransportError::kNoReader), SimResult::kRadioNotPresent);
  EXPECT_EQ(ToSimResult(TransportError::kNoCard), SimResult::kNotInserted);
  EXPECT_EQ(ToSimResult(TransportError::kRemoved), SimResult::kNotInserted);
  EXPECT_EQ(ToSimResult(TransportError::kReset), SimResult::kNotReady);
  EXPECT_EQ(ToSimResult(TransportError::kTimeout), SimResult::kUndetermined);
  EXPECT_EQ(ToSimResult(TransportError::kCommunication), SimResult::kSimFailure);
  EXPECT_EQ(ToSimResult(TransportError::kBusy), SimResult::kSimBusy);
  EXPECT_EQ(ToSimResult(TransportError::kStorage), SimResult::kMemoryFailure);
  EXPECT_EQ(ToSimResult(TransportError::kRadioOff), SimResult::kRadioOff);
  EXPECT_EQ(ToSimResult(TransportError::kPin2Needed), SimResult::kPin2Required);
  EXPECT_EQ(ToSimResult(TransportError::kPuk2Needed), SimResult::kPuk2Required);
}

TEST(StatusMap, OnlyAnErrorAfterSendingLeavesDoubt) {
  EXPECT_FALSE(LeavesDoubt(TransportError::kNone));
  EXPECT_FALSE(LeavesDoubt(TransportError::kBusy));
  EXPECT_FALSE(LeavesDoubt(TransportError::kStorage));
  EXPECT_FALSE(LeavesDoubt(TransportError::kRadioOff));
  EXPECT_FALSE(LeavesDoubt(TransportError::kPin2Needed));
  EXPECT_FALSE(LeavesDoubt(TransportError::kPuk2Needed));
  EXPECT_TRUE(LeavesDoubt(TransportError::kTimeout));
  EXPECT_TRUE(LeavesDoubt(TransportError::kCommunication));
  EXPECT_TRUE(LeavesDoubt(TransportError::kRemoved));
  EXPECT_TRUE(LeavesDoubt(TransportError::kReset));
}

}  // namespace
}  // namespace kelpin::device::card
