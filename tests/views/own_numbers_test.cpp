#include "views/own_numbers.h"

#include "tests/views/own_numbers_fixture.h"

namespace kelpin::views {
namespace {

using platform::SimResult;
using testing::ElementsAre;

TEST_F(OwnNumbersTest, ItListsTheRecordsOfTheCard) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_EQ(dialog.Text(1031), u"Store your personal numbers.");
    EXPECT_EQ(list.ExtendedStyle(), 0x20u);
    ASSERT_EQ(list.Columns().size(), 3u);
    EXPECT_EQ(list.Columns()[0].text, u"#");
    EXPECT_EQ(list.Columns()[1].text, u"Name");
    EXPECT_EQ(list.Columns()[2].text, u"Phone");
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home|+491712345678", u"2||01234", u"3||"));
    EXPECT_EQ(list.NextItem(-1, kSelectedFocused), 0);
    EXPECT_EQ(list.TakeEnsureVisible(), 0);
    EXPECT_TRUE(dialog.HasDoneButton());
    EXPECT_TRUE(dialog.InputPanelDown());
  });
}

TEST_F(OwnNumbersTest, ACardWithoutRecordsShowsAnEmptyListAndAWord) {
  SetRecords(kFile, {});
  OpenMain();
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    ui::ListView& list = *dialog.List(res::kOwnNumbersList);
    ASSERT_TRUE(Await([&] { return list.Message().text == u"This card keeps no own numbers"; }));
    EXPECT_EQ(list.ItemCount(), 0);
    EXPECT_EQ(list.SelectedCount(), 0);
    EXPECT_EQ(list.Message().hint, u"");
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(OwnNumbersTest, ColumnAndListFollowTheScreen) {
  struct Case {
    bool highRes;
    bool smartphone;
    int width;
    int height;
  };
  OpenMain();
  for (const Case& one : {Case{false, false, 36, 90}, Case{true, false, 72, 180},
                          Case{false, true, 36, 124}, Case{true, true, 72, 124}}) {
    state->isHighRes = one.highRes ? 1 : 0;
    state->isSmartphone = one.smartphone ? 1 : 0;
    // As it opens, in a window with no room below the heading.
    device.screen.SetClientSize({360, 100});
    ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
      const int other = 180 - one.width / 2;
      EXPECT_THAT(WidthsOf(list), ElementsAre(one.width, other, other));
      EXPECT_EQ(dialog.Bounds(1028).height, one.height);
      dialog.Resize({360, 700});
      EXPECT_EQ(dialog.Bounds(1028).y + dialog.Bounds(1028).height, 700);
      EXPECT_EQ(dialog.Bounds(1028).y, dialog.Bounds(1031).height);
    });
  }
}

TEST_F(OwnNumbersTest, TheKeysOfAListThatCanBeChanged) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    ASSERT_EQ(dialog.Bar()->Resource(), 302);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, 332);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Edit");
    EXPECT_EQ(dialog.Bar()->KeyAt(1).command, 333);
    ui::Menu& menu = *dialog.Bar()->SubMenu(333);
    ASSERT_EQ(menu.Items().size(), 2u);
    EXPECT_EQ(menu.Items()[0].text, u"Erase");
    EXPECT_EQ(menu.Items()[1].text, u"Refresh");
    // They follow the selection, which the fill has made.
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_TRUE(menu.IsEnabled(334));
    EXPECT_TRUE(menu.IsEnabled(335));
    list.SetItemState(-1, 0, ui::kItemSelected);
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_FALSE(menu.IsEnabled(334));
    EXPECT_FALSE(menu.IsEnabled(335));
  });
}

TEST_F(OwnNumbersTest, TheKeysAreOffUntilTheRecordsCame) {
  OpenMain();
  device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kHold);
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_FALSE(EraseEnabled(dialog));
  });
}

