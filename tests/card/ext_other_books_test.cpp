// Phone books that are as the standard allows and unlike the samples (TS 31.102 4.4.2): listed,
// read, saved and deleted. Every byte is worked out by hand.
#include <gtest/gtest.h>

#include "tests/card/hand_card.h"
#include "tests/card/radio_client.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using sim::FieldSlot;

constexpr FieldSlot kMail = FieldSlot::kEmail;
constexpr FieldSlot kSecond = FieldSlot::kSecondNumber;
constexpr FieldSlot kThird = FieldSlot::kThirdNumber;
constexpr char16_t kNone[] = u"(none)";
constexpr char16_t kFree[] = u"!88000345";

// Entries "A" 12, "B" 34, "C" 56.
const std::string kA = HandEntry("41", "0281 21");
const std::string kB = HandEntry("42", "0281 43");
const std::string kC = HandEntry("43", "0281 65");
// Twenty digits 12345678901234567890 in a number's record, up to the capability byte.
constexpr char kTwenty[] = "000B8121436587092143658709FF";

// The last set may be smaller than the others.
TEST(OtherBooks, ALastSetOfAnotherSizeHasItsFields) {
  HandCard card({{{"4F30", 40, 4, {"A809 C0034F3A01 C4024F40", "A809 C0034F3B02 C4024F41"}},
                  {"4F3A", kHandAdn, 3, {kA, "", kB}},
                  {"4F40", 15, 3, {}},
                  {"4F3B", kHandAdn, 2, {"", kC}},
                  {"4F41", 15, 2, {"", "00028187"}}},
                 {},
                 {}});
  std::uint32_t used = 0, total = 0;
  ASSERT_EQ(card.Sim().Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, 3U);
  EXPECT_EQ(total, 5U);
  EXPECT_EQ(card.Sim().Text(5), u"C|56");
  EXPECT_EQ(card.Number(kSecond, 5), u"78");
  EXPECT_EQ(card.SaveNumber(kSecond, 4, u"9"), 0U);
  EXPECT_EQ(card.Record("4F41", 1), "000281F9");
  EXPECT_EQ(card.SaveNumber(kSecond, 3, u"8"), 0U);
  EXPECT_EQ(card.Record("4F40", 3), "000281F8");
  EXPECT_EQ(card.SaveNumber(kSecond, 5, u""), 0U);
  EXPECT_EQ(card.Record("4F41", 2), "");
  EXPECT_EQ(card.Sim().Delete(5), SimResult::kOk);
  EXPECT_EQ(card.Sim().Text(5), kFree);
  EXPECT_TRUE(card.Book().SeesFieldsOf(5));
}

// By the first set's size the fifth entry seems one of a third set. Its name and number are there,
// its fields are nobody's to lose.
TEST(OtherBooks, EntriesBehindAShortFirstSetKeepTheirFields) {
  HandCard card({{{"4F30", 40, 4, {"A809 C0034F3A01 C4024F40", "A809 C0034F3B02 C4024F41"}},
                  {"4F3A", kHandAdn, 2, {kA, kB}},
                  {"4F40", 15, 2, {}},
                  {"4F3B", kHandAdn, 3, {"", "", kC}},
                  {"4F41", 15, 3, {"", "", "00028187"}}},
                 {},
                 {}});
  EXPECT_EQ(card.Sim().Text(5), u"C|56");
  EXPECT_EQ(card.Number(kSecond, 5), kNone);
  EXPECT_TRUE(card.Book().SeesFieldsOf(4));
  EXPECT_FALSE(card.Book().SeesFieldsOf(5));
  EXPECT_EQ(card.SaveNumber(kSecond, 5, u"1"), sim::kSecondNumberFailed);
  EXPECT_EQ(card.Record("4F41", 3), "00028187");
  EXPECT_EQ(card.Sim().Write(5, u"D", u"78"), SimResult::kOk);
  EXPECT_EQ(card.Record("4F3B", 3), "44FFFFFFFFFFFFFFFFFF028187");
}

