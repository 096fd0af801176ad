#include <gmock/gmock.h>

#include <optional>

#include "tests/sim/ext_bench.h"

namespace kelpin::sim {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Not;
using ::testing::StartsWith;
using Answer = test::FakeRadio::Answer;
using Answering = test::FakeRadio::Answering;

using ExtLoad = ExtBench;

TEST_F(ExtLoad, AsksForReferencesNamesThenTypeTwoThenTypeOneFiles) {
  ASSERT_TRUE(book_.LoadLayout(all_));
  const Strings expected = {
      "read 0 1",   "read 0 2",  "read 0 3",   "read 0 4",   "measure 50", "measure 4", "measure 5",
      "measure 2",  "read 2 1",  "read 2 2",   "read 2 3",   "read 2 4",   "read 2 5",  "measure 7",
      "read 7 1",   "read 7 2",  "read 7 3",   "measure 40", "read 40 1",  "read 40 2", "read 40 3",
      "measure 17", "read 17 1", "read 17 2",  "read 17 3",  "measure 41", "read 41 1", "read 41 2",
      "read 41 3",  "measure 6", "measure 16", "measure 3",  "measure 13"};
  // The first EF_ANR of the record is the second number's, of type 1; the other one is of type 2.
  EXPECT_EQ(Sent(), expected);
  EXPECT_EQ(BlockOf("read 0 2"), Block({128, 15, 2, 0, 2, 4, 0, 0}));
  EXPECT_EQ(BlockOf("measure 50"), Block({128, 15, 3, 50, 0, 0, 0, 0}));
  EXPECT_EQ(BlockOf("read 17 3"), Block({128, 15, 2, 17, 3, 4, 0, 0}));
  EXPECT_TRUE(book_.Loaded());
}

TEST_F(ExtLoad, TellsTheFilesMeasures) {
  Load();
  EXPECT_EQ(book_.AdnRecords(), 4u);
  EXPECT_EQ(book_.GroupNameLength(), 16u);
  EXPECT_EQ(book_.GroupNameCount(), 2u);
  EXPECT_EQ(book_.NumberNameLength(), 14u);
  EXPECT_EQ(book_.NumberNameCount(), 3u);
  EXPECT_EQ(book_.GroupRecordLength(0), 3u);
  EXPECT_EQ(book_.GroupRecordLength(1), 3u);
  EXPECT_EQ(book_.GroupRecordLength(2), 0u);
  EXPECT_TRUE(book_.HasGroups());
  EXPECT_TRUE(book_.HasNumberNames());
  EXPECT_EQ(book_.Slot(0, kMail).recordLength, 30u);
  EXPECT_EQ(book_.Slot(0, kMail).recordCount, 5u);
  EXPECT_EQ(book_.Slot(1, kThird).recordLength, 17u);
  EXPECT_EQ(book_.Slot(1, kThird).recordCount, 3u);
  EXPECT_EQ(book_.Slot(1, kSecond).fileClass, 168u);
  EXPECT_EQ(book_.Slot(1, kSecond).recordCount, 4u);
  EXPECT_EQ(book_.Slot(2, kMail).fileClass, 0xFFFFFFFFu);
  EXPECT_EQ(book_.Slot(4, kMail).fileClass, 0xFFFFFFFFu);
}

TEST_F(ExtLoad, ASharedFileIsMeasuredOnceAndItsMapIsTheFirstSets) {
  SetRecord(2, 1, Bytes("61"));
  SetRecord(2, 2, Bytes("61"));
  Load();
  EXPECT_EQ(book_.Slot(1, kMail).shared, 1u);
  EXPECT_EQ(book_.Slot(1, kMail).recordCount, 0u);
  EXPECT_EQ(book_.SlotInUse(1, kMail).recordCount, 5u);
  EXPECT_EQ(book_.SlotInUse(1, kMail).usedCount, 2u);
  EXPECT_EQ(book_.FirstFreeRecord(1, kMail), 3u);
  book_.MarkRecord(1, kMail, 3, 1);
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 4u);
  EXPECT_EQ(book_.SlotInUse(0, kMail).usedCount, 3u);
}

TEST_F(ExtLoad, ARecordIsUsedWhenItsFirstByteIs) {
  SetRecord(7, 1, Bytes("00 02 81 F1"));
  SetRecord(7, 3, Bytes("FE"));
  Load();
  EXPECT_EQ(book_.Slot(0, kThird).usedCount, 2u);
  EXPECT_EQ(book_.FirstFreeRecord(0, kThird), 2u);
  EXPECT_EQ(book_.Slot(0, kSecond).usedCount, 0u);  // type 1 is not counted
}

