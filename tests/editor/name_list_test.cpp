#include <gmock/gmock.h>

#include "tests/editor/name_list_fixture.h"

// The card's lists of names: how they open, fill, look and close.
namespace kelpin::editor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

INSTANTIATE_TEST_SUITE_P(Families, NameListTest, testing::ValuesIn(kFamilyCases), NameOfCase);

TEST_P(NameListTest, OpensFullScreenWithItsHeadingItsKeysAndItsColumns) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_EQ(dialog.Owner(), state->mainDialog);
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_TRUE(dialog.HasDoneButton());
    EXPECT_TRUE(dialog.InputPanelDown());
    EXPECT_EQ(dialog.Text(F().heading), F().headingText);
    EXPECT_EQ(dialog.Control(F().list)->labelledBy, F().heading);
    EXPECT_EQ(dialog.Bar()->Resource(), F().bar);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, F().edit);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Edit");
    EXPECT_EQ(dialog.Bar()->KeyAt(1).command, F().erase);
    EXPECT_EQ(dialog.Bar()->KeyAt(1).text, u"Erase");
    EXPECT_EQ(list.ExtendedStyle(), ui::kListFullRowSelect);
    const std::vector<ui::Column> columns = {{u"#", 36}, {u"Name", 360 - 54}};
    EXPECT_EQ(list.Columns(), columns);
    EXPECT_EQ(dialog.Focus(), F().list);
  });
}

TEST_P(NameListTest, AHighResolutionDoublesTheNumberColumn) {
  ui::Metrics metrics;
  metrics.screen = {480, 800};
  device.screen.SetMetrics(metrics);
  Open();
  InList([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_EQ(list.Columns()[0].width, 72);
    EXPECT_EQ(list.Columns()[1].width, 360 - 108);
  });
}

TEST_P(NameListTest, EveryRecordHasARowInRisingOrderReadFromTheLast) {
  Put({"Home", "", "Work", ""});
  Open();
  Forget();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_THAT(Reads(F().file), ElementsAre(4, 3, 2, 1));
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home", u"2|", u"3|Work", u"4|"));
    EXPECT_EQ(list.SelectedCount(), 1);
    EXPECT_EQ(list.ItemState(0), ui::kItemSelected | ui::kItemFocused);
    EXPECT_EQ(list.TakeEnsureVisible(), 0);
    EXPECT_TRUE(KeyOn(dialog, 0));
    EXPECT_TRUE(KeyOn(dialog, 1));
  });
}

TEST_P(NameListTest, ARecordIsReadOverItsWholeLength) {
  Put({"abcdefghijklmnopqrst"});  // all of its 20 bytes
  Open();
  InList([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|abcdefghijklmnopqrst"));
  });
}

TEST_P(NameListTest, BeforeItIsFilledItSaysSoAndTheKeysAreOff) {
  Put({"Home"});
  Open();
  bool looked = false;
  device.screen.ScriptDialog(F().dialog, [&](ui::Dialog& dialog) {
    looked = true;
    ui::ListView& list = *dialog.List(F().list);
    EXPECT_EQ(list.ItemCount(), 0);
    EXPECT_EQ(list.Message().text, u"Reading the card…");
    EXPECT_TRUE(device.screen.WaitCursor());
    EXPECT_FALSE(KeyOn(dialog, 0));
    EXPECT_FALSE(KeyOn(dialog, 1));
    Serve();
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_TRUE(KeyOn(dialog, 0));
    dialog.Close();
  });
  theCommands->Run(F().command);
  EXPECT_TRUE(looked);
}

TEST_P(NameListTest, ACardWithoutRecordsSaysSo) {
  Put({});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_EQ(list.ItemCount(), 0);
    EXPECT_EQ(list.Message().text, F().nothing);
    EXPECT_FALSE(KeyOn(dialog, 0));
    dialog.PostCommand(F().edit);  // no dialog waits for it
    dialog.PostCommand(F().erase);
    Serve();
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_P(NameListTest, AFailedReadShowsTheCardsReasonAndKeepsTheRows) {
  Put({"Home", "Work", "Lake", "Shop"});
  Open();
  FailRecord(2, F().file, 2);
  SetReadiness(SimResult::kSimBusy);
  Forget();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_THAT(Reads(F().file), ElementsAre(4, 3, 2));
    EXPECT_THAT(RowsOf(list), ElementsAre(u"3|Lake", u"4|Shop"));
    ASSERT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Boxes()[0].text, u"SIM is busy.");
    EXPECT_EQ(Boxes()[0].owner, dialog.Handle());
    EXPECT_FALSE(device.screen.WaitCursor());
  });
}

