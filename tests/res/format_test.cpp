#include "res/format.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "res/strings.h"

namespace kelpin::res {
namespace {

TEST(Format, FillsNumbersAndTextsInOrder) {
  EXPECT_TRUE(Format(u"%s %s", {u"My No.", u"+4917"}) == u"My No. +4917");
  EXPECT_TRUE(Format(u"(%d / %d)", {3, 250}) == u"(3 / 250)");
  EXPECT_TRUE(Format(u"-service \"%s\" -to \"%s<%s>\"", {u"SMS", u"Ana", u"+34"}) ==
              u"-service \"SMS\" -to \"Ana<+34>\"");
}

TEST(Format, FillsTheTextsOfTheTable) {
  EXPECT_TRUE(Format(LoadString(kStringContactsAddedWithOverwritten), {1, 20, 300}) ==
              u"Contact(s) successfully added.\n\n - 1 new item(s).\n - 20 item(s) overwritten.\n"
              u" - 300 item(s) already exists.");
  EXPECT_TRUE(Format(LoadString(kStringCopyProgress), {0, 12}) == u"0 of 12 contacts copied.");
  EXPECT_TRUE(Format(LoadString(kStringVersion), {u"6.80"}) == u"Version 6.80");
  EXPECT_TRUE(Format(LoadString(kStringOverwriteSimQuestion), {u"Ana"}) ==
              u"\"Ana\" already exists in SIM card. Do you want to overwrite it?");
}

TEST(Format, WritesEveryNumber) {
  EXPECT_TRUE(Format(u"%d", {0}) == u"0");
  EXPECT_TRUE(Format(u"%d", {-7}) == u"-7");
  EXPECT_TRUE(Format(u"%d", {std::numeric_limits<std::int32_t>::min()}) == u"-2147483648");
  EXPECT_TRUE(Format(u"%d", {std::numeric_limits<std::uint32_t>::max()}) == u"4294967295");
  EXPECT_TRUE(Format(u"%ld", {std::numeric_limits<std::int64_t>::max()}) == u"9223372036854775807");
  EXPECT_TRUE(Format(u"%ld", {std::numeric_limits<std::int64_t>::min()}) ==
              u"-9223372036854775808");
}

TEST(Format, TakesNoPlaceFromAnArgument) {
  EXPECT_TRUE(Format(u"\"%s\" and %d", {u"100%d %s %% %n", 5}) == u"\"100%d %s %% %n\" and 5");
}

TEST(Format, LeavesAPlaceWithoutItsArgumentAsItIsWritten) {
  EXPECT_TRUE(Format(u"%d of %d", {4}) == u"4 of %d");
  EXPECT_TRUE(Format(u"%s", {}) == u"%s");
}

TEST(Format, LeavesAPlaceOfTheOtherKindAsItIsWritten) {
  EXPECT_TRUE(Format(u"%d of %s", {u"a", 4}) == u"%d of %s");
  EXPECT_TRUE(Format(u"%d then %s", {u"a", u"b"}) == u"%d then b");
}

TEST(Format, IgnoresArgumentsThatNoPlaceTakes) {
  EXPECT_TRUE(Format(u"done", {1, u"two"}) == u"done");
}

TEST(Format, LeavesEveryOtherPercentSignAlone) {
  EXPECT_TRUE(Format(u"100%%", {}) == u"100%");
  EXPECT_TRUE(Format(u"100%", {1}) == u"100%");
  EXPECT_TRUE(Format(u"%5d %x %l", {1, 2, 3}) == u"%5d %x %l");
  EXPECT_TRUE(Format(u"%%d", {1}) == u"%d");
  EXPECT_TRUE(Format(u"", {1}).empty());
}

TEST(Format, EndsAtTheLimit) {
  EXPECT_TRUE(Format(u"Name: %s!", {u"Alexandra"}, 10) == u"Name: Alex");
  EXPECT_TRUE(Format(u"%d", {12345}, 3) == u"123");
  EXPECT_TRUE(Format(u"abc", {}, 3) == u"abc");
  EXPECT_TRUE(Format(u"abc", {}, 0).empty());
  EXPECT_EQ(Format(u"%s", {std::u16string(5000, u'x')}).size(), kFormatLimit);
}

TEST(Format, NeverEndsInHalfACharacter) {
  // U+1F600 takes two units.
  EXPECT_TRUE(Format(u"ab%s", {u"\U0001F600"}, 3) == u"ab");
  EXPECT_TRUE(Format(u"ab%s", {u"\U0001F600"}, 4) == u"ab\U0001F600");
}

TEST(Format, TakesTextsOfEveryForm) {
  const std::u16string owned = u"owned";
  const std::u16string_view view = u"view";
  const char16_t* pointer = u"pointer";
  EXPECT_TRUE(Format(u"%s %s %s", {owned, view, pointer}) == u"owned view pointer");
}

}  // namespace
}  // namespace kelpin::res