TEST_F(ExtLoad, ARecordThatCannotBeReadCountsAsFree) {
  SetRecord(2, 1, Bytes("61"));
  SetRecord(2, 2, Bytes("61"));
  bench_.radio.SetResponder([](const auto& command) -> std::optional<Answer> {
    const bool refused = command.block[8] == 2 && command.block[12] == 2 && command.block[16] == 1;
    if (!refused) return std::nullopt;
    return Answer{platform::kRilResultError, {}, Answering::kResult};
  });
  Load();
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 1u);
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 1u);
  EXPECT_EQ(book_.Slot(1, kNick).recordCount, 3u);
}

TEST_F(ExtLoad, SumsTheCapacitiesOverTheSets) {
  Load();
  EXPECT_EQ(book_.EmailCapacity(), 5u);         // one file for both sets
  EXPECT_EQ(book_.SecondNumberCapacity(), 8u);  // four in each set; third numbers do not count
  Load();
  EXPECT_EQ(book_.EmailCapacity(), 5u);
  EXPECT_EQ(book_.SecondNumberCapacity(), 8u);
}

TEST_F(ExtLoad, LooksAtNoFileThatIsSwitchedOff) {
  ASSERT_TRUE(book_.LoadLayout({true, true, true, false}));
  const Strings expected = {"read 0 1",  "read 0 2",  "read 0 3",  "read 0 4",  "measure 50",
                            "measure 4", "measure 5", "measure 3", "measure 13"};
  EXPECT_EQ(Sent(), expected);
  EXPECT_EQ(book_.EmailCapacity(), 0u);
  EXPECT_EQ(book_.SecondNumberCapacity(), 0u);
  EXPECT_EQ(ReadText(kMail, 1), u"!");
}

TEST_F(ExtLoad, EverySwitchIsForItsOwnFile) {
  const struct {
    FieldSwitches switches;
    FieldSlot slot;
  } cases[] = {{{true, false, false, true}, kMail},
               {{false, true, false, true}, kSecond},
               {{false, false, true, true}, kThird},
               {{false, false, false, false}, kNick}};
  for (const auto& one : cases) {
    ASSERT_TRUE(book_.LoadLayout(one.switches));
    for (const FieldSlot slot : kAllFieldSlots) {
      EXPECT_EQ(book_.Slot(0, slot).recordCount == 0, slot == one.slot);
    }
  }
}

TEST_F(ExtLoad, ACardThatTellsNoEntryCountHasTwoHundredFiftyInASet) {
  bench_.radio.SetCodedFile(50, {30, {}});
  Load();
  EXPECT_EQ(book_.AdnRecords(), 250u);
  std::uint32_t set = 0;
  std::uint32_t record = 0;
  EXPECT_EQ(book_.Place(500, set, record), 1);
  EXPECT_EQ(set, 1u);
  EXPECT_EQ(record, 250u);
}

TEST_F(ExtLoad, WithoutTheFirstReferenceTheSessionIsClosed) {
  Load();
  bench_.radio.SetCodedFile(0, {60, {}});
  Forget();
  EXPECT_FALSE(book_.LoadLayout(all_));
  EXPECT_EQ(Sent(), (Strings{"read 0 1"}));
  EXPECT_FALSE(book_.IsOpen());
  EXPECT_FALSE(book_.Loaded());
  EXPECT_EQ(book_.EmailCapacity(), 0u);
  EXPECT_EQ(book_.Slot(0, kMail).fileClass, 0xFFFFFFFFu);
  EXPECT_FALSE(book_.LoadLayout(all_));
  EXPECT_EQ(ReadText(kMail, 1), u"!");
  EXPECT_EQ(Sent(), (Strings{"read 0 1"}));
}

TEST_F(ExtLoad, OtherReferencesMayBeMissing) {
  SetFile(0, 60, 1);
  SetRecord(0, 1, Bytes("A904CA024F50"));
  Load();
  EXPECT_EQ(book_.Slot(0, kMail).recordCount, 5u);
  EXPECT_EQ(book_.Slot(1, kMail).fileClass, 0xFFFFFFFFu);
}

