#include "tests/softcard/card_fixture.h"

namespace kelpin::device::softcard {
namespace {

constexpr char kFirst[] = "4142038121F3FFFFFFFFFFFFFFFFFFFF";
constexpr char kFree[] = "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF";
constexpr char kThird[] = "4344048121436587FFFFFFFFFFFFFFFF";

class RecordTest : public CardTest {
 protected:
  RecordTest() { Go("7F106F3A"); }
};

TEST_F(RecordTest, ARecordIsReadWithItsLengthAndToldTheRightOneOtherwise) {
  EXPECT_EQ(Say("00B2010410"), std::string(kFirst) + "9000");
  EXPECT_EQ(Say("00B2010400"), "6C10");
  EXPECT_EQ(Say("00B2010411"), "6C10");
  EXPECT_EQ(Say("00B201040F"), "6C10");
  EXPECT_EQ(Say("A0B201040F"), "6710");
  EXPECT_EQ(Say("00B2050410"), "6A83");
  EXPECT_EQ(Say("A0B2050410"), "9402");
  EXPECT_EQ(Say("00B2010010"), "6A86");
  EXPECT_EQ(Say("A0B2010010"), "6B00");
}

TEST_F(RecordTest, NextAndPreviousWalkAndStopAtTheEnds) {
  EXPECT_EQ(Say("00B2000410"), "6A83");  // no current record yet
  EXPECT_EQ(Say("00B2000200"), "6C10");  // which does not move the pointer
  EXPECT_EQ(Say("00B2000210"), std::string(kFirst) + "9000");
  EXPECT_EQ(Say("00B2000310"), "6A83");
  EXPECT_EQ(Say("00B2000210"), std::string(kFree) + "9000");
  EXPECT_EQ(Say("00B2000210"), std::string(kThird) + "9000");
  EXPECT_EQ(Say("00B2010410"), std::string(kFirst) + "9000");  // absolute: the pointer stays
  EXPECT_EQ(Say("00B2000410"), std::string(kThird) + "9000");
  EXPECT_EQ(Say("00B2000210"), std::string(kFree) + "9000");
  EXPECT_EQ(Say("00B2000210"), "6A83");
  EXPECT_EQ(Say("00B2000310"), std::string(kThird) + "9000");
  EXPECT_EQ(Say("00B2010210"), "6A86");
}

TEST_F(RecordTest, PreviousBeginsAtTheLast) {
  EXPECT_EQ(Say("A0B2000310"), std::string(kFree) + "9000");
  EXPECT_EQ(Say("A0B2000310"), std::string(kThird) + "9000");
}

TEST_F(RecordTest, AShortIdMakesTheFileCurrent) {
  Go("7F10");
  // 6F3A has none of its own: the low five bits of its id, 1A; P2 = 1A << 3 | 4.
  EXPECT_EQ(Say("00B201D410"), std::string(kFirst) + "9000");
  EXPECT_EQ(Say("00B2030410"), std::string(kThird) + "9000");
  EXPECT_EQ(Say("00B2011402"), "6A82");      // nobody's
  EXPECT_EQ(Say("00B2012402"), "6A82");      // 04 would be 6F44's, which has no short id
  EXPECT_EQ(Say("00B2013C02"), "FFFF9000");  // 07, stated
  EXPECT_EQ(Say("00B0890002"), "AABB9000");  // 09, a transparent file
}

TEST_F(RecordTest, AWrittenRecordIsThereAndSaved) {
  EXPECT_EQ(Say("00DC020410"
                "58580281FFFFFFFFFFFFFFFFFFFFFFFF"),
            "9000");
  EXPECT_EQ(saves_, 1);
  EXPECT_EQ(Say("00B2020410"),
            "58580281FFFFFFFFFFFFFFFFFFFFFFFF"
            "9000");
  EXPECT_EQ(Say("00DC02040F"
                "58580281FFFFFFFFFFFFFFFFFFFFFF"),
            "6700");
  EXPECT_EQ(Say("A0DC02040F"
                "58580281FFFFFFFFFFFFFFFFFFFFFF"),
            "6710");
  EXPECT_EQ(Say("00DC050410"
                "58580281FFFFFFFFFFFFFFFFFFFFFFFF"),
            "6A83");
  EXPECT_EQ(saves_, 1);
}

TEST_F(RecordTest, ADiskThatRefusesLeavesTheOldRecord) {
  diskWorks_ = false;
  EXPECT_EQ(Say("00DC010410"
                "58580281FFFFFFFFFFFFFFFFFFFFFFFF"),
            "6581");
  EXPECT_EQ(Say("A0DC010410"
                "58580281FFFFFFFFFFFFFFFFFFFFFFFF"),
            "9240");
  EXPECT_EQ(Say("00B2010410"), std::string(kFirst) + "9000");
}

TEST_F(RecordTest, ALinkedFileShowsTheSameRecords) {
  Say("00DC020410"
      "58580281FFFFFFFFFFFFFFFFFFFFFFFF");
  Go("5F3A4F30");
  EXPECT_EQ(Say("00B2020410"),
            "58580281FFFFFFFFFFFFFFFFFFFFFFFF"
            "9000");
  Say("00DC020410"
      "59590281FFFFFFFFFFFFFFFFFFFFFFFF");
  Go("7F106F3A");
  EXPECT_EQ(Say("00B2020410"),
            "59590281FFFFFFFFFFFFFFFFFFFFFFFF"
            "9000");
}

TEST_F(RecordTest, ACyclicFileTakesTheOldestAndWraps) {
  Go("7F106F44");
  EXPECT_EQ(Say("00B2010402"), "00019000");
  EXPECT_EQ(Say("00DC0103"
                "0200AA"),
            "9000");
  EXPECT_EQ(Say("00B2010402"), "00AA9000");
  EXPECT_EQ(Say("00B2020402"), "00019000");
  EXPECT_EQ(Say("00B2030402"), "00029000");
  EXPECT_EQ(Say("00B2000302"), "00029000");  // before the first comes the last
  EXPECT_EQ(Say("00B2000202"), "00AA9000");
  EXPECT_EQ(Say("00DC0104"
                "0200AA"),
            "6A86");
  diskWorks_ = false;
  EXPECT_EQ(Say("00DC0103"
                "0200BB"),
            "6581");
  EXPECT_EQ(Say("00B2010402"), "00AA9000");
}

TEST_F(RecordTest, SearchListsEveryRecordThatHoldsThePattern) {
  const std::string free = kFree;
  EXPECT_EQ(Say("00A2010410" + free), "6102");
  EXPECT_EQ(Say("00C0000002"), "02049000");
  EXPECT_EQ(Say("00A2030410" + free + "00"), "6101");
  EXPECT_EQ(Say("00C0000001"), "049000");
  EXPECT_EQ(Say("00A2040510" + free), "6102");  // backward
  EXPECT_EQ(Say("00C0000002"), "04029000");
  EXPECT_EQ(Say("00A20104028121"), "6102");  // anywhere in the record
  EXPECT_EQ(Say("00C0000002"), "01039000");
  EXPECT_EQ(Say("00B2000410"), std::string(kFirst) + "9000");  // the first found is current
  EXPECT_EQ(Say("00A20104025A5A"), "6282");
  EXPECT_EQ(Say("00A2050410" + free), "6A83");
  EXPECT_EQ(Say("00A2010411" + free + "FF"), "6700");
  EXPECT_EQ(Say("00A20106020841"), "6A81");
  EXPECT_EQ(Say("00A20102020841"), "6A86");
}

TEST_F(RecordTest, SearchByShortIdAndFromTheCurrentRecord) {
  Go("7F10");
  EXPECT_EQ(Say("00A200D4024344"), "6101");
  EXPECT_EQ(Say("00C0000001"), "039000");
  EXPECT_EQ(Say("00A20004024142"), "6282");  // from record 3 on
  EXPECT_EQ(Say("00A20005024142"), "6101");  // and back
}

TEST_F(RecordTest, SeekFindsWhatBeginsWithThePattern) {
  EXPECT_EQ(Say("A0A2000002FFFF"), "9000");
  EXPECT_EQ(Say("A0B2000410"), std::string(kFree) + "9000");
  EXPECT_EQ(Say("A0A2001002FFFF"), "9F01");
  EXPECT_EQ(Say("A0C0000001"), "029000");
  EXPECT_EQ(Say("A0A2001202FFFF"), "9F01");  // the next
  EXPECT_EQ(Say("A0C0000001"), "049000");
  EXPECT_EQ(Say("A0A2001202FFFF"), "9404");
  EXPECT_EQ(Say("A0A2001302FFFF"), "9F01");  // the one before
  EXPECT_EQ(Say("A0C0000001"), "029000");
  EXPECT_EQ(Say("A0A20011024142"), "9F01");  // from the end
  EXPECT_EQ(Say("A0C0000001"), "019000");
  EXPECT_EQ(Say("A0A20010028121"), "9404");  // stands within, not at the beginning
  EXPECT_EQ(Say("A0A2001011"
                "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"),
            "6710");
  EXPECT_EQ(Say("A0A2002002FFFF"), "6B00");
}

TEST_F(RecordTest, ACardWithoutSearchDoesNotKnowTheCommand) {
  PutIn(SmallCard(R"("searchRecord": false, )"));
  Go("7F106F3A");
  EXPECT_EQ(Say("00A20104024142"), "6D00");
  EXPECT_EQ(Say("A0A20010024142"), "6D00");
}

TEST_F(RecordTest, BytesAreReadFromAnOffset) {
  Go("3F002F02");
  EXPECT_EQ(Say("00B000000A"), "001122334455667788999000");
  EXPECT_EQ(Say("00B0000402"), "44559000");
  EXPECT_EQ(Say("00B0000400"), "6C06");
  EXPECT_EQ(Say("00B0000407"), "6C06");
  EXPECT_EQ(Say("A0B0000407"), "6706");
  EXPECT_EQ(Say("00B0000A01"), "6B00");
  EXPECT_EQ(Say("A0B0000A01"), "9402");
  EXPECT_EQ(Say("00B082000A"), "980010325476981032549000");  // short id 2
  EXPECT_EQ(Say("00B0C20001"), "6A86");
}

TEST_F(RecordTest, BytesAreWrittenAtAnOffset) {
  Go("3F002F02");
  EXPECT_EQ(Say("00D6000802AABB"), "9000");
  EXPECT_EQ(Say("00B000000A"), "0011223344556677AABB9000");
  EXPECT_EQ(Say("00D6000902CCDD"), "6700");
  EXPECT_EQ(Say("A0D6000902CCDD"), "6701");
  diskWorks_ = false;
  EXPECT_EQ(Say("00D6000001CC"), "6581");
  EXPECT_EQ(Say("00B0000001"), "009000");
}

TEST_F(RecordTest, ACommandOfTheOtherKindOfFileIsRefused) {
  EXPECT_EQ(Say("00B0000001"), "6981");
  EXPECT_EQ(Say("A0B0000001"), "9408");
  EXPECT_EQ(Say("00D6000001AA"), "6981");
  Go("3F002F02");
  EXPECT_EQ(Say("00B2010410"), "6981");
  EXPECT_EQ(Say("A0B2010410"), "9408");
  EXPECT_EQ(Say("00A20104014D"), "6981");
  EXPECT_EQ(Say("A0A200000141"), "9408");
}

TEST_F(RecordTest, WhatNobodyMayWriteIsNotWritten) {
  Go("3F002FE2");
  EXPECT_EQ(Say("00D6000001AA"), "6982");
  EXPECT_EQ(Say("A0D6000001AA"), "9804");
  Go("7F106F49");
  EXPECT_EQ(Say("00D6000001AA"), "6982");  // ADM, a code this card has not
  EXPECT_EQ(saves_, 0);
}

}  // namespace
}  // namespace kelpin::device::softcard