// E-mail records of the second and the third set are in one file, those of the first in another.
TEST(OtherBooks, ATypeTwoFileOfLaterSetsIsOne) {
  HandCard card(
      {{{"4F30",
         40,
         4,
         {"A809 C0034F3A01 C1024F60 A904 CA024F50", "A809 C0034F3B02 C1024F61 A904 CA024F51",
          "A809 C0034F3C03 C1024F62 A904 CA024F51"}},
        {"4F3A", kHandAdn, 1, {kA}},
        {"4F3B", kHandAdn, 1, {kB}},
        {"4F3C", kHandAdn, 1, {kC}},
        {"4F60", 1, 1, {}},
        {"4F61", 1, 1, {}},
        {"4F62", 1, 1, {}},
        {"4F50", 10, 2, {}},
        {"4F51", 10, 2, {}}},
       {},
       {}});
  EXPECT_EQ(card.SaveText(kMail, 2, u"b"), 0U);
  EXPECT_EQ(card.SaveText(kMail, 3, u"c"), 0U);
  EXPECT_EQ(card.SaveText(kMail, 1, u"a"), 0U);
  EXPECT_EQ(card.Record("4F61", 1), "01");
  EXPECT_EQ(card.Record("4F62", 1), "02");
  EXPECT_EQ(card.Record("4F60", 1), "01");
  EXPECT_EQ(card.Record("4F50", 1), "61");
  EXPECT_EQ(card.Record("4F51", 1), "62");
  EXPECT_EQ(card.Record("4F51", 2), "63");
  EXPECT_EQ(card.SaveText(kMail, 2, u""), 0U);
  EXPECT_EQ(card.Record("4F51", 1), "");
  EXPECT_EQ(card.Text(kMail, 3), u"c");
  EXPECT_EQ(card.Book().FirstFreeRecord(2, kMail), 1U);
}

// Nothing can refer to an e-mail then: the card has none, and a save goes through without it.
TEST(OtherBooks, WithoutAnIndexFileThereAreNoTypeTwoFields) {
  HandCard card({{{"4F30", 40, 4, {"A809 C0034F3A01 C4024F40 A904 CA024F50"}},
                  {"4F3A", kHandAdn, 2, {kA}},
                  {"4F40", 15, 2, {}},
                  {"4F50", 10, 2, {"6161"}}},
                 {},
                 {}});
  EXPECT_EQ(card.Book().SlotInUse(0, kMail).recordCount, 0U);
  EXPECT_EQ(card.Text(kMail, 1), kNone);
  EXPECT_TRUE(card.Book().SeesFieldsOf(1));
  EXPECT_EQ(card.SaveText(kMail, 1, u""), 0U);
  EXPECT_EQ(card.SaveText(kMail, 1, u"b"), sim::kEmailFailed);
  EXPECT_EQ(card.Record("4F50", 1), "6161");
  EXPECT_EQ(card.SaveNumber(kSecond, 1, u"5"), 0U);
  EXPECT_EQ(card.Sim().Write(2, u"B", u"34"), SimResult::kOk);
}

// Two sets, each with an EF_EXT1 of its own; the digits 21 are the rest of A's second number, 43
// that of B's.
HandBook TwoExtensionFiles() {
  const std::string twenty = kTwenty;
  return {{{"4F30",
            40,
            4,
            {"A809 C0034F3A01 C4024F40 AA04 C2024F80", "A809 C0034F3B02 C4024F41 AA04 C2024F81"}},
           {"4F3A", kHandAdn, 2, {kA, ""}},
           {"4F3B", kHandAdn, 2, {kB, kC}},
           {"4F40", 15, 2, {twenty + "01"}},
           {"4F41", 15, 2, {twenty + "01"}},
           {"4F80", 13, 2, {"020112"}},
           {"4F81", 13, 3, {"020134"}}},
          {},
          {}};
}

TEST(OtherBooks, EachSetsNumbersGoOnInItsOwnExtensionFile) {
  HandCard card(TwoExtensionFiles());
  EXPECT_EQ(card.Number(kSecond, 1), u"1234567890123456789021");
  EXPECT_EQ(card.Number(kSecond, 3), u"1234567890123456789043");
  EXPECT_EQ(card.SaveNumber(kSecond, 3, u"1234567890123456789065"), 0U);
  EXPECT_EQ(card.Record("4F81", 1), "020156");
  EXPECT_EQ(card.Record("4F80", 1), "020112");
  EXPECT_EQ(card.Record("4F41", 1), std::string(kTwenty) + "01");
  // A new one takes a free record of its own set's file, and gives it back.
  EXPECT_EQ(card.SaveNumber(kSecond, 4, u"1234567890123456789087"), 0U);
  EXPECT_EQ(card.Record("4F81", 2), "020178");
  EXPECT_EQ(card.Record("4F41", 2), std::string(kTwenty) + "02");
  EXPECT_EQ(card.Record("4F80", 2), "");
  EXPECT_EQ(card.SaveNumber(kSecond, 2, u"1234567890123456789087"), 0U);
  EXPECT_EQ(card.Record("4F80", 2), "020178");
  EXPECT_EQ(card.Record("4F40", 2), std::string(kTwenty) + "02");
  EXPECT_EQ(card.SaveNumber(kSecond, 4, u"5"), 0U);
  EXPECT_EQ(card.Record("4F81", 2), "");
  EXPECT_EQ(card.SaveNumber(kSecond, 1, u""), 0U);
  EXPECT_EQ(card.Record("4F80", 1), "");
  EXPECT_EQ(card.Record("4F81", 1), "020156");
  EXPECT_EQ(card.Number(kSecond, 2), u"1234567890123456789087");
}

