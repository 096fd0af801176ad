#include "res/language.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "res/card_dialogs.h"
#include "res/ids.h"
#include "res/menus.h"
#include "res/string_table.h"
#include "res/strings.h"
#include "res/templates.h"

namespace kelpin::res {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Read {
  explicit Read(const std::string& lines, const std::string& header = "KELPIN LANGUAGE 1\n")
      : texts(ReadLanguage(header + lines, notes)) {}

  // The text of `id`, "none" when there is none.
  std::u16string Text(int id) const {
    return texts.has_value() && texts->contains(id) ? texts->at(id) : u"none";
  }

  std::vector<std::string> notes;
  std::optional<LanguageTexts> texts;
};

std::optional<LanguageTexts> German() {
  std::ifstream file(KELPIN_SOURCE_DIR "/res/lang/de.txt", std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), {});
  std::vector<std::string> notes;
  std::optional<LanguageTexts> texts = ReadLanguage(bytes, notes);
  EXPECT_THAT(notes, IsEmpty());
  return texts;
}

std::set<int> EnglishIds() {
  std::set<int> ids;
  for (const StringEntry& entry : kStrings) {
    ids.insert(entry.id);
  }
  for (const StringEntry& entry : kTexts) {
    ids.insert(entry.id);
  }
  return ids;
}

// The language of one test; English again behind it.
class LanguageInUse {
 public:
  explicit LanguageInUse(LanguageTexts texts) { UseLanguage(std::move(texts)); }
  ~LanguageInUse() { UseLanguage({}); }
  LanguageInUse(const LanguageInUse&) = delete;
  LanguageInUse& operator=(const LanguageInUse&) = delete;
};

TEST(LanguageFile, GivesTextsByTheirNumber) {
  const Read read("# a note\n\n27 = Bearbeiten\n  28=Menü  \r\n3 = a\\nb\\\\c = d\n");
  EXPECT_THAT(read.notes, IsEmpty());
  ASSERT_TRUE(read.texts.has_value());
  EXPECT_EQ(read.texts->size(), 3u);
  EXPECT_EQ(read.Text(27), u"Bearbeiten");
  EXPECT_EQ(read.Text(28), u"Menü");
  EXPECT_EQ(read.Text(3), u"a\nb\\c = d");
}

TEST(LanguageFile, MayBeginWithTheMarkOfUtf8AndEndWithoutALineEnd) {
  const Read read("27 = \xF0\x9F\x98\x80", "\xEF\xBB\xBFKELPIN LANGUAGE 1\r\n");
  EXPECT_EQ(read.Text(27), u"\U0001F600");
}

TEST(LanguageFile, MayHoldNoText) {
  const Read read("", "KELPIN LANGUAGE 1");
  ASSERT_TRUE(read.texts.has_value());
  EXPECT_TRUE(read.texts->empty());
  EXPECT_THAT(read.notes, IsEmpty());
}

TEST(LanguageFile, IsRefusedWithoutItsFirstLine) {
  for (const char* header : {"", "\n", "KELPIN LANGUAGE 2\n", "27 = Bearbeiten\n",
                             "\x7F"
                             "ELF"}) {
    const Read read("28 = x\n", header);
    EXPECT_FALSE(read.texts.has_value()) << header;
    EXPECT_THAT(read.notes, ElementsAre(HasSubstr("line 1: "))) << header;
  }
}

TEST(LanguageFile, IsRefusedWholeAtALineThatIsNone) {
  for (const char* line :
       {"27 Bearbeiten", "= x", "x = y", "27x = y", "-1 = y", "0 = y", "99999999999 = y",
        "27 = a\\tb", "27 = a\\", "27 = a\tb", "27 = a\x7F", "27 = \xC2\x85",  // a control
        "27 = \xFF", "27 = \xC3", "27 = \x80", "27 = \xC0\xAF",  // no UTF-8; written too long
        "27 = \xE0\x80\xAF", "27 = \xED\xA0\x80", "27 = \xF4\x90\x80\x80"}) {
    const Read read("28 = good\n" + std::string(line) + "\n29 = good\n");
    EXPECT_FALSE(read.texts.has_value()) << line;
    EXPECT_THAT(read.notes, ElementsAre(HasSubstr("line 3: "))) << line;
  }
  const std::string zero("27 = a\0b\n", 9);
  EXPECT_FALSE(Read(zero).texts.has_value());
}

