#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "device/desktop/desktop_programs.h"
#include "device/desktop/detached_process.h"
#include "device/desktop/spdlog_log.h"
#include "device/desktop/utf8.h"
#include "device/desktop/xdg.h"
#include "tests/device/fake_opener.h"
#include "tests/device/scratch_folder.h"

namespace kelpin::device::desktop {
namespace {

using test::ReadText;
using test::WriteText;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

Environment Variables(std::map<std::string, std::string> values) {
  return [values = std::move(values)](const char* name) {
    const auto found = values.find(name);
    return found == values.end() ? std::string() : found->second;
  };
}

unsigned ModeOf(const std::filesystem::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

std::string FallbackRuntime() {
  return "/tmp/kelpin-" + std::to_string(::geteuid());
}

TEST(FindFolders, WithoutVariablesTheyAreInTheHome) {
  const Folders folders = FindFolders(Variables({{"HOME", "/home/zoe"}}));
  EXPECT_EQ(folders.config, "/home/zoe/.config/kelpin");
  EXPECT_EQ(folders.data, "/home/zoe/.local/share/kelpin");
  EXPECT_EQ(folders.state, "/home/zoe/.local/state/kelpin");
  EXPECT_EQ(folders.runtime, FallbackRuntime());
}

TEST(FindFolders, TheVariablesCount) {
  test::ScratchFolder runtime;
  const Folders folders = FindFolders(Variables({{"HOME", "/home/zoe"},
                                                 {"XDG_CONFIG_HOME", "/c"},
                                                 {"XDG_DATA_HOME", "/d"},
                                                 {"XDG_STATE_HOME", "/s"},
                                                 {"XDG_RUNTIME_DIR", runtime.Path().string()}}));
  EXPECT_EQ(folders.config, "/c/kelpin");
  EXPECT_EQ(folders.data, "/d/kelpin");
  EXPECT_EQ(folders.state, "/s/kelpin");
  EXPECT_EQ(folders.runtime, runtime / "kelpin");
}

TEST(FindFolders, RelativePathsCountAsNotSet) {
  const Folders folders =
      FindFolders(Variables({{"HOME", "/h"}, {"XDG_CONFIG_HOME", "c"}, {"XDG_STATE_HOME", "./s"}}));
  EXPECT_EQ(folders.config, "/h/.config/kelpin");
  EXPECT_EQ(folders.state, "/h/.local/state/kelpin");
  EXPECT_TRUE(FindFolders(Variables({{"HOME", "relative"}})).config.is_absolute());
}

TEST(FindFolders, ARuntimeFolderThatOthersMayWriteIsNotUsed) {
  test::ScratchFolder runtime;
  ASSERT_EQ(::chmod(runtime.Path().c_str(), 0777), 0);
  const std::map<std::string, std::string> open = {{"XDG_RUNTIME_DIR", runtime.Path().string()}};
  EXPECT_EQ(FindFolders(Variables(open)).runtime, FallbackRuntime());
  EXPECT_EQ(FindFolders(Variables({{"XDG_RUNTIME_DIR", "/nowhere"}})).runtime, FallbackRuntime());
}

TEST(MakePrivateFolder, MakesWhatIsMissingForTheUserAlone) {
  test::ScratchFolder scratch;
  std::string why;
  ASSERT_TRUE(MakePrivateFolder(scratch / "a/b/kelpin", why)) << why;
  EXPECT_EQ(ModeOf(scratch / "a"), 0700u);
  EXPECT_EQ(ModeOf(scratch / "a/b/kelpin"), 0700u);
  EXPECT_TRUE(MakePrivateFolder(scratch / "a/b/kelpin", why));
  ASSERT_EQ(::chmod((scratch / "a/b/kelpin").c_str(), 0755), 0);
  EXPECT_TRUE(MakePrivateFolder(scratch / "a/b/kelpin", why));
  EXPECT_EQ(ModeOf(scratch / "a/b/kelpin"), 0700u);
}

TEST(MakePrivateFolder, ALinkAFileOrAnothersFolderIsRefused) {
  test::ScratchFolder scratch;
  std::string why;
  std::filesystem::create_directory_symlink(scratch.Path(), scratch / "link");
  EXPECT_FALSE(MakePrivateFolder(scratch / "link", why));
  EXPECT_THAT(why, StartsWith((scratch / "link").string() + ": this is a link, which is not"));
  WriteText(scratch / "file", "x");
  EXPECT_FALSE(MakePrivateFolder(scratch / "file", why));
  EXPECT_THAT(why, StartsWith((scratch / "file").string() + ": not a folder"));
  EXPECT_FALSE(MakePrivateFolder(scratch / "file/below", why));
  EXPECT_THAT(why, HasSubstr("cannot be made"));
  if (::geteuid() == 0) {
    ASSERT_EQ(::mkdir((scratch / "other").c_str(), 0700), 0);
    ASSERT_EQ(::chown((scratch / "other").c_str(), 1, 1), 0);
    EXPECT_FALSE(MakePrivateFolder(scratch / "other", why));
    EXPECT_THAT(why, HasSubstr("another user"));
  }
}

TEST(DataFolders, TheUsersComeFirstThenTheProgramsThenTheSystems) {
  const Environment home = Variables({{"HOME", "/h"}});
  EXPECT_THAT(DataFolders("/opt/kelpin/bin", home),
              ElementsAre("/h/.local/share/kelpin", "/opt/kelpin/share/kelpin", "/opt/kelpin/res",
                          "/usr/local/share/kelpin", "/usr/share/kelpin"));
  EXPECT_THAT(DataFolders("", Variables({{"HOME", "/h"}, {"XDG_DATA_DIRS", "/x::rel:/y"}})),
              ElementsAre("/h/.local/share/kelpin", "/x/kelpin", "/y/kelpin"));
}

TEST(FindSystemConfig, TheFirstFileThatIsThereCounts) {
  test::ScratchFolder scratch;
  std::filesystem::create_directories(scratch / "two/kelpin");
  WriteText(scratch / "two/kelpin/registry.reg", "");
  const std::string one = (scratch / "one").string();
  const std::string two = (scratch / "two").string();
  EXPECT_EQ(FindSystemConfig("registry.reg", Variables({{"XDG_CONFIG_DIRS", one + ":" + two}})),
            scratch / "two/kelpin/registry.reg");
  EXPECT_EQ(FindSystemConfig("registry.reg", Variables({{"XDG_CONFIG_DIRS", one}})), "");
}

TEST(ProgramFolder, IsTheRunningProgramsOwn) {
  EXPECT_TRUE(std::filesystem::exists(ProgramFolder() / "device_tests"));
}

TEST(Utf8, HalfAPairIsReplaced) {
  EXPECT_EQ(Utf8(u"aé€\U0001F4DE"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\x9E");
  const char16_t halves[] = {0xD83D, u'x', 0xDCDE, 0xD83D};
  EXPECT_EQ(Utf8({halves, 4}), "\xEF\xBF\xBDx\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Utf8Line, WhatSteersATerminalIsReplaced) {
  constexpr const char* kBad = "\xEF\xBF\xBD";
  const std::pair<char16_t, const char*> units[] = {
      {0x00, kBad},
      {u'\t', kBad},
      {u'\n', kBad},
      {u'\r', kBad},
      {0x1B, kBad},
      {0x1F, kBad},
      {u' ', " "},
      {u'~', "~"},
      {0x7F, kBad},
      {0x80, kBad},
      {0x9B, kBad},
      {0x9F, kBad},
      {0xA0, "\xC2\xA0"},
      {0x200E, "\xE2\x80\x8E"},
      {0x2027, "\xE2\x80\xA7"},
      {0x2028, kBad},
      {0x202E, kBad},
      {0x202F, "\xE2\x80\xAF"},
      {0x2066, kBad},
      {0x2069, kBad},
      {0x206A, "\xE2\x81\xAA"},
  };
  for (const auto& [unit, line] : units) {
    EXPECT_EQ(Utf8Line({&unit, 1}), line) << static_cast<int>(unit);
  }
  EXPECT_EQ(Utf8Line(u"a\x1B[31m\n\u00E9\U0001F4DE"),
            "a\xEF\xBF\xBD[31m\xEF\xBF\xBD\xC3\xA9\xF0\x9F\x93\x9E");
}

TEST(SpdlogLog, TheFileIsTheUsersAloneAndKeepsWhatWasThere) {
  test::ScratchFolder scratch;
  WriteText(scratch / "kelpin.log", "before\n");
  ASSERT_EQ(::chmod((scratch / "kelpin.log").c_str(), 0644), 0);
  std::string why;
  const auto log = SpdlogLog::Open(scratch.Path(), false, why);
  ASSERT_NE(log, nullptr) << why;
  log->DebugOutput(u"after\r\n");
  EXPECT_EQ(ModeOf(scratch / "kelpin.log"), 0600u);
  EXPECT_THAT(ReadText(scratch / "kelpin.log"),
              MatchesRegex("before\n[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}[.][0-9]{3} after\n"));
}

TEST(SpdlogLog, OneTextCannotPassForTwo) {
  test::ScratchFolder scratch;
  std::string why;
  const auto log = SpdlogLog::Open(scratch.Path(), false, why);
  ASSERT_NE(log, nullptr) << why;
  log->DebugOutput(u"a\nb\x1B[31m\tc");
  EXPECT_THAT(ReadText(scratch / "kelpin.log"), HasSubstr(" a\\x0Ab\\x1B[31m\tc\n"));
}

TEST(SpdlogLog, ItRotatesAndEveryFileIsTheUsersAlone) {
  test::ScratchFolder scratch;
  std::string why;
  const auto log = SpdlogLog::Open(scratch.Path(), false, why);
  ASSERT_NE(log, nullptr) << why;
  const std::u16string text(100000, u'x');
  for (int i = 0; i < 60; ++i) log->DebugOutput(text);
  std::size_t files = 0;
  for (const auto& file : std::filesystem::directory_iterator(scratch.Path())) {
    ++files;
    EXPECT_EQ(ModeOf(file.path()), 0600u) << file.path();
    EXPECT_LE(file.file_size(), std::size_t{1} << 20);
  }
  EXPECT_EQ(files, 4u);
}

TEST(SpdlogLog, AFolderThatIsNotThereIsTold) {
  std::string why;
  EXPECT_EQ(SpdlogLog::Open("/nowhere/kelpin", false, why), nullptr);
  EXPECT_THAT(why, HasSubstr("/nowhere/kelpin/kelpin.log"));
}

TEST(SpdlogLog, TheStandardErrorOutputGetsTheTextsThatAreWantedThere) {
  test::ScratchFolder scratch;
  std::string why;
  ::testing::internal::CaptureStderr();
  SpdlogLog::Open(scratch.Path(), true, why)->DebugOutput(u"both\n");
  SpdlogLog::ToStandardError()->DebugOutput(u"there alone\n");
  const std::string shown = ::testing::internal::GetCapturedStderr();
  EXPECT_THAT(shown, HasSubstr(" both\n"));
  EXPECT_THAT(shown, HasSubstr(" there alone\n"));
  EXPECT_THAT(ReadText(scratch / "kelpin.log"), HasSubstr(" both\n"));
}

TEST(StartDetached, TheArgumentsArriveAsTheyStandWithoutAShell) {
  test::ScratchFolder scratch;
  const test::FakeOpener opener(scratch.Path());
  EXPECT_TRUE(StartDetached({opener.Program(), "two words", "$(id)", "a'b\"c", "", "*"}));
  EXPECT_EQ(opener.Await(), "5\ntwo words\n$(id)\na'b\"c\n\n*\n");
}

TEST(StartDetached, AMissingProgramIsTold) {
  EXPECT_FALSE(StartDetached({"kelpin-no-such-program"}));
  EXPECT_FALSE(StartDetached({}));
}

// waitid finds a child of ours, running or a zombie, until it was reaped.
TEST(StartDetached, NoZombieStays) {
  for (int i = 0; i < 20; ++i) ASSERT_TRUE(StartDetached({"true"}));
  ::siginfo_t info{};
  int tries = 0;
  while (::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && ++tries < 2000) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_LT(tries, 2000) << "a child is left";
}

class HelpTest : public ::testing::Test {
 protected:
  HelpTest() {
    std::filesystem::create_directories(second_ / "help");
    WriteText(second_ / "help/Kelpin.htm", "<html></html>");
    WriteText(second_ / "secret.htm", "x");
  }

  test::ScratchFolder scratch_;
  const std::filesystem::path second_ = scratch_ / "data #1 ü";
  const test::FakeOpener opener_{scratch_.Path()};
  std::u16string section_;
  std::string told_;
  DesktopPrograms programs_{{.dataFolders = {scratch_ / "none", second_},
                             .opener = opener_.Program(),
                             .helpSection = [this] { return section_; },
                             .helpFailed = [this](const std::string& why) { told_ = why; }}};
};

TEST_F(HelpTest, TheFileIsOpenedByItsEncodedAddress) {
  EXPECT_EQ(programs_.StartProgram(u"peghelp", u"Kelpin.htm#a b"), 1);
  EXPECT_EQ(opener_.Await(), "1\nfile://" + scratch_.Path().string() +
                                 "/data%20%231%20%C3%BC/help/Kelpin.htm#a%20b\n");
}

TEST_F(HelpTest, AUsersOwnFileComesFirst) {
  std::filesystem::create_directories(scratch_ / "none/help");
  WriteText(scratch_ / "none/help/Kelpin.htm", "mine");
  EXPECT_EQ(programs_.StartProgram(u"peghelp", u"Kelpin.htm"), 1);
  EXPECT_EQ(opener_.Await(), "1\nfile://" + scratch_.Path().string() + "/none/help/Kelpin.htm\n");
}

TEST_F(HelpTest, ItIsOpenedInTheBestLanguageThereIs) {
  WriteText(second_ / "help/Kelpin.de.htm", "deutsch");
  WriteText(second_ / "help/Kelpin.fr.htm", "français");
  const auto opened = [&](std::vector<std::string> languages) {
    DesktopPrograms programs({.dataFolders = {scratch_ / "none", second_},
                              .languages = std::move(languages),
                              .opener = opener_.Program()});
    EXPECT_EQ(programs.StartProgram(u"peghelp", u"Kelpin.htm#keys"), 1);
    return opener_.Await();
  };
  EXPECT_THAT(opened({"de_AT", "de", "fr"}), HasSubstr("/help/Kelpin.de.htm#keys\n"));
  EXPECT_THAT(opened({"fr", "de"}), HasSubstr("/help/Kelpin.fr.htm#keys\n"));
  EXPECT_THAT(opened({"nl"}), HasSubstr("/help/Kelpin.htm#keys\n"));
}

TEST_F(HelpTest, WhatIsNoHelpFileIsNotOpened) {
  for (const std::u16string_view topic :
       {u"", u"Other.htm", u"../secret.htm", u"/etc/passwd", u"..", u"#keys", u"--version",
        u"Kelpin.htm/../../secret.htm"}) {
    EXPECT_EQ(programs_.StartProgram(u"peghelp", topic), 0);
  }
  EXPECT_EQ(programs_.StartProgram(u"xterm", u"Kelpin.htm"), 0);
  EXPECT_EQ(programs_.StartProgram(u"", u""), 0);
}

TEST_F(HelpTest, WithoutAnOpenerNothingStarts) {
  std::string told;
  DesktopPrograms without({.dataFolders = {second_},
                           .opener = "kelpin-no-such-opener",
                           .helpFailed = [&](const std::string& why) { told = why; }});
  EXPECT_EQ(without.StartProgram(u"peghelp", u"Kelpin.htm"), 0);
  EXPECT_THAT(told, HasSubstr("Install xdg-utils"));
  EXPECT_THAT(told, HasSubstr("help/Kelpin.htm"));
  DesktopPrograms silent({.dataFolders = {second_}, .opener = "kelpin-no-such-opener"});
  EXPECT_EQ(silent.StartProgram(u"peghelp", u"Kelpin.htm"), 0);
}

TEST_F(HelpTest, ItOpensAtTheSectionOfTheDialogInFront) {
  section_ = u"own-numbers";
  EXPECT_EQ(programs_.StartProgram(u"peghelp", u"Kelpin.htm"), 1);
  EXPECT_THAT(opener_.Await(), HasSubstr("help/Kelpin.htm#own-numbers\n"));
  EXPECT_EQ(programs_.StartProgram(u"peghelp", u"Kelpin.htm#keys"), 1);
  EXPECT_THAT(opener_.Await(), HasSubstr("help/Kelpin.htm#keys\n"));
  EXPECT_EQ(told_, "");
}

TEST_F(HelpTest, HelpThatIsNotInstalledIsTold) {
  std::filesystem::remove(second_ / "help/Kelpin.htm");
  EXPECT_EQ(programs_.StartProgram(u"peghelp", u"Kelpin.htm"), 0);
  EXPECT_EQ(told_, "The help is not installed. Install Kelpin again.");
}

TEST(HelpFile, IsWhereTheBuildFolderFindsIt) {
  test::ScratchFolder scratch;
  const test::FakeOpener opener(scratch.Path());
  const std::filesystem::path source = KELPIN_SOURCE_DIR;
  DesktopPrograms programs(
      {.dataFolders = DataFolders(source / "build", Variables({{"HOME", "/nowhere"}})),
       .opener = opener.Program()});
  EXPECT_EQ(programs.StartProgram(u"peghelp", u"Kelpin.htm"), 1);
  EXPECT_THAT(opener.Await(), HasSubstr("/res/help/Kelpin.htm\n"));
}

TEST(HelpFile, EveryLinkWithinItHasItsPlace) {
  const std::string page =
      ReadText(std::filesystem::path(KELPIN_SOURCE_DIR) / "res/help/Kelpin.htm");
  std::size_t links = 0;
  for (std::size_t at = page.find("href=\""); at != std::string::npos;
       at = page.find("href=\"", at + 1)) {
    const std::size_t start = at + 6;
    const std::string target = page.substr(start, page.find('"', start) - start);
    ASSERT_EQ(target.front(), '#') << "the page needs no network: " << target;
    EXPECT_THAT(page, HasSubstr("id=\"" + target.substr(1) + "\""));
    ++links;
  }
  EXPECT_GT(links, 0u);
  EXPECT_THAT(page, Not(HasSubstr("src=\"http")));
}

}  // namespace
}  // namespace kelpin::device::desktop
