#include "platform/wording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <utility>

#include "platform/system_trouble.h"

// What adapters say to the user.
namespace kelpin::platform {
namespace {

using ::testing::HasSubstr;

// The wording of one test; English again behind it.
class WordingOfATest {
 public:
  explicit WordingOfATest(Wording wording) { UseWording(std::move(wording)); }
  ~WordingOfATest() { UseWording({}); }
  WordingOfATest(const WordingOfATest&) = delete;
  WordingOfATest& operator=(const WordingOfATest&) = delete;
};

TEST(Saying, PutsTheValuesInTheirPlacesInOrder) {
  EXPECT_EQ(Say("%s: cannot be %s"), "%s: cannot be %s");
  EXPECT_EQ(Say("%s: cannot be %s", {"a", "b"}), "a: cannot be b");
  EXPECT_EQ(Say("%s%s", {"%s", "x"}), "%sx") << "a value is no text to fill in";
  EXPECT_EQ(Say("100 % of %s", {"a"}), "100 % of a");
  EXPECT_EQ(Say("none", {"a"}), "none");
}

TEST(Saying, SpeaksTheLanguageInUseAndEnglishWhereItHasNoWords) {
  const WordingOfATest german(Wording{{"%s: not a file", "%s: Das ist keine Datei"}});
  EXPECT_EQ(Say("%s: not a file", {"/a"}), "/a: Das ist keine Datei");
  EXPECT_EQ(Say("%s: not a folder", {"/a"}), "/a: not a folder");
}

TEST(Printable, ShowsWhatSteersATerminalEscapedAndTheRestAsItIs) {
  EXPECT_EQ(Printable("/tmp/Łódź \"1\" \\x 電話"), "/tmp/Łódź \"1\" \\x 電話");
  EXPECT_EQ(Printable("a\x1B[2Jb\r\n\t\x7F"), "a\\x1B[2Jb\\x0D\\x0A\\x09\\x7F");
  EXPECT_EQ(Printable(std::string("a\0b", 3)), "a\\x00b");
  EXPECT_EQ(Printable("\xC2\x9B"), "\\u009B") << "an escape sequence in one character";
  EXPECT_EQ(Printable("a\xE2\x80\xAE"), "a\\u202E") << "text turned round";
  EXPECT_EQ(Printable("\xE2\x80\xA8"), "\\u2028") << "a line's end";
  EXPECT_EQ(Printable("a\xFFz\xC3"), "a\\xFFz\\xC3") << "no UTF-8";
}

TEST(Printable, KeepsTheLinesOfAMessageThatHasSome) {
  EXPECT_EQ(PrintableLines("The ports:\n  /dev/a\x1B"), "The ports:\n  /dev/a\\x1B");
  EXPECT_EQ(Say("%s is in use", {"a\nb"}), "a\\x0Ab is in use") << "a value is of one line";
}

TEST(SystemTrouble, TellsWhatToDo) {
  EXPECT_THAT(SystemTrouble(ENOSPC), HasSubstr("full. Make room"));
  EXPECT_THAT(SystemTrouble(EDQUOT), HasSubstr("full. Make room"));
  EXPECT_THAT(SystemTrouble(ENOENT), HasSubstr("See that the name is right"));
  EXPECT_THAT(SystemTrouble(EACCES), HasSubstr("ls -l"));
  EXPECT_THAT(SystemTrouble(EFBIG), HasSubstr("ulimit -f"));
  EXPECT_THAT(SystemTrouble(ECHILD), HasSubstr("Try again")) << "one without words of its own";
}

}  // namespace
}  // namespace kelpin::platform
