// The marks for other telephones, as they stand on the card afterwards. Expected values are worked
// out from the sample cards: "usim" has 180 entries numbered 1 to 180, a change counter of 180
// (00B4) and the last number 180; entry 12 is the 12th.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/card/ext_card.h"
#include "tests/card/hex.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using sim::FieldSlot;
using sim::kNoRecord;

constexpr char kFolder[] = "3F00/7F10/5F3A/";
constexpr char kCount[] = "4F23", kLastUid[] = "4F24", kPsc[] = "4F22";
constexpr char kUids[] = "4F78", kControl[] = "4F68", kIndex[] = "4F60";

// Sees the card's bytes, sets them, and counts what is sent to files by their id.
class MarkedCard : public MemoryCard {
 public:
  using MemoryCard::MemoryCard;

  softcard::FileContent& File(const std::string& id) {
    return *Image().Find(kFolder + id)->content;
  }
  std::vector<std::uint8_t> Bytes(const std::string& id) { return File(id).bytes; }
  std::vector<std::uint8_t> Record(const std::string& id, std::size_t record) {
    const auto bytes = File(id).Record(record);
    return {bytes.begin(), bytes.end()};
  }
  void Set(const std::string& id, std::vector<std::uint8_t> bytes) { File(id).bytes = bytes; }
  void SetRecord(const std::string& id, std::size_t record, std::vector<std::uint8_t> bytes) {
    softcard::FileContent& file = File(id);
    std::copy(bytes.begin(), bytes.end(),
              file.bytes.begin() + static_cast<std::ptrdiff_t>((record - 1) * file.recordLength));
  }
};

TEST(ChangeMarks, ANewEntryIsCountedAndGetsTheNextNumber) {
  MarkedCard card("usim");
  ExtStack stack(card);
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Write(17, u"New", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kCount), Hex("00B5"));
  EXPECT_EQ(card.Bytes(kLastUid), Hex("00B5"));
  EXPECT_EQ(card.Record(kUids, 17), Hex("00B5"));
  ASSERT_EQ(sim.Write(34, u"Next", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kCount), Hex("00B6"));
  EXPECT_EQ(card.Record(kUids, 34), Hex("00B6"));
  EXPECT_EQ(card.Bytes(kPsc), Hex("0A1B2C3D"));
}

TEST(ChangeMarks, AnEditIsCountedAndKeepsTheNumber) {
  MarkedCard card("usim");
  ExtStack stack(card);
  SimClient sim(stack.service);
  const auto uid = card.Record(kUids, 12);
  ASSERT_EQ(sim.Write(12, u"Other", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kCount), Hex("00B5"));
  EXPECT_EQ(card.Bytes(kLastUid), Hex("00B4"));
  EXPECT_EQ(card.Record(kUids, 12), uid);
  ASSERT_EQ(sim.Write(12, u"Another", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kCount), Hex("00B6"));
}

TEST(ChangeMarks, AWriteThatChangesNothingIsNotCounted) {
  MarkedCard card("usim");
  ExtStack stack(card);
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Write(12, u"Other", u"123"), SimResult::kOk);
  ASSERT_EQ(sim.Write(12, u"Other", u"123"), SimResult::kOk);
  ASSERT_EQ(sim.Delete(17), SimResult::kOk);  // free already
  EXPECT_EQ(card.Bytes(kCount), Hex("00B5"));
}

TEST(ChangeMarks, ADeletedEntryIsCountedAndItsNumberIsNotGivenAgain) {
  MarkedCard card("usim");
  ExtStack stack(card);
  SimClient sim(stack.service);
  const auto uid = card.Record(kUids, 12);
  ASSERT_EQ(sim.Delete(12), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kCount), Hex("00B5"));
  EXPECT_EQ(card.Record(kUids, 12), uid);
  ASSERT_EQ(sim.Write(12, u"New", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kCount), Hex("00B6"));
  EXPECT_EQ(card.Record(kUids, 12), Hex("00B5"));
}

TEST(ChangeMarks, AnEntryOfTheSecondSetHasItsNumberThere) {
  MarkedCard card("usim");
  ExtStack stack(card);
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Write(499, u"Other", u"123"), SimResult::kOk);
  ASSERT_EQ(sim.Delete(499), SimResult::kOk);
  ASSERT_EQ(sim.Write(499, u"New", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Record("4F79", 249), Hex("00B5"));
}

