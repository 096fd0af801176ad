// Two programs on one card, each with its own memory of it: neither writes over what it has not
// seen.
#include <gtest/gtest.h>

#include <string>

#include "device/card/sim_service.h"
#include "tests/card/ext_card.h"
#include "tests/card/radio_client.h"
#include "tests/card/shared_channel.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;

constexpr std::uint32_t kEmails = 2;  // file codes
constexpr std::uint32_t kExtensions = 44;
constexpr std::uint32_t kReferences = 1;  // EF_IAP of the first set
constexpr int kDone = 0x9000;
constexpr int kRefused = 0x6985;

// A program with its own session, on a card that it shares.
struct Program {
  explicit Program(SoftCard& card) : channel(card.Channel()), service(channel) {}
  SharedChannel channel;
  SimService service;
  SimClient sim{service};
  RadioClient radio{service};
};

class SharedCard : public testing::Test {
 protected:
  // What the card holds, in hex; "" for a record that was never written.
  std::string Record(const std::string& file, std::size_t number) {
    nlohmann::json image = card.Image();
    return ImageRecord(image, {"7F10", "5F3A", file}, number);
  }
  static std::vector<std::uint8_t> Padded(std::string hex, std::size_t bytes) {
    while (hex.size() < 2 * bytes) hex += "FF";
    return Hex(hex);
  }
  // An entry as the card tells it now.
  std::u16string OnCard(std::uint32_t index) {
    other.service.ReadAfresh();
    return other.sim.Text(index);
  }
  platform::SimPhonebookEntry Known(std::uint32_t index) {
    platform::SimPhonebookEntry entry;
    EXPECT_EQ(mine.sim.Read(index, entry), SimResult::kOk);
    return entry;
  }

  SoftCard card{"usim"};
  Program mine{card};
  Program other{card};
};

// Location 17 is the first free one.
TEST_F(SharedCard, AFreeLocationThatWasTakenIsLeftToWhoTookIt) {
  EXPECT_EQ(mine.sim.Text(17), u"!88000345");
  ASSERT_EQ(other.sim.Write(17, u"Other", u"5"), SimResult::kOk);
  EXPECT_EQ(mine.sim.WriteFree(17, u"Mine", u"1"), SimResult::kEntryChanged);
  EXPECT_EQ(OnCard(17), u"Other|5");
  // It was not told of, and is now: the list is to be read again.
  const auto notices = mine.radio.Notices(2);
  ASSERT_EQ(notices.size(), 2U);
  EXPECT_EQ(notices[0].code, platform::kRilNotifyPhonebookRewritten);
  EXPECT_EQ(mine.sim.Text(17), u"Other|5");
}

TEST_F(SharedCard, AFreeLocationTakesAnEntry) {
  ASSERT_EQ(mine.sim.WriteFree(17, u"Mine", u"1"), SimResult::kOk);
  EXPECT_EQ(OnCard(17), u"Mine|1");
  EXPECT_EQ(mine.sim.WriteFree(17, u"More", u"2"), SimResult::kEntryChanged);
  EXPECT_EQ(mine.sim.Text(17), u"Mine|1");
}

TEST_F(SharedCard, AnEntryThatWasChangedIsNotWrittenOver) {
  const auto known = Known(1);
  ASSERT_EQ(other.sim.Write(1, u"Other", u"+12125550100"), SimResult::kOk);
  EXPECT_EQ(mine.sim.WriteKnown(1, u"Mine", u"1", known), SimResult::kEntryChanged);
  EXPECT_EQ(OnCard(1), u"Other|+12125550100");
  ASSERT_EQ(mine.radio.Notices(2).size(), 2U);
  EXPECT_EQ(mine.sim.WriteKnown(1, u"Mine", u"1", Known(1)), SimResult::kOk);
  EXPECT_EQ(mine.sim.Text(1), u"Mine|1");
}

// The change was read here before, for something else; what is listed is still from before it.
TEST_F(SharedCard, AChangeThatWasReadAlreadyIsToldOfWhereItIsMet) {
  const auto known = Known(1);
  ASSERT_EQ(other.sim.Write(1, u"Other", u"5"), SimResult::kOk);
  mine.service.ReadAfresh();
  ASSERT_EQ(mine.sim.Text(1), u"Other|5");
  EXPECT_EQ(mine.sim.WriteKnown(1, u"Mine", u"1", known), SimResult::kEntryChanged);
  const auto notices = mine.radio.Notices(2);
  ASSERT_EQ(notices.size(), 2U);
  EXPECT_EQ(notices[0].code, platform::kRilNotifyPhonebookRewritten);
}

