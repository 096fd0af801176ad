#include "contacts/contact_picker.h"

#include "tests/contacts/to_sim_fixture.h"

// The picker as the user meets it.
namespace kelpin::contacts {
namespace {

using platform::SimResult;
using testing::Each;
using testing::ElementsAre;

constexpr int kCounter = 1040;

class ContactPickerTest : public ToSimTest {
 protected:
  void SetUp() override {
    for (int number = 0; number < 4; ++number) {
      Add(std::u16string(1, static_cast<char16_t>(u'A' + number)), u"1");
    }
    device.sim.SetCapacity(5);
    device.sim.SetEntry(1, u"X", u"1");
    device.sim.SetEntry(2, u"Y", u"2");
    Open();
  }
  static bool LeftKey(ui::Dialog& picker) { return picker.Bar()->KeyAt(0).enabled; }
  static bool RightKey(ui::Dialog& picker) { return picker.Bar()->KeyAt(1).enabled; }
};

TEST_F(ContactPickerTest, TheCopyHasItsSoftKeys) {
  Pick(kCopy, [](ui::Dialog& picker) {
    EXPECT_EQ(picker.Title(), u"Kelpin");
    EXPECT_EQ(picker.Owner(), 0x10020u);  // the main dialog, after the anchor window
    EXPECT_TRUE(picker.InputPanelDown());
    ASSERT_EQ(picker.Bar()->KeyCount(), 2u);
    EXPECT_EQ(picker.Bar()->KeyAt(0).command, 328);
    EXPECT_EQ(picker.Bar()->KeyAt(0).text, u"Done");
    EXPECT_EQ(picker.Bar()->KeyAt(1).text, u"Menu");
    const auto items = picker.Bar()->SubMenu(1048)->Items();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].command, 1049);
    EXPECT_EQ(items[1].command, 1050);
    EXPECT_EQ(items[2].command, 329);
    EXPECT_EQ(items[0].text, u"Check All");
    EXPECT_EQ(items[1].text, u"Uncheck All");
    EXPECT_EQ(items[2].text, u"Cancel");
    EXPECT_EQ(PickerList(picker).ExtendedStyle() & ui::kListCheckBoxes, ui::kListCheckBoxes);
    EXPECT_EQ(PickerList(picker).Columns().size(), 2u);
  });
}

TEST_F(ContactPickerTest, TheMoveHasItsOwn) {
  Pick(kMove, [](ui::Dialog& picker) {
    EXPECT_EQ(picker.Bar()->KeyAt(0).command, 1110);
    EXPECT_EQ(picker.Bar()->KeyAt(0).text, u"Move");
    const auto items = picker.Bar()->SubMenu(1111)->Items();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].command, 1112);
    EXPECT_EQ(items[1].command, 1113);
    EXPECT_EQ(items[2].command, 1114);
  });
}

TEST_F(ContactPickerTest, ItOpensWithNothingCountedAndItsKeysOffUntilItIsFilled) {
  device.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) {
    // The thread is made, and has not run.
    EXPECT_EQ(picker.Text(kCounter), u"(0 / 3)");
    EXPECT_TRUE(device.screen.WaitCursor());
    EXPECT_FALSE(LeftKey(picker));
    EXPECT_TRUE(RightKey(picker));
    EXPECT_FALSE(picker.Bar()->SubMenu(1048)->IsEnabled(1049));
    EXPECT_FALSE(picker.Bar()->SubMenu(1048)->IsEnabled(1050));
    EXPECT_TRUE(picker.Bar()->SubMenu(1048)->IsEnabled(329));
    EXPECT_EQ(PickerList(picker).Message().text, u"Reading the contacts\u2026");
    EXPECT_TRUE(PickerList(picker).Visible());
    picker.Command(1);  // Enter does not copy what is not listed yet
    RunThreads();
    EXPECT_FALSE(picker.Ended());
    EXPECT_EQ(picker.Text(kCounter), u"(4 / 3)");
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_TRUE(LeftKey(picker));
    EXPECT_TRUE(picker.Bar()->SubMenu(1048)->IsEnabled(1049));
    EXPECT_TRUE(picker.Bar()->SubMenu(1048)->IsEnabled(1050));
    picker.Command(329);
  });
  Dialog().Command(kCopy);
}

TEST_F(ContactPickerTest, TenThousandContactsAreEachFetchedOnceAndCheckedWithOneCount) {
  constexpr int kMany = 10000;
  for (int number = 4; number < kMany; ++number) Add(u"Z", u"1");
  device.journal.Clear();
  Pick(kCopy, [&](ui::Dialog& picker) {
    EXPECT_EQ(PickerList(picker).ItemCount(), kMany);
    EXPECT_EQ(device.journal.Entries("Item(").size(), 10000u);
    EXPECT_EQ(picker.Text(kCounter), u"(10000 / 3)");
    picker.Command(1050);
    EXPECT_EQ(picker.Text(kCounter), u"(0 / 3)");
    picker.Command(1049);
    EXPECT_EQ(picker.Text(kCounter), u"(10000 / 3)");
    EXPECT_EQ(device.journal.Entries("Item(").size(), 10000u);  // the store is not asked again
  });
}

