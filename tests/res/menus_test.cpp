#include "res/menus.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "res/accelerators.h"

namespace kelpin::res {
namespace {

using Entry = std::pair<int, std::u16string_view>;

struct Key {
  int command;
  std::u16string_view text;
  std::vector<Entry> menu = {};
};

const Entry kSeparator = {0, u""};

const std::map<int, std::vector<Key>>& Expected() {
  static const std::map<int, std::vector<Key>> expected = {
      {301,
       {{328, u"Done"},
        {1048, u"Menu", {{1049, u"Check All"}, {1050, u"Uncheck All"}, {329, u"Cancel"}}}}},
      {302, {{332, u"Edit"}, {333, u"Menu", {{334, u"Erase"}, {335, u"Refresh"}}}}},
      {303, {{339, u"OK"}}},
      {304, {{337, u"OK"}, {342, u"Edit"}}},
      {305, {{338, u"Done"}}},
      {306, {{340, u"Save"}, {341, u"Cancel"}}},
      {307,
       {{346, u"Delete"},
        {349, u"Menu", {{1053, u"Check All"}, {1054, u"Uncheck All"}, {347, u"Cancel"}}}}},
      {308, {{350, u"Call"}, {351, u"Cancel"}}},
      {309,
       {{312, u"New"},
        {313,
         u"Menu",
         {{314, u"Edit..."},
          {315, u"Delete"},
          {316, u"Call..."},
          {1076, u"Send..."},
          kSeparator,
          {345, u"Delete Contacts..."},
          {317, u"Save to Contacts"},
          {1107, u"Move to Contacts"},
          {318, u"Contacts to SIM..."},
          {1108, u"Move Contacts to SIM..."},
          kSeparator,
          {319, u"Select All"},
          {320, u"Refresh"},
          {0, u"Tools"},
          kSeparator,
          {322, u"About..."}}}}},
      {310, {{326, u"Done"}, {327, u"Cancel"}}},
      {311, {{330, u"Done"}, {331, u"Cancel"}}},
      {342, {{343, u"Save"}, {344, u"Cancel"}}},
      {359, {{360, u"Yes"}, {361, u"No"}}},
      {362, {{1071, u"Call"}, {1072, u"Cancel"}}},
      {363, {{1077, u"Select"}, {1078, u"Cancel"}}},
      {366, {{1081, u"Yes"}, {1082, u"No"}}},
      {369, {{1086, u"Edit"}, {1087, u"Erase"}}},
      {370, {{1090, u"Edit"}, {1091, u"Erase"}}},
      {372, {{1093, u"Save"}, {1094, u"Cancel"}}},
      {374, {{1095, u"Save"}, {1096, u"Cancel"}}},
      {376, {{1097, u"OK"}, {1098, u"Cancel"}}},
      {377, {{1102, u"OK"}, {1106, u"Cancel"}}},
      {378,
       {{1110, u"Move"},
        {1111, u"Menu", {{1112, u"Check All"}, {1113, u"Uncheck All"}, {1114, u"Cancel"}}}}},
  };
  return expected;
}

void ExpectItems(std::span<const ui::MenuItemTemplate> items, const std::vector<Entry>& expected) {
  ASSERT_EQ(items.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(items[i].command, expected[i].first) << "item " << i;
    EXPECT_TRUE(items[i].text == expected[i].second) << "item " << i;
  }
}

const ui::MenuItemTemplate* FindItem(std::span<const ui::MenuItemTemplate> items, int command) {
  for (const ui::MenuItemTemplate& item : items) {
    if (item.command == command) {
      return &item;
    }
    if (const ui::MenuItemTemplate* found = FindItem(item.items, command)) {
      return found;
    }
  }
  return nullptr;
}

std::span<const ui::MenuItemTemplate> MainMenu() {
  return FindMenuBar(309)->keys[1].menu;
}

TEST(MenuBars, EachHasItsKeysAndMenusInOrder) {
  ASSERT_EQ(MenuBars().size(), Expected().size());
  for (const auto& [id, keys] : Expected()) {
    SCOPED_TRACE("bar " + std::to_string(id));
    const ui::MenuBarTemplate* bar = FindMenuBar(id);
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->id, id);
    ASSERT_EQ(bar->keys.size(), keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
      EXPECT_EQ(bar->keys[i].command, keys[i].command);
      EXPECT_TRUE(bar->keys[i].text == keys[i].text) << keys[i].command;
      ExpectItems(bar->keys[i].menu, keys[i].menu);
    }
  }
}

TEST(MenuBars, AreFoundByTheirNumberAlone) {
  for (const ui::MenuBarTemplate& bar : MenuBars()) {
    EXPECT_EQ(FindMenuBar(bar.id), &bar);
  }
  for (const int id : {0, -1, 300, 312, 341, 343, 358, 364, 379, 0x7FFFFFFF}) {
    EXPECT_EQ(FindMenuBar(id), nullptr) << id;
  }
}

TEST(MenuBars, TheToolsMenuHoldsTheListsAndViews) {
  const ui::MenuItemTemplate& tools = MainMenu()[13];
  ASSERT_TRUE(tools.text == u"Tools");
  ExpectItems(tools.items, {{1083, u"Phone No. Name..."},
                            {1084, u"Group Name..."},
                            {323, u"List of Own Numbers..."},
                            {348, u"Service Dialing Numbers..."},
                            {324, u"SIM Information..."},
                            {325, u"Options..."}});
}

TEST(MenuBars, TheMainMenuSaysItsShortcuts) {
  const std::map<int, std::u16string_view> shortcuts = {
      {314, u"F2"}, {315, u"Del"}, {316, u"Ctrl+D"}, {319, u"Ctrl+A"}, {320, u"F5"}};
  for (const int command : {314, 315, 316, 1076, 345, 317, 1107, 318, 1108, 319, 320, 1083, 1084,
                            323, 348, 324, 325, 322}) {
    const ui::MenuItemTemplate* item = FindItem(MainMenu(), command);
    ASSERT_NE(item, nullptr) << command;
    const auto shortcut = shortcuts.find(command);
    EXPECT_TRUE(item->keys == (shortcut == shortcuts.end() ? u"" : shortcut->second)) << command;
  }
}

TEST(PopUps, TheMainListOffersWhatItsMenuDoesForTheSelection) {
  ExpectItems(MainListMenu(), {{314, u"Edit..."},
                               {315, u"Delete"},
                               {316, u"Call..."},
                               {1076, u"Send..."},
                               {317, u"Save to Contacts"}});
}

TEST(PopUps, OwnNumbersOfferEditEraseAndRefresh) {
  ExpectItems(OwnNumberMenu(), {{332, u"Edit"}, {334, u"Erase"}, {335, u"Refresh"}});
}

TEST(PopUps, ServiceNumbersOfferCallAlone) {
  ExpectItems(ServiceNumberMenu(), {{350, u"Call"}});
}

TEST(PopUps, EditsOfferTheClipboardAndSelectAll) {
  ExpectItems(EditMenu(), {{768, u"Cut"},
                           {769, u"Copy"},
                           {770, u"Paste"},
                           {771, u"Clear"},
                           kSeparator,
                           {0x7400, u"Select All"}});
}

void CollectIcons(std::span<const ui::MenuItemTemplate> items, std::set<std::string>& icons) {
  for (const ui::MenuItemTemplate& item : items) {
    if (!item.icon.empty()) {
      icons.emplace(item.icon);
    }
    CollectIcons(item.items, icons);
  }
}

TEST(Drawings, EveryOneThatAMenuNamesIsThere) {
  std::set<std::string> icons;
  for (const ui::MenuBarTemplate& bar : MenuBars()) {
    for (const ui::SoftKeyTemplate& key : bar.keys) {
      if (!key.icon.empty()) {
        icons.emplace(key.icon);
      }
      CollectIcons(key.menu, icons);
    }
  }
  CollectIcons(MainListMenu(), icons);
  CollectIcons(OwnNumberMenu(), icons);
  CollectIcons(ServiceNumberMenu(), icons);
  CollectIcons(EditMenu(), icons);
  EXPECT_TRUE(icons.contains("new"));
  EXPECT_TRUE(icons.contains("menu"));
  icons.insert({"icon353", "picture352"});
  for (const std::string& icon : icons) {
    std::ifstream file(KELPIN_SOURCE_DIR "/res/icons/" + icon + ".svg");
    std::string line;
    EXPECT_TRUE(std::getline(file, line)) << icon;
    EXPECT_EQ(line.rfind("<svg ", 0), 0u) << icon;
  }
}

TEST(Drawings, EveryMainMenuItemHasOne) {
  for (const ui::MenuItemTemplate& item : MainMenu()) {
    if (item.text.empty()) {
      continue;
    }
    EXPECT_FALSE(item.icon.empty()) << item.command;
    for (const ui::MenuItemTemplate& tool : item.items) {
      EXPECT_FALSE(tool.icon.empty()) << tool.command;
    }
  }
}

TEST(MainAccelerators, RunTheCommandsOfTheirKeys) {
  struct Expected {
    ui::KeyPress press;
    int command;
  };
  const Expected expected[] = {
      {{ui::Key::kDelete}, 315},
      {{ui::Key::kF2}, 314},
      {{ui::Key::kF5}, 320},
      {{ui::Key::kCharacter, ui::kControl, u'A'}, 319},
      {{ui::Key::kCharacter, ui::kControl, u'C'}, 0x7401},
      {{ui::Key::kCharacter, ui::kControl, u'D'}, 316},
      {{ui::Key::kCharacter, ui::kControl, u'N'}, 312},
  };
  ASSERT_EQ(MainAccelerators().size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(MainAccelerators()[i].press, expected[i].press) << i;
    EXPECT_EQ(MainAccelerators()[i].command, expected[i].command) << i;
  }
}

TEST(MainAccelerators, LeaveEnterToTheList) {
  for (const ui::Accelerator& accelerator : MainAccelerators()) {
    EXPECT_NE(accelerator.press.key, ui::Key::kEnter);
  }
}

TEST(MainAccelerators, AreTheShortcutsThatTheMenuSays) {
  const std::map<std::u16string_view, ui::KeyPress> presses = {
      {u"Del", {ui::Key::kDelete}},
      {u"F2", {ui::Key::kF2}},
      {u"F5", {ui::Key::kF5}},
      {u"Ctrl+A", {ui::Key::kCharacter, ui::kControl, u'A'}},
      {u"Ctrl+D", {ui::Key::kCharacter, ui::kControl, u'D'}}};
  for (const ui::Accelerator& accelerator : MainAccelerators()) {
    const ui::MenuItemTemplate* item = FindItem(MainMenu(), accelerator.command);
    if (item != nullptr) {
      ASSERT_TRUE(presses.contains(item->keys)) << accelerator.command;
      EXPECT_EQ(presses.at(item->keys), accelerator.press) << accelerator.command;
    }
  }
}

}  // namespace
}  // namespace kelpin::res
