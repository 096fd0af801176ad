#include "sim/sim_phonebook.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "tests/sim/sim_bench.h"
#include "tests/support/call_text.h"

namespace kelpin::sim {
namespace {

using platform::SimResult;
using ::testing::ElementsAre;

class SimPhonebookTest : public ::testing::Test {
 protected:
  void OpenWith(std::uint32_t capacity) {
    bench_.sim.SetCapacity(capacity);
    ASSERT_EQ(phonebook_.Open(), SimResult::kOk);
    ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
    bench_.journal.Clear();
  }

  test::SimBench bench_;
  SimPhonebook phonebook_{bench_.sim, bench_.kernel};
};

TEST_F(SimPhonebookTest, OpensTheEventsAndThenASessionWithNotices) {
  EXPECT_EQ(phonebook_.Open(), SimResult::kOk);
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre("CreateEvent(OEM_MY_SIM_STORED_EVENT_OEM)",
                                                    "CreateEvent(OEM_MY_SIM_DELETED_EVENT_OEM)",
                                                    "SimInitialize(1, callback, parameter)"));
  EXPECT_FALSE(bench_.kernel.EventIsSet(kStoredEventName));
  EXPECT_FALSE(bench_.kernel.EventIsSet(kDeletedEventName));
  EXPECT_NE(phonebook_.Handle(), 0u);
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kOk);
}

TEST_F(SimPhonebookTest, StartsAfreshWithEveryOpen) {
  bench_.sim.SetSms(3, 20);
  bench_.sim.SetEntry(2, u"Ada", u"1");
  OpenWith(5);
  ASSERT_EQ(phonebook_.ReadCaps(), SimResult::kOk);
  ASSERT_EQ(phonebook_.ReadSmsStatus(), SimResult::kOk);
  phonebook_.PrepareSlotMap();
  phonebook_.MarkSlot(2, 1);
  phonebook_.SetCollectStores(0);
  phonebook_.SetCollectDeletions(0);
  ASSERT_EQ(phonebook_.DeleteEntry(99), SimResult::kInvalidIndex);

  ASSERT_EQ(phonebook_.Open(), SimResult::kOk);
  EXPECT_EQ(phonebook_.Total(), 0u);
  EXPECT_EQ(phonebook_.Used(), 0u);
  EXPECT_EQ(phonebook_.SmsTotal(), 0u);
  EXPECT_EQ(phonebook_.SmsUsed(), 0u);
  EXPECT_EQ(phonebook_.MaxNumberLength(), 0u);
  EXPECT_EQ(phonebook_.MaxNameLength(), 0u);
  EXPECT_EQ(phonebook_.CollectStores(), 1u);
  EXPECT_EQ(phonebook_.CollectDeletions(), 1u);
  EXPECT_EQ(phonebook_.Slot(2), 0);
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kOk);
  EXPECT_EQ(bench_.sim.OpenSessions(), 1u);
}

TEST_F(SimPhonebookTest, KeepsTheCodeOfASessionThatCouldNotBeOpened) {
  bench_.sim.SetResult("SimInitialize", SimResult::kNotInserted);
  EXPECT_EQ(phonebook_.Open(), SimResult::kNotInserted);
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kNotInserted);
  EXPECT_EQ(phonebook_.Handle(), 0u);
}

TEST_F(SimPhonebookTest, CloseEndsTheSessionAndDropsMapAndEvents) {
  OpenWith(5);
  phonebook_.PrepareSlotMap();
  ASSERT_EQ(phonebook_.FirstFreeSlot(), 1u);
  phonebook_.Close();
  EXPECT_THAT(bench_.journal.Entries(),
              ElementsAre("SimDeinitialize(1)", "CloseEvent(OEM_MY_SIM_STORED_EVENT_OEM)",
                          "CloseEvent(OEM_MY_SIM_DELETED_EVENT_OEM)"));
  EXPECT_EQ(phonebook_.Handle(), 0u);
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 0u);
  EXPECT_EQ(bench_.sim.OpenSessions(), 0u);
}

TEST_F(SimPhonebookTest, CloseWithoutASessionOnlyDropsMapAndEvents) {
  bench_.sim.SetResult("SimInitialize", SimResult::kSimBusy);
  ASSERT_EQ(phonebook_.Open(), SimResult::kSimBusy);
  bench_.journal.Clear();
  phonebook_.Close();
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre("CloseEvent(OEM_MY_SIM_STORED_EVENT_OEM)",
                                                    "CloseEvent(OEM_MY_SIM_DELETED_EVENT_OEM)"));
}

