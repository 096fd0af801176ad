#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ui/recorder.h"

namespace kelpin::ui {
namespace {

using test::Fill;
using test::ListRecorder;
using test::Selected;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint32_t kBoth = kItemSelected | kItemFocused;

TEST(ListView, AStateTellsOldAndNewAndOnlyWhenItIsAnother) {
  ListView list;
  Fill(list, 3);
  ListRecorder told;
  told.Attach(list);
  list.SetItemState(1, kItemSelected, kItemSelected);
  list.SetItemState(1, kItemSelected, kItemSelected);
  list.SetItemState(1, 0, kItemFocused);
  ASSERT_EQ(told.notifications.size(), 1u);
  EXPECT_EQ(told.notifications[0].row, 1);
  EXPECT_EQ(told.notifications[0].oldState, 0u);
  EXPECT_EQ(told.notifications[0].newState, kItemSelected);
}

TEST(ListView, OnlyTheMaskedBitsCount) {
  ListView list;
  Fill(list, 2);
  list.SetItemState(0, kBoth, kItemSelected);
  EXPECT_EQ(list.ItemState(0), kItemSelected);
  list.SetItemState(0, 0, kItemFocused);
  EXPECT_EQ(list.ItemState(0), kItemSelected);
}

TEST(ListView, FocusingARowTakesTheFocusFromTheOther) {
  ListView list;
  Fill(list, 3);
  list.SetItemState(0, kItemFocused, kItemFocused);
  ListRecorder told;
  told.Attach(list);
  list.SetItemState(2, kItemFocused, kItemFocused);
  EXPECT_EQ(list.FocusedItem(), 2);
  EXPECT_EQ(list.ItemState(0), 0u);
  ASSERT_EQ(told.notifications.size(), 2u);
  EXPECT_EQ(told.notifications[0].row, 0);
  EXPECT_EQ(told.notifications[1].row, 2);
}

TEST(ListView, SelectingEveryRowTellsEachThatWasNotYet) {
  ListView list;
  Fill(list, 4);
  list.SetItemState(2, kItemSelected, kItemSelected);
  ListRecorder told;
  told.Attach(list);
  list.SetItemState(-1, kItemSelected, kItemSelected);
  EXPECT_EQ(list.SelectedCount(), 4);
  EXPECT_EQ(told.notifications.size(), 3u);
}

TEST(ListView, EveryRowCannotBeFocusedNorSelectedInASingleSelectionList) {
  ListView list(true);
  Fill(list, 3);
  list.SetItemState(-1, kBoth, kBoth);
  EXPECT_EQ(list.SelectedCount(), 0);
  EXPECT_EQ(list.FocusedItem(), -1);
}

TEST(ListView, ASingleSelectionListDropsTheOldSelection) {
  ListView list(true);
  Fill(list, 3);
  list.SetItemState(0, kItemSelected, kItemSelected);
  ListRecorder told;
  told.Attach(list);
  list.SetItemState(2, kItemSelected, kItemSelected);
  EXPECT_THAT(Selected(list), ElementsAre(2));
  ASSERT_EQ(told.notifications.size(), 2u);
  EXPECT_EQ(told.notifications[0].row, 0);
  EXPECT_EQ(told.notifications[0].newState, 0u);
}

TEST(ListView, RowsThatAreNotThereTakeNoState) {
  ListView list;
  Fill(list, 2);
  ListRecorder told;
  told.Attach(list);
  list.SetItemState(2, kBoth, kBoth);
  list.SetItemState(-2, kBoth, kBoth);
  EXPECT_THAT(told.notifications, IsEmpty());
  EXPECT_EQ(list.ItemState(2), 0u);
}

TEST(ListView, RowsOfAListWithCheckBoxesStartUnchecked) {
  ListView list;
  Fill(list, 1);
  list.SetExtendedStyle(kListCheckBoxes | kListFullRowSelect);
  list.InsertItem(1, u"b", nullptr);
  EXPECT_EQ(list.ItemState(0), kItemUnchecked);
  EXPECT_EQ(list.ItemState(1), kItemUnchecked);
}

TEST(ListView, CheckingTellsBothImagesSoThatACounterCanFollow) {
  ListView list;
  list.SetExtendedStyle(kListCheckBoxes);
  Fill(list, 3);
  int checked = 0;
  ListView::Sink sink;
  sink.notify = [&](const Notification& one) {
    const std::uint32_t was = one.oldState & kItemStateImageMask;
    const std::uint32_t is = one.newState & kItemStateImageMask;
    checked += was == kItemUnchecked && is == kItemChecked ? 1 : 0;
    checked -= was == kItemChecked && is == kItemUnchecked ? 1 : 0;
  };
  list.SetSink(sink);
  list.SetCheck(1, true);
  EXPECT_EQ(checked, 1);
  list.SetCheck(-1, true);
  EXPECT_EQ(checked, 3);
  list.SetCheck(0, false);
  list.SetCheck(0, false);
  EXPECT_EQ(checked, 2);
  list.InsertItem(0, u"new", nullptr, kItemChecked);
  EXPECT_EQ(checked, 3);
  list.SetItemState(-1, kItemUnchecked, kItemStateImageMask);
  EXPECT_EQ(checked, 0);
}

TEST(ListView, CheckingLeavesSelectionAndFocus) {
  ListView list;
  list.SetExtendedStyle(kListCheckBoxes);
  Fill(list, 2);
  list.SetItemState(0, kBoth, kBoth);
  list.SetCheck(0, true);
  EXPECT_EQ(list.ItemState(0), kBoth | kItemChecked);
  EXPECT_TRUE(list.Checked(0));
  EXPECT_FALSE(list.Checked(1));
}

TEST(ListView, NextItemWalksTheSelectedRowsFromAnyStart) {
  ListView list;
  Fill(list, 10);
  for (const int row : {7, 2, 5}) {
    list.SetItemState(row, kItemSelected, kItemSelected);
  }
  EXPECT_THAT(Selected(list), ElementsAre(2, 5, 7));
  EXPECT_EQ(list.NextItem(2, kItemSelected), 5);
  EXPECT_EQ(list.NextItem(7, kItemSelected), -1);
  EXPECT_EQ(list.NextItem(99, kItemSelected), -1);
}

TEST(ListView, NextItemWithBothStatesNeedsBoth) {
  ListView list;
  Fill(list, 3);
  list.SetItemState(2, kItemFocused, kItemFocused);
  EXPECT_EQ(list.NextItem(-1, kItemFocused), 2);
  EXPECT_EQ(list.NextItem(-1, kBoth), -1);
  list.SetItemState(2, kItemSelected, kItemSelected);
  EXPECT_EQ(list.NextItem(-1, kBoth), 2);
  EXPECT_EQ(list.NextItem(2, kBoth), -1);
}

TEST(ListView, TheFirstFocusSetsTheMarkLaterOnesDoNot) {
  ListView list;
  Fill(list, 5);
  EXPECT_EQ(list.SelectionMark(), -1);
  list.SetItemState(1, kBoth, kBoth);
  EXPECT_EQ(list.SelectionMark(), 1);
  list.SetItemState(3, kBoth, kBoth);
  EXPECT_EQ(list.SelectionMark(), 1);
  list.SetSelectionMark(4);
  EXPECT_EQ(list.SelectionMark(), 4);
  list.SetSelectionMark(-1);
  EXPECT_EQ(list.SelectionMark(), -1);
}

}  // namespace
}  // namespace kelpin::ui
