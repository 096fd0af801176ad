#include "tests/softcard/card_fixture.h"

namespace kelpin::device::softcard {
namespace {

using ProtocolTest = CardTest;

TEST_F(ProtocolTest, WhatIsNoCommandIsAWrongLength) {
  EXPECT_EQ(Say(""), "6700");
  EXPECT_EQ(Say("00"), "6700");
  EXPECT_EQ(Say("00A400"), "6700");
  EXPECT_EQ(Say("00A4000C033F00"), "6700");      // Lc says three
  EXPECT_EQ(Say("00A4000C023F000000"), "6700");  // two bytes too many
  EXPECT_EQ(Say("00A4000C0000023F00"), "6700");  // an extended length
}

TEST_F(ProtocolTest, AnAnswerWaitsForGetResponseAndAnyOtherCommandDiscardsIt) {
  EXPECT_EQ(Say("00C0000010"), "6985");
  EXPECT_EQ(Say("00A40004023F00"), "6121");
  EXPECT_EQ(Say("00C0000000"), "6C21");  // nothing is lost
  EXPECT_EQ(Say("00C0000022"), "6C21");
  EXPECT_EQ(Say("00C0000003"), "621F82611E");
  EXPECT_EQ(Say("00C000001E").size(), 2 * (0x1E + 2u));
  EXPECT_EQ(Say("00C000001E"), "6985");
  EXPECT_EQ(Say("00A40004023F00"), "6121");
  EXPECT_EQ(Say("80F2000C"), "9000");
  EXPECT_EQ(Say("00C0000021"), "6985");
}

TEST_F(ProtocolTest, TheAnswerBelongsToItsClassAndChannel) {
  Say("0070000001");
  Say("00A40004023F00");
  EXPECT_EQ(Say("01C0000021"), "6985");
  EXPECT_EQ(Say("A0C0000021"), "6F00");
  EXPECT_EQ(Say("00C0000021").size(), 2 * (0x21 + 2u));
}

TEST_F(ProtocolTest, ASimGivesPartOfItsAnswerAndForgetsTheRest) {
  EXPECT_EQ(Say("A0A40000022FE2"), "9F0F");
  EXPECT_EQ(Say("A0C0000010"), "670F");
  EXPECT_EQ(Say("A0C0000004"), "0000000A9000");
  EXPECT_EQ(Say("A0C000000B"), "6F00");
}

TEST_F(ProtocolTest, ACaseFourCommandWithLeAnswersTheSame) {
  EXPECT_EQ(Say("00A40004023F0000"), "6121");
}

TEST_F(ProtocolTest, InstructionsAndClassesNobodyKnows) {
  EXPECT_EQ(Say("00880000021122"), "6D00");
  EXPECT_EQ(Say("A08800001000112233445566778899AABBCCDDEEFF"), "6D00");
  EXPECT_EQ(Say("10A4000C023F00"), "6E00");
  EXPECT_EQ(Say("B0A4000C023F00"), "6E00");
  EXPECT_EQ(Say("80A4000C023F00"), "6E00");
  EXPECT_EQ(Say("04A4000C023F00"), "6882");
  EXPECT_EQ(Say("FFA4000C023F00"), "6E00");
}

TEST_F(ProtocolTest, TheToolkitIsHeardAndHasNothingToSay) {
  EXPECT_EQ(Say("8010000004FFFFFFFF"), "9000");
  EXPECT_EQ(Say("A010000004FFFFFFFF"), "9000");
  EXPECT_EQ(Say("80C2000003D60111"), "9000");
  EXPECT_EQ(Say("8012000010"), "6985");
}

TEST_F(ProtocolTest, APureSimAndAPureUiccRefuseTheOtherClass) {
  PutIn(SmallCard(R"("classes": "A0", )"));
  EXPECT_EQ(Say("00A40004023F00"), "6E00");
  EXPECT_EQ(Say("A0A40000023F00"), "9F16");
  PutIn(SmallCard(R"("classes": "00", )"));
  EXPECT_EQ(Say("A0A40000023F00"), "6E00");
  EXPECT_EQ(Say("00A40004023F00"), "6121");
}

TEST_F(ProtocolTest, TheFirstCommandMayDecideTheClass) {
  PutIn(SmallCard(R"("classes": "first", )"));
  EXPECT_EQ(Say("A0A40000023F00"), "9F16");
  EXPECT_EQ(Say("00A40004023F00"), "6E00");
  card_->Reset();
  EXPECT_EQ(Say("00A40004023F00"), "6121");
  EXPECT_EQ(Say("A0A40000023F00"), "6E00");
}

class BlockProtocolTest : public CardTest {
 protected:
  BlockProtocolTest() : CardTest(SmallCard(R"("protocol": "T1", )")) {}
};

TEST_F(BlockProtocolTest, DataComeAtOnce) {
  EXPECT_EQ(Say("00A40004023F0000").substr(0, 12), "621F82027821");
  EXPECT_EQ(Say("00A40004023F0021").size(), 2 * (0x21 + 2u));
  EXPECT_EQ(Say("00A40004023F00"), "9000");  // nothing was asked for
  EXPECT_EQ(Say("00A40004023F0004"), "621F8202611D");
  EXPECT_EQ(Say("00C000001D").size(), 2 * (0x1D + 2u));
}

TEST_F(BlockProtocolTest, LeZeroMeansAllThereIs) {
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2010400"), "4142038121F3FFFFFFFFFFFFFFFFFFFF9000");
  EXPECT_EQ(Say("00B2010408"), "6C10");
  EXPECT_EQ(Say("00B20104"), "9000");
  EXPECT_EQ(Say("00A201040241"
                "4200"),
            "019000");
  Go("3F002F02");
  EXPECT_EQ(Say("00B0000400"), "4455667788999000");
  EXPECT_EQ(Say("00B0000408"), "4455667788996282");
  EXPECT_EQ(Say("0070000000"), "019000");
}

TEST_F(BlockProtocolTest, AWarningComesWithItsData) {
  Go("7F106F49");
  Say("00040000");
  const std::string answer = Say("00A40004026F4900");
  EXPECT_EQ(answer.substr(0, 2), "62");
  EXPECT_EQ(answer.substr(answer.size() - 4), "6283");
}

}  // namespace
}  // namespace kelpin::device::softcard