TEST_F(SimPhonebookTest, GoingAwayEndsTheSession) {
  {
    SimPhonebook other(bench_.sim, bench_.kernel);
    ASSERT_EQ(other.Open(), SimResult::kOk);
    ASSERT_EQ(bench_.sim.OpenSessions(), 1u);
  }
  EXPECT_EQ(bench_.sim.OpenSessions(), 0u);
  EXPECT_EQ(bench_.kernel.OpenEvents(), 0u);
}

TEST_F(SimPhonebookTest, CapabilitiesGiveTheLengthLimits) {
  bench_.sim.SetLengths(40, 18);
  OpenWith(5);
  EXPECT_EQ(phonebook_.ReadCaps(), SimResult::kOk);
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre("SimGetDevCaps(1, 63)"));
  EXPECT_EQ(phonebook_.MaxNumberLength(), 40u);
  EXPECT_EQ(phonebook_.MaxNameLength(), 18u);
}

TEST_F(SimPhonebookTest, AFailedCapabilityReadLeavesTheLimits) {
  bench_.sim.SetLengths(40, 18);
  OpenWith(5);
  ASSERT_EQ(phonebook_.ReadCaps(), SimResult::kOk);
  bench_.sim.SetResult("SimGetDevCaps", SimResult::kRadioOff);
  EXPECT_EQ(phonebook_.ReadCaps(), SimResult::kRadioOff);
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kRadioOff);
  EXPECT_EQ(phonebook_.MaxNumberLength(), 40u);
  EXPECT_EQ(phonebook_.MaxNameLength(), 18u);
}

TEST_F(SimPhonebookTest, StatusGivesUsedAndTotal) {
  bench_.sim.SetEntry(3, u"Ada", u"1");
  bench_.sim.SetEntry(9, u"Bo", u"2");
  OpenWith(250);
  EXPECT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre("SimGetPhonebookStatus(1, 16)"));
  EXPECT_EQ(phonebook_.Used(), 2u);
  EXPECT_EQ(phonebook_.Total(), 250u);
}

TEST_F(SimPhonebookTest, AFailedStatusLeavesTheFigures) {
  OpenWith(250);
  bench_.sim.SetResult("SimGetPhonebookStatus", SimResult::kPinRequired);
  EXPECT_EQ(phonebook_.ReadStatus(), SimResult::kPinRequired);
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kPinRequired);
  EXPECT_EQ(phonebook_.Total(), 250u);
}

TEST_F(SimPhonebookTest, MessageStatusIsAskedOfTheSimsMessages) {
  bench_.sim.SetSms(7, 20);
  OpenWith(5);
  EXPECT_EQ(phonebook_.ReadSmsStatus(), SimResult::kOk);
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre("SimGetSmsStorageStatus(1, 2)"));
  EXPECT_EQ(phonebook_.SmsUsed(), 7u);
  EXPECT_EQ(phonebook_.SmsTotal(), 20u);
  EXPECT_EQ(phonebook_.Used(), 0u);
}

TEST_F(SimPhonebookTest, AReadEntryGivesNameAndNumberAsWritten) {
  bench_.sim.SetEntry(4, u"Żółw €", u"+4420123");
  OpenWith(5);
  std::u16string name;
  std::u16string number;
  EXPECT_EQ(phonebook_.ReadEntry(4, &name, &number), SimResult::kOk);
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre("SimReadPhonebookEntry(1, 16, 4)"));
  EXPECT_EQ(name, u"Żółw €");
  EXPECT_EQ(number, u"+4420123");
}

TEST_F(SimPhonebookTest, ReadTextsEndWithinTheirBuffersEvenWithoutATerminator) {
  platform::SimPhonebookEntry entry;
  std::fill(std::begin(entry.text), std::end(entry.text), u'n');
  std::fill(std::begin(entry.address), std::end(entry.address), u'7');
  bench_.sim.SetEntry(1, entry);
  OpenWith(5);
  std::u16string name;
  std::u16string number;
  EXPECT_EQ(phonebook_.ReadEntry(1, &name, &number), SimResult::kOk);
  EXPECT_EQ(name, std::u16string(255, u'n'));
  EXPECT_EQ(number, std::u16string(255, u'7'));
}

TEST_F(SimPhonebookTest, AFailedReadLeavesTheCallersTexts) {
  OpenWith(5);
  std::u16string name = u"before";
  std::u16string number = u"123";
  EXPECT_EQ(phonebook_.ReadEntry(2, &name, &number), SimResult::kEntryEmpty);
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kEntryEmpty);
  EXPECT_EQ(name, u"before");
  EXPECT_EQ(number, u"123");
}

