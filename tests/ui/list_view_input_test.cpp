#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ui/recorder.h"
#include "ui/list_view.h"

namespace kelpin::ui {
namespace {

using test::Fill;
using test::ListRecorder;
using test::Press;
using test::Selected;
using test::Type;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint32_t kBoth = kItemSelected | kItemFocused;

class ListInput : public ::testing::Test {
 protected:
  ListInput() {
    Fill(list_, 10);
    list_.SetPageRows(4);
    told_.Attach(list_);
    list_.SetClock([this] { return now_; });
  }

  void Start(int row) {
    list_.Click(row, 0, kNoModifier);
    told_.notifications.clear();
  }

  ListView list_;
  ListRecorder told_;
  std::uint64_t now_ = 5000;
};

TEST_F(ListInput, APlainClickSelectsThatRowAloneAndTellsTheClickLast) {
  list_.SetItemState(2, kItemSelected, kItemSelected);
  list_.SetItemState(7, kItemSelected, kItemSelected);
  told_.notifications.clear();
  list_.Click(4, 1, kNoModifier);
  EXPECT_THAT(Selected(list_), ElementsAre(4));
  EXPECT_EQ(list_.FocusedItem(), 4);
  EXPECT_EQ(list_.SelectionMark(), 4);
  ASSERT_EQ(told_.notifications.size(), 4u);
  EXPECT_EQ(told_.notifications[0].row, 2);
  EXPECT_EQ(told_.notifications[1].row, 4);
  EXPECT_EQ(told_.notifications[1].newState, kBoth);
  EXPECT_EQ(told_.notifications[2].row, 7);
  EXPECT_EQ(told_.notifications[3].code, NotifyCode::kClick);
  EXPECT_EQ(told_.notifications[3].row, 4);
  EXPECT_EQ(told_.notifications[3].column, 1);
}

TEST_F(ListInput, AClickOnTheSelectedRowStillTellsTheClick) {
  Start(3);
  list_.Click(3, 0, kNoModifier);
  ASSERT_EQ(told_.notifications.size(), 1u);
  EXPECT_EQ(told_.notifications[0].code, NotifyCode::kClick);
}

TEST_F(ListInput, ControlClickTogglesOneRowAndMovesTheMark) {
  Start(1);
  list_.Click(5, 0, kControl);
  EXPECT_THAT(Selected(list_), ElementsAre(1, 5));
  EXPECT_EQ(list_.SelectionMark(), 5);
  list_.Click(1, 0, kControl);
  EXPECT_THAT(Selected(list_), ElementsAre(5));
  EXPECT_EQ(list_.FocusedItem(), 1);
}

TEST_F(ListInput, ShiftClickExtendsFromTheMarkEitherWay) {
  Start(4);
  list_.Click(7, 0, kShift);
  EXPECT_THAT(Selected(list_), ElementsAre(4, 5, 6, 7));
  list_.Click(2, 0, kShift);
  EXPECT_THAT(Selected(list_), ElementsAre(2, 3, 4));
  EXPECT_EQ(list_.SelectionMark(), 4);
  list_.Click(9, 0, kControl);
  list_.Click(8, 0, kShift | kControl);
  EXPECT_THAT(Selected(list_), ElementsAre(2, 3, 4, 8, 9));
}

TEST_F(ListInput, AClickBelowTheRowsSelectsNoneAndIsTold) {
  Start(4);
  list_.Click(-1, -1, kNoModifier);
  EXPECT_THAT(Selected(list_), IsEmpty());
  EXPECT_EQ(list_.FocusedItem(), 4);
  EXPECT_EQ(told_.notifications.back().code, NotifyCode::kClick);
  EXPECT_EQ(told_.notifications.back().row, -1);
}

TEST_F(ListInput, AModifiedClickBelowTheRowsKeepsTheSelection) {
  Start(4);
  list_.Click(-1, -1, kControl);
  EXPECT_THAT(Selected(list_), ElementsAre(4));
}

TEST_F(ListInput, ADoubleClickActivates) {
  list_.DoubleClick(6);
  EXPECT_THAT(Selected(list_), ElementsAre(6));
  EXPECT_EQ(told_.notifications.back().code, NotifyCode::kItemActivated);
  EXPECT_EQ(told_.notifications.back().row, 6);
  told_.notifications.clear();
  list_.DoubleClick(10);
  EXPECT_THAT(told_.notifications, IsEmpty());
}

TEST_F(ListInput, ALongPressSelectsARowThatWasNotAndTellsWhere) {
  Start(1);
  list_.LongPress(3, {40, 50});
  EXPECT_THAT(Selected(list_), ElementsAre(3));
  EXPECT_EQ(told_.notifications.back().code, NotifyCode::kContextMenu);
  EXPECT_EQ(told_.notifications.back().point, (Point{40, 50}));
}

TEST_F(ListInput, ALongPressOnASelectedRowKeepsTheWholeSelection) {
  Start(1);
  list_.Click(3, 0, kShift);
  list_.LongPress(2, {1, 2});
  EXPECT_THAT(Selected(list_), ElementsAre(1, 2, 3));
}

TEST_F(ListInput, ACheckBoxPressTogglesTheBoxAloneAndNoClickIsTold) {
  list_.SetExtendedStyle(kListCheckBoxes);
  Start(1);
  list_.ClickCheckBox(5);
  EXPECT_TRUE(list_.Checked(5));
  EXPECT_THAT(Selected(list_), ElementsAre(1));
  EXPECT_EQ(list_.FocusedItem(), 1);
  ASSERT_EQ(told_.notifications.size(), 1u);
  EXPECT_EQ(told_.notifications[0].code, NotifyCode::kItemChanged);
  EXPECT_EQ(told_.notifications[0].oldState, kItemUnchecked);
  EXPECT_EQ(told_.notifications[0].newState, kItemChecked);
  list_.ClickCheckBox(5);
  EXPECT_FALSE(list_.Checked(5));
}

TEST_F(ListInput, AClickOnTheRowNeverTogglesItsBox) {
  list_.SetExtendedStyle(kListCheckBoxes);
  list_.Click(5, 0, kNoModifier);
  list_.Click(5, 0, kControl);
  list_.DoubleClick(5);
  EXPECT_FALSE(list_.Checked(5));
}

TEST_F(ListInput, WithoutCheckBoxesThereIsNothingToPress) {
  list_.ClickCheckBox(5);
  EXPECT_EQ(list_.ItemState(5), 0u);
  EXPECT_THAT(told_.notifications, IsEmpty());
}

TEST_F(ListInput, AHeaderPressNamesItsColumn) {
  list_.InsertColumn(0, u"#", 10);
  list_.InsertColumn(1, u"Name", 10);
  list_.ClickHeader(1);
  list_.ClickHeader(2);
  ASSERT_EQ(told_.notifications.size(), 1u);
  EXPECT_EQ(told_.notifications[0].code, NotifyCode::kColumnClick);
  EXPECT_EQ(told_.notifications[0].column, 1);
}

TEST_F(ListInput, ArrowsMoveSelectionFocusAndMark) {
  Start(4);
  EXPECT_TRUE(list_.KeyDown(Press(Key::kDown)));
  EXPECT_THAT(Selected(list_), ElementsAre(5));
  EXPECT_EQ(list_.SelectionMark(), 5);
  EXPECT_TRUE(list_.KeyDown(Press(Key::kUp)));
  EXPECT_EQ(list_.FocusedItem(), 4);
  EXPECT_EQ(list_.TakeEnsureVisible(), 4);
}

TEST_F(ListInput, ArrowsStayAtTheEndsAndAreUsedUp) {
  Start(9);
  EXPECT_TRUE(list_.KeyDown(Press(Key::kDown)));
  EXPECT_THAT(Selected(list_), ElementsAre(9));
  Start(0);
  EXPECT_TRUE(list_.KeyDown(Press(Key::kUp)));
  EXPECT_THAT(Selected(list_), ElementsAre(0));
}

TEST_F(ListInput, TheFirstArrowInAListWithoutFocusTakesTheFirstRow) {
  EXPECT_TRUE(list_.KeyDown(Press(Key::kDown)));
  EXPECT_THAT(Selected(list_), ElementsAre(0));
}

TEST_F(ListInput, PagesMoveByWhatTheScreenShows) {
  Start(3);
  list_.KeyDown(Press(Key::kPageDown));
  EXPECT_EQ(list_.FocusedItem(), 7);
  list_.KeyDown(Press(Key::kPageDown));
  EXPECT_EQ(list_.FocusedItem(), 9);
  list_.KeyDown(Press(Key::kPageUp));
  EXPECT_EQ(list_.FocusedItem(), 5);
  list_.KeyDown(Press(Key::kHome));
  EXPECT_EQ(list_.FocusedItem(), 0);
  list_.KeyDown(Press(Key::kEnd));
  EXPECT_EQ(list_.FocusedItem(), 9);
}

TEST_F(ListInput, ShiftArrowsExtendFromTheMark) {
  Start(4);
  list_.KeyDown(Press(Key::kDown, kShift));
  list_.KeyDown(Press(Key::kDown, kShift));
  EXPECT_THAT(Selected(list_), ElementsAre(4, 5, 6));
  list_.KeyDown(Press(Key::kUp, kShift));
  EXPECT_THAT(Selected(list_), ElementsAre(4, 5));
  list_.KeyDown(Press(Key::kHome, kShift));
  EXPECT_THAT(Selected(list_), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_EQ(list_.SelectionMark(), 4);
}

TEST_F(ListInput, ControlArrowsMoveTheFocusAlone) {
  Start(4);
  list_.KeyDown(Press(Key::kDown, kControl));
  EXPECT_THAT(Selected(list_), ElementsAre(4));
  EXPECT_EQ(list_.FocusedItem(), 5);
  EXPECT_EQ(list_.SelectionMark(), 4);
  list_.KeyDown(Press(Key::kSpace, kControl));
  EXPECT_THAT(Selected(list_), ElementsAre(4, 5));
  EXPECT_EQ(list_.SelectionMark(), 5);
  list_.KeyDown(Press(Key::kSpace, kControl));
  EXPECT_THAT(Selected(list_), ElementsAre(4));
}

TEST_F(ListInput, KeysOfAnEmptyListAreLeftToTheDialog) {
  ListView empty;
  EXPECT_FALSE(empty.KeyDown(Press(Key::kDown)));
  EXPECT_FALSE(empty.KeyDown(Press(Key::kEnter)));
  EXPECT_FALSE(empty.KeyDown(Type(u'A')));
}

TEST_F(ListInput, SpaceTogglesTheFocusedBox) {
  list_.SetExtendedStyle(kListCheckBoxes);
  Start(4);
  EXPECT_TRUE(list_.KeyDown(Press(Key::kSpace)));
  EXPECT_TRUE(list_.Checked(4));
  EXPECT_TRUE(list_.KeyDown(Press(Key::kSpace)));
  EXPECT_FALSE(list_.Checked(4));
  EXPECT_THAT(Selected(list_), ElementsAre(4));
}

TEST_F(ListInput, SpaceSelectsTheFocusedRowWhereThereAreNoBoxes) {
  Start(4);
  list_.KeyDown(Press(Key::kDown, kControl));
  EXPECT_TRUE(list_.KeyDown(Press(Key::kSpace)));
  EXPECT_THAT(Selected(list_), ElementsAre(5));
}

TEST_F(ListInput, EnterActivatesTheFocusedRow) {
  EXPECT_FALSE(list_.KeyDown(Press(Key::kEnter)));
  Start(4);
  EXPECT_TRUE(list_.KeyDown(Press(Key::kEnter)));
  ASSERT_EQ(told_.notifications.size(), 1u);
  EXPECT_EQ(told_.notifications[0].code, NotifyCode::kItemActivated);
  EXPECT_EQ(told_.notifications[0].row, 4);
}

TEST_F(ListInput, EnterInAListWithCheckBoxesIsTheDialogs) {
  list_.SetExtendedStyle(kListCheckBoxes);
  Start(4);
  EXPECT_FALSE(list_.KeyDown(Press(Key::kEnter)));
  EXPECT_THAT(told_.notifications, IsEmpty());
}

TEST_F(ListInput, TheMenuKeyAsksForTheContextMenuOfTheFocusedRow) {
  Start(4);
  EXPECT_TRUE(list_.KeyDown(Press(Key::kMenu)));
  ASSERT_EQ(told_.notifications.size(), 1u);
  EXPECT_EQ(told_.notifications[0].code, NotifyCode::kContextMenu);
  EXPECT_EQ(told_.notifications[0].row, 4);
  EXPECT_EQ(told_.notifications[0].point, (Point{-1, -1}));
}

TEST_F(ListInput, ControlASelectsAllRowsOfAMultipleSelectionList) {
  EXPECT_TRUE(list_.KeyDown(Type(u'A', kControl)));
  EXPECT_EQ(list_.SelectedCount(), 10);
  ListView single(true);
  Fill(single, 3);
  EXPECT_FALSE(single.KeyDown(Type(u'A', kControl)));
  EXPECT_EQ(single.SelectedCount(), 0);
}

TEST_F(ListInput, InASingleSelectionListModifiersSelectOneRowToo) {
  ListView single(true);
  Fill(single, 5);
  single.Click(1, 0, kNoModifier);
  single.Click(3, 0, kControl);
  EXPECT_THAT(Selected(single), ElementsAre(3));
  single.Click(4, 0, kShift);
  EXPECT_THAT(Selected(single), ElementsAre(4));
  single.KeyDown(Press(Key::kUp, kShift));
  EXPECT_THAT(Selected(single), ElementsAre(3));
}

TEST_F(ListInput, AHiddenListTakesNoKeyAndNoPress) {
  list_.SetKeyFilter([](const KeyPress&) { return true; }, [](const KeyPress&) { return true; });
  list_.SetVisible(false);
  EXPECT_FALSE(list_.KeyDown(Press(Key::kDown)));
  EXPECT_FALSE(list_.WantsKey(Press(Key::kDown)));
  list_.Click(3, 0, kNoModifier);
  list_.DoubleClick(3);
  list_.LongPress(3, {});
  EXPECT_THAT(told_.notifications, IsEmpty());
  EXPECT_EQ(list_.SelectedCount(), 0);
}

TEST_F(ListInput, TheKeyFilterComesFirstAndSaysWhatItWants) {
  const auto last = [this](const KeyPress& press) {
    return press.key == Key::kDown && list_.FocusedItem() == list_.ItemCount() - 1;
  };
  list_.SetKeyFilter(
      [this, last](const KeyPress& press) {
        if (!last(press)) {
          return false;
        }
        list_.SetItemState(-1, 0, kItemSelected);
        list_.SetItemState(0, kBoth, kBoth);
        return true;
      },
      last);
  Start(8);
  EXPECT_FALSE(list_.WantsKey(Press(Key::kDown)));
  EXPECT_TRUE(list_.KeyDown(Press(Key::kDown)));
  EXPECT_THAT(Selected(list_), ElementsAre(9));
  EXPECT_TRUE(list_.WantsKey(Press(Key::kDown)));
  EXPECT_TRUE(list_.KeyDown(Press(Key::kDown)));
  EXPECT_THAT(Selected(list_), ElementsAre(0));
}

class TypingAhead : public ListInput {
 protected:
  TypingAhead() {
    list_.SetNotifying(false);
    list_.DeleteAllItems();
    list_.InsertColumn(0, u"#", 10);
    list_.InsertColumn(1, u"Name", 10);
    for (const char16_t* name :
         {u"Anna", u"Bert", u"\u00C9mile", u"Anton", u"\u042F\u043D\u0430", u"anne marie", u""}) {
      list_.InsertRow(99, {u"1", name}, nullptr);
    }
    list_.SetNotifying(true);
  }

  int After(std::u16string_view typed) {
    for (const char16_t letter : typed) {
      EXPECT_TRUE(list_.KeyDown(letter == u' ' ? Press(Key::kSpace) : Type(letter)));
    }
    return list_.FocusedItem();
  }
};

TEST_F(TypingAhead, ALetterGoesToTheNextNameThatStartsWithIt) {
  EXPECT_EQ(After(u"B"), 1);
  EXPECT_THAT(Selected(list_), ElementsAre(1));
  EXPECT_EQ(list_.SelectionMark(), 1);
}

TEST_F(TypingAhead, TheSameLetterAgainGoesOnAndAround) {
  EXPECT_EQ(After(u"A"), 0);
  EXPECT_EQ(After(u"A"), 3);
  EXPECT_EQ(After(u"A"), 5);
  EXPECT_EQ(After(u"A"), 0);
}

TEST_F(TypingAhead, AWordFindsTheNameThatStartsWithIt) {
  EXPECT_EQ(After(u"ANT"), 3);
}

TEST_F(TypingAhead, WithoutNumberedRowsTheFirstColumnHasTheNames) {
  ListView contacts;
  contacts.InsertColumn(0, u"Name", 10);
  contacts.InsertColumn(1, u"Phone", 10);
  contacts.InsertRow(99, {u"Anna", u"5550"}, nullptr);
  contacts.InsertRow(99, {u"Bert", u"Anna's"}, nullptr);
  contacts.InsertRow(99, {u"5th Street", u"1"}, nullptr);
  EXPECT_TRUE(contacts.KeyDown(Type(u'B')));
  EXPECT_EQ(contacts.FocusedItem(), 1);
  EXPECT_TRUE(contacts.KeyDown(Press(Key::kDown)));
  EXPECT_TRUE(contacts.KeyDown(Type(u'A')));
  EXPECT_EQ(contacts.FocusedItem(), 0);
  EXPECT_TRUE(contacts.KeyDown(Press(Key::kHome)));
  EXPECT_TRUE(contacts.KeyDown(Type(u'5')));
  EXPECT_EQ(contacts.FocusedItem(), 2);
}

TEST_F(TypingAhead, ASpaceBelongsToAWordThatIsBeingTyped) {
  EXPECT_EQ(After(u"ANNE M"), 5);
}

TEST_F(TypingAhead, AnyAlphabetsCaseIsFolded) {
  EXPECT_EQ(After(u"\u00C9"), 2);
  now_ += 1000;
  EXPECT_EQ(After(u"\u042F"), 4);
}

TEST_F(TypingAhead, APauseBeginsANewWord) {
  EXPECT_EQ(After(u"A"), 0);
  now_ += 999;
  EXPECT_EQ(After(u"N"), 0);
  now_ += 1000;
  EXPECT_EQ(After(u"B"), 1);
}

TEST_F(TypingAhead, AnArrowBeginsANewWord) {
  EXPECT_EQ(After(u"A"), 0);
  list_.KeyDown(Press(Key::kDown));
  EXPECT_EQ(After(u"B"), 1);
}

TEST_F(TypingAhead, AWordThatNoNameStartsWithMovesNothing) {
  EXPECT_EQ(After(u"B"), 1);
  EXPECT_EQ(After(u"X"), 1);
}

TEST_F(TypingAhead, ControlLettersAreNotTyped) {
  EXPECT_FALSE(list_.KeyDown(Type(u'B', kControl)));
  EXPECT_EQ(list_.FocusedItem(), -1);
}

}  // namespace
}  // namespace kelpin::ui
