#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "res/card_dialogs.h"
#include "res/ids.h"
#include "res/string_table.h"
#include "res/templates.h"
#include "tests/res/help_text.h"

namespace kelpin::res {
namespace {

std::string Narrow(std::u16string_view text) {
  return {text.begin(), text.end()};
}

const std::string& Help() {
  static const std::string help = [] {
    std::ifstream file(KELPIN_SOURCE_DIR "/res/help/Kelpin.htm", std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), {});
  }();
  return help;
}

// The first group of every match.
std::vector<std::string> Found(const std::string& pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> found;
  for (std::sregex_iterator match(Help().begin(), Help().end(), expression), end; match != end;
       ++match) {
    found.push_back((*match)[1]);
  }
  return found;
}

std::set<std::string> Sections() {
  const std::vector<std::string> ids = Found(" id=\"([^\"]*)\"");
  return {ids.begin(), ids.end()};
}

TEST(Help, HasASectionForEveryDialog) {
  const std::set<std::string> sections = Sections();
  for (const ui::DialogTemplate& dialog : Dialogs()) {
    EXPECT_TRUE(sections.contains(Narrow(dialog.helpSection))) << dialog.id;
  }
  for (const ui::DialogTemplate* dialog :
       {&CardPinDialog(), &CardPukDialog(), &OpeningCardDialog()}) {
    EXPECT_TRUE(sections.contains(Narrow(dialog->helpSection))) << dialog->id;
  }
}

TEST(Help, NamesEachSectionOnceAndListsAllOfThem) {
  EXPECT_EQ(Found(" id=\"([^\"]*)\"").size(), Sections().size());
  const std::vector<std::string> listed = Found("<li><a href=\"#([^\"]*)\">");
  EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()), Sections());
}

TEST(Help, LinksToItsOwnSectionsAlone) {
  const std::set<std::string> sections = Sections();
  const std::vector<std::string> links = Found("href=\"([^\"]*)\"");
  EXPECT_GT(links.size(), sections.size());
  for (const std::string& link : links) {
    EXPECT_TRUE(link.starts_with("#") && sections.contains(link.substr(1))) << link;
  }
}

TEST(Help, NeedsNothingFromOutside) {
  for (const char* outside : {"://", "src=", "<link", "<script", "@import", "url("}) {
    EXPECT_EQ(Help().find(outside), std::string::npos) << outside;
  }
}

TEST(Help, FitsDarkDesktopsAndSmallScreens) {
  EXPECT_NE(Help().find("<meta name=\"color-scheme\" content=\"light dark\">"), std::string::npos);
  EXPECT_NE(Help().find("content=\"width=device-width, initial-scale=1\""), std::string::npos);
}

TEST(Help, ClosesWhatItOpensAndEscapesWhatItShows) {
  ASSERT_TRUE(Help().starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
  const std::set<std::string> noEnd = {"meta", "br"};
  const std::set<std::string> known = {"html",  "head", "title", "style", "body", "h1",
                                       "h2",    "p",    "nav",   "ul",    "li",   "a",
                                       "table", "tr",   "th",    "td",    "kbd",  "code"};
  std::vector<std::string> open;
  for (std::size_t at = Help().find('<', 15); at != std::string::npos;) {
    const std::size_t end = Help().find('>', at);
    ASSERT_NE(end, std::string::npos);
    const std::string tag = Help().substr(at + 1, end - at - 1);
    const bool closes = tag.starts_with("/");
    const std::string name = tag.substr(closes ? 1 : 0, tag.find(' '));
    const std::string where = Help().substr(at, 60);
    if (closes) {
      ASSERT_FALSE(open.empty()) << where;
      ASSERT_EQ(open.back(), name) << where;
      open.pop_back();
    } else if (!noEnd.contains(name)) {
      ASSERT_TRUE(known.contains(name)) << where;
      ASSERT_TRUE(name != "p" || open.back() == "body") << where;
      open.push_back(name);
    }
    const std::size_t next = Help().find('<', end);
    const std::string between = Help().substr(end + 1, next - end - 1);
    EXPECT_TRUE(name == "style" || between.find('>') == std::string::npos) << where;
    static const std::regex bare("&(?!(lt|gt|amp);)");
    EXPECT_FALSE(std::regex_search(between, bare)) << between;
    at = next;
  }
  EXPECT_TRUE(open.empty());
}

// Labels, and what is shown beside a message as its advice.
constexpr int kNoMessages[] = {
    kStringOptionsExplanation,  kStringOwnNumbersHeader, kStringMyNo,
    kStringCopyProgress,        kTextNoEntriesHint,      kTextNoCardHint,
    kTextCardNotReadHint,       kTextCardLockedHint,     kTextNoContactsHint,
    kTextContactsNotOpenedHint, kTextPinWanted,          kTextPukWanted,
    kTextNoNamedGroupsHint,     kTextReopenListHint};
// Messages that are no whole sentences.
constexpr int kFurtherMessages[] = {kStringNotAllCopiedQuestion,
                                    kTextNoCard,
                                    kTextCardNotRead,
                                    kTextCardLocked,
                                    kTextNoEntries,
                                    kTextNoContacts,
                                    kTextContactsNotOpened,
                                    kTextNoOwnNumbers,
                                    kTextNoServiceNumbers,
                                    kTextNoNumberNames,
                                    kTextNoGroupNames,
                                    kTextNoNamedGroups,
                                    kTextNoChosenNumbers};

bool IsMessage(int id, const std::string& text) {
  if (std::ranges::find(kFurtherMessages, id) != std::end(kFurtherMessages)) return true;
  return (text.ends_with('.') || text.ends_with('?')) && !text.ends_with("...") &&
         std::ranges::find(kNoMessages, id) == std::end(kNoMessages);
}

TEST(Help, TellsOfEveryMessageWordForWord) {
  int messages = 0;
  const auto look = [&messages](const StringEntry& entry) {
    const std::string text = AsInHelp(entry.text);
    if (IsMessage(entry.id, text)) {
      ++messages;
      EXPECT_TRUE(NamesMessage(Help(), text)) << entry.id << ": " << text;
    }
  };
  std::ranges::for_each(kStrings, look);
  std::ranges::for_each(kTexts, look);
  EXPECT_GE(messages, 41 + 9 + 13);  // the card's answers, the forms', and those above
}

}  // namespace
}  // namespace kelpin::res