TEST(ChangeMarks, ASaveWithAllItsFieldsIsOneChange) {
  MarkedCard card("usim");
  ExtStack stack(card);
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Write(17, u"New", u"123"), SimResult::kOk);
  std::uint32_t existing = kNoRecord;
  const std::u16string number = u"1234567890123456789098765";
  EXPECT_EQ(stack.book.WriteNumberField(FieldSlot::kSecondNumber, 17, {number, 0}, false, existing),
            0u);
  EXPECT_EQ(stack.book.WriteNumberField(FieldSlot::kThirdNumber, 17, {number, 0}, false, existing),
            0u);
  existing = kNoRecord;
  EXPECT_EQ(stack.book.WriteTextField(FieldSlot::kEmail, 17, u"a", existing), 0u);
  std::uint32_t nickname = kNoRecord;
  EXPECT_EQ(stack.book.WriteTextField(FieldSlot::kNickname, 17, u"b", nickname), 0u);
  EXPECT_TRUE(stack.book.WriteGroup(17, std::vector<std::uint8_t>{1}));
  EXPECT_EQ(card.Bytes(kCount), Hex("00B5"));
  EXPECT_EQ(card.Bytes(kLastUid), Hex("00B5"));

  // The same field once more is the next change; so is another entry's.
  EXPECT_EQ(stack.book.WriteTextField(FieldSlot::kEmail, 17, u"c", existing), 0u);
  EXPECT_EQ(card.Bytes(kCount), Hex("00B6"));
  EXPECT_TRUE(stack.book.WriteGroup(2, std::vector<std::uint8_t>{2}));
  EXPECT_EQ(card.Bytes(kCount), Hex("00B7"));
}

TEST(ChangeMarks, AFieldAloneIsAChangeOfItsEntry) {
  MarkedCard card("usim");
  card.SetRecord(kUids, 7, {0, 0});  // from a telephone that gives no numbers
  card.SetRecord(kControl, 7, {1, 0});
  ExtStack stack(card);
  std::uint32_t existing = kNoRecord;
  std::u16string text;
  ASSERT_EQ(stack.book.ReadTextField(FieldSlot::kEmail, 7, false, existing, text),
            sim::FieldResult::kRead);
  EXPECT_EQ(stack.book.WriteTextField(FieldSlot::kEmail, 7, u"x", existing), 0u);
  EXPECT_EQ(card.Bytes(kCount), Hex("00B5"));
  EXPECT_EQ(card.Record(kUids, 7), Hex("00B5"));
  EXPECT_EQ(card.Bytes(kLastUid), Hex("00B5"));
  EXPECT_EQ(card.Record(kControl, 7), Hex("0000"));
}

TEST(ChangeMarks, NamesOfNumbersAndGroupsAreNoEntries) {
  MarkedCard card("usim");
  ExtStack stack(card);
  EXPECT_TRUE(stack.book.WriteExtRecord(sim::kGroupNameFile, 9, std::vector<std::uint8_t>(16, 65)));
  EXPECT_EQ(card.Record("4F82", 9), std::vector<std::uint8_t>(16, 65));
  EXPECT_EQ(card.Bytes(kCount), Hex("00B4"));
}

TEST(ChangeMarks, TheMarkOfAnUncountedChangeGoesWithTheCountedOne) {
  MarkedCard card("usim");
  card.SetRecord(kControl, 12, {0x03, 0x01});
  ExtStack stack(card);
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Write(12, u"Other", u"123"), SimResult::kOk);
  // The entry stays hidden, and bits that are not ours stay.
  EXPECT_EQ(card.Record(kControl, 12), Hex("0201"));
}

TEST(ChangeMarks, ANewEntryIsNotHiddenAsAFormerOneWas) {
  MarkedCard card("usim");
  card.SetRecord(kControl, 12, {0x01, 0x01});
  ExtStack stack(card);
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Delete(12), SimResult::kOk);
  ASSERT_EQ(sim.Write(12, u"New", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Record(kControl, 12), Hex("0000"));
}

TEST(ChangeMarks, ANewEntryHasNoFieldsOfAFormerOne) {
  MarkedCard card("usim");
  {
    ExtStack stack(card);
    SimClient sim(stack.service);
    ASSERT_NE(card.Record(kIndex, 7), Hex("FFFFFF"));
    ASSERT_EQ(sim.Delete(7), SimResult::kOk);  // and its fields were never cleared
    ASSERT_EQ(sim.Write(7, u"New", u"123"), SimResult::kOk);
    EXPECT_EQ(card.Record(kIndex, 7), Hex("FFFFFF"));
  }
  // Its e-mail record is free for another where no other is: 46 of 100 were in use.
  {
    ExtStack stack(card);
    EXPECT_EQ(stack.book.Slot(0, FieldSlot::kEmail).usedCount, 46u);
  }
  for (std::size_t record = 47; record <= 100; ++record) card.SetRecord("4F50", record, {0x61});
  ExtStack stack(card);
  EXPECT_EQ(stack.book.Slot(0, FieldSlot::kEmail).usedCount, 45u);
}