TEST_F(ContactPickerTest, MoreThanFitAreCountedInBoldRed) {
  Pick(kCopy, [](ui::Dialog& picker) {
    EXPECT_EQ(picker.Text(kCounter), u"(4 / 3)");
    EXPECT_TRUE(picker.Control(kCounter)->bold);
    EXPECT_EQ(picker.Control(kCounter)->color, ui::TextColor::kError);
    PickerList(picker).ClickCheckBox(2);
    EXPECT_EQ(picker.Text(kCounter), u"(3 / 3)");
    EXPECT_FALSE(picker.Control(kCounter)->bold);
    EXPECT_EQ(picker.Control(kCounter)->color, ui::TextColor::kNormal);
    PickerList(picker).ClickCheckBox(2);
    EXPECT_EQ(picker.Text(kCounter), u"(4 / 3)");
    EXPECT_TRUE(picker.Control(kCounter)->bold);
  });
}

TEST_F(ContactPickerTest, TheCounterFollowsTheBoxesAlone) {
  state->settings.CToSim_NotCheckAll = 1;
  Pick(kCopy, [](ui::Dialog& picker) {
    EXPECT_EQ(picker.Text(kCounter), u"(0 / 3)");
    PickerList(picker).Click(1, 0, ui::kNoModifier);  // selects
    EXPECT_EQ(picker.Text(kCounter), u"(0 / 3)");
    picker.KeyDown({ui::Key::kSpace});
    EXPECT_EQ(picker.Text(kCounter), u"(1 / 3)");
    PickerList(picker).SetCheck(1, true);  // it is so already
    EXPECT_EQ(picker.Text(kCounter), u"(1 / 3)");
    picker.KeyDown({ui::Key::kSpace});
    EXPECT_EQ(picker.Text(kCounter), u"(0 / 3)");
  });
}

TEST_F(ContactPickerTest, CheckAllAndUncheckAllChangeEveryRow) {
  state->settings.CToSim_NotCheckAll = 1;
  for (const int command : {kCopy, kMove}) {
    Pick(command, [&](ui::Dialog& picker) {
      PickerList(picker).ClickCheckBox(1);
      picker.Command(command == kMove ? 1112 : 1049);
      EXPECT_THAT(ChecksOf(PickerList(picker)), ElementsAre(true, true, true, true));
      EXPECT_EQ(picker.Text(kCounter), u"(4 / 3)");
      picker.Command(command == kMove ? 1113 : 1050);
      EXPECT_THAT(ChecksOf(PickerList(picker)), Each(false));
      EXPECT_EQ(picker.Text(kCounter), u"(0 / 3)");
    });
  }
}

TEST_F(ContactPickerTest, ABoxPressedWhileTheListFillsIsCounted) {
  state->settings.CToSim_NotCheckAll = 1;
  device.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) {
    device.kernel.RunHeldThreads();  // the rows are there; what the thread posted has not come
    PickerList(picker).ClickCheckBox(0);
    PickerList(picker).ClickCheckBox(3);
    device.screen.RunPending();
    EXPECT_EQ(picker.Text(kCounter), u"(2 / 3)");
    picker.Command(329);
  });
  Dialog().Command(kCopy);
}

TEST_F(ContactPickerTest, DoneTurnsBothKeysOffUntilTheDialogCloses) {
  Pick(kCopy, [&](ui::Dialog& picker) {
    picker.PressSoftKey(0);
    EXPECT_FALSE(LeftKey(picker));
    EXPECT_FALSE(RightKey(picker));
    picker.Command(328);
    picker.Command(1);
    picker.Command(1049);
    EXPECT_EQ(device.kernel.RunHeldThreads(), 1u);  // one copy, however often it is asked for
    EXPECT_FALSE(LeftKey(picker));
    EXPECT_FALSE(RightKey(picker));
    EXPECT_TRUE(picker.Ended());
    EXPECT_EQ(picker.Result(), 16);
  });
}

TEST_F(ContactPickerTest, EnterIsDone) {
  Pick(kCopy, [&](ui::Dialog& picker) {
    PickerList(picker).Click(0, 0, ui::kNoModifier);
    picker.KeyDown({ui::Key::kEnter});
    RunThreads();
    EXPECT_TRUE(picker.Ended());
  });
  EXPECT_EQ(device.sim.Name(3), u"A");
}

