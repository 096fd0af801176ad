#include "ui/menu.h"

#include <gtest/gtest.h>

#include <array>

namespace kelpin::ui {
namespace {

constexpr int kNew = 1;
constexpr int kMenuKey = 2;
constexpr int kEdit = 10;
constexpr int kDelete = 11;
constexpr int kNames = 20;
constexpr int kGroups = 21;
constexpr int kAbout = 30;

constexpr std::array<MenuItemTemplate, 3> kTools = {
    {{.command = kNames, .text = u"Names..."}, {}, {.command = kGroups, .text = u"Groups..."}}};
constexpr std::array<MenuItemTemplate, 6> kItems = {
    {{.command = kEdit, .text = u"Edit...", .icon = "edit", .keys = u"F2"},
     {.command = kDelete, .text = u"Delete"},
     {},
     {.text = u"Tools", .items = kTools},
     {},
     {.command = kAbout, .text = u"About..."}}};
constexpr std::array<SoftKeyTemplate, 2> kKeys = {
    {{.command = kNew, .text = u"New", .icon = "new"},
     {.command = kMenuKey, .text = u"Menu", .menu = kItems}}};
constexpr MenuBarTemplate kBar = {.id = 309, .keys = kKeys};

TEST(Menu, CarriesTextIconAndShortcutOfItsTemplate) {
  const Menu menu{kItems};
  const std::vector<MenuItem> items = menu.Items();
  ASSERT_EQ(items.size(), 6u);
  EXPECT_EQ(items[0].text, u"Edit...");
  EXPECT_EQ(items[0].icon, "edit");
  EXPECT_EQ(items[0].keys, u"F2");
  EXPECT_TRUE(items[2].IsSeparator());
  EXPECT_EQ(items[3].text, u"Tools");
  EXPECT_EQ(items[3].items.size(), 3u);
  EXPECT_FALSE(items[3].IsSeparator());
}

TEST(Menu, GreysAnItemOfASubMenu) {
  Menu menu{kItems};
  EXPECT_EQ(menu.EnableItem(kGroups, false), 1);
  EXPECT_FALSE(menu.IsEnabled(kGroups));
  EXPECT_FALSE(menu.Items()[3].items[2].enabled);
  EXPECT_TRUE(menu.IsEnabled(kNames));
}

TEST(Menu, AnUnknownCommandChangesNothing) {
  Menu menu{kItems};
  int changes = 0;
  menu.SetChanged([&] { ++changes; });
  const std::vector<MenuItem> before = menu.Items();
  EXPECT_EQ(menu.EnableItem(99, false), 0);
  EXPECT_EQ(menu.RemoveItem(99), 0);
  EXPECT_EQ(menu.Items(), before);
  EXPECT_EQ(changes, 0);
}

TEST(Menu, CommandZeroIsNoItemThoughSeparatorsAndSubMenusHaveIt) {
  Menu menu{kItems};
  EXPECT_EQ(menu.EnableItem(0, false), 0);
  EXPECT_EQ(menu.RemoveItem(0), 0);
  EXPECT_FALSE(menu.Contains(0));
  EXPECT_EQ(menu.Items().size(), 6u);
}

TEST(Menu, ARemovedItemIsGoneAndNotEnabled) {
  Menu menu{kItems};
  EXPECT_EQ(menu.RemoveItem(kDelete), 1);
  EXPECT_FALSE(menu.Contains(kDelete));
  EXPECT_FALSE(menu.IsEnabled(kDelete));
  EXPECT_TRUE(menu.WasRemoved(kDelete));
  EXPECT_EQ(menu.RemoveItem(kDelete), 0);
}

TEST(Menu, ASubMenuThatLostEveryItemIsNotDrawnAndLeavesOneSeparator) {
  Menu menu{kItems};
  menu.RemoveItem(kNames);
  menu.RemoveItem(kGroups);
  const std::vector<MenuItem> items = menu.Items();
  ASSERT_EQ(items.size(), 4u);
  EXPECT_EQ(items[1].command, kDelete);
  EXPECT_TRUE(items[2].IsSeparator());
  EXPECT_EQ(items[3].command, kAbout);
}

TEST(Menu, NoSeparatorIsFirstOrLast) {
  Menu menu;
  menu.AppendSeparator();
  menu.Append(1, u"One");
  menu.AppendSeparator();
  menu.AppendSeparator();
  menu.Append(2, u"Two", false);
  menu.AppendSeparator();
  const std::vector<MenuItem> items = menu.Items();
  ASSERT_EQ(items.size(), 3u);
  EXPECT_EQ(items[0].command, 1);
  EXPECT_TRUE(items[1].IsSeparator());
  EXPECT_FALSE(items[2].enabled);
}

TEST(Menu, TellsAChangeOnceAndOnlyWhenThereIsOne) {
  Menu menu{kItems};
  int changes = 0;
  menu.SetChanged([&] { ++changes; });
  menu.EnableItem(kEdit, true);
  EXPECT_EQ(changes, 0);
  menu.EnableItem(kEdit, false);
  EXPECT_EQ(changes, 1);
  menu.RemoveItem(kEdit);
  EXPECT_EQ(changes, 2);
}

TEST(Menu, MayBeReadFromItsOwnChange) {
  Menu menu{kItems};
  bool enabled = true;
  menu.SetChanged([&] { enabled = menu.IsEnabled(kEdit); });
  menu.EnableItem(kEdit, false);
  EXPECT_FALSE(enabled);
}

TEST(MenuBar, HasItsTemplatesKeysLeftFirst) {
  const MenuBar bar(kBar);
  EXPECT_EQ(bar.Resource(), 309);
  ASSERT_EQ(bar.KeyCount(), 2u);
  EXPECT_EQ(bar.KeyAt(0).text, u"New");
  EXPECT_FALSE(bar.KeyAt(0).dropDown);
  EXPECT_TRUE(bar.KeyAt(1).dropDown);
  EXPECT_EQ(bar.KeyAt(2), SoftKey{});
}

TEST(MenuBar, GivesThePopUpOfItsDropDownKeyAlone) {
  MenuBar bar(kBar);
  ASSERT_NE(bar.SubMenu(kMenuKey), nullptr);
  EXPECT_TRUE(bar.SubMenu(kMenuKey)->Contains(kEdit));
  EXPECT_EQ(bar.SubMenu(kNew), nullptr);
  EXPECT_EQ(bar.SubMenu(99), nullptr);
}

TEST(MenuBar, EnablesAKeyThatItHas) {
  MenuBar bar(kBar);
  EXPECT_EQ(bar.EnableSoftKey(0, false), 1);
  EXPECT_FALSE(bar.KeyAt(0).enabled);
  EXPECT_EQ(bar.EnableSoftKey(2, false), 0);
}

TEST(MenuBar, ACommandNeedsItsItemAndTheKeyThatOpensIt) {
  MenuBar bar(kBar);
  EXPECT_TRUE(bar.CommandEnabled(kNames));
  bar.EnableSoftKey(1, false);
  EXPECT_FALSE(bar.CommandEnabled(kNames));
  bar.EnableSoftKey(1, true);
  bar.SubMenu(kMenuKey)->EnableItem(kNames, false);
  EXPECT_FALSE(bar.CommandEnabled(kNames));
  EXPECT_TRUE(bar.CommandEnabled(kGroups));
}

TEST(MenuBar, APlainKeysCommandNeedsTheKey) {
  MenuBar bar(kBar);
  EXPECT_TRUE(bar.CommandEnabled(kNew));
  bar.EnableSoftKey(0, false);
  EXPECT_FALSE(bar.CommandEnabled(kNew));
}

TEST(MenuBar, ACommandItDoesNotKnowCanBeGivenARemovedOneCannot) {
  MenuBar bar(kBar);
  EXPECT_TRUE(bar.CommandEnabled(768));
  bar.SubMenu(kMenuKey)->RemoveItem(kGroups);
  EXPECT_FALSE(bar.CommandEnabled(kGroups));
}

TEST(MenuBar, TellsChangesOfKeysAndOfItems) {
  MenuBar bar(kBar);
  int changes = 0;
  bar.SetChanged([&] { ++changes; });
  bar.EnableSoftKey(0, false);
  bar.EnableSoftKey(0, false);
  bar.SubMenu(kMenuKey)->EnableItem(kEdit, false);
  EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace kelpin::ui