TEST_F(OwnNumbersTest, AReadOnlyListHasOneKeyAndIgnoresPresses) {
  SetSwitch(u"ReadOnly_OwnNumber", 2);
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    ASSERT_EQ(dialog.Bar()->Resource(), 303);
    ASSERT_TRUE(Await([&] { return dialog.Bar()->KeyAt(0).enabled; }));
    EXPECT_EQ(dialog.Bar()->KeyCount(), 1u);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, 339);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"OK");
    list.Click(1, 1, ui::kNoModifier);
    list.DoubleClick(1);
    list.LongPress(1, {5, 5});
    list.SetItemState(-1, 0, ui::kItemSelected);
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_TRUE(device.screen.Popups().empty());
    dialog.PressSoftKey(0);
    EXPECT_TRUE(dialog.Ended());
  });
  // Nothing was asked to be changed, so the header was not asked for again: of the file's measures
  // and its records only the list's.
  EXPECT_EQ(Calls("RIL_SendRestrictedSimCmd"), 4u);
}

TEST_F(OwnNumbersTest, TheSessionIsToldOfTheCardsChanges) {
  OpenMain();
  ShowList(3, [&](ui::Dialog&, ui::ListView&) {
    EXPECT_EQ(device.radio.OpenSessions(), 3u);  // the main list has two
    EXPECT_THAT(device.journal.Entries("RIL_Initialize").back(), testing::HasSubstr("0x400000"));
  });
  EXPECT_EQ(device.radio.OpenSessions(), 2u);
}

TEST_F(OwnNumbersTest, WithoutAFillThreadNoWatcherIsStarted) {
  OpenMain();
  device.failures.FailCallOf("CreateThread", 1);
  Show(kCommand, kDialog, [&](ui::Dialog&) {
    EXPECT_EQ(Calls("CreateThread"), 1u);
    EXPECT_EQ(device.kernel.Waiters(kEvent), 0u);
  });
}

TEST_F(OwnNumbersTest, AFileThatCannotBeMeasuredStopsTheFill) {
  OpenMain();
  FailCommand(platform::kRilSimGetResponse, kFile);
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    ASSERT_TRUE(Await([&] { return Calls("SimGetPhonebookStatus") == 2; }));
    ASSERT_TRUE(Await([&] { return !device.screen.WaitCursor(); }));
    EXPECT_EQ(dialog.List(1028)->ItemCount(), 0);
  });
  EXPECT_TRUE(Boxes().empty());  // the card itself is ready
}

TEST_F(OwnNumbersTest, ARecordThatFailsLeavesTheRowsBeforeIt) {
  OpenMain();
  FailCommand(platform::kRilSimReadRecord, kFile, 2);
  ShowList(1, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home|+491712345678"));
    ASSERT_TRUE(Await([&] { return Calls("SimGetPhonebookStatus") == 2; }));
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(OwnNumbersTest, ACardThatFailsDuringTheFillIsShown) {
  OpenMain();
  device.radio.SetResponder([&](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.parameters.fileId == kFile) {
      device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
      answer.emplace().code = platform::kRilResultError;
    }
    return answer;
  });
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    ASSERT_TRUE(Await([&] { return !Boxes().empty(); }));
    EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
    ui::ListView& list = *dialog.List(res::kOwnNumbersList);
    ASSERT_TRUE(Await([&] { return list.Message().text == u"The card could not be read"; }));
    // Without a row there is no Refresh.
    EXPECT_FALSE(dialog.Bar()->SubMenu(333)->IsEnabled(335));
    EXPECT_EQ(list.Message().hint, u"Close this list and open it again.");
  });
}

TEST_F(OwnNumbersTest, ARecordWithoutANameTakesTheSettingsOne) {
  const std::vector<std::uint8_t> empty;
  SetRecords(kFile, {Record("", empty), Record("Card", empty), Record("", empty), Record("", empty),
                     Record("", empty)});
  for (const std::u16string_view name : {u"OwnNo_Record1", u"OwnNo_Record2", u"OwnNo_Record4"}) {
    device.registry.PutString(platform::RegistryRoot::kLocalMachine, kProgramKey, name,
                              std::u16string(u"Set ") + name.back());
  }
  OpenMain();
  ShowList(5, [&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Set 1|", u"2|Card|", u"3||", u"4|Set 4|", u"5||"));
  });
}

TEST_F(OwnNumbersTest, RefreshReadsTheCardAgain) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    SetRecords(kFile, {Record("New", kNumber01234)});
    dialog.Command(335);
    ASSERT_TRUE(Await([&] { return list.ItemCount() == 1; }));
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|New|01234"));
  });
}

