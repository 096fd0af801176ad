#include "sim/ext_records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/sim/bytes.h"

namespace kelpin::sim {
namespace {

constexpr char16_t kTwenty[] = u"12345678901234567890";
constexpr std::uint8_t kNone = 0xFF;

TEST(SplitForRecord, TwentyDigitsFit) {
  const SplitNumber split = SplitForRecord(kTwenty);
  EXPECT_EQ(split.digits, kTwenty);
  EXPECT_EQ(split.rest, u"");
  EXPECT_FALSE(split.international);
}

TEST(SplitForRecord, APlusInFrontTakesNoRoom) {
  const SplitNumber split = SplitForRecord(std::u16string(u"+") + kTwenty);
  EXPECT_EQ(split.digits, std::u16string(u"+") + kTwenty);
  EXPECT_EQ(split.rest, u"");
  EXPECT_TRUE(split.international);
  EXPECT_EQ(SplitForRecord(std::u16string(u"+") + kTwenty + u"7").rest, u"7");
}

TEST(SplitForRecord, TheTwentyFirstDigitIsTheRest) {
  const SplitNumber split = SplitForRecord(std::u16string(kTwenty) + u"98");
  EXPECT_EQ(split.digits, kTwenty);
  EXPECT_EQ(split.rest, u"98");
}

TEST(SplitForRecord, APlusAloneIsNoRest) {
  const SplitNumber split = SplitForRecord(std::u16string(kTwenty) + u"+");
  EXPECT_EQ(split.rest, u"");
  EXPECT_TRUE(split.international);
}

TEST(NumberRecord, HoldsNameLengthTypeDigitsCapabilityAndExtension) {
  EXPECT_EQ(NumberRecord(ByteVector(15, 0xFF), SplitForRecord(u"1234567890"), 3, kNone, false),
            Bytes("03 06 81 2143658709 FFFFFFFFFF FF FF"));
  EXPECT_EQ(NumberRecord(ByteVector(15, 0xFF), SplitForRecord(u"+4930123"), 0, 5, false),
            Bytes("00 05 91 940321F3 FFFFFFFFFFFF FF 05"));
}

TEST(NumberRecord, IsInternationalWhereverThePlusStood) {
  // The '+' is the 21st character and so stands in the rest.
  EXPECT_EQ(
      NumberRecord(ByteVector(15, 0xFF), SplitForRecord(u"*1*45678901234567890+4"), 0, 1, false),
      Bytes("00 0B 91 1A4A6587092143658709 FF 01"));
}

TEST(NumberRecord, KeepsTheOldName) {
  for (const auto& [old, kept] : std::vector<std::pair<int, int>>{{7, 7}, {0, 0}, {255, 0}}) {
    ByteVector before(15, 0xFF);
    before[0] = static_cast<std::uint8_t>(old);
    const auto record = NumberRecord(before, SplitForRecord(u"1"), -1, kNone, false);
    ASSERT_EQ(record.size(), 15u);
    EXPECT_EQ(record[0], kept);
  }
}

TEST(NumberRecord, KeepsTheOldCapability) {
  ByteVector before(15, 0xFF);
  before[13] = 0x02;
  EXPECT_EQ(NumberRecord(before, SplitForRecord(u"1"), 0, kNone, false),
            Bytes("00 02 81 F1 FFFFFFFFFFFFFFFFFF 02 FF"));
}

TEST(NumberRecord, KeepsTheLinkOfATypeTwoRecord) {
  ByteVector before(17, 0xFF);
  before[15] = 1;
  before[16] = 9;
  EXPECT_EQ(NumberRecord(before, SplitForRecord(u"1"), 0, kNone, true),
            Bytes("00 02 81 F1 FFFFFFFFFFFFFFFFFF FF FF 01 09"));
}

TEST(NumberRecord, IsNotMadeForRecordsTooShort) {
  const SplitNumber number = SplitForRecord(u"1");
  EXPECT_TRUE(NumberRecord(ByteVector(14, 0xFF), number, 0, kNone, false).empty());
  EXPECT_TRUE(NumberRecord(ByteVector(16, 0xFF), number, 0, kNone, true).empty());
  EXPECT_TRUE(NumberRecord({}, number, 0, kNone, false).empty());
}

TEST(ExtensionRecord, HoldsAdditionalDataAndNoFurtherRecord) {
  EXPECT_EQ(ExtensionRecord(u"987654321012345"), Bytes("02 08 89674523012143F5 FFFF FF"));
  EXPECT_EQ(ExtensionRecord(kTwenty), Bytes("02 0A 21436587092143658709 FF"));
  EXPECT_TRUE(ExtensionRecord(std::u16string(kTwenty) + u"1").empty());
}

TEST(TextRecord, IsPaddedAndKeepsTheLinkOfATypeTwoRecord) {
  EXPECT_EQ(TextRecord(ByteVector(8, 0xEE), u"abc\u20AC", false), Bytes("616263 1B65 FFFFFF"));
  EXPECT_EQ(TextRecord(Bytes("EEEEEEEEEEEE 0109"), u"ab", true), Bytes("6162FFFFFFFF 0109"));
}

TEST(TextRecord, CutsWhatDoesNotFit) {
  EXPECT_EQ(TextRecord(ByteVector(5, 0xFF), u"abcdefg", false), Bytes("6162636465"));
  EXPECT_EQ(TextRecord(Bytes("EEEEEE 0109"), u"abcdefg", true), Bytes("616263 0109"));
  // Ten bytes have room for four characters, and a link takes one of them away.
  EXPECT_EQ(TextRecord(ByteVector(10, 0xFF), u"\u0416\u0416\u0416\u0416\u0416", false),
            Bytes("80 0416 0416 0416 0416 FF"));
  EXPECT_EQ(TextRecord(Bytes("EEEEEEEEEEEEEEEE 0109"), u"\u0416\u0416\u0416\u0416", true),
            Bytes("80 0416 0416 0416 FF 0109"));
}

TEST(TextRecord, IsNotMadeWithoutRoom) {
  EXPECT_TRUE(TextRecord({}, u"a", false).empty());
  EXPECT_TRUE(TextRecord(Bytes("0109"), u"a", true).empty());
}

TEST(References, AreThoseOfTheRecord) {
  const ByteVector record = Bytes("07 06 81 2143658709 FFFFFFFFFF FF 05");
  EXPECT_EQ(NameOf(record), 7);
  EXPECT_EQ(ExtensionOf(record), 5);
  EXPECT_EQ(NameOf(Bytes("FF")), 0);
  EXPECT_EQ(NameOf({}), 0);
  EXPECT_EQ(ExtensionOf(Bytes("070681")), 0xFF);
}

}  // namespace
}  // namespace kelpin::sim