TEST(OtherBooks, AReferenceIntoAnotherSetsExtensionFileIsRefused) {
  HandCard card(TwoExtensionFiles());
  RadioClient radio(card.Service());
  // Records 1 and 2 are the first file's, 3 to 5 the second's.
  EXPECT_EQ(RadioClient::Status(
                radio.File(platform::kRilSimUpdateRecord, 6, 1, Hex(std::string(kTwenty) + "04"))),
            0x6985);
  EXPECT_EQ(card.Record("4F40", 1), std::string(kTwenty) + "01");
}

// All records longer than what they hold.
TEST(OtherBooks, LongerRecordsKeepTheirEnds) {
  HandCard card({{{"4F30",
                   40,
                   4,
                   {"A80D C0034F3A01 C1024F60 C4024F40 A908 C4024F48 CA024F50"
                    "AA04 C2024F80"}},
                  {"4F3A", kHandAdn, 2, {kA}},
                  {"4F60", 5, 2, {"FFFFFF0304"}},
                  {"4F40", 20, 2, {"000281 21 FFFFFFFFFFFFFFFFFF FFFF 0102030405"}},
                  {"4F48", 22, 2, {}},
                  {"4F50", 40, 2, {}},
                  {"4F80", 16, 3, {}}},
                 {},
                 {}});
  EXPECT_EQ(card.Number(kSecond, 1), u"12");
  EXPECT_EQ(card.SaveNumber(kSecond, 1, u"34"), 0U);
  EXPECT_EQ(card.Record("4F40", 1), "00028143FFFFFFFFFFFFFFFFFFFFFF0102030405");
  EXPECT_EQ(card.SaveNumber(kThird, 1, u"1234567890123456789021"), 0U);
  EXPECT_EQ(card.SaveText(kMail, 1, u"a"), 0U);
  EXPECT_EQ(card.Record("4F80", 1), "020112");
  EXPECT_EQ(card.Record("4F48", 1), std::string(kTwenty) + "01");
  EXPECT_EQ(card.Record("4F50", 1), "61");
  EXPECT_EQ(card.Record("4F60", 1), "0101FF0304");
  EXPECT_EQ(card.Number(kThird, 1), u"1234567890123456789021");
  EXPECT_EQ(card.SaveNumber(kThird, 1, u""), 0U);
  EXPECT_EQ(card.Record("4F80", 1), "");
  EXPECT_EQ(card.Record("4F60", 1), "FF01FF0304");
}

// EF_PURI (tag CC) has its byte in the index record like every type-2 file.
TEST(OtherBooks, AFileOfAddressesTakesItsByteOfTheIndexRecord) {
  HandCard card({{{"4F30", 40, 4, {"A809 C0034F3A01 C1024F60 A90C C4024F48 CC024F90 CA024F50"}},
                  {"4F3A", kHandAdn, 2, {kA, kB}},
                  {"4F60", 3, 2, {"010202"}},
                  {"4F48", 17, 2, {"00028187"}},
                  {"4F90", 30, 2, {"", "7369703A61"}},
                  {"4F50", 10, 2, {"62", "61"}}},
                 {},
                 {}});
  EXPECT_EQ(card.Number(kSecond, 1), u"78");
  EXPECT_EQ(card.Text(kMail, 1), u"a");
  EXPECT_EQ(card.SaveText(kMail, 1, u""), 0U);
  EXPECT_EQ(card.Record("4F60", 1), "0102");
  EXPECT_EQ(card.Record("4F90", 2), "7369703A61");
}

TEST(OtherBooks, EmptyReferenceRecordsInBetweenAreNoSets) {
  HandCard card({{{"4F30", 40, 4, {"", "A809 C0034F3A01 C4024F40", "", "A809 C0034F3B02 C4024F41"}},
                  {"4F3A", kHandAdn, 1, {kA}},
                  {"4F40", 15, 1, {"00028187"}},
                  {"4F3B", kHandAdn, 1, {kB}},
                  {"4F41", 15, 1, {"00028109"}}},
                 {},
                 {}});
  EXPECT_EQ(card.Sim().Text(1), u"A|12");
  EXPECT_EQ(card.Sim().Text(2), u"B|34");
  EXPECT_EQ(card.Number(kSecond, 1), u"78");
  EXPECT_EQ(card.Number(kSecond, 2), u"90");
  EXPECT_EQ(card.SaveNumber(kSecond, 2, u"5"), 0U);
  EXPECT_EQ(card.Record("4F41", 1), "000281F5");
}