TEST(LanguageFile, IsRefusedWhenItIsTooLong) {
  std::string lines = "28 = x\n";
  lines += "#" + std::string(kLanguageFileLimit, '-');
  const Read read(lines);
  EXPECT_FALSE(read.texts.has_value());
  EXPECT_THAT(read.notes, ElementsAre(HasSubstr("longer than 262144 bytes")));
}

TEST(LanguageFile, GivesWhatAdaptersSayByTheEnglishWords) {
  std::vector<std::string> notes;
  LanguageSayings sayings;
  const auto texts = ReadLanguage(
      "KELPIN LANGUAGE 1\n"
      "\"%s: not a file\" = \"%s: Das ist keine Datei\"\n"
      "27 = Bearbeiten\n"
      "  \"say \\\"x\\\" \\\\ = \\n\"=\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80 \\\"x\\\" \\\\ \\n\"  "
      "\r\n",
      notes, &sayings);
  EXPECT_THAT(notes, IsEmpty());
  ASSERT_TRUE(texts.has_value());
  EXPECT_EQ(texts->size(), 1u);
  EXPECT_EQ(sayings, (LanguageSayings{{"%s: not a file", "%s: Das ist keine Datei"},
                                      {"say \"x\" \\ = \n", "ä€😀 \"x\" \\ \n"}}));
}

TEST(LanguageFile, LeavesOutASayingThatCannotStandForTheEnglishOne) {
  std::vector<std::string> notes;
  LanguageSayings sayings;
  ASSERT_TRUE(ReadLanguage("KELPIN LANGUAGE 1\n\"%s: a\" = \"b\"\n\"c\" = \"%s\"\n\"d\" = \"\"\n"
                           "\"\" = \"e\"\n\"f\" = \"g\"\n\"f\" = \"h\"\n",
                           notes, &sayings)
                  .has_value());
  EXPECT_EQ(sayings, (LanguageSayings{{"f", "g"}}));
  ASSERT_EQ(notes.size(), 5u);
  EXPECT_THAT(notes[0], HasSubstr("line 2: text \"%s: a\" is left out: its %d and %s"));
  EXPECT_THAT(notes[4], HasSubstr("line 7: text \"f\" is left out: a line above"));
}

TEST(LanguageFile, IsRefusedWholeAtASayingThatIsNone) {
  for (const char* line :
       {"\"a\"", "\"a\" =", "\"a\" = b", "\"a\" = \"b", "\"a\" = \"b\" c", "\"a = \"b\"", "\"",
        "\"a\" = \"b\\\"", "\"a\\t\" = \"b\"", "\"a\" = \"\xFF\"", "\"a\" = \"\x1B\"", "\"a\\"}) {
    const Read read("28 = good\n" + std::string(line) + "\n");
    EXPECT_FALSE(read.texts.has_value()) << line;
    EXPECT_THAT(read.notes, ElementsAre(HasSubstr("line 3: "))) << line;
  }
}

// 148 has two %d, 116 one %s, 87 one %s, 27 none.
TEST(LanguageFile, LeavesOutATextWhoseDirectivesAreOthers) {
  const Read read(
      "148 = %d kopiert\n116 = %d ist da\n87 = Version\n27 = Bearbeiten %s\n"
      "121 = %s und %d\n1002 = %d%% von %ld\n1068 = %s 100 % %%s\n");
  ASSERT_TRUE(read.texts.has_value());
  for (const int refused : {148, 116, 87, 27, 121}) {
    EXPECT_EQ(read.Text(refused), u"none") << refused;
  }
  EXPECT_EQ(read.Text(1002), u"%d%% von %ld");
  EXPECT_EQ(read.Text(1068), u"%s 100 % %%s");
  ASSERT_EQ(read.notes.size(), 5u);
  EXPECT_THAT(read.notes[0], HasSubstr("line 2: text 148 is left out: its %d and %s"));
}

