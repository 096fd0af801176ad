#include "device/desktop/language_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/device/scratch_folder.h"

namespace kelpin::device::desktop {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> Wanted(std::map<std::string, std::string> variables) {
  return WantedLanguages([variables](const char* name) {
    const auto found = variables.find(name);
    return found == variables.end() ? std::string() : found->second;
  });
}

TEST(WantedLanguages, AreTheLocalesWithAndWithoutItsCountry) {
  EXPECT_THAT(Wanted({{"LANG", "de_AT.UTF-8"}}), ElementsAre("de_AT", "de"));
  EXPECT_THAT(Wanted({{"LANG", "de"}}), ElementsAre("de"));
  EXPECT_THAT(Wanted({{"LANG", "sr_RS@latin"}}), ElementsAre("sr_RS", "sr"));
}

TEST(WantedLanguages, TheMoreUrgentVariableCounts) {
  EXPECT_THAT(Wanted({{"LC_ALL", "fr"}, {"LC_MESSAGES", "it"}, {"LANG", "de"}}), ElementsAre("fr"));
  EXPECT_THAT(Wanted({{"LC_ALL", ""}, {"LC_MESSAGES", "it"}, {"LANG", "de"}}), ElementsAre("it"));
}

TEST(WantedLanguages, TheListComesBeforeTheLocale) {
  EXPECT_THAT(Wanted({{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "fr_CA::it"}}),
              ElementsAre("fr_CA", "fr", "it", "de_DE", "de"));
}

TEST(WantedLanguages, AreNoneWhereNoLocaleIsSetWhateverTheListSays) {
  for (const char* locale : {"", "C", "POSIX", "C.UTF-8"}) {
    EXPECT_THAT(Wanted({{"LANG", locale}, {"LANGUAGE", "de"}}), IsEmpty()) << locale;
  }
}

TEST(WantedLanguages, EndAtEnglish) {
  EXPECT_THAT(Wanted({{"LANG", "en_GB.UTF-8"}}), IsEmpty());
  EXPECT_THAT(Wanted({{"LANG", "de"}, {"LANGUAGE", "fr:en:it"}}), ElementsAre("fr"));
  EXPECT_THAT(Wanted({{"LANG", "en_GB"}, {"LANGUAGE", "de"}}), ElementsAre("de"));
}

TEST(WantedLanguages, AreNamesOfLanguagesAlone) {
  EXPECT_THAT(Wanted({{"LANG", "../../etc"}, {"LANGUAGE", "/x:d:a b:de/x:languageofseventeen"}}),
              IsEmpty());
}

TEST(LanguageFiles, AreFoundBelowTheDataFoldersTheBestLanguageFirst) {
  const test::ScratchFolder scratch;
  std::filesystem::create_directories(scratch / "own/lang");
  std::filesystem::create_directories(scratch / "system/lang");
  for (const char* name : {"own/lang/de.txt", "system/lang/de.txt", "system/lang/de_AT.txt"}) {
    test::WriteText(scratch / name, "x");
  }
  EXPECT_THAT(
      LanguageFiles({"de_AT", "de"}, {scratch / "own", scratch / "none", scratch / "system"}),
      ElementsAre(scratch / "system/lang/de_AT.txt", scratch / "own/lang/de.txt",
                  scratch / "system/lang/de.txt"));
  EXPECT_THAT(LanguageFiles({"fr"}, {scratch / "own", scratch / "system"}), IsEmpty());
}

TEST(ReadDataFile, GivesWhatIsInIt) {
  const test::ScratchFolder scratch;
  test::WriteText(scratch / "file", std::string(10000, 'x'));
  std::string bytes = "before";
  std::string why;
  EXPECT_TRUE(ReadDataFile(scratch / "file", 10000, bytes, why));
  EXPECT_EQ(bytes, std::string(10000, 'x'));
  EXPECT_TRUE(ReadDataFile(scratch / "file", 5000, bytes, why));
  EXPECT_EQ(bytes.size(), 5001u);
}

TEST(ReadDataFile, RefusesWhatIsNoFile) {
  const test::ScratchFolder scratch;
  ASSERT_EQ(::mkfifo((scratch / "pipe").c_str(), 0600), 0);
  std::string bytes;
  std::string why;
  EXPECT_FALSE(ReadDataFile(scratch / "none", 100, bytes, why));
  EXPECT_THAT(why, HasSubstr("No such file"));
  for (const std::filesystem::path& path : {scratch / "pipe", scratch.Path()}) {
    EXPECT_FALSE(ReadDataFile(path, 100, bytes, why));
    EXPECT_EQ(why, "it is no file");
  }
}

}  // namespace
}  // namespace kelpin::device::desktop
