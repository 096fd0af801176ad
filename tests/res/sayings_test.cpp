#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "res/language.h"

// What adapters say, found where it is said: in the sources.
namespace kelpin::res {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// What a literal of the sources stands for; those here have no other escapes.
std::string Unescaped(std::string_view literal) {
  std::string text;
  for (std::size_t at = 0; at < literal.size(); ++at) {
    at += literal[at] == '\\' ? 1 : 0;
    text.push_back(literal[at]);
  }
  return text;
}

// The literals that follow each other behind Say( and Words(.
void Collect(const std::string& source, std::set<std::string>& said) {
  static const std::regex call("\\b(?:Say|Words)\\(\\s*(?=\")");
  static const std::regex literal("\\s*\"((?:[^\"\\\\]|\\\\.)*)\"");
  for (std::sregex_iterator found(source.begin(), source.end(), call), end; found != end; ++found) {
    std::string text;
    auto at = (*found)[0].second;
    for (std::smatch part;
         std::regex_search(at, source.end(), part, literal, std::regex_constants::match_continuous);
         at = part[0].second) {
      text += Unescaped(part[1].str());
    }
    said.insert(text);
  }
}

const std::set<std::string>& AllSaid() {
  static const std::set<std::string> all = [] {
    std::set<std::string> said;
    for (const char* folder : {"device", "platform", "start"}) {
      for (const auto& file :
           fs::recursive_directory_iterator(fs::path(KELPIN_SOURCE_DIR) / folder)) {
        const std::string ending = file.path().extension().string();
        if (ending == ".cpp" || ending == ".h") Collect(ReadFile(file.path()), said);
      }
    }
    Collect(ReadFile(fs::path(KELPIN_SOURCE_DIR) / "main.cpp"), said);
    return said;
  }();
  return all;
}

LanguageSayings German() {
  std::vector<std::string> notes;
  LanguageSayings sayings;
  EXPECT_TRUE(
      ReadLanguage(ReadFile(KELPIN_SOURCE_DIR "/res/lang/de.txt"), notes, &sayings).has_value());
  EXPECT_THAT(notes, testing::IsEmpty());
  return sayings;
}

TEST(Sayings, AreFoundInTheSources) {
  EXPECT_GT(AllSaid().size(), 150u);
  EXPECT_TRUE(AllSaid().contains("%s: the contacts file cannot be made: %s"));
  EXPECT_TRUE(AllSaid().contains("only \\\\ and \\\" may follow a \\"));
}

TEST(Sayings, AreAllGermanToo) {
  const LanguageSayings german = German();
  for (const std::string& english : AllSaid()) {
    EXPECT_TRUE(german.contains(english)) << english;
  }
  for (const auto& [english, text] : german) {
    EXPECT_TRUE(AllSaid().contains(english)) << "nobody says: " << english;
    EXPECT_NE(text, english);
  }
}

// Where there are reasons alone, which stand in another message, behind its colon or in brackets.
constexpr const char* kReasons[] = {"platform/system_trouble.h", "device/registry/reg_parser.cpp",
                                    "device/softcard/image_reader.cpp",
                                    "device/softcard/json_text.cpp",
                                    "device/contacts/sqlite/file_trouble.cpp"};
constexpr std::string_view kFurtherReasons[] = {
    "another program",
    "its tables are not as Kelpin makes them",
    "it is offline. See that the network is there and try again",
    "it needs its password. Give it in the desktop's contacts program and try again",
    "%s. See in the desktop's contacts program that the address book works",
};

bool IsReason(const std::string& english) {
  static const std::set<std::string> reasons = [] {
    std::set<std::string> said;
    for (const char* file : kReasons) {
      const std::size_t before = said.size();
      Collect(ReadFile(fs::path(KELPIN_SOURCE_DIR) / file), said);
      EXPECT_GT(said.size(), before) << file;
    }
    return said;
  }();
  return reasons.contains(english) || english.starts_with("it can only be read. ") ||
         std::ranges::find(kFurtherReasons, english) != std::end(kFurtherReasons);
}

// "..." in a row of the help stands for anything; the rest of the message may follow.
bool IsTold(const std::string& message, const std::vector<std::string>& rows) {
  for (const std::string& row : rows) {
    std::size_t at = 0;
    bool told = true;
    std::string_view rest = row;
    for (bool first = true; told && !rest.empty(); first = false) {
      const std::size_t dots = rest.find("...");
      const std::string_view part = rest.substr(0, dots);
      const std::size_t found = message.find(part, at);
      told = found != std::string::npos && (!first || found == 0);
      at = found + part.size();
      rest.remove_prefix(dots == std::string_view::npos ? rest.size() : dots + 3);
    }
    if (told) return true;
  }
  return false;
}

// The rows of the help page's last table of messages, which is about files and other programs.
std::vector<std::string> RowsAboutFiles(const char* page) {
  const std::string help = ReadFile(fs::path(KELPIN_SOURCE_DIR) / "res/help" / page);
  const std::size_t end = help.find("<h2 id=\"files\">");
  const std::size_t start = help.rfind("<table>", end);
  const std::string table = help.substr(start, end - start);
  std::vector<std::string> rows;
  static const std::regex message("<tr><td>(.*?)</td><td>(.+?)</td></tr>");
  for (std::sregex_iterator row(table.begin(), table.end(), message), none; row != none; ++row) {
    std::string texts = (*row)[1];
    for (std::size_t at = 0; at != std::string::npos;) {
      const std::size_t next = texts.find("<br>", at);
      rows.push_back(texts.substr(at, next == std::string::npos ? next : next - at));
      at = next == std::string::npos ? next : next + 4;
    }
  }
  return rows;
}

std::string InHelp(const std::string& text) {
  std::string shown = text;
  for (std::size_t at = shown.find("%s"); at != std::string::npos; at = shown.find("%s")) {
    shown.replace(at, 2, "...");
  }
  return shown;
}

TEST(Sayings, AreExplainedInBothHelpPages) {
  const std::vector<std::string> english = RowsAboutFiles("Kelpin.htm");
  const std::vector<std::string> german = RowsAboutFiles("Kelpin.de.htm");
  EXPECT_EQ(english.size(), german.size());
  EXPECT_GT(english.size(), 20u);
  for (const auto& [said, inGerman] : German()) {
    if (IsReason(said)) continue;
    EXPECT_TRUE(IsTold(InHelp(said), english)) << said;
    EXPECT_TRUE(IsTold(InHelp(inGerman), german)) << inGerman;
  }
}

}  // namespace
}  // namespace kelpin::res
