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
      {"Greek", u"\u0391\u03A9\u0386\u0388\u038A\u038C\u038E\u038F",
       u"\u03B1\u03C9\u03AC\u03AD\u03AF\u03CC\u03CD\u03CE"},
      {"Cyrillic", u"\u0410\u042F\u0401\u0404\u0490", u"\u0430\u044F\u0451\u0454\u0491"},
      {"Armenian", u"\u0531\u0556", u"\u0561\u0586"},
      {"Vietnamese", u"\u1EA0\u1EF8", u"\u1EA1\u1EF9"},
  };
  for (const Pair& pair : kPairs) {
    EXPECT_EQ(FoldCase(pair.upper), pair.lower) << pair.why;
    EXPECT_EQ(FoldCase(pair.lower), pair.lower) << pair.why;
  }
}

TEST(FoldCase, LeavesWhatHasNoCase) {
  constexpr std::u16string_view kPlain = u"09 @[`{\u00D7\u00F7\u00DF\u0138\u05D0\u0627\u4E2D";
  EXPECT_EQ(FoldCase(kPlain), kPlain);
}

TEST(FoldCase, BothSmallSigmasAreOne) {
  EXPECT_EQ(FoldCase(u'\u03C2'), u'\u03C3');
}

}  // namespace
}  // namespace kelpin::ui
