#include "contacts/display_name.h"

#include <gtest/gtest.h>

namespace kelpin::contacts {
namespace {

constexpr std::uint32_t kEnglish = 1033;
constexpr char16_t kHighHalf = 0xD83D;

struct NameCase {
  std::string_view why;
  std::u16string_view first;
  std::u16string_view last;
  std::uint32_t language;
  std::u16string_view text;
  bool ucs2;
};

constexpr NameCase kNames[] = {
    {"both parts", u"Jane", u"Doe", kEnglish, u"Doe, Jane", false},
    {"a first name alone", u"Jane", u"", kEnglish, u"Jane", false},
    {"a last name alone", u"", u"Doe", kEnglish, u"Doe", false},
    {"no name", u"", u"", kEnglish, u"", false},
    {"Chinese names in Chinese", u"\u5C0F\u660E", u"\u738B", 2052, u"\u738B\u5C0F\u660E", true},
    {"the other Chinese", u"\u5C0F\u660E", u"\u738B", 1028, u"\u738B\u5C0F\u660E", true},
    {"one Chinese part is enough", u"Ming", u"\u738B", 2052, u"\u738BMing", true},
    {"the other part is enough", u"\u5C0F\u660E", u"Wang", 2052, u"Wang\u5C0F\u660E", true},
    {"one Chinese part alone", u"", u"\u738B", 2052, u"\u738B", true},
    {"Latin names in Chinese", u"Jane", u"Doe", 2052, u"Doe, Jane", false},
    {"U+00FF is not above itself", u"\u00FF", u"Doe", 2052, u"Doe, \u00FF", false},
    {"U+0100 is", u"\u0100", u"Doe", 2052, u"Doe\u0100", true},
    {"Chinese names in English", u"\u5C0F\u660E", u"\u738B", kEnglish, u"\u738B, \u5C0F\u660E",
     false},
    {"another language of the same family", u"\u5C0F\u660E", u"\u738B", 3076,
     u"\u738B, \u5C0F\u660E", false},
    {"what looks like a pattern", u"%s", u"%d", kEnglish, u"%d, %s", false},
};

TEST(DisplayName, ItIsLastThenFirstWithoutASeparatorWhereChineseWantsNone) {
  for (const NameCase& one : kNames) {
    SCOPED_TRACE(one.why);
    const DisplayName name = MakeDisplayName(one.first, one.last, one.language);
    EXPECT_EQ(name.text, one.text);
    EXPECT_EQ(name.ucs2, one.ucs2);
  }
}

TEST(CardName, NameAndMarkAreCutToTheCardsLength) {
  EXPECT_EQ(CardName({u"Abcdefghijklmno", false}, u"/M", 20), u"Abcdefghijklmno/M");
  // 16 letters and a mark of 2: 18 characters, of which 14 stay.
  EXPECT_EQ(CardName({u"Abcdefghijklmnop", false}, u"/M", 14), u"Abcdefghijklmn");
  // 13 and 2: half the mark stays.
  EXPECT_EQ(CardName({u"Abcdefghijklm", false}, u"/M", 14), u"Abcdefghijklm/");
}

TEST(CardName, NoNameHasMoreThan255Characters) {
  const std::u16string longName(300, u'x');
  EXPECT_EQ(CardName({longName, false}, u"", 1000).size(), 255u);
  EXPECT_EQ(CardName({longName, false}, u"", 255).size(), 255u);
}

TEST(CardName, AUcs2NameThatFillsTheLengthIsCutToHalfLessOne) {
  // 7 characters are 14 bytes, which reach 14: 14 / 2 - 1 stay.
  EXPECT_EQ(CardName({std::u16string(7, u'\u738B'), true}, u"", 14), std::u16string(6, u'\u738B'));
  EXPECT_EQ(CardName({std::u16string(20, u'\u738B'), true}, u"", 14), std::u16string(6, u'\u738B'));
  // 6 are 12 bytes.
  EXPECT_EQ(CardName({std::u16string(6, u'\u738B'), true}, u"", 14), std::u16string(6, u'\u738B'));
  // The mark counts.
  EXPECT_EQ(CardName({std::u16string(5, u'\u738B'), true}, u"/M", 14),
            std::u16string(5, u'\u738B') + u"/");
  EXPECT_EQ(CardName({u"ab", true}, u"", 1), u"");
}

TEST(CardName, NoSurrogatePairIsCutInTwo) {
  const std::u16string smile = u"\U0001F600";
  EXPECT_EQ(CardName({u"abc" + smile, false}, u"", 4), u"abc");
  EXPECT_EQ(CardName({u"ab" + smile, false}, u"", 4), u"ab" + smile);
  std::u16string lone = u"ab";
  lone.push_back(kHighHalf);
  std::u16string whole = lone + u"c";
  CutText(whole, 3);
  EXPECT_EQ(whole, u"ab");
}

TEST(CardNumber, ItKeepsWhatCanBeDialled) {
  EXPECT_EQ(CardNumber(u"\uFF11\uFF12 (3)-4", 20), u"1234");
  EXPECT_EQ(CardNumber(u"+49 (30) 123-45 67", 20), u"+49301234567");
  EXPECT_EQ(CardNumber(u"\uFF0B\uFF14\uFF19\uFF0A\uFF03\uFF30\uFF50", 20), u"+49*#pp");
  EXPECT_EQ(CardNumber(u"1-800-FLOWERS", 20), u"1800");
  EXPECT_EQ(CardNumber(u"none", 20), u"");
  EXPECT_EQ(CardNumber(u"", 20), u"");
}

TEST(CardNumber, WhetherAllOfItIsKept) {
  for (const std::u16string_view all :
       {u"", u"+49 (30) 123-45/67.8", u"[030]\u00A012\u201334", u"\uFF08\uFF13\uFF09\u3000\uFF11",
        u"*21*123#", u"12p34", u"\u202A+4930\u202C", u"0\u2011\u200B1"}) {
    EXPECT_TRUE(KeepsNumber(std::u16string(all))) << testing::PrintToString(all);
  }
  for (const std::u16string_view part :
       {u"1-800-FLOWERS", u"n/a", u"030 ext. 5", u"12;34", u"1,2", u"\u0661\u0662", u"1 & 2"}) {
    EXPECT_FALSE(KeepsNumber(std::u16string(part))) << testing::PrintToString(part);
  }
}

TEST(CardNumber, ItIsCutAfterItWasCleaned) {
  EXPECT_EQ(CardNumber(u"0 1 2 3 4 5 6 7", 4), u"0123");
  EXPECT_EQ(CardNumber(std::u16string(300, u'7'), 1000).size(), 255u);
}

}  // namespace
}  // namespace kelpin::contacts
