#include "device/card/apdu_exchange.h"

#include <gtest/gtest.h>

#include "tests/card/scripted_channel.h"

namespace kelpin::device::card {
namespace {

constexpr CardCommand kReadRecordOne = {0xB2, 1, 4, {}, kWholeAnswer};

struct Exchange {
  Exchange() { static_cast<void>(channel.BeginTransaction() == TransportError::kNone); }
  ScriptedChannel channel;
  ApduExchange apdus{channel};
  std::vector<std::uint8_t> data = {0x55};
};

TEST(ApduExchange, AnotherLengthIsAskedForOnce) {
  Exchange exchange;
  exchange.channel.Expect("00B2010400", "6C04").Expect("00B2010404", "01020304 9000");
  EXPECT_TRUE(exchange.apdus.Send(kReadRecordOne, exchange.data).Ok());
  EXPECT_EQ(ToHex(exchange.data), "01020304");
  exchange.channel.Expect("00B2010400", "6C04").Expect("00B2010404", "6C05");
  EXPECT_EQ(exchange.apdus.Send(kReadRecordOne, exchange.data).Word(),
            static_cast<StatusWord>(0x6C05));
  EXPECT_EQ(ToHex(exchange.data), "01020304") << "left alone by a failure";
}

TEST(ApduExchange, AGsmCardTellsTheLengthWith67AndWaitingDataWith9F) {
  Exchange exchange;
  exchange.apdus.SetClass(kClassGsm);
  exchange.channel.Expect("A0B2010400", "6704").Expect("A0B2010404", "01020304 9000");
  EXPECT_TRUE(exchange.apdus.Send(kReadRecordOne, exchange.data).Ok());
  const auto id = Hex("6F3A");
  exchange.channel.Expect("A0A40000026F3A00", "6702")
      .Expect("A0A40000026F3A", "9F0F")
      .Expect("A0C000000F", "0000 0118 6F3A 04 00 11F022 01 02 01 1C 9000");
  EXPECT_TRUE(exchange.apdus.Send({0xA4, 0, 0, id, kWholeAnswer}, exchange.data).Ok());
  EXPECT_EQ(exchange.data.size(), 15U);
}

TEST(ApduExchange, ALengthAfterTheDataIsLeftOutOnceItWasRefused) {
  Exchange exchange;
  const auto id = Hex("4F3A");
  const CardCommand select = {0xA4, 0, 4, id, kWholeAnswer};
  exchange.channel.Expect("00A40004024F3A00", "6700")
      .Expect("00A40004024F3A", "6102")
      .Expect("00C0000002", "6200 9000")
      .Expect("00A40004024F3A", "6102")
      .Expect("00C0000002", "6200 9000");
  EXPECT_TRUE(exchange.apdus.Send(select, exchange.data).Ok());
  EXPECT_TRUE(exchange.apdus.Send(select, exchange.data).Ok());
}

TEST(ApduExchange, LongAnswersComeInPieces) {
  Exchange exchange;
  const auto id = Hex("4F3A");
  exchange.channel.Expect("00A40004024F3A00", "6100")
      .Expect("00C0000000", std::string(512, '1') + "6102")
      .Expect("00C0000002", "2222 9000");
  EXPECT_TRUE(exchange.apdus.Send({0xA4, 0, 4, id, kWholeAnswer}, exchange.data).Ok());
  EXPECT_EQ(exchange.data.size(), 258U);
  EXPECT_EQ(exchange.data.back(), 0x22);
}

TEST(ApduExchange, DataThatNobodyWantsIsNotFetched) {
  Exchange exchange;
  const auto id = Hex("4F3A");
  exchange.channel.Expect("00A40004024F3A", "6120");
  const CardResult result = exchange.apdus.Send({0xA4, 0, 4, id});
  EXPECT_TRUE(result.Ok());
  EXPECT_EQ(result.Word(), StatusWord::kOk);
}

TEST(ApduExchange, AProactiveCommandThatWaitsIsASuccess) {
  Exchange exchange;
  const auto record = Hex("0102");
  exchange.channel.Expect("00DC010402 0102", "9120");
  EXPECT_TRUE(exchange.apdus.Send({0xDC, 1, 4, record}).Ok());
  exchange.channel.Expect("00DC010402 0102", "9203");
  EXPECT_TRUE(exchange.apdus.Send({0xDC, 1, 4, record}).Ok());
  exchange.channel.Expect("00DC010402 0102", "9240");
  EXPECT_FALSE(exchange.apdus.Send({0xDC, 1, 4, record}).Ok());
  exchange.channel.Expect("00DC010402 0102", "9300");
  EXPECT_FALSE(exchange.apdus.Send({0xDC, 1, 4, record}).Ok());
}

TEST(ApduExchange, ACardThatNeverEndsIsGivenUp) {
  Exchange exchange;
  exchange.channel.Expect("00B2010400", "6101");
  for (int i = 0; i < 63; ++i) exchange.channel.Expect("00C0000001", "AA 6101");
  EXPECT_EQ(exchange.apdus.Send(kReadRecordOne, exchange.data).Error(),
            TransportError::kCommunication);
  EXPECT_EQ(ToHex(exchange.data), "55");
}

TEST(ApduExchange, AnAnswerWithoutAStatusWordIsGarbled) {
  Exchange exchange;
  exchange.channel.Expect("00B2010400", "90");
  EXPECT_EQ(exchange.apdus.Send(kReadRecordOne, exchange.data).Error(),
            TransportError::kCommunication);
}

TEST(ApduExchange, ATransportErrorIsPassedOn) {
  Exchange exchange;
  exchange.channel.Expect("00B2010400", "", TransportError::kTimeout);
  EXPECT_EQ(exchange.apdus.Send(kReadRecordOne, exchange.data).Error(), TransportError::kTimeout);
}

}  // namespace
}  // namespace kelpin::device::card