TEST_F(SharedCard, AnEntryThatWasDeletedIsNotWrittenAgain) {
  const auto known = Known(1);
  ASSERT_EQ(other.sim.Delete(1), SimResult::kOk);
  EXPECT_EQ(mine.sim.WriteKnown(1, u"Mine", u"1", known), SimResult::kEntryChanged);
  EXPECT_EQ(Record("4F3A", 1), "");
}

TEST_F(SharedCard, AnEntryThatWasChangedIsNotDeleted) {
  const auto known = Known(1);
  ASSERT_EQ(other.sim.Write(1, u"Bauer, Anna", u"+12125550101"), SimResult::kOk);
  EXPECT_EQ(mine.sim.DeleteKnown(1, known), SimResult::kEntryChanged);
  EXPECT_EQ(OnCard(1), u"Bauer, Anna|+12125550101");
  EXPECT_EQ(mine.sim.DeleteKnown(1, Known(1)), SimResult::kOk);
  EXPECT_EQ(Record("4F3A", 1), "");
}

// The first twenty digits stand in the entry, the others elsewhere.
TEST_F(SharedCard, AnotherEndOfALongNumberIsAnotherEntry) {
  ASSERT_EQ(mine.sim.Write(17, u"Long", u"12345678901234567890111"), SimResult::kOk);
  const auto known = Known(17);
  ASSERT_EQ(other.sim.Write(17, u"Long", u"12345678901234567890222"), SimResult::kOk);
  EXPECT_EQ(mine.sim.WriteKnown(17, u"Mine", u"1", known), SimResult::kEntryChanged);
  EXPECT_EQ(OnCard(17), u"Long|12345678901234567890222");
}

// Record 1 of the e-mails is entry 4's.
TEST_F(SharedCard, ARecordBesideTheEntriesThatWasChangedIsNotWrittenOver) {
  const auto before = RadioClient::Bytes(mine.radio.File(platform::kRilSimReadRecord, kEmails, 1));
  ASSERT_EQ(before.size(), 42U);
  const auto theirs = Padded("6F406F", 42);
  ASSERT_EQ(
      RadioClient::Status(other.radio.File(platform::kRilSimUpdateRecord, kEmails, 1, theirs)),
      kDone);
  const auto ours = Padded("6D406D", 42);
  EXPECT_EQ(RadioClient::Status(mine.radio.File(platform::kRilSimUpdateRecord, kEmails, 1, ours)),
            kRefused);
  EXPECT_EQ(Hex(Record("4F50", 1)), theirs);
  ASSERT_EQ(mine.radio.Notices(2).size(), 2U);
  EXPECT_EQ(RadioClient::Bytes(mine.radio.File(platform::kRilSimReadRecord, kEmails, 1)), theirs);
  EXPECT_EQ(RadioClient::Status(mine.radio.File(platform::kRilSimUpdateRecord, kEmails, 1, ours)),
            kDone);
  EXPECT_EQ(Hex(Record("4F50", 1)), ours);
}

// E-mails 47 to 100 are free. Where no record is blank, one that nothing refers to is told as free;
// the other program's reference to it comes before our use of it.
TEST_F(SharedCard, ARecordLeftBehindIsNotTakenFromAnEntryThatHasItByNow) {
  const auto theirs = Padded("6F406F", 42);
  for (std::uint32_t record = 47; record <= 100; ++record) {
    ASSERT_EQ(RadioClient::Status(
                  other.radio.File(platform::kRilSimUpdateRecord, kEmails, record, theirs)),
              kDone);
  }
  const auto told = RadioClient::Bytes(mine.radio.File(platform::kRilSimReadRecord, kEmails, 47));
  EXPECT_EQ(told, Padded("", 42));
  ASSERT_EQ(RadioClient::Status(
                other.radio.File(platform::kRilSimUpdateRecord, kReferences, 1, Hex("2FFFFF"))),
            kDone);
  EXPECT_EQ(RadioClient::Status(
                mine.radio.File(platform::kRilSimUpdateRecord, kEmails, 47, Padded("6D406D", 42))),
            kRefused);
  EXPECT_EQ(Hex(Record("4F50", 47)), theirs);
}

