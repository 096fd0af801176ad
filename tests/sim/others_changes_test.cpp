// What another program did to the card since it was read here is passed over or told, and never
// written over.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/sim_phonebook.h"
#include "tests/sim/ext_bench.h"

namespace kelpin::sim {
namespace {

using platform::SimResult;
using ::testing::ElementsAre;

class OthersEntries : public ::testing::Test {
 protected:
  // Three locations, of which the map knows the first as occupied.
  void SetUp() override {
    bench_.sim.SetCapacity(3);
    bench_.sim.SetEntry(1, u"Ada", u"+1");
    ASSERT_EQ(phonebook_.Open(), SimResult::kOk);
    ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
    phonebook_.PrepareSlotMap();
    phonebook_.MarkSlot(1, 1);
    bench_.journal.Clear();
  }

  test::SimBench bench_;
  SimPhonebook phonebook_{bench_.sim, bench_.kernel};
};

TEST_F(OthersEntries, ANewEntryTakesTheLowestFreeLocation) {
  std::uint32_t index = 0;
  EXPECT_EQ(phonebook_.WriteNewEntry(index, u"Eve", u"5"), SimResult::kOk);
  EXPECT_EQ(index, 2u);
  EXPECT_EQ(bench_.sim.Name(2), u"Eve");
  EXPECT_EQ(phonebook_.Slot(2), 1);
  EXPECT_THAT(bench_.journal.Entries("Sim"),
              ElementsAre("SimWritePhonebookEntry(1, 16, 2, Eve, 5)"));
}

TEST_F(OthersEntries, ANewEntryPassesOverALocationThatWasTaken) {
  bench_.sim.SetEntry(2, u"Other", u"7");
  std::uint32_t index = 0;
  EXPECT_EQ(phonebook_.WriteNewEntry(index, u"Eve", u"5"), SimResult::kOk);
  EXPECT_EQ(index, 3u);
  EXPECT_EQ(bench_.sim.Name(2), u"Other");
  EXPECT_EQ(bench_.sim.Name(3), u"Eve");
  EXPECT_EQ(phonebook_.Slot(2), 1);
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 0u);
}

TEST_F(OthersEntries, ACardThatFilledUpMeanwhileIsFull) {
  bench_.sim.SetEntry(2, u"Other", u"7");
  bench_.sim.SetEntry(3, u"Another", u"8");
  std::uint32_t index = 9;
  EXPECT_EQ(phonebook_.WriteNewEntry(index, u"Eve", u"5"), SimResult::kSimFull);
  EXPECT_EQ(index, 0u);
  EXPECT_EQ(bench_.sim.Name(3), u"Another");
}

TEST_F(OthersEntries, ANewEntryThatTheCardRefusesLeavesTheLocationFree) {
  bench_.sim.SetResult("SimWritePhonebookEntry", SimResult::kMemoryFailure);
  std::uint32_t index = 0;
  EXPECT_EQ(phonebook_.WriteNewEntry(index, u"Eve", u"5"), SimResult::kMemoryFailure);
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 2u);
}

TEST_F(OthersEntries, AChangedEntryIsNeitherWrittenNorDeleted) {
  bench_.sim.SetEntry(1, u"Other", u"7");
  EXPECT_EQ(phonebook_.WriteEntry(1, u"Eve", u"5", {u"Ada", u"+1"}), SimResult::kEntryChanged);
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kEntryChanged);
  EXPECT_EQ(phonebook_.DeleteEntry(1, {u"Ada", u"+1"}), SimResult::kEntryChanged);
  EXPECT_EQ(bench_.sim.Name(1), u"Other");
  EXPECT_EQ(phonebook_.WriteEntry(1, u"Eve", u"5", {u"Other", u"7"}), SimResult::kOk);
  EXPECT_EQ(phonebook_.DeleteEntry(1, {u"Eve", u"5"}), SimResult::kOk);
  EXPECT_TRUE(bench_.sim.Entries().empty());
}

class OthersRecords : public ExtBench {};

// Record 1 of the e-mails was free when the layout was read.
TEST_F(OthersRecords, AnEmailPassesOverARecordThatWasTaken) {
  SetRecord(1, 1, Bytes("FF FF FF"));
  Load();
  SetRecord(2, 1, Bytes("6F"));
  EXPECT_EQ(book_.WriteTextField(kMail, 1, u"a@b.c", existing_), kFieldWritten);
  EXPECT_EQ(existing_, 2u);
  EXPECT_EQ(Record(2, 1)[0], 0x6F);
  EXPECT_EQ(Record(2, 2)[0], 0x61);
  EXPECT_EQ(Record(1, 1), Bytes("02 FF FF"));
  EXPECT_EQ(book_.Slot(0, kMail).usedCount, 2u);
}

TEST_F(OthersRecords, AThirdNumberPassesOverARecordThatWasTaken) {
  SetRecord(1, 1, Bytes("FF FF FF"));
  Load();
  SetRecord(7, 1, Bytes("00 02 81 21"));
  EXPECT_EQ(WriteNumber(kThird, 1, u"34", existing_), kFieldWritten);
  EXPECT_EQ(existing_, 2u);
  EXPECT_EQ(Record(7, 1)[3], 0x21);
  EXPECT_EQ(ReadNumber(kThird, 1), u"34");
}

TEST_F(OthersRecords, AFileThatFilledUpMeanwhileHasNoRoom) {
  SetRecord(1, 1, Bytes("FF FF FF"));
  Load();
  for (const std::uint32_t record : {1u, 2u, 3u}) SetRecord(7, record, Bytes("00 02 81 21"));
  EXPECT_EQ(WriteNumber(kThird, 1, u"34", existing_), kThirdNumberFailed);
  EXPECT_EQ(Written(), Strings{});
  EXPECT_EQ(Record(7, 3)[3], 0x21);
}

}  // namespace
}  // namespace kelpin::sim
