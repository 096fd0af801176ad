#include "ui/fold_case.h"

#include <gtest/gtest.h>

namespace kelpin::ui {
namespace {

TEST(FoldCase, FoldsTheAlphabetsThatHaveCase) {
  struct Pair {
    const char* why;
    std::u16string_view upper;
    std::u16string_view lower;
  };
  // Pairs from the Unicode character charts.
  constexpr Pair kPairs[] = {
      {"ASCII", u"AZ", u"az"},
      {"Latin-1", u"\u00C0\u00D6\u00D8\u00DE", u"\u00E0\u00F6\u00F8\u00FE"},
      {"Latin with caron and ogonek", u"\u010C\u0104\u0160", u"\u010D\u0105\u0161"},
      {"Latin pairs that start odd", u"\u0139\u0141\u0147\u0179\u017D",
       u"\u013A\u0142\u0148\u017A\u017E"},
      {"Y with diaeresis", u"\u0178", u"\u00FF"},
      {"Latin with a comma, a horn or a hook", u"\u0218\u01A0\u01A4\u01AF\u01B5",
       u"\u0219\u01A1\u01A5\u01B0\u01B6"},
      {"Pinyin vowels", u"\u01CD\u01DB\u01DE\u01F8", u"\u01CE\u01DC\u01DF\u01F9"},
      {"Greek", u"\u0391\u03A1\u03A3\u03A9\u03AB\u0386\u0388\u0389\u038A\u038C\u038E\u038F",
       u"\u03B1\u03C1\u03C3\u03C9\u03CB\u03AC\u03AD\u03AE\u03AF\u03CC\u03CD\u03CE"},
      {"Cyrillic", u"\u0410\u042F\u0401\u0404\u0490\u04C0\u04C1\u04CD\u04D8",
       u"\u0430\u044F\u0451\u0454\u0491\u04CF\u04C2\u04CE\u04D9"},
      {"Armenian", u"\u0531\u0556", u"\u0561\u0586"},
      {"Vietnamese", u"\u1EA0\u1EF8", u"\u1EA1\u1EF9"},
      {"full-width", u"\uFF21\uFF3A", u"\uFF41\uFF5A"},
  };
  for (const Pair& pair : kPairs) {
    EXPECT_EQ(FoldCase(pair.upper), pair.lower) << pair.why;
    EXPECT_EQ(FoldCase(pair.lower), pair.lower) << pair.why;
  }
}

TEST(FoldCase, LeavesWhatHasNoCase) {
  constexpr std::u16string_view kPlain =
      u"09 +@[`{\u00D7\u00F7\u00DF\u0131\u0138\u03A2\u05D0\u0627\u4E2D";
  EXPECT_EQ(FoldCase(kPlain), kPlain);
  EXPECT_EQ(FoldCase(char16_t{0xD83D}), char16_t{0xD83D});  // half a character
}

TEST(FoldCase, BothSmallSigmasAreOne) {
  EXPECT_EQ(FoldCase(u'\u03C2'), u'\u03C3');
}

TEST(CompareIgnoringCase, OrdersByTheFirstUnitThatDiffers) {
  EXPECT_EQ(CompareIgnoringCase(u"anna", u"ANNA"), 0);
  EXPECT_EQ(CompareIgnoringCase(u"\u00C4NNE \u0418", u"\u00E4nne \u0438"), 0);
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
}  // namespace kelpin::ui
