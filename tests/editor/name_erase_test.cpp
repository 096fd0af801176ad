#include <gmock/gmock.h>

#include "tests/editor/name_list_fixture.h"

// Erasing names of the card.
namespace kelpin::editor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using NameEraseTest = NameListTest;

INSTANTIATE_TEST_SUITE_P(Families, NameEraseTest, testing::ValuesIn(kFamilyCases), NameOfCase);

const Bytes kErased(20, 0xFF);

TEST_P(NameEraseTest, AsksFirstAndNoLeavesTheName) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    device.screen.ScriptBox(ui::BoxAnswer::kNo);
    dialog.PressSoftKey(1);
    ASSERT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Boxes()[0].text,
              u"The selected items will be permanently deleted from the SIM card.\nContinue?");
    EXPECT_EQ(Boxes()[0].caption, u"Warning");
    EXPECT_EQ(Boxes()[0].style, ui::kBoxQuestion);
    EXPECT_EQ(Boxes()[0].owner, dialog.Handle());
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home"));
  });
  EXPECT_NE(Record(F().file, 1), kErased);
}

TEST_P(NameEraseTest, YesFillsTheRecordAndEmptiesTheRow) {
  Put({"Home", "Work", "Lake"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    SelectRow(list, 1);
    const std::size_t before = device.screen.WaitCursorLog().size();
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    Forget();
    dialog.PressSoftKey(1);
    EXPECT_THAT(Written(), ElementsAre("write " + std::to_string(F().file) + " 2"));
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home", u"2|", u"3|Lake"));
    const std::vector<bool> log = device.screen.WaitCursorLog();
    EXPECT_THAT(std::vector<bool>(log.begin() + static_cast<std::ptrdiff_t>(before), log.end()),
                ElementsAre(true, false));
  });
  EXPECT_EQ(CardRecord(2), kErased);
  EXPECT_NE(CardRecord(1), kErased);
  EXPECT_NE(CardRecord(3), kErased);
}

TEST_P(NameEraseTest, EveryNameThatWasAskedAboutIsErased) {
  Put({"Home", "Work", "Lake"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    list.SetItemState(2, ui::kItemSelected, ui::kItemSelected);
    EXPECT_EQ(list.SelectedCount(), 2);
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.KeyDown({ui::Key::kDelete});
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|", u"2|Work", u"3|"));
  });
  EXPECT_EQ(CardRecord(1), kErased);
  EXPECT_NE(CardRecord(2), kErased);
  EXPECT_EQ(CardRecord(3), kErased);
}

TEST_P(NameEraseTest, AFailedWriteOnACardThatDoesNotAnswerKeepsTheName) {
  Put({"Home", "Work"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    list.SetItemState(1, ui::kItemSelected, ui::kItemSelected);
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    device.screen.OnBox([&](const test::ShownBox& box) {
      if (box.caption == u"Warning") {
        FailUpdate(F().file);
        SetReadiness(SimResult::kSimBusy);
      } else {
        EXPECT_FALSE(device.screen.WaitCursor());
      }
    });
    Forget();
    dialog.PressSoftKey(1);
    ASSERT_EQ(Boxes().size(), 2u);
    EXPECT_EQ(Boxes()[1].text, u"SIM is busy.");
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home", u"2|Work"));
    // After the first refusal the second is not tried.
    EXPECT_THAT(Written(), ElementsAre("write " + std::to_string(F().file) + " 1"));
    device.screen.OnBox(nullptr);
  });
}

TEST_P(NameEraseTest, AFailedWriteOnACardThatAnswersCountsAsErased) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    FailUpdate(F().file);
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.PressSoftKey(1);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|"));
  });
}

TEST_P(NameEraseTest, WithoutASelectionNothingIsAsked) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    list.SetItemState(-1, 0, ui::kItemSelected);
    Forget();
    dialog.PressSoftKey(1);
    dialog.KeyDown({ui::Key::kDelete});
    dialog.PostCommand(F().erase);
    Serve();
    EXPECT_EQ(Calls("SimGetDevCaps"), 0u);
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_P(NameEraseTest, TheErasedNameIsGoneWhenTheListIsOpenedAnew) {
  Put({"Home", "Work"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    device.screen.ScriptBox(ui::BoxAnswer::kYes);
    dialog.PressSoftKey(1);
  });
  InList([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|", u"2|Work"));
  });
}

}  // namespace
}  // namespace kelpin::editor
