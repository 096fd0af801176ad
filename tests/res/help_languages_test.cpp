#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "res/card_dialogs.h"
#include "res/ids.h"
#include "res/language.h"
#include "res/string_table.h"
#include "res/templates.h"
#include "tests/res/help_text.h"

// The help in other languages is the English page, told in other words: nothing is missing in it,
// and what the program opens is found.
namespace kelpin::res {
namespace {

std::string ReadFile(const std::string& name) {
  std::ifstream file(std::string(KELPIN_SOURCE_DIR "/res/") + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

const std::string& English() {
  static const std::string page = ReadFile("help/Kelpin.htm");
  return page;
}

const std::string& German() {
  static const std::string page = ReadFile("help/Kelpin.de.htm");
  return page;
}

std::vector<std::string> Found(const std::string& page, const char* pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> found;
  for (std::sregex_iterator match(page.begin(), page.end(), expression), end; match != end;
       ++match) {
    found.push_back((*match)[1]);
  }
  return found;
}

std::vector<std::string> Sorted(std::vector<std::string> texts) {
  std::ranges::sort(texts);
  return texts;
}

constexpr const char* kSection = " id=\"([^\"]*)\"";

TEST(HelpInGerman, HasTheSectionsOfTheEnglishPageInItsOrder) {
  EXPECT_GT(Found(English(), kSection).size(), 15u);
  EXPECT_EQ(Found(German(), kSection), Found(English(), kSection));
}

TEST(HelpInGerman, HasEverySectionThatADialogOpens) {
  const std::vector<std::string> sections = Found(German(), kSection);
  std::vector<std::u16string_view> opened;
  for (const ui::DialogTemplate& dialog : Dialogs()) {
    opened.push_back(dialog.helpSection);
  }
  for (const ui::DialogTemplate* dialog :
       {&CardPinDialog(), &CardPukDialog(), &OpeningCardDialog()}) {
    opened.push_back(dialog->helpSection);
  }
  for (const std::u16string_view section : opened) {
    EXPECT_THAT(sections, testing::Contains(AsInHelp(section)));
  }
}

// Paragraph for paragraph and row for row.
TEST(HelpInGerman, TellsAllThatTheEnglishPageTells) {
  const char* const blocks = "<(/?(?:h1|h2|p|nav|ul|li|table|tr|th|td|head|body|html))[ >]";
  EXPECT_EQ(Found(German(), blocks), Found(English(), blocks));
  const char* const link = "href=\"([^\"]*)\"";
  EXPECT_EQ(Sorted(Found(German(), link)), Sorted(Found(English(), link)));
}

TEST(HelpInGerman, ClosesWhatItOpensInALine) {
  for (const std::string tag : {"a", "kbd", "code"}) {
    const std::size_t opened = Found(German(), ("<(" + tag + ")[ >]").c_str()).size();
    EXPECT_GT(opened, 0u) << tag;
    EXPECT_EQ(Found(German(), ("<(/" + tag + ")>").c_str()).size(), opened) << tag;
  }
  EXPECT_TRUE(German().starts_with("<!DOCTYPE html>\n<html lang=\"de\">"));
  EXPECT_FALSE(std::regex_search(German(), std::regex("&(?!(lt|gt|amp);)")));
}

TEST(HelpInGerman, NeedsNothingFromOutside) {
  for (const char* outside : {"://", "src=", "<link", "<script", "@import", "url("}) {
    EXPECT_EQ(German().find(outside), std::string::npos) << outside;
  }
}

TEST(HelpInGerman, NamesTheMessagesInTheWordsInWhichTheyAreShown) {
  std::vector<std::string> notes;
  const std::optional<LanguageTexts> texts = ReadLanguage(ReadFile("lang/de.txt"), notes);
  ASSERT_TRUE(texts.has_value());
  int messages = 0;
  for (const auto& [id, text] : *texts) {
    if (NamesMessage(English(), AsInHelp(EnglishText(id)))) {
      ++messages;
      EXPECT_TRUE(NamesMessage(German(), AsInHelp(text))) << id << ": " << AsInHelp(text);
    }
  }
  EXPECT_GE(messages, 50);  // 41 answers of the card, 9 of the forms, and more
}

}  // namespace
}  // namespace kelpin::res