TEST_F(ContactPickerTest, ADoublePressOnARowCopiesNothing) {
  Pick(kCopy, [&](ui::Dialog& picker) {
    PickerList(picker).DoubleClick(0);
    EXPECT_EQ(device.kernel.RunHeldThreads(), 0u);
    EXPECT_FALSE(picker.Ended());
  });
}

TEST_F(ContactPickerTest, CancelEscapeAndTheCloseBoxCopyNothing) {
  const std::vector<Script> ways = {[](ui::Dialog& picker) { picker.Command(329); },
                                    [](ui::Dialog& picker) { picker.KeyDown({ui::Key::kEscape}); },
                                    [](ui::Dialog& picker) { picker.Close(); }};
  const std::vector<std::u16string> before = CardEntries();
  for (const Script& leave : ways) {
    Pick(kCopy, [&](ui::Dialog& picker) {
      leave(picker);
      EXPECT_TRUE(picker.Ended());
      EXPECT_EQ(picker.Result(), 16);
    });
    EXPECT_EQ(device.kernel.RunHeldThreads(), 0u);
  }
  EXPECT_EQ(CardEntries(), before);
  EXPECT_EQ(Boxes().size(), 0u);  // no summary
}

TEST_F(ContactPickerTest, APickerThatIsLeftWhileItFillsStopsReading) {
  device.screen.ScriptDialog(kPicker, [&](ui::Dialog& picker) { picker.Command(329); });
  Dialog().Command(kCopy);
  device.journal.Clear();
  RunThreads();
  EXPECT_EQ(Calls("Item("), 0u);
  EXPECT_EQ(device.contacts.OpenUses(), 0);
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(ContactPickerTest, TheListFillsWhatIsBelowTheCounter) {
  Pick(kCopy, [&](ui::Dialog& picker) {
    // 360 x 560: a label of 20 between two gaps of 8.
    EXPECT_EQ(picker.Bounds(kCounter), (ui::Rect{16, 8, 328, 20}));
    EXPECT_EQ(picker.Bounds(1015), (ui::Rect{0, 36, 360, 524}));
    EXPECT_EQ(PickerList(picker).Columns()[0].width, 190);
    EXPECT_EQ(PickerList(picker).Columns()[1].width, 170);
    device.screen.SetClientSize({600, 300});
    EXPECT_EQ(picker.Bounds(1015), (ui::Rect{0, 36, 600, 264}));
    EXPECT_EQ(PickerList(picker).Columns()[0].width, 310);
    EXPECT_EQ(PickerList(picker).Columns()[1].width, 290);
  });
}

TEST_F(ContactPickerTest, HelpShowsTheProgramsHelp) {
  Pick(kCopy, [](ui::Dialog& picker) { picker.Help(); });
  EXPECT_THAT(device.programs.Started(),
              ElementsAre(test::FakePrograms::Start{u"peghelp", u"Kelpin.htm"}));
}

TEST_F(ContactPickerTest, ACardThatIsNotReadyIsToldOfAndNothingOpens) {
  for (const int command : {kCopy, kMove}) {
    for (const char* call : {"SimGetDevCaps", "SimGetPhonebookStatus"}) {
      SCOPED_TRACE(call);
      const std::size_t boxes = Boxes().size();
      device.sim.SetResult(call, SimResult::kPinRequired);
      Dialog().Command(command);
      device.screen.RunPending();
      device.sim.SetResult(call, SimResult::kOk);
      ASSERT_EQ(Boxes().size(), boxes + 1);
      EXPECT_EQ(Boxes().back().caption, u"Error");
      EXPECT_EQ(Boxes().back().style, ui::kBoxError);
      EXPECT_EQ(Boxes().back().text, u"SIM PIN is required to perform this operation.");
    }
  }
  EXPECT_EQ(Calls("DialogBox(205"), 0u);
}

TEST_F(ContactPickerTest, TheCardIsAskedForItsLimitsAndThenItsFigures) {
  device.journal.Clear();
  Pick(kCopy, nullptr);
  EXPECT_LT(Position("SimGetDevCaps"), Position("SimGetPhonebookStatus"));
  EXPECT_LT(Position("SimGetPhonebookStatus"), Position("DialogBox(205"));
}

TEST_F(ContactPickerTest, ACardThatReportsMoreUsedThanThereAreHasNoneFree) {
  device.sim.SetUsed(9);
  Pick(kCopy, [](ui::Dialog& picker) { EXPECT_EQ(picker.Text(kCounter), u"(4 / 0)"); });
}

TEST_F(ContactPickerTest, TheMoveIsInTheMenuWhenItIsSwitchedOn) {
  EXPECT_TRUE(Menu().Contains(318));
  EXPECT_TRUE(Menu().Contains(1108));
}

}  // namespace
}  // namespace kelpin::contacts
