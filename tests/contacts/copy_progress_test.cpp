#include "tests/contacts/copy_out_fixture.h"

namespace kelpin::contacts {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Saving to Contacts with the progress dialog.
class CopyProgressTest : public CopyOutTest {
 protected:
  CopyProgressTest() {
    SetSwitch(u"Show_ProgressBar", 1);
    PutThree();
  }
  void OpenAndSelectAll() {
    Open();
    SelectAll();
  }
};

TEST_F(CopyProgressTest, OneEntryShowsNoProgress) {
  Open();
  SelectRows({0});
  Save();  // a dialog that opens and no script waits for fails the test
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(1, 0, 0)));
}

TEST_F(CopyProgressTest, WithoutTheSettingNoProgressIsShown) {
  SetSwitch(u"Show_ProgressBar", 0);
  OpenAndSelectAll();
  Save();
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(3, 0, 0)));
}

TEST_F(CopyProgressTest, ItStartsAtNothingOfAllThatIsSelected) {
  OpenAndSelectAll();
  device.screen.ScriptDialog(res::kDialogCopyProgress, [&](ui::Dialog& dialog) {
    const ui::ControlState bar = dialog.Control(res::kProgressBar).value();
    EXPECT_EQ(dialog.Text(res::kProgressStatus), u"0 of 3 contacts copied.");
    EXPECT_EQ(bar.progressMinimum, 0);
    EXPECT_EQ(bar.progressMaximum, 30);
    EXPECT_EQ(bar.progressStep, 10);
    EXPECT_EQ(bar.progressPosition, 0);
    EXPECT_EQ(dialog.Title(), state->appTitle);
    EXPECT_THAT(Contacts(), IsEmpty());
    Load();
  });
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Bert:222", u"Cem:333"));
}

TEST_F(CopyProgressTest, EachEntryIsToldOf) {
  PutContact(u"Bert");
  OpenAndSelectAll();
  Texts told;
  std::vector<int> positions;
  device.screen.ScriptDialog(res::kDialogOverwritePrompt, [&](ui::Dialog& prompt) {
    const std::shared_ptr<ui::Dialog> progress = device.screen.Find(res::kDialogCopyProgress);
    ASSERT_NE(progress, nullptr);
    EXPECT_EQ(prompt.Owner(), progress->Handle());
    told.push_back(progress->Text(res::kProgressStatus));
    positions.push_back(progress->Control(res::kProgressBar)->progressPosition);
    prompt.Command(res::kOverwriteYes);
  });
  device.screen.ScriptDialog(res::kDialogCopyProgress, [&](ui::Dialog& dialog) {
    device.kernel.RunHeldThreads();
    told.push_back(dialog.Text(res::kProgressStatus));
    positions.push_back(dialog.Control(res::kProgressBar)->progressPosition);
  });
  Save();
  EXPECT_THAT(told, ElementsAre(u"1 of 3 contacts copied.", u"3 of 3 contacts copied."));
  EXPECT_THAT(positions, ElementsAre(10, 30));
}

TEST_F(CopyProgressTest, TheSummaryComesWhenItHasClosed) {
  OpenAndSelectAll();
  List().SetSelectionMark(2);
  RunWorkersInProgressDialog();
  device.screen.OnBox([&](const test::ShownBox&) {
    EXPECT_EQ(device.screen.Find(res::kDialogCopyProgress), nullptr);
  });
  Save();
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text, Summary(3, 0, 0));
  EXPECT_EQ(Boxes()[0].caption, u"Info");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxNotice);
  EXPECT_EQ(List().FocusedItem(), 2);
  EXPECT_EQ(List().SelectedCount(), 1);
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(CopyProgressTest, ContactsThatCannotBeOpenedTellWhatWasToldLast) {
  OpenAndSelectAll();
  device.failures.FailCallOf("CoCreateInstance", 1);
  RunWorkersInProgressDialog();
  Save();
  SelectRows({0, 1});
  RunWorkersInProgressDialog();
  Save();
  SelectRows({0, 1});
  device.failures.FailCallOf("CoCreateInstance", 1);
  RunWorkersInProgressDialog();
  Save();
  // Nothing was told before the first; the last run repeats what the one before it told.
  EXPECT_THAT(BoxTexts(), ElementsAre(u"", Summary(2, 0, 0), Summary(2, 0, 0)));
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(CopyProgressTest, ARowWithoutAnEntryTellsWhatWasToldLast) {
  Open();
  List().InsertItem(0, u"", nullptr);
  SelectRows({0, 1});
  RunWorkersInProgressDialog();
  Save();
  EXPECT_THAT(BoxTexts(), ElementsAre(u""));
  EXPECT_THAT(Contacts(), IsEmpty());
  ExpectStoreLetGo();
}

TEST_F(CopyProgressTest, WithoutASecondThreadItClosesAtOnce) {
  OpenAndSelectAll();
  Dialog().Command(res::kCommandSaveToContacts);
  device.screen.RunPending();
  device.failures.FailCallOf("CreateThread", 1);
  Load();
  ASSERT_TRUE(device.failures.Failed());
  EXPECT_THAT(BoxTexts(), ElementsAre(u""));
  ExpectAtRest();
}

// The user closes it while Bert is asked about; Cem is not reached.
TEST_F(CopyProgressTest, ClosingItEndsTheCopyAfterTheEntryInHand) {
  PutContact(u"Bert");
  OpenAndSelectAll();
  device.screen.ScriptDialog(res::kDialogOverwritePrompt, [&](ui::Dialog& prompt) {
    device.screen.Find(res::kDialogCopyProgress)->Close();
    prompt.Command(res::kOverwriteYes);
  });
  RunWorkersInProgressDialog();
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Bert:222", u"Anna:111"));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(1, 1, 0)));
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(CopyProgressTest, EscapeClosesItAndEnterDoesNot) {
  OpenAndSelectAll();
  device.screen.ScriptDialog(res::kDialogCopyProgress, [&](ui::Dialog& dialog) {
    dialog.KeyDown({ui::Key::kEnter});
    EXPECT_FALSE(dialog.Ended());
    dialog.KeyDown({ui::Key::kEscape});
    EXPECT_TRUE(dialog.Ended());
    Load();
  });
  Save();
  EXPECT_THAT(Contacts(), IsEmpty());
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(0, 0, 0)));
}

TEST_F(CopyProgressTest, TextAndBarFollowTheWidth) {
  OpenAndSelectAll();
  device.screen.ScriptDialog(res::kDialogCopyProgress, [&](ui::Dialog& dialog) {
    for (const int width : {360, 600}) {
      device.screen.SetClientSize({width, 400});
      const ui::Rect text = dialog.Bounds(res::kProgressStatus);
      const ui::Rect bar = dialog.Bounds(res::kProgressBar);
      EXPECT_EQ(text.x, 16);
      EXPECT_EQ(text.y, 40);
      EXPECT_EQ(text.width, width - 32);
      EXPECT_EQ(bar.x, 16);
      EXPECT_EQ(bar.y, text.y + text.height + 40);
      EXPECT_EQ(bar.width, width - 32);
    }
    Load();
  });
  Save();
}

}  // namespace
}  // namespace kelpin::contacts
