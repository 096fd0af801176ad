#ifdef KELPIN_PROGRAM
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/tools/program_run.h"

// The whole program without a screen: what it says on the terminal, and what it ends with.
namespace kelpin {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class KelpinProgram : public ProgramRun {
 protected:
  void SetUp() override {
    if (::access(KELPIN_PROGRAM, X_OK) != 0) GTEST_SKIP() << KELPIN_PROGRAM << " is not built";
    std::filesystem::copy_file(KELPIN_SOURCE_DIR "/res/cards/usim-empty.json",
                               scratch_ / "card.json");
  }

  int RunKelpin(const std::string& arguments, const std::string& environment = "") {
    return Run(KELPIN_PROGRAM, arguments, "LC_ALL=C.UTF-8 " + environment);
  }
  // With the picture of a screen that is none.
  int TakePicture(const std::string& arguments, const std::string& environment = "") {
    return RunKelpin("--screenshot list.png " + arguments,
                     "QT_QPA_PLATFORM=offscreen " + environment);
  }
};

TEST_F(KelpinProgram, ExplainsItself) {
  EXPECT_EQ(RunKelpin("--help"), 0);
  EXPECT_THAT(written, HasSubstr("--registry"));
  EXPECT_EQ(RunKelpin("--version"), 0);
  EXPECT_THAT(written, HasSubstr("6.80"));
}

TEST_F(KelpinProgram, AWrongCommandLineEndsWith2) {
  for (const char* arguments :
       {"--nonsense", "--sim paper:card", "--sim soft", "--contacts sqlite:", "--registry ''",
        "--calls pigeon", "--platform toaster", "--pin-fd 99"}) {
    EXPECT_EQ(RunKelpin(arguments), 2) << arguments;
    EXPECT_THAT(written, HasSubstr("--help")) << arguments;
  }
}

TEST_F(KelpinProgram, ShowsWhatWouldSteerTheTerminalEscaped) {
  EXPECT_EQ(RunKelpin("\"$(printf 'a\\033[2J\\nb')\""), 2);
  EXPECT_THAT(written, HasSubstr("a\\x1B[2J\\x0Ab"));
  EXPECT_EQ(TakePicture("--sim \"soft:$(printf 'c\\033[2Jd')\""), 1);
  EXPECT_THAT(written, HasSubstr("kelpin: c\\x1B[2Jd: the card file cannot be opened"));
  EXPECT_THAT(written, Not(HasSubstr("\x1B")));
}

TEST_F(KelpinProgram, WithoutADisplayItEndsWith1) {
  EXPECT_EQ(RunKelpin("--demo"), 1);
  EXPECT_THAT(written, HasSubstr("no display; start it in a graphical session"));
}

TEST_F(KelpinProgram, SaysThatANamedFileIsNewAndMadeAndGoesOn) {
  const std::string files = "--registry set.reg --contacts sqlite:people.db";
  EXPECT_EQ(TakePicture(files), 0) << written;
  EXPECT_THAT(written, HasSubstr("kelpin: set.reg: there is no such settings file"));
  EXPECT_THAT(written, HasSubstr("kelpin: people.db: there was no such contacts file"));
  std::ofstream(scratch_ / "set.reg") << "KELPIN REGISTRY 1\n";
  EXPECT_EQ(TakePicture(files), 0) << written;
  EXPECT_THAT(written, Not(HasSubstr("there is no such")));
  EXPECT_THAT(written, Not(HasSubstr("there was no such")));
}

TEST_F(KelpinProgram, SaysNothingOfTheFilesOfItsOwnThatAreNew) {
  EXPECT_EQ(TakePicture(""), 0) << written;
  EXPECT_THAT(written, Not(HasSubstr("no such")));
}

TEST_F(KelpinProgram, SaysWhatADeviceSaysInTheLanguageOfTheUser) {
  std::filesystem::create_directories(scratch_ / "kelpin/lang");
  std::filesystem::copy_file(KELPIN_SOURCE_DIR "/res/lang/de.txt", scratch_ / "kelpin/lang/de.txt");
  EXPECT_EQ(TakePicture("--sim soft:none.json", "LC_ALL=de_DE.UTF-8"), 1);
  EXPECT_THAT(
      written,
      HasSubstr("none.json: Die Kartendatei kann nicht geöffnet werden: Es gibt sie nicht"));
  std::ofstream(scratch_ / "set.reg") << "KELPIN REGISTRY 1\nwords\n";
  EXPECT_EQ(TakePicture("--registry set.reg", "LC_ALL=de_DE.UTF-8"), 1);
  EXPECT_THAT(written, HasSubstr("set.reg:2: Das ist weder ein Schlüssel"));
}

}  // namespace
}  // namespace kelpin
#endif
