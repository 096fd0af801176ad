// Records that nothing refers to: the card finds them when it has no other free one, and then tells
// them as blank.
#include "tests/sim/ext_bench.h"

namespace kelpin::sim {
namespace {

// The card has three records of third numbers in a set.
class ExtRefill : public ExtBench {
 protected:
  std::uint32_t WriteThird(std::uint32_t location) {
    std::uint32_t existing = kNoRecord;
    return WriteNumber(kThird, location, u"12", existing);
  }
};

TEST_F(ExtRefill, TakingTheLastFreeRecordLooksForOnesThatWereLeftBehind) {
  SetRecord(7, 1, Bytes("00 02 81 21"));
  SetRecord(7, 3, Bytes("00 02 81 21"));
  Load();
  // From here on the card tells the first as free.
  SetRecord(7, 1, Bytes("FF"));
  EXPECT_EQ(WriteThird(1), 0u);
  EXPECT_EQ(Record(1, 1), Bytes("FF 02 FF"));
  EXPECT_EQ(book_.Slot(0, kThird).usedCount, 2u);
  EXPECT_EQ(book_.FirstFreeRecord(0, kThird), 1u);
  EXPECT_EQ(WriteThird(2), 0u);
  EXPECT_EQ(Record(1, 2), Bytes("FF 01 FF"));
  EXPECT_EQ(book_.FirstFreeRecord(0, kThird), 0u);
  EXPECT_EQ(WriteThird(3), 258u);
}

TEST_F(ExtRefill, WhileAnotherIsFreeNothingIsLookedFor) {
  Load();
  EXPECT_EQ(WriteThird(1), 0u);
  EXPECT_EQ(Sent(), (Strings{"read 1 1", "read 7 1", "write 7 1", "write 1 1"}));
}

TEST_F(ExtRefill, WhereOthersTookTheRestOnesThatWereLeftBehindAreLookedFor) {
  SetRecord(7, 3, Bytes("00 02 81 21"));
  Load();
  SetRecord(7, 1, Bytes("00 02 81 43"));
  SetRecord(7, 2, Bytes("00 02 81 43"));
  SetRecord(7, 3, Bytes("FF"));
  EXPECT_EQ(WriteThird(1), 0u);
  EXPECT_EQ(Record(1, 1), Bytes("FF 03 FF"));
  EXPECT_EQ(Record(7, 1), Bytes("00 02 81 43 FFFFFFFFFFFFFFFFFF FF FF FFFF"));
}

TEST_F(ExtRefill, WhereOthersTookAllTheWriteFailsAndEnds) {
  Load();
  for (const std::uint32_t record : {1u, 2u, 3u}) SetRecord(7, record, Bytes("00 02 81 43"));
  EXPECT_EQ(WriteThird(1), 258u);
  EXPECT_EQ(Written(), Strings{});
  EXPECT_EQ(book_.Slot(0, kThird).usedCount, 3u);
}

TEST_F(ExtRefill, ACardThatDoesNotAnswerIsNotAskedOn) {
  SetRecord(7, 1, Bytes("00 02 81 21"));
  SetRecord(7, 3, Bytes("00 02 81 21"));
  Load();
  // The write itself takes four commands; the next is the first look.
  bench_.failures.FailCallOf("RIL_DevSpecific", 5);
  EXPECT_EQ(WriteThird(1), 0u);
  EXPECT_EQ(Record(1, 1), Bytes("FF 02 FF"));
  EXPECT_EQ(Sent(), (Strings{"read 1 1", "read 7 2", "write 7 2", "write 1 1", "read 7 1"}));
  EXPECT_EQ(book_.FirstFreeRecord(0, kThird), 0u);
}

TEST_F(ExtRefill, ARecordThatIsNotThereEndsNoLook) {
  SetRecord(7, 1, Bytes("00 02 81 21"));
  SetRecord(7, 3, Bytes("00 02 81 21"));
  Load();
  SetRecord(7, 3, Bytes("FF"));
  const ByteVector first = Block({128, 15, 2, 7, 1, 4, 0, 0});
  bench_.radio.SetResponder([first](const test::FakeRadio::Command& command) {
    return command.block == first
               ? std::optional<test::FakeRadio::Answer>(
                     {platform::kRilResultError, test::FakeRadio::SimResponse({}, 0x6A, 0x83)})
               : std::nullopt;
  });
  EXPECT_EQ(WriteThird(1), 0u);
  EXPECT_EQ(book_.FirstFreeRecord(0, kThird), 3u);
}

// The third and the fourth set have a file of third numbers that the first has not.
class ExtSharedLater : public ExtRefill {
 protected:
  void SetUp() override {
    ExtRefill::SetUp();
    for (const std::uint32_t set : {2u, 3u}) {
      SetRecord(kReferenceFile, set + 1,
                Bytes("A8 11 C0034F3C01 C1024F62 C4024F42 C6024F72 A9 04 C4024F4A"));
      SetFile(1 + 10 * set, 1, 4);
      SetFile(6 + 10 * set, 15, 4);
      SetFile(7 + 10 * set, 17, 3);
    }
    Load();
  }
};

TEST_F(ExtSharedLater, WhatOneTakesIsNotFreeForTheOther) {
  EXPECT_EQ(WriteThird(9), 0u);
  EXPECT_EQ(book_.FirstFreeRecord(2, kThird), 2u);
  EXPECT_EQ(book_.FirstFreeRecord(3, kThird), 2u);
  EXPECT_EQ(book_.Slot(3, kThird).usedCount, 1u);
  EXPECT_EQ(book_.Slot(0, kThird).usedCount, 0u);
  EXPECT_EQ(book_.FirstFreeRecord(1, kThird), 1u);
}

TEST_F(ExtSharedLater, WhatOneGivesUpIsFreeForTheOther) {
  EXPECT_EQ(WriteThird(9), 0u);
  std::uint32_t existing = 1;
  EXPECT_EQ(WriteNumber(kThird, 9, u"", existing), 0u);
  EXPECT_EQ(book_.FirstFreeRecord(3, kThird), 1u);
  EXPECT_EQ(book_.Slot(2, kThird).usedCount, 0u);
  EXPECT_EQ(book_.Slot(3, kThird).usedCount, 0u);
}

}  // namespace
}  // namespace kelpin::sim