// The card answers the read of the second record neither to the first fill nor to the next.
TEST_F(OwnNumbersTest, ARefreshAndAClosingDoNotWaitForAFillUnderWay) {
  OpenMain();
  device.radio.SetResponder([](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.simCommand == platform::kRilSimReadRecord && command.parameters.fileId == kFile &&
        command.parameters.parameter1 == 2) {
      answer.emplace().answering = test::FakeRadio::Answering::kNever;
    }
    return answer;
  });
  Show(kCommand, kDialog, [&](ui::Dialog& dialog) {
    device.radio.AwaitCommands(3);  // the file's measures, record 1, record 2
    ui::ListView& list = *dialog.List(res::kOwnNumbersList);
    SelectRow(list, 0);
    device.screen.RunPending();
    dialog.Command(335);
    EXPECT_EQ(list.ItemCount(), 0);
    dialog.Command(2);
  });
  EXPECT_TRUE(Await([&] { return !device.screen.WaitCursor(); }));
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(OwnNumbersTest, AfterARefreshThatMetAnErrorNoMoreIsMadeUntilTheListOpensAnew) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
    dialog.Command(335);
    EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
    device.sim.SetResult("SimGetPhonebookStatus", SimResult::kOk);
    SetRecords(kFile, {Record("New", kNumber01234)});
    const std::size_t asked = Calls("SimGetPhonebookStatus");
    dialog.Command(335);
    EXPECT_EQ(Calls("SimGetPhonebookStatus"), asked);
    EXPECT_EQ(list.ItemCount(), 3);
  });
  ShowList(1, [&](ui::Dialog& dialog, ui::ListView& list) {
    SetRecords(kFile, {Record("Newer", kNumber01234)});
    dialog.Command(335);
    EXPECT_TRUE(Await([&] { return list.ItemText(0, 1) == u"Newer"; }));
  });
}

TEST_F(OwnNumbersTest, WithoutAThreadARefreshLeavesCursorAndGuard) {
  OpenMain();
  ShowList(3, [&](ui::Dialog& dialog, ui::ListView& list) {
    device.failures.FailCallOf("CreateThread", 1);
    dialog.Command(335);
    EXPECT_TRUE(device.screen.WaitCursor());
    EXPECT_EQ(list.ItemCount(), 0);
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    const std::size_t asked = Calls("SimGetPhonebookStatus");
    dialog.PostCommand(335);
    device.screen.RunPending();
    EXPECT_EQ(Calls("SimGetPhonebookStatus"), asked);
  });
}

TEST_F(OwnNumbersTest, TheEventHasTheOpenListReadAgain) {
  OpenMain();
  ShowList(3, [&](ui::Dialog&, ui::ListView& list) {
    device.kernel.AwaitWaiters(kEvent, 1);
    SetRecords(kFile, {Record("Pulse", kNumber01234)});
    auto event = device.kernel.CreateEvent(kEvent);
    event->EventModify(platform::EventAction::kPulse);
    EXPECT_TRUE(Await([&] { return list.ItemText(0, 1) == u"Pulse"; }));
  });
}

TEST_F(OwnNumbersTest, OneWatcherServesEveryOpeningAndPassesTheWordOnBetween) {
  OpenMain();
  for (int opening = 0; opening < 3; ++opening) {
    ShowList(3, [&](ui::Dialog&, ui::ListView&) { device.kernel.AwaitWaiters(kEvent, 1); });
  }
  EXPECT_EQ(device.kernel.Waiters(kEvent), 1u);
  // Somebody who came later still hears of a change.
  auto event = device.kernel.CreateEvent(kEvent);
  platform::WaitResult result = platform::WaitResult::kTimeout;
  std::thread late([&] { result = event->Wait(platform::kInfinite); });
  device.kernel.AwaitWaiters(kEvent, 2);
  auto other = device.kernel.CreateEvent(kEvent);
  other->EventModify(platform::EventAction::kPulse);
  late.join();
  EXPECT_EQ(result, platform::WaitResult::kSignaled);
}

}  // namespace
}  // namespace kelpin::views