TEST_F(ExtLoad, AReloadStartsFromNothing) {
  SetRecord(2, 1, Bytes("61"));
  Load();
  SetRecord(2, 1, Bytes("FF"));
  SetRecord(0, 2, Bytes("FF"));
  bench_.radio.SetCodedFile(4, {16, {}});
  Load();
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 0u);
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 1u);
  EXPECT_EQ(book_.Slot(1, kThird).fileClass, 0xFFFFFFFFu);
  EXPECT_EQ(book_.SecondNumberCapacity(), 4u);
  EXPECT_EQ(book_.GroupNameCount(), 0u);
  EXPECT_EQ(book_.GroupRecordLength(0), 0u);
}

TEST_F(ExtLoad, AReferenceWithoutTypeTwoFilesHasNoMaps) {
  SetFile(0, 60, 1);
  SetRecord(0, 1, Bytes("A804C4024F40"));
  Load();
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 0u);
  EXPECT_THAT(Sent(), Not(Contains(StartsWith("read 2"))));
}

TEST_F(ExtLoad, MapsEndAtTheTwoHundredFiftiethRecord) {
  SetFile(2, 30, 254);
  for (std::uint32_t record = 1; record <= 249; ++record) SetRecord(2, record, Bytes("61"));
  SetRecord(2, 254, Bytes("61"));
  ASSERT_TRUE(book_.LoadLayout(all_));
  EXPECT_THAT(Sent(), AllOf(Contains("read 2 250"), Not(Contains("read 2 251"))));
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 250u);
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 249u);
  book_.MarkRecord(0, kMail, 250, 1);
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 0u);
  for (const std::uint32_t record : {0u, 251u, 254u, 0xFFFFFFFFu}) {
    book_.MarkRecord(0, kMail, record, 1);
  }
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 250u);
}

TEST_F(ExtLoad, MarkingTwiceCountsOnce) {
  Load();
  book_.MarkRecord(0, kNick, 2, 1);
  book_.MarkRecord(0, kNick, 2, 1);
  EXPECT_EQ(book_.Slot(0, kNick).usedCount, 1u);
  book_.MarkRecord(0, kNick, 2, 0);
  book_.MarkRecord(0, kNick, 2, 0);
  EXPECT_EQ(book_.Slot(0, kNick).usedCount, 0u);
  book_.MarkRecord(9, kNick, 2, 1);
  EXPECT_EQ(book_.FirstFreeRecord(9, kNick), 0u);
}

TEST_F(ExtLoad, ARecordTakenWhileALoadReadsStaysTaken) {
  Load();
  bench_.radio.SetResponder([this](const auto& command) -> std::optional<Answer> {
    // After the mail's records, before the load ends.
    if (command.block[8] == 3 && command.block[12] == 40) book_.MarkRecord(0, kMail, 1, 1);
    return std::nullopt;
  });
  ASSERT_TRUE(book_.LoadLayout(all_));
  EXPECT_EQ(book_.FirstFreeRecord(0, kMail), 2u);
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 1u);
}

TEST_F(ExtLoad, TheLastRecordIsKept) {
  SetRecord(3, 2, Bytes("010200"));
  std::vector<std::uint8_t> response;
  ASSERT_TRUE(book_.ReadExtRecord(3, 2, response));
  EXPECT_EQ(book_.LastRecord(), Bytes("010200"));
  EXPECT_FALSE(book_.ReadExtRecord(3, 5, response));
  EXPECT_EQ(book_.LastRecord(), Bytes("010200"));
}

TEST_F(ExtLoad, FreeExtensionRecordsAreTheClearBits) {
  std::uint32_t first = 7;
  std::uint32_t second = 7;
  bench_.radio.SetExtensionBitmap(16, Bytes("FF 7F"));
  EXPECT_TRUE(book_.GetFreeExtRecords(first, second));
  EXPECT_EQ(first, 9u);
  EXPECT_EQ(second, 0u);
  const auto sent = bench_.radio.LastCommand();
  EXPECT_EQ(sent.size, 4u);
  EXPECT_EQ(sent.block, Bytes("98 10 00 00"));  // 4248
  bench_.radio.SetExtensionBitmap(16, Bytes("FD BF"));
  EXPECT_TRUE(book_.GetFreeExtRecords(first, second));
  EXPECT_EQ(first, 7u);
  EXPECT_EQ(second, 10u);
}

TEST_F(ExtLoad, NoExtensionRecordIsFreeBeyondTheCountOrWithoutAMap) {
  std::uint32_t first = 7;
  std::uint32_t second = 7;
  const struct {
    std::uint32_t count;
    const char* map;
  } cases[] = {{16, "FF FF"}, {0, "00 00"}, {16, ""}, {8, "FF 00"}, {3, "E0"}};
  for (const auto& one : cases) {
    bench_.radio.SetExtensionBitmap(one.count, Bytes(one.map));
    EXPECT_TRUE(book_.GetFreeExtRecords(first, second));
    EXPECT_EQ(first, 0u) << one.map;
    EXPECT_EQ(second, 0u) << one.map;
  }
}