// The same for the rest of a long number: extension records 5 to 20 are free.
TEST_F(SharedCard, AnExtensionThatAnotherEntryHasByNowIsNotTaken) {
  const auto rest = Padded("020111", 13);
  for (std::uint32_t record = 5; record <= 20; ++record) {
    ASSERT_EQ(RadioClient::Status(
                  other.radio.File(platform::kRilSimUpdateRecord, kExtensions, record, rest)),
              kDone);
  }
  // Our look at it finds it referred to by nothing.
  EXPECT_EQ(mine.radio.Ask(platform::kRilDevFreeExtensionRecords).code, platform::kRilResultOk);
  ASSERT_EQ(RadioClient::Status(other.radio.File(platform::kRilSimUpdateRecord, 6, 17,
                                                 Hex("000B8121436587092143658709FF05"))),
            kDone);
  EXPECT_EQ(RadioClient::Status(mine.radio.File(platform::kRilSimUpdateRecord, kExtensions, 5,
                                                Padded("020122", 13))),
            kRefused);
  EXPECT_EQ(Hex(Record("4F80", 5)), rest);
}

TEST_F(SharedCard, WhatWasFoundChangedRaisesTheGeneration) {
  const std::uint32_t before = mine.service.Generation();
  EXPECT_EQ(mine.sim.Text(1), u"Bauer, Anna|+12125550100");
  EXPECT_EQ(mine.sim.Write(1, u"Mine", u"1"), SimResult::kOk);
  EXPECT_EQ(mine.service.Generation(), before);  // our own work is none of it
  ASSERT_EQ(other.sim.Write(1, u"Other", u"5"), SimResult::kOk);
  EXPECT_EQ(mine.sim.DeleteKnown(1, SimClient::Entry(u"Mine", u"1")), SimResult::kEntryChanged);
  EXPECT_EQ(mine.service.Generation(), before + 1);
  mine.channel.Touch();
  EXPECT_EQ(mine.service.Generation(), before + 2);
}

// That its record is an entry's own is known from the entry: nobody waits for the index records of
// the others, of which 90 and more are in use.
TEST(SharedCardCost, ASavedEmailAsksForNoOtherEntry) {
  MemoryCard card("usim");
  SharedChannel channel(card);
  ExtStack stack(channel);
  std::uint32_t existing = sim::kNoRecord;
  std::u16string text;
  ASSERT_EQ(stack.book.ReadTextField(sim::FieldSlot::kEmail, 4, false, existing, text),
            sim::FieldResult::kRead);
  ASSERT_EQ(existing, 1U);
  const std::uint64_t before = card.Commands();
  EXPECT_EQ(stack.book.WriteTextField(sim::FieldSlot::kEmail, 4, u"a@b.c", existing), 0U);
  EXPECT_LT(card.Commands() - before, 45U);
}

// What the list shows of an entry is enough to delete it, whatever is in it.
TEST(KnownEntry, EveryEntryOfEverySampleIsKnownAsItsRowTellsIt) {
  for (const char* sample : {"usim", "usim-full", "usim-local", "sim-250"}) {
    SCOPED_TRACE(sample);
    MemoryCard card(sample);
    SimService service(card);
    SimClient sim(service);
    RadioClient radio(service);
    const auto listed =
        RadioClient::Records<platform::RilPhonebookEntry>(radio.ReadEntries(1, 1000));
    ASSERT_FALSE(listed.empty());
    for (const auto& row : listed) {
      const std::u16string plus = row.addressType == 1 ? u"+" : u"";
      EXPECT_EQ(sim.DeleteKnown(row.index, SimClient::Entry(row.text, plus + row.address)),
                SimResult::kOk)
          << row.index;
    }
    std::uint32_t used = 1;
    std::uint32_t total = 0;
    EXPECT_EQ(sim.Status(used, total), SimResult::kOk);
    EXPECT_EQ(used, 0U);
  }
}

TEST(KnownEntry, ItCostsTheCardNothingMore) {
  std::uint64_t commands[2] = {};
  for (const bool check : {false, true}) {
    MemoryCard card("usim");
    SimService service(card);
    SimClient sim(service);
    platform::SimPhonebookEntry known;
    ASSERT_EQ(sim.Read(1, known), SimResult::kOk);
    EXPECT_EQ(check ? sim.WriteKnown(1, u"New", u"1", known) : sim.Write(1, u"New", u"1"),
              SimResult::kOk);
    EXPECT_EQ(check ? sim.WriteFree(17, u"New", u"1") : sim.Write(17, u"New", u"1"),
              SimResult::kOk);
    commands[check ? 1 : 0] = card.Commands();
  }
  EXPECT_EQ(commands[0], commands[1]);
}

}  // namespace
}  // namespace kelpin::device::card
