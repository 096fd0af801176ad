#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "res/ids.h"
#include "sim/sim_text.h"
#include "ui/notification.h"

namespace kelpin::sim {
namespace {

constexpr int kUpdate = static_cast<int>(ui::NotifyCode::kEditUpdate);

TEST(EditFilter, KnowsTheFieldsOfTheDialogs) {
  EXPECT_EQ(EditFilterOf(res::kNewEmail), EditFilter::kEmail);
  EXPECT_EQ(EditFilterOf(res::kEditEmail), EditFilter::kEmail);
  EXPECT_EQ(EditFilterOf(res::kOwnNumberNumber), EditFilter::kOwnNumber);
  for (const int control : {res::kNewNumber, res::kNewNumber2, res::kNewNumber3, res::kEditNumber,
                            res::kEditNumber2, res::kEditNumber3}) {
    EXPECT_EQ(EditFilterOf(control), EditFilter::kNumber) << control;
  }
}

TEST(EditFilter, OnlyAnUpdateIsFiltered) {
  for (const int notification : {0, 0x100, 0x200, 0x201, 0x300, 0x401, 1000}) {
    EXPECT_FALSE(FilterEditInput(notification, res::kNewNumber, u"abc", 20).has_value())
        << notification;
  }
  EXPECT_TRUE(FilterEditInput(kUpdate, res::kNewNumber, u"abc", 20).has_value());
}

TEST(EditFilter, ATextThatStaysIsNotSetAgain) {
  EXPECT_FALSE(FilterEditInput(kUpdate, res::kNewNumber, u"+1*2#p+", 20).has_value());
  EXPECT_FALSE(FilterEditInput(kUpdate, res::kNewNumber, u"", 20).has_value());
  EXPECT_FALSE(FilterEditInput(kUpdate, res::kOwnNumberNumber, u"+12", 20).has_value());
  EXPECT_FALSE(FilterEditInput(kUpdate, res::kNewEmail, u"a@b", 3).has_value());
}

TEST(EditFilter, AnEmailKeepsWhatFitsItsLimitInSeptets) {
  for (const int control : {res::kNewEmail, res::kEditEmail}) {
    EXPECT_TRUE(FilterEditInput(kUpdate, control, u"ab€€c", 5) == u"ab€c");
    EXPECT_TRUE(FilterEditInput(kUpdate, control, u"abcdef", 5) == u"abcde");
    EXPECT_TRUE(FilterEditInput(kUpdate, control, u"a日b", 5) == u"ab");
    EXPECT_TRUE(FilterEditInput(kUpdate, control, u"€", 1) == u"");
  }
}

TEST(EditFilter, AnEmailWithoutALimitKeepsEveryGsmCharacter) {
  EXPECT_FALSE(FilterEditInput(kUpdate, res::kNewEmail, std::u16string(300, u'€'), 0).has_value());
}

TEST(EditFilter, AnOwnNumberHasItsPlusInFront) {
  EXPECT_TRUE(FilterEditInput(kUpdate, res::kOwnNumberNumber, u"1+2+", 20) == u"12");
  EXPECT_TRUE(FilterEditInput(kUpdate, res::kOwnNumberNumber, u"+1+2", 20) == u"+12");
  EXPECT_TRUE(FilterEditInput(kUpdate, res::kOwnNumberNumber, u"(+44) 1w", 20) == u"+441");
}

TEST(EditFilter, AnyOtherFieldKeepsDialCharacters) {
  EXPECT_TRUE(FilterEditInput(kUpdate, res::kNewNumber, u"1+2wp#", 20) == u"1+2p#");
  EXPECT_TRUE(FilterEditInput(kUpdate, 9999, u"a1b2", 20) == u"12");
}

TEST(EditFilter, ATextOf512CharactersIsHandled) {
  std::u16string text(511, u'1');
  EXPECT_FALSE(FilterEditInput(kUpdate, res::kNewNumber, text + u"2", 600).has_value());
  EXPECT_TRUE(FilterEditInput(kUpdate, res::kNewNumber, text + u"x", 600) == text);
  EXPECT_TRUE(FilterEditText(EditFilter::kNumber, text + u"2345", 600) == text + u"2");
}

TEST(PrepareDialString, TakesOutEveryPlusAndMakesWaitsPauses) {
  std::u16string text = u"+44w1W";
  EXPECT_EQ(PrepareDialString(text), 1);
  EXPECT_TRUE(text == u"44p1p");
  text = u"44";
  EXPECT_EQ(PrepareDialString(text), 0);
  EXPECT_TRUE(text == u"44");
  text = u"+4+4+";
  EXPECT_EQ(PrepareDialString(text), 1);
  EXPECT_TRUE(text == u"44");
  text = u"P";
  EXPECT_EQ(PrepareDialString(text), 0);
  EXPECT_TRUE(text == u"P");
  text.clear();
  EXPECT_EQ(PrepareDialString(text), 0);
}

TEST(FoldFullWidth, MakesFullWidthDialCharactersPlain) {
  std::u16string text =
      u"\uFF10\uFF11\uFF12\uFF13\uFF14\uFF15\uFF16\uFF17\uFF18\uFF19"
      u"\uFF03\uFF0A\uFF0B\uFF30\uFF50";
  FoldFullWidth(text);
  EXPECT_TRUE(text == u"0123456789#*+pp");
  text = u"1a\uFF0F\uFF1A\uFF37P";
  FoldFullWidth(text);
  EXPECT_TRUE(text == u"1a\uFF0F\uFF1A\uFF37P");
}

TEST(FoldFullWidth, LooksAt256Characters) {
  std::u16string text(257, u'\uFF11');
  FoldFullWidth(text);
  EXPECT_TRUE(text == std::u16string(256, u'1') + u'\uFF11');
}

TEST(IsDialChar, TakesDigitsSignsAndASmallP) {
  for (const char16_t character : std::u16string_view(u"0123456789*#+p")) {
    EXPECT_EQ(IsDialChar(character), 1);
  }
  for (const char16_t character : std::u16string_view(u"PwW/:aA -()\uFF11")) {
    EXPECT_EQ(IsDialChar(character), 0);
  }
}

TEST(KeepDialChars, DropsEverythingElse) {
  std::u16string text = u"+1 (2)-p P#";
  KeepDialChars(text);
  EXPECT_TRUE(text == u"+12p#");
  text = u"abc";
  KeepDialChars(text);
  EXPECT_TRUE(text.empty());
}

TEST(KeepDialChars, LooksAt256Characters) {
  std::u16string text = std::u16string(255, u'x') + u"12";
  KeepDialChars(text);
  EXPECT_TRUE(text == u"1");
}

}  // namespace
}  // namespace kelpin::sim