TEST_F(SimPhonebookTest, WithoutBothTextsNothingIsAskedOrWritten) {
  OpenWith(5);
  std::u16string text;
  EXPECT_EQ(phonebook_.ReadEntry(1, nullptr, &text), SimResult::kBadParameter);
  EXPECT_EQ(phonebook_.ReadEntry(1, &text, nullptr), SimResult::kBadParameter);
  EXPECT_EQ(phonebook_.WriteEntry(1, nullptr, u"1"), SimResult::kBadParameter);
  EXPECT_EQ(phonebook_.WriteEntry(1, u"Ada", nullptr), SimResult::kBadParameter);
  EXPECT_THAT(bench_.journal.Entries(), ElementsAre());
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kOk);  // of the status that was read before
}

TEST_F(SimPhonebookTest, AWrittenEntryIsAWholeRecord) {
  OpenWith(5);
  EXPECT_EQ(phonebook_.WriteEntry(3, u"Ada", u"+44"), SimResult::kOk);
  EXPECT_THAT(bench_.journal.Entries("SimWrite"),
              ElementsAre("SimWritePhonebookEntry(1, 16, 3, Ada, +44)"));
  platform::SimPhonebookEntry expected;
  expected.size = 1040;
  expected.params = 15;
  expected.addressType = 1;
  expected.numPlan = 1;
  std::u16string_view(u"Ada").copy(expected.text, 3);
  std::u16string_view(u"+44").copy(expected.address, 3);
  const auto entries = bench_.sim.Entries();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(std::memcmp(&entries.at(3), &expected, sizeof(expected)), 0);
}

TEST_F(SimPhonebookTest, ANumberWithoutAPlusIsWrittenAsUnknown) {
  OpenWith(5);
  EXPECT_EQ(phonebook_.WriteEntry(1, u"", u"12+34"), SimResult::kOk);
  EXPECT_EQ(bench_.sim.Entries().at(1).addressType, 0u);
  EXPECT_EQ(bench_.sim.Entries().at(1).numPlan, 1u);
}

TEST_F(SimPhonebookTest, WrittenTextsAreCutToTheirBuffers) {
  bench_.sim.SetLengths(300, 300);
  OpenWith(5);
  const std::u16string name(256, u'n');
  const std::u16string number(300, u'7');
  EXPECT_EQ(phonebook_.WriteEntry(1, name.c_str(), number.c_str()), SimResult::kOk);
  EXPECT_EQ(bench_.sim.Name(1), std::u16string(255, u'n'));
  EXPECT_EQ(bench_.sim.Number(1), std::u16string(255, u'7'));
}

TEST_F(SimPhonebookTest, ARefusedWriteIsToldAndKept) {
  OpenWith(5);
  EXPECT_EQ(phonebook_.WriteEntry(6, u"Ada", u"1"), SimResult::kInvalidIndex);
  EXPECT_EQ(phonebook_.LastResult(), SimResult::kInvalidIndex);
}

TEST_F(SimPhonebookTest, DeletingNamesStorageAndLocation) {
  bench_.sim.SetEntry(4, u"Ada", u"1");
  OpenWith(5);
  EXPECT_EQ(phonebook_.DeleteEntry(4), SimResult::kOk);
  EXPECT_THAT(bench_.journal.Entries("SimDelete"),
              ElementsAre("SimDeletePhonebookEntry(1, 16, 4)"));
  EXPECT_TRUE(bench_.sim.Entries().empty());
}

TEST_F(SimPhonebookTest, AnEntryGoesThroughTheCardAndBack) {
  OpenWith(5);
  SimEntry written;
  written.index = 2;
  written.addressType = 9;
  written.numPlan = 9;
  std::u16string_view(u"Bo").copy(written.name, 2);
  std::u16string_view(u"#+12").copy(written.number, 4);
  EXPECT_EQ(phonebook_.WriteEntry(written), SimResult::kOk);
  EXPECT_EQ(written.addressType, 1u);
  EXPECT_EQ(written.numPlan, 1u);

  SimEntry read;
  read.index = 2;
  EXPECT_EQ(phonebook_.ReadEntry(read), SimResult::kOk);
  EXPECT_EQ(std::u16string(read.name), u"Bo");
  EXPECT_EQ(std::u16string(read.number), u"#+12");
  EXPECT_EQ(read.addressType, 1u);
  EXPECT_EQ(read.numPlan, 1u);
}

TEST_F(SimPhonebookTest, AFailedReadLeavesAWholeEntry) {
  OpenWith(5);
  SimEntry entry;
  entry.index = 2;
  entry.name[0] = u'x';
  entry.addressType = 9;
  EXPECT_EQ(phonebook_.ReadEntry(entry), SimResult::kEntryEmpty);
  EXPECT_EQ(std::u16string(entry.name), u"x");
  EXPECT_EQ(entry.addressType, 9u);
}