TEST(LanguageFile, LeavesOutWhatNobodyAsksForAndEmptyLongAndRepeatedTexts) {
  const Read read("5 = x\n2000 = x\n27 =\n28 = " + std::string(600, 'x') +
                  "\n29 = " + std::string(601, 'x') + "\n30 = first\n30 = second\n");
  ASSERT_TRUE(read.texts.has_value());
  EXPECT_EQ(read.texts->size(), 2u);
  EXPECT_EQ(read.Text(28).size(), 600u);
  EXPECT_EQ(read.Text(30), u"first");
  EXPECT_EQ(read.notes.size(), 5u);
}

TEST(LanguageFile, NamesTheFirstTwentyTextsThatAreLeftOut) {
  std::string lines;
  for (int i = 0; i < 5000; ++i) {
    lines += "5 = x\n";
  }
  const Read read(lines);
  ASSERT_EQ(read.notes.size(), 21u);
  EXPECT_EQ(read.notes.back(), "5000 texts are left out in all");
}

TEST(German, HasEveryTextOfTheProgramAndNoOther) {
  const std::optional<LanguageTexts> german = German();
  ASSERT_TRUE(german.has_value());
  std::set<int> ids;
  for (const auto& [id, text] : *german) {
    ids.insert(id);
  }
  EXPECT_EQ(ids, EnglishIds());
}

TEST(German, SaysSomethingElseThanEnglishUnlessTheWordsAreTheSame) {
  // Signs, keys and the words that are German too.
  const std::set<int> same = {1, 14, 31, 32, 36, 87, 96, 140, 1031, 1043, 1052, 1087, 1093, 1097};
  const std::optional<LanguageTexts> german = German();
  ASSERT_TRUE(german.has_value());
  for (const auto& [id, text] : *german) {
    EXPECT_EQ(text == EnglishText(id), same.contains(id)) << id;
  }
}

TEST(Translation, AnswersEveryTextAndEnglishWhereThereIsNone) {
  const LanguageInUse language({{kStringEdit, u"Bearbeiten"}});
  EXPECT_EQ(LoadString(kStringEdit), u"Bearbeiten");
  EXPECT_EQ(LoadString(kStringMenu), u"Menu");
  EXPECT_EQ(LoadString(5), u"");
}

TEST(Translation, EndsWithEnglish) {
  { const LanguageInUse language({{kStringEdit, u"Bearbeiten"}}); }
  EXPECT_EQ(LoadString(kStringEdit), u"Edit");
  EXPECT_EQ(FindMenuBar(kBarOptions)->keys[1].text, u"Edit");
}

TEST(Translation, ReachesDialogs) {
  const LanguageInUse language({{kStringNameLabel, u"Rufname:"}});
  const ui::DialogTemplate* dialog = FindDialog(kDialogNewEntry);
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog, FindDialog(kDialogNewEntry));
  EXPECT_EQ(dialog->id, kDialogNewEntry);
  EXPECT_EQ(dialog->helpSection, u"new-entry");
  EXPECT_EQ(dialog->controls.size(), 17u);
  EXPECT_EQ(dialog->controls[0].id, kNewNameLabel);
  EXPECT_EQ(dialog->controls[0].text, u"Rufname:");
  EXPECT_EQ(dialog->controls[2].text, u"Nickname:");
}

TEST(Translation, ReachesBarsMenusAndSubMenus) {
  const LanguageInUse language({{kStringMenu, u"Menü"},
                                {kTextMenuTools, u"Extras"},
                                {kTextMenuOptions, u"Optionen..."},
                                {kStringDelete, u"Löschen"},
                                {kTextShortcutDelete, u"Entf"}});
  const ui::SoftKeyTemplate& menu = FindMenuBar(kBarMain)->keys[1];
  EXPECT_EQ(menu.text, u"Menü");
  EXPECT_EQ(menu.menu[0].text, u"Edit...");
  EXPECT_EQ(menu.menu[1].text, u"Löschen");
  EXPECT_EQ(menu.menu[1].keys, u"Entf");
  EXPECT_EQ(menu.menu[1].command, kCommandDelete);
  EXPECT_EQ(menu.menu[13].text, u"Extras");
  EXPECT_EQ(menu.menu[13].items.back().text, u"Optionen...");
  EXPECT_EQ(MainListMenu()[1].text, u"Löschen");
  EXPECT_EQ(MainListMenu().data(), MainListMenu().data());
}

