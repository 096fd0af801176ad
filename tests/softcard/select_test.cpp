#include "tests/softcard/card_fixture.h"

namespace kelpin::device::softcard {
namespace {

using SelectTest = CardTest;

TEST_F(SelectTest, AFileOfRecordsTellsItsSizesInTheFcp) {
  EXPECT_EQ(Go("7F10"), "9000");
  EXPECT_EQ(Say("00A40004026F3A"), "6142");
  // 62 40 | 82 descriptor, 42 21, 16 bytes, 4 records | 83 id | 8A activated | AB: read (01) and
  // update (02) with PIN1 (key reference 01), deactivate (08) and activate (10) with ADM (0A) |
  // 80 64 bytes. No 88: the short id follows from the id.
  EXPECT_EQ(Say("00C0000042"),
            "6240"
            "82054221001004"
            "83026F3A"
            "8A0105"
            "AB2C"
            "800101A406830101950108"
            "800102A406830101950108"
            "800108A40683010A950108"
            "800110A40683010A950108"
            "80020040"
            "9000");
}

TEST_F(SelectTest, AShortIdIsToldLeftAlignedAndNoneAsAnEmptyObject) {
  Go("7F10");
  const std::string with = Say("00A40004026F3B");
  ASSERT_EQ(with.substr(0, 2), "61");
  EXPECT_NE(Say("00C00000" + with.substr(2)).find("880138"), std::string::npos);  // 7 << 3
  const std::string none = Say("00A40004026F44");
  const std::string fcp = Say("00C00000" + none.substr(2));
  EXPECT_EQ(fcp.substr(fcp.size() - 8), "88009000");
  EXPECT_NE(fcp.find("82054621000203"), std::string::npos);  // cyclic, 2 bytes, 3 records
}

TEST_F(SelectTest, ADirectoryTellsItsPins) {
  EXPECT_EQ(Say("00A40004023F00").substr(0, 2), "61");
  Say("00A40004023F00");
  // 82 78 21 | 83 3F00 | A5 80 71 | 8A 05 | AB: nobody creates or deletes | C6: PIN1 off.
  EXPECT_EQ(Say("00C0000021"),
            "621F"
            "82027821"
            "83023F00"
            "A503800171"
            "8A0105"
            "AB0580017F9700"
            "C606900100830101"
            "9000");
}

TEST_F(SelectTest, AnApplicationTellsItsNameAndItsOwnPin) {
  EXPECT_EQ(Say("00A4040409A0000000871002FF01"), "6126");
  // C6: PIN1 (01) off, PIN2 (81) on: 40.
  EXPECT_EQ(Say("00C0000026"),
            "6224"
            "82027821"
            "8409A0000000871002FF01"
            "8A0105"
            "AB0580017F9700"
            "C609900140830101830181"
            "9000");
}

TEST_F(SelectTest, ASimAnswersInTheOldForm) {
  EXPECT_EQ(Say("A0A40000027F10"), "9F16");
  // Directory: id, type 02, 9 bytes more: PIN1 off and clock stop, 1 directory, 4 files, 4 codes,
  // 3 and 10 tries for each PIN and PUK.
  EXPECT_EQ(Say("A0C0000016"),
            "000000007F10020000000000"
            "09"
            "B1"
            "01"
            "04"
            "04"
            "00"
            "83"
            "8A"
            "83"
            "8A"
            "9000");
  EXPECT_EQ(Say("A0A40000026F3A"), "9F0F");
  // 64 bytes, read and update with CHV1, increase never, rehabilitate and invalidate with ADM.
  EXPECT_EQ(Say("A0C000000F"),
            "000000406F3A0400"
            "11F044"
            "01"
            "02"
            "0110"
            "9000");
}

TEST_F(SelectTest, ATransparentFileHasNoRecordLengthInTheOldForm) {
  EXPECT_EQ(Say("A0A40000022FE2"), "9F0F");
  EXPECT_EQ(Say("A0C000000F"),
            "0000000A2FE20400"
            "0FF044"
            "01"
            "02"
            "0000"
            "9000");
}

TEST_F(SelectTest, WhatCanBeReachedByIdIsNear) {
  EXPECT_EQ(Go("7F10"), "9000");
  EXPECT_EQ(Go("5F3A"), "9000");  // a child
  EXPECT_EQ(Go("5F3A"), "9000");  // itself
  EXPECT_EQ(Go("7F10"), "9000");  // its parent
  EXPECT_EQ(Go("7F20"), "9000");  // a sibling
  EXPECT_EQ(Go("6F3A"), "6A82");  // a sibling's file
  EXPECT_EQ(Go("5F3A"), "6A82");  // a sibling's directory
  EXPECT_EQ(Go("2FE2"), "6A82");  // the parent's file
  EXPECT_EQ(Go("3F00"), "9000");
  EXPECT_EQ(Go("2FE2"), "9000");
  EXPECT_EQ(Go("6F3A"), "6A82");  // a grandchild
}

TEST_F(SelectTest, ASimSaysNotFoundInItsOwnWords) {
  EXPECT_EQ(Say("A0A40000026F3A"), "9404");
  EXPECT_EQ(Say("A0B000000A"), "9400");
}

TEST_F(SelectTest, TheCurrentApplicationIsThereOnceItWasSelected) {
  EXPECT_EQ(Go("7FFF"), "6A82");
  EXPECT_EQ(Say("00A4040C07A0000000871002"), "9000");
  EXPECT_EQ(Go("3F00"), "9000");
  EXPECT_EQ(Go("7FFF6F40"), "9000");
  EXPECT_EQ(Say("00B0000001"), "119000");
  EXPECT_EQ(Say("00A4080C047FFF6F40"), "9000");
  card_->Reset();
  EXPECT_EQ(Go("7FFF"), "6A82");
}

TEST_F(SelectTest, APartOfAnAidFindsTheFirstThenTheNext) {
  EXPECT_EQ(Say("00A4040C07A0000000871002"), "9000");
  EXPECT_EQ(Go("6F40"), "9000");
  EXPECT_EQ(Say("00B0000001"), "119000");
  EXPECT_EQ(Say("00A4040E07A0000000871002"), "9000");
  EXPECT_EQ(Go("6F40"), "9000");
  EXPECT_EQ(Say("00B0000001"), "229000");
  EXPECT_EQ(Say("00A4040E07A0000000871002"), "6A82");
  EXPECT_EQ(Say("00A4040F07A0000000871002"), "9000");  // previous
  EXPECT_EQ(Go("6F40"), "9000");
  EXPECT_EQ(Say("00B0000001"), "119000");
  EXPECT_EQ(Say("00A4040D07A0000000871002"), "9000");  // last
  EXPECT_EQ(Go("6F40"), "9000");
  EXPECT_EQ(Say("00B0000001"), "229000");
  EXPECT_EQ(Say("00A4040C07A0000000871003"), "6A82");
}

TEST_F(SelectTest, PathsLeadFromTheMasterFileAndFromHere) {
  EXPECT_EQ(Say("00A4080C067F105F3A4F30"), "9000");
  EXPECT_EQ(Say("00B2010410").substr(0, 4), "4142");
  EXPECT_EQ(Go("3F007F10"), "9000");
  EXPECT_EQ(Say("00A4090C045F3A4F30"), "9000");
  EXPECT_EQ(Say("00A4080C067F105F3A4F31"), "6A82");
  EXPECT_EQ(Say("00A4080C037F105F"), "6700");
}

TEST_F(SelectTest, ACardWithoutPathsSaysSo) {
  PutIn(SmallCard(R"("pathSelect": false, )"));
  EXPECT_EQ(Say("00A4080C047F106F3A"), "6A81");
}

TEST_F(SelectTest, AFailedSelectionChangesNothing) {
  Go("7F106F3A");
  Say("00B2000210");  // next: the first
  EXPECT_EQ(Go("6FFF"), "6A82");
  EXPECT_EQ(Say("00B2000410").substr(0, 4), "4142");  // still the current record
}

TEST_F(SelectTest, ADirectoryTakesFileAndRecordAway) {
  Go("7F106F3A");
  Go("7F10");
  EXPECT_EQ(Say("00B2010410"), "6986");
}

TEST_F(SelectTest, TheParentIsSelectedWithoutAName) {
  Go("7F105F3A");
  EXPECT_EQ(Say("00A4030C"), "9000");
  EXPECT_EQ(Go("6F3A"), "9000");
}

TEST_F(SelectTest, ParametersOfNoMeaningAreRefused) {
  EXPECT_EQ(Say("00A40000023F00"), "6A86");  // neither an FCP nor nothing
  EXPECT_EQ(Say("00A4020C023F00"), "6A86");
  EXPECT_EQ(Say("00A4000C033F0000"), "6700");
  EXPECT_EQ(Say("A0A40100023F00"), "6B00");
  EXPECT_EQ(Say("A0A40000033F0000"), "6702");
}

TEST_F(SelectTest, StatusTellsTheDirectoryAndTheApplication) {
  Go("7F106F3A");
  const std::string right = Say("80F2000000");
  ASSERT_EQ(right.substr(0, 2), "6C");
  EXPECT_NE(Say("80F20000" + right.substr(2)).find("83027F10"), std::string::npos);
  EXPECT_EQ(Say("80F2000C"), "9000");
  EXPECT_EQ(Say("80F2000100"), "6A82");
  Say("00A4040C09A0000000871002FF01");
  EXPECT_EQ(Say("80F200010B"), "8409A0000000871002FF019000");
  EXPECT_EQ(Say("A0F2000016").substr(12, 2), "02");
  EXPECT_EQ(Say("A0F2000004"), "000000009000");  // a SIM tells as much as is asked for
  EXPECT_EQ(Say("00F2000000"), "6E00");
}

TEST_F(SelectTest, ADeactivatedFileIsSelectedWithAWarningAndNotRead) {
  Go("7F106F49");
  EXPECT_EQ(Say("00040000"), "9000");
  EXPECT_EQ(saves_, 1);
  EXPECT_EQ(Say("00B0000002"), "6984");
  EXPECT_EQ(Say("A0B0000002"), "9810");
  EXPECT_EQ(Say("00A40004026F49"), "6283");
  const std::string right = Say("00C0000000");
  ASSERT_EQ(right.substr(0, 2), "6C");
  EXPECT_NE(Say("00C00000" + right.substr(2)).find("8A0104"), std::string::npos);
  EXPECT_EQ(Say("A0A40000026F49"), "9F0F");
  EXPECT_EQ(Say("A0C000000F").substr(22, 2), "00");  // file status: invalidated
  EXPECT_EQ(Say("00440000"), "9000");
  EXPECT_EQ(Say("00B0000002"), "AABB9000");
}

TEST_F(SelectTest, ChannelsHaveTheirOwnSelection) {
  Go("7F106F3A");
  EXPECT_EQ(Say("0070000000"), "6C01");
  EXPECT_EQ(Say("0070000001"), "019000");
  EXPECT_EQ(Say("01A4000C022FE2"), "9000");  // a channel opens in the master file
  EXPECT_EQ(Say("01B000000A"), "980010325476981032549000");
  EXPECT_EQ(Say("00B2010410").substr(0, 4), "4142");
  EXPECT_EQ(Say("00700003"), "9000");
  EXPECT_EQ(Say("0070000001"), "029000");
  EXPECT_EQ(Say("0070000001"), "6A81");  // none is left
  EXPECT_EQ(Say("00708001"), "9000");
  EXPECT_EQ(Say("00708001"), "6200");
  EXPECT_EQ(Say("01A4000C022FE2"), "6881");
  EXPECT_EQ(Say("40A4000C022FE2"), "6881");
  EXPECT_EQ(Say("00708000"), "6A86");
}

TEST_F(SelectTest, ACardWithoutChannelsDoesNotKnowTheCommand) {
  PutIn(SmallCard(R"("channels": 0, )"));
  EXPECT_EQ(Say("0070000001"), "6D00");
  EXPECT_EQ(Say("01A4000C023F00"), "6881");
}

TEST_F(SelectTest, AnImageMayGiveItsOwnFcp) {
  std::string text = SmallCard();
  const std::string file = R"({"id": "2F02", )";
  text.insert(text.find(file) + file.size(), R"("fcp": "6205830203008A", )");
  PutIn(text);
  EXPECT_EQ(Say("00A40004022F02"), "6107");
  EXPECT_EQ(Say("00C0000007"), "6205830203008A9000");
}

}  // namespace
}  // namespace kelpin::device::softcard