TEST_P(NameListTest, AFailedReadOnACardThatAnswersEndsSilently) {
  Put({"Home", "Work", "Lake"});
  Open();
  FailRecord(2, F().file, 1);
  InList([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"2|Work", u"3|Lake"));
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_P(NameListTest, TheKeysFollowTheSelection) {
  Put({"Home", "Work"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    list.SetItemState(-1, 0, ui::kItemSelected);
    EXPECT_FALSE(KeyOn(dialog, 0));
    EXPECT_FALSE(KeyOn(dialog, 1));
    list.SetItemState(1, ui::kItemSelected, ui::kItemSelected);
    EXPECT_TRUE(KeyOn(dialog, 0));
    EXPECT_TRUE(KeyOn(dialog, 1));
    list.Click(-1, 0, ui::kNoModifier);  // below the rows
    EXPECT_FALSE(KeyOn(dialog, 0));
  });
}

TEST_P(NameListTest, DoneCancelAndTheCloseBoxCloseIt) {
  Put({"Home"});
  Open();
  for (const int command : {1, 2}) {
    InList([&](ui::Dialog& dialog, ui::ListView&) {
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended());
      EXPECT_EQ(dialog.Result(), 16);
      EXPECT_EQ(dialog.Bar(), nullptr);
    });
  }
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    dialog.Close();
    EXPECT_EQ(dialog.Result(), 16);
    EXPECT_EQ(dialog.Bar(), nullptr);
  });
}

TEST_P(NameListTest, OnASmartphoneOkEditsTheName) {
  Put({"Home", "Work"});
  Open();
  state->isSmartphone = 1;
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    SelectRow(list, 1);
    Expect(F().nameDialog, [&](ui::Dialog& name) { EXPECT_EQ(name.Text(F().text), u"Work"); });
    dialog.Command(1);
    EXPECT_FALSE(dialog.Ended());
    dialog.Command(2);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(opened[F().nameDialog], 1);
}

TEST_P(NameListTest, ASizeIsLaidOutOnce) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EXPECT_EQ(dialog.Bounds(F().heading), (ui::Rect{0, 0, 360, 56}));
    EXPECT_EQ(dialog.Bounds(F().list), (ui::Rect{0, 56, 360, 504}));
    list.SetColumnWidth(1, 77);
    dialog.Handler().OnSize(dialog, {360, 560});
    EXPECT_EQ(list.Columns()[1].width, 77);
    for (const ui::Size size : {ui::Size{360, 400}, ui::Size{500, 400}}) {
      dialog.Handler().OnSize(dialog, size);
      EXPECT_EQ(list.Columns()[0].width, 36);
      EXPECT_EQ(list.Columns()[1].width, size.width - 54);
      EXPECT_EQ(dialog.Bounds(F().list), (ui::Rect{0, 56, size.width, 344}));
      list.SetColumnWidth(1, 77);
    }
  });
  // A list that is opened anew is laid out anew, whatever the last one's size was.
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    EXPECT_EQ(dialog.Bounds(F().list), (ui::Rect{0, 56, 360, 504}));
  });
}

TEST_P(NameListTest, HelpOpensTheViewer) {
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    dialog.Help();
    EXPECT_EQ(Calls("StartProgram(peghelp, Kelpin.htm)"), 1u);
  });
}

TEST_P(NameListTest, ACardThatIsNotReadyOpensNothing) {
  Open();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kNotInserted);
  theCommands->Run(F().command);
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM isn't inserted into the phone. "));
  EXPECT_EQ(device.screen.OpenDialogs(), 1u);  // the main one
}

TEST_P(NameListTest, AClosedListIsLeftAloneByItsThread) {
  Put({"Home", "Work"});
  Open();
  std::shared_ptr<ui::Dialog> kept;
  device.screen.ScriptDialog(F().dialog, [&](ui::Dialog& dialog) {
    device.screen.RunPending();  // the thread is made, but has not run
    kept = dialog.shared_from_this();
    EXPECT_TRUE(device.screen.WaitCursor());
    dialog.Close();
    EXPECT_FALSE(device.screen.WaitCursor());
  });
  theCommands->Run(F().command);
  Forget();
  EXPECT_EQ(device.kernel.RunHeldThreads(), 1u);
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->List(F().list)->ItemCount(), 0);
  EXPECT_THAT(Reads(F().file), IsEmpty());
  EXPECT_TRUE(Boxes().empty());
}

TEST_P(NameListTest, ItIsFilledByOneThread) {
  Put({"Home", "Work"});
  Open();
  Forget();
  InList([&](ui::Dialog&, ui::ListView&) { EXPECT_EQ(Calls("CreateThread"), 1u); });
}

TEST_P(NameListTest, WithoutAThreadItStaysEmptyAndDoesNotWait) {
  Put({"Home"});
  Open();
  device.failures.FailCallOf("CreateThread", 1);
  InList([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_EQ(list.ItemCount(), 0);
    EXPECT_EQ(list.Message(), ui::ListMessage{});
    EXPECT_FALSE(device.screen.WaitCursor());
  });
}

}  // namespace
}  // namespace kelpin::editor
