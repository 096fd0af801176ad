#include <gmock/gmock.h>

#include "tests/sim/ext_bench.h"

namespace kelpin::sim {
namespace {

using ::testing::ElementsAre;

class ExtTextField : public ExtBench {
 protected:
  void SetUp() override {
    ExtBench::SetUp();
    Load();
  }
};

TEST_F(ExtTextField, AnEmailGoesToAFreeRecordOfTheSharedFile) {
  SetRecord(11, 2, Bytes("FF 07 08"));
  book_.MarkRecord(0, kMail, 1, 1);
  EXPECT_EQ(book_.WriteTextField(kMail, 6, u"a@b.c", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 11 2", "read 2 2", "write 2 2", "write 11 2"}));
  ByteVector record = Bytes("61 00 62 2E 63");
  record.resize(30, 0xFF);
  EXPECT_EQ(BlockOf("write 2 2"), Block({128, 15, 5, 2, 2, 4, 30, 30}, record));
  EXPECT_EQ(BlockOf("write 11 2"), Block({128, 15, 5, 11, 2, 4, 3, 3}, Bytes("02 07 08"), 0xFF));
  EXPECT_EQ(existing_, 2u);
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 3u);
  EXPECT_EQ(book_.FirstFreeRecord(1, kMail), 3u);
  EXPECT_EQ(ReadText(kMail, 6), u"a@b.c");
}

TEST_F(ExtTextField, ATypeTwoRecordKeepsItsLastTwoBytes) {
  SetRecord(1, 1, Bytes("03 FF FF"));
  ByteVector old(30, 0x61);
  old[28] = 1;
  old[29] = 9;
  SetRecord(2, 3, old);
  existing_ = 3;
  // 28 septets fill the field.
  EXPECT_EQ(book_.WriteTextField(kMail, 1, u"abcdefghijklmnopqrstuvwxyz01", existing_), 0u);
  EXPECT_EQ(Record(2, 3), Bytes("6162636465666768696A6B6C6D6E6F707172737475767778797A3031 0109"));
  EXPECT_EQ(ReadText(kMail, 1), u"abcdefghijklmnopqrstuvwxyz01");
  EXPECT_EQ(book_.WriteTextField(kMail, 1, u"x", existing_), 0u);
  ByteVector expected(30, 0xFF);
  expected[0] = 0x78;
  expected[28] = 1;
  expected[29] = 9;
  EXPECT_EQ(Record(2, 3), expected);
}

TEST_F(ExtTextField, ATypeOneTextFillsTheWholeRecord) {
  SetFile(0, 60, 1);
  SetRecord(0, 1, Bytes("A808C0024F3AC3024F58"));
  Load();
  EXPECT_EQ(book_.WriteTextField(kNick, 2, u"abcdefghijkl", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"write 40 2"}));
  EXPECT_EQ(Record(40, 2), Bytes("6162636465666768696A6B6C"));
  EXPECT_EQ(ReadText(kNick, 2), u"abcdefghijkl");
  EXPECT_EQ(existing_, kNoRecord);
  EXPECT_EQ(book_.WriteTextField(kNick, 2, u"", existing_), 0u);
  EXPECT_EQ(Record(40, 2), Blank(12));
  EXPECT_EQ(ReadText(kNick, 2), u"");
}

TEST_F(ExtTextField, TextOutsideTheAlphabetIsUcs2) {
  // Twelve bytes, two of them the link: room for four characters.
  EXPECT_EQ(book_.WriteTextField(kNick, 1, u"\u0416\u0416\u0416\u0416\u0416", existing_), 0u);
  EXPECT_EQ(Record(40, 1), Bytes("80 0416 0416 0416 0416 FF FFFF"));
  EXPECT_EQ(ReadText(kNick, 1), u"\u0416\u0416\u0416\u0416");
}

TEST_F(ExtTextField, AnUnsupportedFormIsToldAndItsRecordWithIt) {
  SetRecord(1, 1, Bytes("FF FF 02"));
  SetRecord(40, 2, Bytes("81 03 08 41"));
  std::u16string text = u"kept";
  EXPECT_EQ(book_.ReadTextField(kNick, 1, false, existing_, text), FieldResult::kUnsupported);
  EXPECT_EQ(text, u"kept");
  EXPECT_EQ(existing_, 2u);
}

TEST_F(ExtTextField, AsciiIsTheCallersChoice) {
  SetRecord(1, 1, Bytes("01 FF FF"));
  SetRecord(2, 1, Bytes("61 40 62"));
  std::u16string text;
  EXPECT_EQ(book_.ReadTextField(kMail, 1, true, existing_, text), FieldResult::kRead);
  EXPECT_EQ(text, u"a@b");
  EXPECT_EQ(existing_, 1u);
  EXPECT_EQ(book_.ReadTextField(kMail, 1, false, existing_, text), FieldResult::kRead);
  EXPECT_EQ(text, u"a\u00A1b");
}

TEST_F(ExtTextField, AnEmptyTextGivesUpItsRecord) {
  SetRecord(1, 4, Bytes("02 05 06"));
  SetRecord(2, 2, Bytes("61"));
  Load();
  existing_ = 2;
  EXPECT_EQ(book_.WriteTextField(kMail, 4, u"", existing_), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 1 4", "write 1 4", "write 2 2"}));
  EXPECT_EQ(Record(1, 4), Bytes("FF 05 06"));
  EXPECT_EQ(Record(2, 2), Blank(30));
  EXPECT_EQ(existing_, kNoRecord);
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 0u);
  EXPECT_EQ(ReadText(kMail, 4), u"!");
}

TEST_F(ExtTextField, AnEmptyTextWithoutARecordTakesNone) {
  EXPECT_EQ(book_.WriteTextField(kMail, 1, u"", existing_), 0u);
  EXPECT_EQ(book_.WriteTextField(kNick, 9, u"", existing_), 0u);
  EXPECT_EQ(Sent(), Strings{});
}

TEST_F(ExtTextField, FailuresHaveTheFieldsCodes) {
  for (std::uint32_t record = 1; record <= 5; ++record) book_.MarkRecord(0, kMail, record, 1);
  for (std::uint32_t record = 1; record <= 3; ++record) book_.MarkRecord(0, kNick, record, 1);
  EXPECT_EQ(book_.WriteTextField(kMail, 1, u"a", existing_), 257u);
  EXPECT_EQ(book_.WriteTextField(kNick, 1, u"a", existing_), 259u);
  EXPECT_EQ(Sent(), Strings{});
  EXPECT_EQ(book_.WriteTextField(kNick, 9, u"a", existing_), 259u);
}

TEST_F(ExtTextField, AnIndexRecordWithoutAByteForTheFileHoldsNoReference) {
  SetFile(1, 2, 4);  // the nickname's byte would be the third
  EXPECT_EQ(book_.WriteTextField(kNick, 1, u"a", existing_), 259u);
  EXPECT_EQ(Written(), Strings{});
  EXPECT_EQ(ReadText(kNick, 1), u"!");
  EXPECT_EQ(book_.FirstFreeRecord(0, kNick), 1u);
}

TEST_F(ExtTextField, AFailedReadLeavesTheText) {
  SetRecord(1, 1, Bytes("02 FF FF"));
  bench_.failures.FailCallOf("RIL_DevSpecific", 2);
  std::u16string text = u"kept";
  EXPECT_EQ(book_.ReadTextField(kMail, 1, false, existing_, text), FieldResult::kFailed);
  EXPECT_EQ(text, u"kept");
  EXPECT_EQ(existing_, kNoRecord);
}

TEST_F(ExtTextField, IndexBytesAreReadAndWrittenByType) {
  SetRecord(11, 4, Bytes("01 00 03"));
  std::uint8_t value = 9;
  EXPECT_TRUE(book_.ReadIap(1, 4, 10, value));
  EXPECT_EQ(value, 1);
  EXPECT_TRUE(book_.ReadIap(1, 4, 12, value));
  EXPECT_EQ(value, 0xFF);  // 0 is no record
  EXPECT_TRUE(book_.ReadIap(1, 4, 3, value));
  EXPECT_EQ(value, 3);
  Forget();
  EXPECT_TRUE(book_.WriteIap(1, 4, 12, 2));
  EXPECT_EQ(Sent(), (Strings{"read 11 4", "write 11 4"}));
  EXPECT_EQ(BlockOf("read 11 4"), Block({128, 15, 2, 11, 4, 4, 0, 0}));
  EXPECT_EQ(BlockOf("write 11 4"), Block({128, 15, 5, 11, 4, 4, 3, 3}, Bytes("01 02 03"), 0xFF));
  Forget();
  EXPECT_FALSE(book_.WriteIap(1, 4, 4, 2));  // of type 1
  EXPECT_FALSE(book_.WriteIap(2, 4, 10, 2));
  EXPECT_FALSE(book_.WriteIap(4, 4, 10, 2));
  EXPECT_EQ(Sent(), Strings{});
  EXPECT_FALSE(book_.ReadIap(1, 5, 10, value));
}

TEST_F(ExtTextField, GroupsEndAtTheFirstThatIsNone) {
  std::vector<std::uint8_t> groups = {9};
  SetRecord(13, 2, Bytes("02 01 00"));
  EXPECT_EQ(book_.ReadGroup(6, groups), FieldResult::kRead);
  EXPECT_THAT(groups, ElementsAre(2, 1));
  EXPECT_EQ(Sent(), (Strings{"read 13 2"}));
  SetRecord(13, 2, Bytes("01 FF 02"));
  EXPECT_EQ(book_.ReadGroup(6, groups), FieldResult::kRead);
  EXPECT_THAT(groups, ElementsAre(1));
  EXPECT_EQ(book_.ReadGroup(9, groups), FieldResult::kAbsent);
  EXPECT_EQ(book_.ReadGroup(0, groups), FieldResult::kAbsent);
}

TEST_F(ExtTextField, GroupsAreWrittenWithZeroesBehind) {
  EXPECT_TRUE(book_.WriteGroup(5, Bytes("02")));
  EXPECT_EQ(BlockOf("write 13 1"), Block({128, 15, 5, 13, 1, 4, 3, 3}, Bytes("02 00 00")));
  EXPECT_TRUE(book_.WriteGroup(1, Bytes("01 02 03 04")));
  EXPECT_EQ(Record(3, 1), Bytes("01 02 03"));
  EXPECT_TRUE(book_.WriteGroup(1, {}));
  EXPECT_EQ(Record(3, 1), Bytes("00 00 00"));
  Forget();
  EXPECT_FALSE(book_.WriteGroup(9, Bytes("01")));
  EXPECT_TRUE(book_.WriteGroup(9, {}));
  EXPECT_EQ(Sent(), Strings{});
}

}  // namespace
}  // namespace kelpin::sim
