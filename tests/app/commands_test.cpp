#include "app/commands.h"

#include <algorithm>

#include "tests/app/app_fixture.h"

namespace kelpin::app {
namespace {

constexpr int kSelectionCommands[] = {314, 315, 316, 317, 1076, 1107};

// Every command of the bar's pop-up, its sub-menu's too, in menu order; separators left out.
void Collect(const std::vector<ui::MenuItem>& items, std::vector<int>& commands) {
  for (const ui::MenuItem& item : items) {
    if (item.command != 0) commands.push_back(item.command);
    Collect(item.items, commands);
  }
}

class CommandsTest : public AppTest {
 protected:
  std::vector<int> MenuCommands() {
    std::vector<int> commands;
    Collect(Menu().Items(), commands);
    return commands;
  }
  // Everything that an enabling switch keeps in the menu.
  void EnableEverything() {
    SetSwitch(u"Enable_SDN", 1);
    SetSwitch(u"Enable_AAS", 1);
    SetSwitch(u"Enable_GAS", 1);
    SetSwitch(u"Enable_Move_Func", 1);
  }
  // The menu as a program started with this one switch has it.
  std::vector<int> MenuWith(std::u16string_view name, std::uint32_t value) {
    Device another;
    another.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
    another.registry.PutDword(platform::RegistryRoot::kLocalMachine, kProgramKey, name, value);
    AppState app(another.ports);
    MainDialog dialog(app, wiring);
    EXPECT_EQ(InitInstance(app, dialog, 1, 0), 1);
    std::vector<int> commands;
    Collect(app.dialog->Bar()->SubMenu(res::kCommandMenu)->Items(), commands);
    app.dialog->PostClose();
    another.screen.RunMessageLoop();
    return commands;
  }
};

TEST_F(CommandsTest, TheBarHasNewAndTheMenu) {
  Open();
  const ui::MenuBar& bar = *Dialog().Bar();
  EXPECT_EQ(bar.Resource(), 309);
  ASSERT_EQ(bar.KeyCount(), 2u);
  EXPECT_EQ(bar.KeyAt(0).command, 312);
  EXPECT_EQ(bar.KeyAt(0).text, u"New");
  EXPECT_FALSE(bar.KeyAt(0).dropDown);
  EXPECT_EQ(bar.KeyAt(1).command, 313);
  EXPECT_EQ(bar.KeyAt(1).text, u"Menu");
  EXPECT_TRUE(bar.KeyAt(1).dropDown);
  EXPECT_TRUE(bar.KeyAt(0).enabled);
  EXPECT_TRUE(bar.KeyAt(1).enabled);
}

TEST_F(CommandsTest, WithEverythingEnabledTheMenuIsWhole) {
  EnableEverything();
  Open();
  EXPECT_EQ(MenuCommands(), (std::vector<int>{314, 315, 316, 1076, 345, 317, 1107, 318, 1108, 319,
                                              320, 1083, 1084, 323, 348, 324, 325, 322}));
}

TEST_F(CommandsTest, AnEmptyRegistryTakesAwayWhatNeedsAnEnablingValue) {
  Open();
  EXPECT_EQ(MenuCommands(),
            (std::vector<int>{314, 315, 316, 1076, 345, 317, 318, 319, 320, 323, 324, 325, 322}));
}

TEST_F(CommandsTest, SwitchesThatCountWhenTheyAreOne) {
  struct Case {
    std::u16string_view name;
    int command;
    bool keptAt[3];  // with 0, 1 and 2
  };
  constexpr Case kCases[] = {
      {u"Enable_SDN", 348, {false, true, false}},
      {u"Disable_OwnNumber", 323, {true, false, true}},
      {u"Enable_AAS", 1083, {false, true, false}},
      {u"Enable_GAS", 1084, {false, true, false}},
      {u"Enable_Move_Func", 1107, {false, true, false}},
      {u"Enable_Move_Func", 1108, {false, true, false}},
  };
  for (const Case& one : kCases) {
    for (std::uint32_t value = 0; value < 3; ++value) {
      const std::vector<int> menu = MenuWith(one.name, value);
      const bool kept = std::find(menu.begin(), menu.end(), one.command) != menu.end();
      EXPECT_EQ(kept, one.keptAt[value]) << test::Utf8(one.name) << " " << value;
    }
  }
}

TEST_F(CommandsTest, SwitchesThatCountWhenTheyAreNotZero) {
  struct Case {
    std::u16string_view name;
    int command;
  };
  for (const Case& one : {Case{u"CToSim_Type", 325}, Case{u"Disable_DelContacts", 345}}) {
    for (std::uint32_t value = 0; value < 3; ++value) {
      const std::vector<int> menu = MenuWith(one.name, value);
      const bool kept = std::find(menu.begin(), menu.end(), one.command) != menu.end();
      EXPECT_EQ(kept, value == 0) << test::Utf8(one.name) << " " << value;
    }
  }
}

TEST_F(CommandsTest, WithoutASelectionSixCommandsAreGreyed) {
  EnableEverything();
  Open();
  for (const int command : kSelectionCommands) {
    EXPECT_FALSE(Menu().IsEnabled(command)) << command;
  }
  for (const int command : {345, 318, 1108, 319, 320, 1083, 1084, 323, 348, 324, 325, 322}) {
    EXPECT_TRUE(Menu().IsEnabled(command)) << command;
  }
}

TEST_F(CommandsTest, ASelectionEnablesThem) {
  EnableEverything();
  device.sim.SetEntry(1, u"Anna", u"123");
  Open();  // the first row is selected
  for (const int command : kSelectionCommands) {
    EXPECT_TRUE(Menu().IsEnabled(command)) << command;
  }
  List().SetItemState(-1, 0, ui::kItemSelected);
  for (const int command : kSelectionCommands) {
    EXPECT_FALSE(Menu().IsEnabled(command)) << command;
  }
}

TEST_F(CommandsTest, WhatNobodyRunsStaysGreyed) {
  EnableEverything();
  known = {};
  device.sim.SetEntry(1, u"Anna", u"123");
  Open();
  for (const int command : MenuCommands()) {
    const bool runs = command == res::kCommandSelectAll || command == res::kCommandRefresh;
    EXPECT_EQ(Menu().IsEnabled(command), runs) << command;
  }
  EXPECT_FALSE(SoftKeyEnabled(0));
  EXPECT_TRUE(SoftKeyEnabled(1));
  List().SetItemState(-1, ui::kItemSelected, ui::kItemSelected);
  for (const int command : kSelectionCommands) {
    EXPECT_FALSE(Menu().IsEnabled(command)) << command;
  }
  Dialog().Command(res::kCommandEdit);
  EXPECT_TRUE(ran.empty());
}

TEST_F(CommandsTest, ARefreshThatNobodyRunsIsNotEnabledByALoad) {
  wiring.fillCommands = [this](AppState&, Commands& commands, ListLoader& loader) {
    theCommands = &commands;
    theLoader = &loader;
  };
  Open();
  EXPECT_FALSE(Menu().IsEnabled(res::kCommandRefresh));
  EXPECT_FALSE(theCommands->Run(res::kCommandRefresh));
}

TEST_F(CommandsTest, ACommandReachesWhatRunsIt) {
  EnableEverything();
  device.sim.SetEntry(1, u"Anna", u"123");
  Open();
  for (const int command : known) {
    ran.clear();
    Dialog().Command(command);
    EXPECT_EQ(ran, (std::vector<int>{command}));
  }
}

TEST_F(CommandsTest, TheContextMenuHasFiveCommandsOfTheSelection) {
  device.sim.SetEntry(1, u"Anna", u"123");
  Open();
  List().LongPress(0, {50, 70});
  ASSERT_EQ(device.screen.Popups().size(), 1u);
  const test::ShownPopup popup = device.screen.Popups()[0];
  EXPECT_EQ(popup.resource, 201);
  EXPECT_EQ(popup.point, (ui::Point{50, 70}));
  std::vector<int> commands;
  std::vector<std::u16string> texts;
  for (const ui::MenuItem& item : popup.items) {
    commands.push_back(item.command);
    texts.push_back(item.text);
    EXPECT_TRUE(item.enabled);
  }
  EXPECT_EQ(commands, (std::vector<int>{314, 315, 316, 1076, 317}));
  EXPECT_EQ(texts, (std::vector<std::u16string>{u"Edit...", u"Delete", u"Call...", u"Send...",
                                                u"Save to Contacts"}));
  EXPECT_TRUE(device.screen.ChoosePopup(317));
  EXPECT_EQ(ran, (std::vector<int>{317}));
}

TEST_F(CommandsTest, TheContextMenuGreysWhatNobodyRuns) {
  known = {res::kCommandDelete};
  device.sim.SetEntry(1, u"Anna", u"123");
  Open();
  List().LongPress(0, {50, 70});
  ASSERT_EQ(device.screen.Popups().size(), 1u);
  const test::ShownPopup popup = device.screen.Popups()[0];
  for (const ui::MenuItem& item : popup.items) {
    EXPECT_EQ(item.enabled, item.command == res::kCommandDelete) << item.command;
  }
}

TEST_F(CommandsTest, SelectAllSelectsEveryRow) {
  device.sim.SetEntry(1, u"Anna", u"123");
  device.sim.SetEntry(2, u"Bert", u"456");
  device.sim.SetEntry(3, u"Cem", u"789");
  Open();
  Dialog().Command(res::kCommandSelectAll);
  EXPECT_EQ(List().SelectedCount(), 3);
}

TEST_F(CommandsTest, TheSelectedNumbersGoToTheClipboardALineEach) {
  device.sim.SetEntry(1, u"Anna", u"123");
  device.sim.SetEntry(2, u"Bert", u"+456");
  device.sim.SetEntry(3, u"Cem", u"789");
  Open();
  Dialog().Command(res::kCommandCopyNumber);
  EXPECT_EQ(device.screen.ClipboardText(), u"123");
  List().SetItemState(1, ui::kItemSelected, ui::kItemSelected);
  Dialog().Command(res::kCommandCopyNumber);
  EXPECT_EQ(device.screen.ClipboardText(), u"123\n+456");
  List().SetItemState(-1, 0, ui::kItemSelected);
  Dialog().Command(res::kCommandCopyNumber);
  EXPECT_EQ(device.screen.ClipboardText(), u"123\n+456");  // nothing selected, nothing copied
}

TEST_F(CommandsTest, KeysGiveTheCommands) {
  device.sim.SetEntry(1, u"Anna", u"123");
  device.sim.SetEntry(2, u"Bert", u"456");
  Open();
  EXPECT_TRUE(Dialog().KeyDown({ui::Key::kCharacter, ui::kControl, u'A'}));
  EXPECT_EQ(List().SelectedCount(), 2);
  EXPECT_TRUE(Dialog().KeyDown({ui::Key::kCharacter, ui::kControl, u'C'}));
  EXPECT_EQ(device.screen.ClipboardText(), u"123\n456");
  EXPECT_TRUE(Dialog().KeyDown({ui::Key::kDelete}));
  EXPECT_TRUE(Dialog().KeyDown({ui::Key::kF2}));
  EXPECT_TRUE(Dialog().KeyDown({ui::Key::kCharacter, ui::kControl, u'N'}));
  EXPECT_TRUE(Dialog().KeyDown({ui::Key::kCharacter, ui::kControl, u'D'}));
  EXPECT_EQ(ran, (std::vector<int>{315, 314, 312, 316}));
  const std::size_t threads = Calls("CreateThread");
  EXPECT_TRUE(Dialog().KeyDown({ui::Key::kF5}));
  EXPECT_EQ(Calls("CreateThread"), threads + 1);
}

}  // namespace
}  // namespace kelpin::app