TEST(Translation, ReachesTheDialogsOfALockedCard) {
  const LanguageInUse language({{kTextPinTitle, u"Gesperrt"}, {kTextKeyCancel, u"Abbrechen"}});
  EXPECT_EQ(CardPinDialog().controls[0].text, u"Gesperrt");
  EXPECT_EQ(CardCodeBar().keys[1].text, u"Abbrechen");
  EXPECT_EQ(OpeningCardBar().keys[0].text, u"Abbrechen");
}

void ExpectNoEnglish(std::u16string_view text, const std::set<std::u16string_view>& german) {
  if (!text.empty()) {
    EXPECT_TRUE(german.contains(text)) << std::string(text.begin(), text.end());
  }
}

void ExpectNoEnglish(std::span<const ui::MenuItemTemplate> items,
                     const std::set<std::u16string_view>& german) {
  for (const ui::MenuItemTemplate& item : items) {
    ExpectNoEnglish(item.text, german);
    ExpectNoEnglish(item.keys, german);
    ExpectNoEnglish(item.items, german);
  }
}

TEST(German, StandsInEveryDialogBarAndMenu) {
  const LanguageTexts texts = German().value_or(LanguageTexts());
  std::set<std::u16string_view> german;
  for (const auto& [id, text] : texts) {
    german.insert(text);
  }
  const LanguageInUse language(texts);
  for (const ui::DialogTemplate& dialog : Dialogs()) {
    for (const ui::ControlTemplate& control : FindDialog(dialog.id)->controls) {
      ExpectNoEnglish(control.text, german);
    }
  }
  for (const ui::MenuBarTemplate& bar : MenuBars()) {
    for (const ui::SoftKeyTemplate& key : FindMenuBar(bar.id)->keys) {
      ExpectNoEnglish(key.text, german);
      ExpectNoEnglish(key.menu, german);
    }
  }
  for (const auto& items : {MainListMenu(), OwnNumberMenu(), ServiceNumberMenu(), EditMenu()}) {
    ExpectNoEnglish(items, german);
  }
}

// Templates hold texts without their ids.
TEST(German, SaysTheSameForOneEnglishText) {
  const LanguageTexts german = German().value_or(LanguageTexts());
  std::map<std::u16string_view, std::u16string_view> byEnglish;
  for (const auto& [id, text] : german) {
    const auto [first, added] = byEnglish.emplace(EnglishText(id), text);
    EXPECT_TRUE(first->second == text) << id;
  }
  EXPECT_EQ(byEnglish.size(), german.size() - 3);  // 147 as 3, 73 as 72, 1039 as 1009
}

// A hint names commands; they are called there what they are called in the menu.
TEST(German, HintsNameCommandsAsTheMenuDoes) {
  const LanguageTexts german = German().value_or(LanguageTexts());
  const struct {
    int hint;
    int command;
  } kNamed[] = {
      {kTextNoEntriesHint, kStringNew},           {kTextNoEntriesHint, kTextMenuContactsToSim},
      {kTextNoCardHint, kStringRefresh},          {kTextCardNotReadHint, kStringRefresh},
      {kTextCardLockedHint, kStringRefresh},      {kTextNoChosenNumbersHint, kTextMenuOptions},
      {kTextNoChosenNumbersHint, kTextMenuTools}, {kTextNoChosenNumbersHint, kTextKeyCancel},
      {kTextNoNamedGroupsHint, kTextMenuTools},   {kTextNoNamedGroupsHint, kTextMenuGroupNames},
      {kTextOpeningCardSlow, kTextKeyCancel}};
  for (const auto& [hint, command] : kNamed) {
    EXPECT_NE(german.at(hint).find(u"„" + german.at(command) + u"“"), std::u16string::npos)
        << hint << " does not name " << command;
  }
}

}  // namespace
}  // namespace kelpin::res