// Both kinds of phone book are independent: what the other one and the GSM file hold stays.
TEST(OtherBooks, TheGlobalPhoneBookCountsWhereThereAreOthersBeside) {
  const HandFile reference = {"4F30", 40, 4, {"A809 C0034F3A01 C4024F40"}};
  HandCard card({{reference, {"4F3A", kHandAdn, 2, {kA}}, {"4F40", 15, 2, {"00028187"}}},
                 {reference, {"4F3A", kHandAdn, 3, {kB, kB, kB}}, {"4F40", 15, 3, {"00028109"}}},
                 {{"6F3A", kHandAdn, 5, {kC, kC}}}});
  std::uint32_t used = 0, total = 0;
  ASSERT_EQ(card.Sim().Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, 1U);
  EXPECT_EQ(total, 2U);
  EXPECT_EQ(card.Sim().Text(1), u"A|12");
  EXPECT_EQ(card.Number(kSecond, 1), u"78");
  EXPECT_EQ(card.Sim().Write(2, u"D", u"5"), SimResult::kOk);
  EXPECT_EQ(card.SaveNumber(kSecond, 2, u"6"), 0U);
  EXPECT_EQ(card.Sim().Delete(1), SimResult::kOk);
  constexpr char kLocal[] = "3F00/A0000000871002FF49FF0589/5F3A/";
  for (std::size_t record = 1; record <= 3; ++record) {
    EXPECT_EQ(card.Record(std::string(kLocal) + "4F3A", record), "42FFFFFFFFFFFFFFFFFF028143");
  }
  EXPECT_EQ(card.Record(std::string(kLocal) + "4F40", 1), "00028109");
  EXPECT_EQ(card.Record("3F00/7F10/6F3A", 1), "43FFFFFFFFFFFFFFFFFF028165");
}

// Groups and tags in another order than usual, and EF_EMAIL named twice: by type 1, then by type 2.
TEST(OtherBooks, TheOrderOfTagsAndAFileNamedTwiceAreTaken) {
  HandCard card({{{"4F30",
                   50,
                   1,
                   {"AA04 C2024F80 A908 CA024F50 C4024F48"
                    "A811 CA024F51 C4024F40 C1024F60 C0034F3A01"}},
                  {"4F3A", kHandAdn, 2, {kA}},
                  {"4F60", 2, 2, {"0201"}},
                  {"4F48", 17, 2, {"00028187"}},
                  {"4F40", 15, 2, {"00028109"}},
                  {"4F50", 10, 2, {"", "62"}},
                  {"4F51", 10, 2, {"61"}},
                  {"4F80", 13, 2, {}}},
                 {},
                 {}});
  EXPECT_EQ(card.Sim().Text(1), u"A|12");
  EXPECT_EQ(card.Number(kSecond, 1), u"78");
  EXPECT_EQ(card.Number(kThird, 1), u"90");
  EXPECT_EQ(card.Text(kMail, 1), u"a");
  EXPECT_EQ(card.SaveText(kMail, 1, u"c"), 0U);
  EXPECT_EQ(card.Record("4F51", 1), "63");
  EXPECT_EQ(card.Record("4F50", 2), "62");
  EXPECT_EQ(card.SaveNumber(kSecond, 1, u""), 0U);
  EXPECT_EQ(card.Record("4F60", 1), "02");
}

// None of these cards has an EF_PBC: nothing is hidden.
TEST(OtherBooks, WithoutAControlFileNothingIsHidden) {
  HandCard card({{{"4F30", 40, 4, {"A805 C0034F3A01"}}, {"4F3A", kHandAdn, 2, {kA, kB}}}, {}, {}});
  RadioClient radio(card.Service());
  const auto entries =
      RadioClient::Records<platform::RilPhonebookEntryEx>(radio.ReadEntriesEx(1, 2));
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].hidden, 0U);
  EXPECT_EQ(entries[1].hidden, 0U);
  EXPECT_EQ(card.Sim().Write(1, u"D", u"5"), SimResult::kOk);
  EXPECT_EQ(card.Sim().Delete(2), SimResult::kOk);
  EXPECT_EQ(card.Sim().Text(1), u"D|5");
  EXPECT_EQ(card.Sim().Text(2), kFree);
}

}  // namespace
}  // namespace kelpin::device::card