// The numbers begin anew: 180 entries and the one that is being written.
void ExpectNumberedAnew(MarkedCard& card, std::size_t entries) {
  EXPECT_EQ(card.Bytes(kPsc), Hex("0A1B2C3E"));
  std::size_t uid = 0;
  for (const auto& [adn, uids] :
       std::map<std::string, std::string>{{"4F3A", kUids}, {"4F3B", "4F79"}}) {
    for (std::size_t record = 1; record <= 250; ++record) {
      if (card.File(adn).IsFree(record)) continue;
      ++uid;
      const std::vector<std::uint8_t> expected = {0, static_cast<std::uint8_t>(uid)};
      ASSERT_EQ(card.Record(uids, record), expected) << record;
    }
  }
  EXPECT_EQ(uid, entries);
}

TEST(ChangeMarks, AFullChangeCounterBeginsEverythingAnew) {
  MarkedCard card("usim");
  card.Set(kCount, {0xFF, 0xFF});
  ExtStack stack(card);
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Write(12, u"Other", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kCount), Hex("0001"));
  EXPECT_EQ(card.Bytes(kLastUid), Hex("00B4"));
  ExpectNumberedAnew(card, 180);
}

TEST(ChangeMarks, NumbersThatRunOutBeginAnew) {
  MarkedCard card("usim");
  card.Set(kLastUid, {0xFF, 0xFE});
  ExtStack stack(card);
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Write(500, u"Other", u"123"), SimResult::kOk);
  ASSERT_EQ(sim.Delete(500), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kPsc), Hex("0A1B2C3D"));
  card.Set(kCount, {0x01, 0x00});
  ASSERT_EQ(sim.Write(500, u"New", u"123"), SimResult::kOk);
  EXPECT_EQ(card.Bytes(kCount), Hex("0001"));
  EXPECT_EQ(card.Bytes(kLastUid), Hex("00B4"));
  EXPECT_EQ(card.Record("4F79", 250), Hex("00B4"));  // 179 others, and the last place
  ExpectNumberedAnew(card, 180);
}

// Cut at any command of beginning anew: the next change sees to it that no number is there twice.
TEST(ChangeMarks, BeginningAnewIsTakenUpAgainAfterACut) {
  for (std::uint32_t command = 1;; command += 11) {
    ASSERT_LT(command, 1000u);
    MarkedCard card("usim");
    card.Set(kCount, {0xFF, 0xFF});
    {
      SimService service(card);
      SimClient sim(service);
      card.CutAt(command, command % 2 == 0);
      static_cast<void>(sim.Write(12, u"Other", u"123"));
    }
    const bool cut = card.WasCut();
    card.CutAt(0, false);
    SimService service(card);
    SimClient sim(service);
    ASSERT_EQ(sim.Write(12, u"Third", u"123"), SimResult::kOk);
    std::map<std::vector<std::uint8_t>, int> given;
    for (std::size_t record = 1; record <= 250; ++record) {
      if (!card.File("4F3A").IsFree(record)) ++given[card.Record(kUids, record)];
      if (!card.File("4F3B").IsFree(record)) ++given[card.Record("4F79", record)];
    }
    EXPECT_EQ(given.size(), 180u) << command;
    EXPECT_NE(card.Bytes(kCount), Hex("FFFF"));
    if (!cut) break;
  }
}

TEST(ChangeMarks, WhatTheCardRefusesDoesNotStopTheEntry) {
  for (const char* file : {kCount, kLastUid, kUids, kPsc, kControl}) {
    SCOPED_TRACE(file);
    MarkedCard card("usim");
    card.Image().Find(std::string(kFolder) + file)->update = softcard::Access::kNever;
    card.Image().Find(std::string(kFolder) + file)->read = softcard::Access::kNever;
    ExtStack stack(card);
    SimClient sim(stack.service);
    EXPECT_EQ(sim.Write(17, u"New", u"123"), SimResult::kOk);
    EXPECT_EQ(sim.Text(17), u"New|123");
    EXPECT_EQ(sim.Delete(17), SimResult::kOk);
  }
}

// Commands of one change on a card that was listed before.
std::uint64_t Commands(const std::string& sample, std::uint32_t location) {
  MarkedCard card(sample);
  SimService service(card);
  SimClient sim(service);
  RadioClient radio(service);
  EXPECT_EQ(radio.ReadEntriesEx(1, 1000).code, platform::kRilResultOk);
  EXPECT_EQ(sim.Write(location, u"Other", u"123"), SimResult::kOk);
  const std::uint64_t before = card.Commands();
  EXPECT_EQ(sim.Write(location, u"More", u"123"), SimResult::kOk);
  return card.Commands() - before;
}

TEST(ChangeMarks, ACardWithoutTheFilesIsSentNothingForThem) {
  EXPECT_EQ(Commands("sim-250", 3), 2u);    // the record read afresh, and written
  EXPECT_EQ(Commands("usim-1000", 3), 2u);  // no EF_UID; EF_PBC is known
  // EF_CC and back to EF_ADN: two selections, one read and one write more.
  EXPECT_EQ(Commands("usim", 3), 6u);
}

}  // namespace
}  // namespace kelpin::device::card
