#include "ui/list_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ui/recorder.h"

namespace kelpin::ui {
namespace {

using test::CompareNumbers;
using test::Fill;
using test::ListRecorder;
using test::Number;
using test::Order;
using test::Selected;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint32_t kBoth = kItemSelected | kItemFocused;

TEST(ListView, InsertsWhereItIsToldAndBeyondTheEndAppends) {
  ListView list;
  EXPECT_EQ(list.InsertItem(0, u"b", std::make_unique<Number>(2)), 0);
  EXPECT_EQ(list.InsertItem(0, u"a", std::make_unique<Number>(1)), 0);
  EXPECT_EQ(list.InsertItem(99, u"d", std::make_unique<Number>(4)), 2);
  EXPECT_EQ(list.InsertItem(2, u"c", std::make_unique<Number>(3)), 2);
  EXPECT_THAT(Order(list), ElementsAre(1, 2, 3, 4));
}

TEST(ListView, AnInsertionTellsItsPositionAsSubItem) {
  ListView list;
  ListRecorder told;
  told.Attach(list);
  list.InsertItem(0, u"a", nullptr);
  list.InsertItem(7, u"b", nullptr);
  const auto inserted = told.Of(NotifyCode::kItemInserted);
  ASSERT_EQ(inserted.size(), 2u);
  EXPECT_EQ(inserted[0].subItem, 0);
  EXPECT_EQ(inserted[1].subItem, 1);
  EXPECT_EQ(inserted[1].row, 1);
  EXPECT_THAT(told.Of(NotifyCode::kItemChanged), IsEmpty());
}

TEST(ListView, ARowInsertedSelectedTellsThatAfterTheInsertion) {
  ListView list;
  ListRecorder told;
  told.Attach(list);
  list.InsertItem(0, u"a", nullptr, kBoth);
  ASSERT_EQ(told.notifications.size(), 2u);
  EXPECT_EQ(told.notifications[0].code, NotifyCode::kItemInserted);
  EXPECT_EQ(told.notifications[1].code, NotifyCode::kItemChanged);
  EXPECT_EQ(told.notifications[1].newState, kBoth);
  EXPECT_EQ(list.SelectedCount(), 1);
}

TEST(ListView, TellsNothingWhileNotifyingIsOffButStillRepaints) {
  ListView list;
  ListRecorder told;
  told.Attach(list);
  list.SetNotifying(false);
  list.InsertItem(0, u"a", nullptr);
  list.SetItemState(0, kBoth, kBoth);
  EXPECT_THAT(told.notifications, IsEmpty());
  EXPECT_EQ(told.changes, 2);
  list.SetNotifying(true);
  EXPECT_THAT(told.notifications, IsEmpty());
}

TEST(ListView, ANotificationMayChangeTheListAgain) {
  ListView list;
  ListView::Sink sink;
  sink.notify = [&](const Notification& one) {
    if (one.code == NotifyCode::kItemInserted) {
      list.SetItemState(-1, 0, kItemSelected);
      list.SetItemState(one.subItem, kBoth, kBoth);
    }
  };
  list.SetSink(sink);
  for (int i = 0; i < 3; ++i) {
    list.InsertItem(0, u"row", nullptr);
  }
  EXPECT_THAT(Selected(list), ElementsAre(0));
  EXPECT_EQ(list.FocusedItem(), 0);
}

TEST(ListView, TextsOfColumnsThatWereNeverSetAreEmpty) {
  ListView list;
  list.InsertItem(0, u"1", nullptr);
  EXPECT_EQ(list.ItemText(0, 2), u"");
  list.SetItemText(0, 2, u"+44");
  EXPECT_EQ(list.ItemText(0, 1), u"");
  EXPECT_EQ(list.ItemText(0, 2), u"+44");
  EXPECT_EQ(list.ItemText(1, 0), u"");
  EXPECT_EQ(list.ItemText(-1, 0), u"");
}

TEST(ListView, ARowCanComeWithAllItsTextsAtOnce) {
  ListView list;
  list.InsertRow(0, {u"7", u"Ana", u"+44"}, std::make_unique<Number>(7));
  EXPECT_EQ(list.ItemText(0, 0), u"7");
  EXPECT_EQ(list.ItemText(0, 1), u"Ana");
  EXPECT_EQ(list.ItemText(0, 2), u"+44");
}

TEST(ListView, DataThatIsHeldOutlivesItsRow) {
  ListView list;
  list.InsertItem(0, u"a", std::make_unique<Number>(5));
  const std::shared_ptr<const RowData> held = list.ItemData(0);
  list.DeleteItem(0);
  EXPECT_EQ(static_cast<const Number*>(held.get())->value, 5);
  EXPECT_EQ(list.ItemData(0), nullptr);
}

TEST(ListView, NewDataReplacesAndFreesTheOld) {
  struct Flagging : RowData {
    explicit Flagging(bool& freed) : freed_(freed) {}
    ~Flagging() override { freed_ = true; }
    bool& freed_;
  };
  bool freed = false;
  ListView list;
  list.InsertItem(0, u"a", std::make_unique<Flagging>(freed));
  list.SetItemData(0, std::make_unique<Number>(9));
  EXPECT_TRUE(freed);
  EXPECT_THAT(Order(list), ElementsAre(9));
}

TEST(ListView, SortIsStableAndCarriesSelectionFocusAndMark) {
  ListView list;
  for (const int value : {30, 10, 20, 10}) {
    list.InsertItem(99, test::Digits(list.ItemCount()), std::make_unique<Number>(value));
  }
  list.SetItemState(0, kItemSelected, kItemSelected);
  list.SetItemState(2, kItemFocused, kItemFocused);
  list.SetSelectionMark(3);
  list.EnsureVisible(0);
  list.Sort(CompareNumbers);
  EXPECT_THAT(Order(list), ElementsAre(10, 10, 20, 30));
  EXPECT_EQ(list.ItemText(0, 0), u"1");
  EXPECT_EQ(list.ItemText(1, 0), u"3");
  EXPECT_THAT(Selected(list), ElementsAre(3));
  EXPECT_EQ(list.FocusedItem(), 2);
  EXPECT_EQ(list.SelectionMark(), 1);
  EXPECT_EQ(list.TakeEnsureVisible(), 3);
}

TEST(ListView, SortRaisesNoNotification) {
  ListView list;
  Fill(list, 5);
  list.SetItemState(-1, kItemSelected, kItemSelected);
  ListRecorder told;
  told.Attach(list);
  list.Sort([](const RowData* a, const RowData* b) { return CompareNumbers(b, a); });
  EXPECT_THAT(Order(list), ElementsAre(4, 3, 2, 1, 0));
  EXPECT_THAT(told.notifications, IsEmpty());
  EXPECT_EQ(told.changes, 1);
}

TEST(ListView, SortOfAnEmptyListDoesNothing) {
  ListView list;
  list.Sort(CompareNumbers);
  EXPECT_EQ(list.ItemCount(), 0);
}

TEST(ListView, RowsInsertedAboveMoveSelectionFocusMarkAndScrolling) {
  ListView list;
  Fill(list, 6);
  list.SetItemState(2, kBoth, kBoth);
  list.SetItemState(4, kItemSelected, kItemSelected);
  list.EnsureVisible(4);
  list.InsertItem(0, u"top", std::make_unique<Number>(100));
  EXPECT_THAT(Selected(list), ElementsAre(3, 5));
  list.InsertItem(4, u"between", std::make_unique<Number>(101));
  EXPECT_THAT(Selected(list), ElementsAre(3, 6));
  list.InsertItem(3, u"just above", std::make_unique<Number>(102));
  EXPECT_THAT(Selected(list), ElementsAre(4, 7));
  EXPECT_EQ(list.FocusedItem(), 4);
  EXPECT_EQ(list.SelectionMark(), 4);
  EXPECT_EQ(list.TakeEnsureVisible(), 7);
  EXPECT_EQ(list.TakeEnsureVisible(), -1);
}

TEST(ListView, ADeletedRowGivesFocusAndMarkToTheOneBelow) {
  ListView list;
  Fill(list, 4);
  list.SetItemState(1, kBoth, kBoth);
  ListRecorder told;
  told.Attach(list);
  list.DeleteItem(1);
  EXPECT_THAT(Order(list), ElementsAre(0, 2, 3));
  EXPECT_EQ(list.SelectedCount(), 0);
  EXPECT_EQ(list.FocusedItem(), 1);
  EXPECT_EQ(list.SelectionMark(), 1);
  ASSERT_EQ(told.notifications.size(), 2u);
  EXPECT_EQ(told.notifications[0].oldState, kBoth);
  EXPECT_EQ(told.notifications[0].newState, 0u);
  EXPECT_EQ(told.notifications[1].row, 1);
  EXPECT_EQ(told.notifications[1].newState, kItemFocused);
}

TEST(ListView, DeletingTheLastRowGivesFocusAndMarkToTheOneAbove) {
  ListView list;
  Fill(list, 2);
  list.SetItemState(1, kBoth, kBoth);
  list.DeleteItem(1);
  EXPECT_EQ(list.FocusedItem(), 0);
  EXPECT_EQ(list.SelectionMark(), 0);
  list.DeleteItem(0);
  EXPECT_EQ(list.FocusedItem(), -1);
  EXPECT_EQ(list.SelectionMark(), -1);
}

TEST(ListView, DeletingAnotherRowKeepsFocusMarkAndSelectionWithTheirRows) {
  ListView list;
  Fill(list, 8);
  list.SetItemState(5, kBoth, kBoth);
  list.DeleteItem(1);
  EXPECT_THAT(Selected(list), ElementsAre(4));
  list.DeleteItem(6);
  EXPECT_THAT(Selected(list), ElementsAre(4));
  list.DeleteItem(0);
  EXPECT_THAT(Selected(list), ElementsAre(3));
  EXPECT_EQ(list.FocusedItem(), 3);
  EXPECT_EQ(list.SelectionMark(), 3);
  EXPECT_THAT(Order(list), ElementsAre(2, 3, 4, 5, 6));
}

TEST(ListView, DeletingTheFirstSelectedRowUntilNoneIsLeftEndsAtTheMark) {
  ListView list;
  Fill(list, 6);
  list.Click(1, 0, kNoModifier);
  list.Click(2, 0, kControl);
  list.Click(4, 0, kControl);
  for (int row = list.NextItem(-1, kItemSelected); row >= 0;
       row = list.NextItem(-1, kItemSelected)) {
    list.DeleteItem(row);
  }
  EXPECT_THAT(Order(list), ElementsAre(0, 3, 5));
  EXPECT_EQ(list.SelectionMark(), 2);
}

TEST(ListView, DeletingAnUnselectedRowTellsNoChange) {
  ListView list;
  Fill(list, 3);
  ListRecorder told;
  told.Attach(list);
  list.DeleteItem(1);
  list.DeleteItem(9);
  EXPECT_THAT(told.notifications, IsEmpty());
  EXPECT_EQ(told.changes, 1);
}

TEST(ListView, DeletingAllRowsTellsOneChangeWhenAnyWasSelected) {
  ListView list;
  Fill(list, 3);
  list.SetItemState(-1, kItemSelected, kItemSelected);
  list.EnsureVisible(2);
  ListRecorder told;
  told.Attach(list);
  list.DeleteAllItems();
  ASSERT_EQ(told.notifications.size(), 1u);
  EXPECT_EQ(told.notifications[0].code, NotifyCode::kItemChanged);
  EXPECT_EQ(told.notifications[0].row, -1);
  EXPECT_EQ(list.ItemCount(), 0);
  EXPECT_EQ(list.SelectedCount(), 0);
  EXPECT_EQ(list.FocusedItem(), -1);
  EXPECT_EQ(list.SelectionMark(), -1);
  EXPECT_EQ(list.TakeEnsureVisible(), -1);
  Fill(list, 2);
  list.DeleteAllItems();
  EXPECT_EQ(told.notifications.size(), 1u);
}

TEST(ListView, TheRowsVersionGrowsWithRowsAndTextsNotWithStates) {
  ListView list;
  Fill(list, 3);
  const std::uint64_t start = list.RowsVersion();
  list.SetItemState(1, kBoth, kBoth);
  list.EnsureVisible(1);
  EXPECT_EQ(list.RowsVersion(), start);
  list.SetItemText(1, 1, u"x");
  const std::uint64_t afterText = list.RowsVersion();
  EXPECT_GT(afterText, start);
  list.DeleteItem(0);
  EXPECT_GT(list.RowsVersion(), afterText);
}

TEST(ListView, ColumnsComeInOrderAndChangeTheirWidth) {
  ListView list;
  list.InsertColumn(0, u"Phone", 300);
  list.InsertColumn(0, u"#", 38);
  list.InsertColumn(1, u"Name", 110);
  list.SetColumnWidth(1, 120);
  list.SetColumnWidth(9, 5);
  EXPECT_THAT(list.Columns(),
              ElementsAre(Column{u"#", 38}, Column{u"Name", 120}, Column{u"Phone", 300}));
}

TEST(ListView, TheSortArrowStandsAtOneColumn) {
  ListView list;
  list.SetSortArrow(1, SortArrow::kDescending);
  EXPECT_EQ(list.SortArrowColumn(), 1);
  EXPECT_EQ(list.SortArrowDirection(), SortArrow::kDescending);
  list.SetSortArrow(-1, SortArrow::kAscending);
  EXPECT_EQ(list.SortArrowColumn(), -1);
  EXPECT_EQ(list.SortArrowDirection(), SortArrow::kNone);
}

TEST(ListView, TellsToRepaintOnlyWhenItLooksAnother) {
  ListView list;
  ListRecorder told;
  told.Attach(list);
  list.SetVisible(true);
  list.SetMessage({});
  EXPECT_EQ(told.changes, 0);
  list.SetVisible(false);
  list.SetMessage({.text = u"Loading", .hint = u"", .done = 3, .total = 10});
  list.SetMessage({.text = u"Loading", .hint = u"", .done = 3, .total = 10});
  EXPECT_EQ(told.changes, 2);
  EXPECT_EQ(list.Message().done, 3);
}

}  // namespace
}  // namespace kelpin::ui