TEST_F(ExtLoad, AMapShorterOrLongerThanItSaysIsNotReadPast) {
  std::uint32_t first = 7;
  std::uint32_t second = 7;
  const auto answer = [&](const ByteVector& data) {
    bench_.radio.SetResponder([data](const auto&) {
      return Answer{platform::kRilResultOk, data, Answering::kResult};
    });
    return book_.GetFreeExtRecords(first, second);
  };
  EXPECT_TRUE(answer(Bytes("FFFFFFFF FFFFFFFF FF 7F")));
  EXPECT_EQ(first, 9u);
  EXPECT_EQ(second, 0u);
  ByteVector full = Bytes("00080000 00010000");
  full.resize(8 + 128, 0xFF);
  full.resize(8 + 256, 0x00);
  EXPECT_TRUE(answer(full));
  EXPECT_EQ(first, 0u);
  EXPECT_FALSE(answer(Bytes("10000000 020000")));
  EXPECT_EQ(first, 0u);
}

// Fields that are not seen.

class ExtLoadUnanswered : public ExtLoad {
 protected:
  // What the card says to this command of a load, and nothing else changed.
  void Answer(const std::string& text, std::vector<std::uint8_t> refusal) {
    book_.LoadLayout(all_);
    const std::vector<std::uint8_t> block = BlockOf(text);
    bench_.radio.SetResponder([block, refusal](const test::FakeRadio::Command& command) {
      return command.block == block
                 ? std::optional<test::FakeRadio::Answer>({platform::kRilResultError, refusal})
                 : std::nullopt;
    });
    book_.Open(0);
    book_.LoadLayout(all_);
  }
};

TEST_F(ExtLoadUnanswered, EveryFieldIsSeenOfACardThatAnsweredAll) {
  EXPECT_FALSE(book_.SeesFieldsOf(1));
  Load();
  EXPECT_TRUE(book_.SeesFieldsOf(1));
  EXPECT_TRUE(book_.SeesFieldsOf(8));    // the last of the second set
  EXPECT_FALSE(book_.SeesFieldsOf(9));   // no files are named for it
  EXPECT_FALSE(book_.SeesFieldsOf(17));  // of a fifth set
  EXPECT_FALSE(book_.SeesFieldsOf(0));
}

TEST_F(ExtLoadUnanswered, EntriesBehindAShorterSetsOwnMayHaveFieldsElsewhere) {
  SetFile(16, 15, 2);  // the second set has two entries, though the first has four
  Load();
  EXPECT_TRUE(book_.SeesFieldsOf(6));
  EXPECT_FALSE(book_.SeesFieldsOf(7));
}

TEST_F(ExtLoadUnanswered, AQuestionLeftOpenMayHideFields) {
  for (const char* text : {"read 0 1", "read 0 2", "measure 50", "measure 2", "measure 6"}) {
    Answer(text, {});
    EXPECT_FALSE(book_.SeesFieldsOf(1)) << text;
    // Memory problem (TS 51.011 9.4.4).
    Answer(text, test::FakeRadio::SimResponse({}, 0x92, 0x40));
    EXPECT_FALSE(book_.SeesFieldsOf(1)) << text;
    bench_.radio.SetResponder(nullptr);
    book_.Open(0);
  }
}

TEST_F(ExtLoadUnanswered, WhatTheCardDoesNotHaveHidesNone) {
  for (const char* text : {"read 0 1", "read 0 3", "measure 2", "measure 6"}) {
    // No such file, and no such record, of a USIM (TS 102 221 10.2.1.5).
    for (const std::uint32_t word : {0x82u, 0x83u}) {
      Answer(text, test::FakeRadio::SimResponse({}, 0x6A, word));
      EXPECT_TRUE(book_.SeesFieldsOf(1)) << text;
      bench_.radio.SetResponder(nullptr);
      book_.Open(0);
    }
  }
}

TEST_F(ExtLoadUnanswered, NamesOfNumbersAndGroupsHideNoField) {
  for (const char* text : {"measure 4", "measure 5", "measure 3"}) {
    Answer(text, {});
    EXPECT_TRUE(book_.SeesFieldsOf(1)) << text;
    bench_.radio.SetResponder(nullptr);
  }
}

}  // namespace
}  // namespace kelpin::sim
