#include "app/case_fold.h"

#include <gtest/gtest.h>

namespace kelpin::app {
namespace {

TEST(FoldCase, CapitalsOfEveryScriptFoldToTheirSmallLetters) {
  struct Pair {
    char16_t capital;
    char16_t small;
  };
  constexpr Pair kPairs[] = {
      {u'A', u'a'},           {u'Z', u'z'},           {u'\u00C4', u'\u00E4'},  // Ä
      {u'\u00DE', u'\u00FE'},                                                  // Þ
      {u'\u0141', u'\u0142'},                                                  // Ł
      {u'\u0150', u'\u0151'},                                                  // Ő
      {u'\u0160', u'\u0161'},                                                  // Š
      {u'\u017D', u'\u017E'},                                                  // Ž
      {u'\u0178', u'\u00FF'},                                                  // Ÿ
      {u'\u0218', u'\u0219'},                                                  // Ș
      {u'\u0391', u'\u03B1'}, {u'\u03A9', u'\u03C9'}, {u'\u0386', u'\u03AC'},  // Greek
      {u'\u0389', u'\u03AE'}, {u'\u038C', u'\u03CC'}, {u'\u038F', u'\u03CE'},
      {u'\u0401', u'\u0451'}, {u'\u0410', u'\u0430'}, {u'\u042F', u'\u044F'},  // Cyrillic
      {u'\u0490', u'\u0491'}, {u'\u04D8', u'\u04D9'}, {u'\u0531', u'\u0561'},  // Armenian
      {u'\u1EA0', u'\u1EA1'}, {u'\uFF21', u'\uFF41'},
  };
  for (const Pair& pair : kPairs) {
    EXPECT_EQ(FoldCase(pair.capital), pair.small) << std::hex << static_cast<int>(pair.capital);
    EXPECT_EQ(FoldCase(pair.small), pair.small) << std::hex << static_cast<int>(pair.small);
  }
}

TEST(FoldCase, WhatHasNoCaseStaysAsItIs) {
  for (const char16_t unit :
       {u'0', u'+', u' ', u'\u00D7', u'\u00F7', u'\u00DF', u'\u0131', u'\u0138', u'\u05D0',
        u'\u0627', u'\u4E2D', static_cast<char16_t>(0xD83D)}) {
    EXPECT_EQ(FoldCase(unit), unit) << std::hex << static_cast<int>(unit);
  }
}

TEST(CompareIgnoringCase, OrdersByTheFirstUnitThatDiffers) {
  EXPECT_EQ(CompareIgnoringCase(u"anna", u"ANNA"), 0);
  EXPECT_LT(CompareIgnoringCase(u"Anna", u"bert"), 0);
  EXPECT_LT(CompareIgnoringCase(u"anna", u"Bert"), 0);
  EXPECT_GT(CompareIgnoringCase(u"Bert", u"anna"), 0);
}

TEST(CompareIgnoringCase, AShorterTextComesFirst) {
  EXPECT_LT(CompareIgnoringCase(u"", u"a"), 0);
  EXPECT_LT(CompareIgnoringCase(u"ann", u"Anna"), 0);
  EXPECT_GT(CompareIgnoringCase(u"Anna", u"ANN"), 0);
  EXPECT_EQ(CompareIgnoringCase(u"", u""), 0);
}

}  // namespace
}  // namespace kelpin::app
