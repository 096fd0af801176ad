// Texts that another telephone wrote in the shorter forms of UCS-2 (TS 102 221 annex A): those who
// read plain UCS-2 alone are told them, and a text that nobody edits stays as it is.
//
// 81: the count, the base's bits 14 to 7, then a byte a character, 80 and up counting from the
// base. 82: the same with a base of two bytes.
#include <gtest/gtest.h>

#include "tests/card/hand_card.h"
#include "tests/card/radio_client.h"

namespace kelpin::device::card {
namespace {

using sim::FieldSlot;

constexpr FieldSlot kMail = FieldSlot::kEmail;
constexpr FieldSlot kNick = FieldSlot::kNickname;
constexpr std::uint32_t kGroupNames = 4, kNumberNames = 5;

// U+0416 U+0417 U+0418: the base is 0400, its bits 14 to 7 are 08.
constexpr char kZhZeI[] = "810308969798";
// U+05D0 U+0600 U+05D1 U+05D2 from the base 05D0.
constexpr char kAcross[] = "820405D080B08182";
// "a@b": nothing outside the GSM alphabet.
constexpr char kPlainMail[] = "810300610062";

HandBook Book() {
  return {
      {{"4F30", 50, 1, {"A809 C0034F3A01 C1024F60 A908 C3024F58 CA024F50 AA08 C7024F81 C8024F82"}},
       {"4F3A", kHandAdn, 2, {HandEntry("41", "0281 21"), HandEntry("42", "0281 43")}},
       {"4F60", 2, 2, {"0101", "0202"}},
       {"4F58", 14, 2, {std::string(kZhZeI) + "FFFFFFFFFFFF 0101", "41 42"}},
       {"4F50", 16, 2, {kPlainMail, kZhZeI}},
       {"4F81", 14, 5, {kZhZeI, "8107 02 416E61 20 8D8D8D", "8103 09 FF 80 81", "8100 02"}},
       {"4F82", 10, 2, {kAcross, "8205 0410 80 81 82 83 84"}}},
      {},
      {{"6F40", 26, 2, {std::string(kZhZeI) + "FFFFFFFFFFFF 038121F3"}}}};
}

class CompactText : public ::testing::Test {
 protected:
  std::string Read(std::uint32_t file, std::uint32_t record) {
    return ToHex(RadioClient::Bytes(radio_.File(platform::kRilSimReadRecord, file, record)));
  }
  int Write(std::uint32_t file, std::uint32_t record, const std::string& hex) {
    return RadioClient::Status(radio_.File(platform::kRilSimUpdateRecord, file, record, Hex(hex)));
  }