TEST(SimEntryRecord, HasItsFieldsInTheOrderOfTheRecord) {
  EXPECT_EQ(offsetof(SimEntry, index), 0u);
  EXPECT_EQ(offsetof(SimEntry, name), 4u);
  EXPECT_EQ(offsetof(SimEntry, number), 516u);
  EXPECT_EQ(offsetof(SimEntry, addressType), 1028u);
  EXPECT_EQ(offsetof(SimEntry, numPlan), 1032u);
  EXPECT_EQ(sizeof(SimEntry), 1036u);
}

TEST_F(SimPhonebookTest, EveryCallLeavesItsResult) {
  struct Call {
    const char* name;
    SimResult (*make)(SimPhonebook&);
  };
  const Call calls[] = {
      {"SimGetDevCaps", [](SimPhonebook& p) { return p.ReadCaps(); }},
      {"SimGetPhonebookStatus", [](SimPhonebook& p) { return p.ReadStatus(); }},
      {"SimGetSmsStorageStatus", [](SimPhonebook& p) { return p.ReadSmsStatus(); }},
      {"SimReadPhonebookEntry",
       [](SimPhonebook& p) {
         std::u16string name;
         std::u16string number;
         return p.ReadEntry(1, &name, &number);
       }},
      {"SimWritePhonebookEntry", [](SimPhonebook& p) { return p.WriteEntry(1, u"Ada", u"1"); }},
      {"SimDeletePhonebookEntry", [](SimPhonebook& p) { return p.DeleteEntry(1); }},
  };
  bench_.sim.SetEntry(1, u"Ada", u"1");
  OpenWith(5);
  for (const Call& call : calls) {
    bench_.sim.SetResult(call.name, SimResult::kNetworkError);
    EXPECT_EQ(call.make(phonebook_), SimResult::kNetworkError) << call.name;
    EXPECT_EQ(phonebook_.LastResult(), SimResult::kNetworkError) << call.name;
    bench_.sim.SetResult(call.name, SimResult::kOk);
    EXPECT_EQ(call.make(phonebook_), SimResult::kOk) << call.name;
    EXPECT_EQ(phonebook_.LastResult(), SimResult::kOk) << call.name;
  }
}

TEST(IsInternational, SaysWhereAPlusCounts) {
  struct Case {
    std::u16string_view number;
    int international;
  };
  const Case cases[] = {
      {u"+44", 1},   {u"*21#+44", 1}, {u"12+34", 0}, {u"", 0},         {u"#+123", 1},
      {u"1+23", 0},  {u"a+#+1", 1},   {u"+", 1},     {u"#", 0},        {u"*+44", 0},
      {u"1#2+3", 0}, {u"1#+", 1},     {u"44", 0},    {u"12+3#+45", 1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IsInternational(c.number), c.international) << test::Utf8(c.number);
  }
}

TEST(ProbeSim, AsksTheStatusThroughASessionWithoutNotices) {
  test::SimBench bench;
  bench.sim.SetResult("SimGetPhonebookStatus", SimResult::kRadioOff);
  EXPECT_EQ(SimPhonebook::ProbeSim(bench.sim), SimResult::kRadioOff);
  EXPECT_THAT(bench.journal.Entries(),
              ElementsAre("SimInitialize(0, none, none)", "SimGetPhonebookStatus(1, 16)",
                          "SimDeinitialize(1)"));
  EXPECT_EQ(bench.sim.OpenSessions(), 0u);
}

TEST(ProbeSim, ASimThatCanBeUsedAnswersSuccess) {
  test::SimBench bench;
  EXPECT_EQ(SimPhonebook::ProbeSim(bench.sim), SimResult::kOk);
}

TEST(ProbeSim, TellsWhyNoSessionCouldBeOpenedAndEndsNone) {
  test::SimBench bench;
  bench.sim.SetResult("SimInitialize", SimResult::kNotInserted);
  EXPECT_EQ(SimPhonebook::ProbeSim(bench.sim), SimResult::kNotInserted);
  EXPECT_THAT(bench.journal.Entries(), ElementsAre("SimInitialize(0, none, none)"));
}

TEST(ProbeSim, SharesNothingWithAnOpenSession) {
  test::SimBench bench;
  SimPhonebook phonebook(bench.sim, bench.kernel);
  ASSERT_EQ(phonebook.Open(), SimResult::kOk);
  const platform::SimHandle handle = phonebook.Handle();
  EXPECT_EQ(SimPhonebook::ProbeSim(bench.sim), SimResult::kOk);
  EXPECT_EQ(phonebook.Handle(), handle);
  EXPECT_EQ(phonebook.Total(), 0u);
  EXPECT_EQ(phonebook.ReadStatus(), SimResult::kOk);
}

}  // namespace
}  // namespace kelpin::sim