  HandCard card_{Book()};
  RadioClient radio_{card_.Service()};
};

TEST_F(CompactText, NamesAreToldInPlainUcs2) {
  EXPECT_EQ(Read(kNumberNames, 1), "80041604170418FFFFFFFFFFFFFF");
  EXPECT_EQ(Read(kGroupNames, 1), "8005D0060005D105D2FF");
}

// Fourteen bytes have room for six characters: the last of them says that there are more.
TEST_F(CompactText, ANameThatIsTooLongForPlainUcs2IsToldCut) {
  EXPECT_EQ(Read(kNumberNames, 2), "800041006E00610020010D2026FF");
  EXPECT_EQ(Read(kGroupNames, 2), "800410041104122026FF");
}

// U+04FF would end the text of those who read it by its lower byte.
TEST_F(CompactText, ACharacterThatWouldEndTheTextIsToldAsOneThatIsNone) {
  EXPECT_EQ(Read(kNumberNames, 3), "80FFFD04800481FFFFFFFFFFFFFF");
}

TEST_F(CompactText, ANameWithoutCharactersIsToldAsItIs) {
  EXPECT_EQ(Read(kNumberNames, 4), "810002FFFFFFFFFFFFFFFFFFFFFF");
}

TEST_F(CompactText, ANameThatIsWrittenAsItWasToldStays) {
  for (const std::uint32_t record : {1U, 2U, 3U}) {
    const std::string before = card_.Record("4F81", record);
    EXPECT_EQ(Write(kNumberNames, record, Read(kNumberNames, record)), 0x9000);
    EXPECT_EQ(card_.Record("4F81", record), before);
  }
  EXPECT_EQ(card_.Record("4F81", 1), kZhZeI);
  EXPECT_EQ(card_.Record("4F81", 2), "810702416E61208D8D8D");
}

TEST_F(CompactText, AnotherNameIsWrittenAsItIs) {
  EXPECT_EQ(Write(kNumberNames, 1, "8004160417FFFFFFFFFFFFFFFFFF"), 0x9000);
  EXPECT_EQ(card_.Record("4F81", 1), "8004160417");
  EXPECT_EQ(Write(kNumberNames, 2, "416E61FFFFFFFFFFFFFFFFFFFFFF"), 0x9000);
  EXPECT_EQ(card_.Record("4F81", 2), "416E61");
  EXPECT_EQ(Write(kGroupNames, 1, std::string(20, 'F')), 0x9000);
  EXPECT_EQ(card_.Record("4F82", 1), "");
}

TEST_F(CompactText, ANicknameIsReadSavedAndKeepsItsForm) {
  EXPECT_EQ(card_.Text(kNick, 1), u"\u0416\u0417\u0418");
  EXPECT_EQ(card_.SaveText(kNick, 1, u"\u0416\u0417\u0418"), 0U);
  EXPECT_EQ(card_.Record("4F58", 1), std::string(kZhZeI) + "FFFFFFFFFFFF0101");
  EXPECT_EQ(card_.SaveText(kNick, 1, u"\u0416"), 0U);
  EXPECT_EQ(card_.Record("4F58", 1), "800416FFFFFFFFFFFFFFFFFF0101");
  EXPECT_EQ(card_.SaveText(kNick, 1, u""), 0U);
  EXPECT_EQ(card_.Record("4F58", 1), "");
  EXPECT_EQ(card_.Record("4F60", 1), "FF01");
}

TEST_F(CompactText, AnEmailOfTheGsmAlphabetIsReadSavedAndKeepsItsForm) {
  EXPECT_EQ(card_.Text(kMail, 1), u"a@b");
  EXPECT_EQ(card_.SaveText(kMail, 1, u"a@b"), 0U);
  EXPECT_EQ(card_.Record("4F50", 1), kPlainMail);
  EXPECT_EQ(card_.SaveText(kMail, 1, u"a@c"), 0U);
  EXPECT_EQ(card_.Record("4F50", 1), "610063");
}

// What an e-mail field would drop is not shown in it, and so is not lost.
TEST_F(CompactText, AnEmailOfOtherCharactersIsLeftUnread) {
  EXPECT_EQ(card_.Text(kMail, 2), u"(not read)");
  EXPECT_EQ(card_.Record("4F50", 2), kZhZeI);
}

TEST_F(CompactText, AnOwnNumbersNameKeepsItsFormWhenTheNumberChanges) {
  constexpr std::uint32_t kOwnNumbers = 0x6F40;
  const auto told =
      ToHex(RadioClient::Bytes(radio_.Restricted(platform::kRilSimReadRecord, kOwnNumbers, 1, 26)));
  EXPECT_EQ(told.substr(0, 24), "80041604170418FFFFFFFFFF");
  const std::string number = "028165FFFFFFFFFFFFFFFFFFFFFF";
  EXPECT_EQ(RadioClient::Status(radio_.Restricted(platform::kRilSimUpdateRecord, kOwnNumbers, 1, 26,
                                                  Hex(told.substr(0, 24) + number))),
            0x9000);
  EXPECT_EQ(card_.Record("3F00/7F10/6F40", 1), std::string(kZhZeI) + "FFFFFFFFFFFF028165");
}

}  // namespace
}  // namespace kelpin::device::card
