#include "app/main_list.h"

#include "app/list_turn.h"
#include "tests/app/app_fixture.h"

namespace kelpin::app {
namespace {

ListItemData Entry(std::uint32_t index, std::u16string name, std::u16string number) {
  ListItemData data;
  data.index = index;
  data.name = std::move(name);
  data.number = std::move(number);
  return data;
}

class MainListTest : public AppTest {
 protected:
  void SetUp() override { Open(); }
  std::vector<int> Widths() {
    std::vector<int> widths;
    for (const ui::Column& column : List().Columns()) widths.push_back(column.width);
    return widths;
  }
};

TEST(MainListLayout, WidthsFollowThePlatform) {
  EXPECT_EQ(MainListLayoutFor(false, false), (MainListLayout{38, 10, 180}));
  EXPECT_EQ(MainListLayoutFor(false, true), (MainListLayout{76, 20, 360}));
  EXPECT_EQ(MainListLayoutFor(true, false), (MainListLayout{38, 10, 230}));
  EXPECT_EQ(MainListLayoutFor(true, true), (MainListLayout{38, 10, 230}));
}

TEST_F(MainListTest, ARowGoesOnTopWithItsIndexNameAndNumber) {
  EXPECT_EQ(InsertListRow(*state, 7, u"123", u"Anna"), 1);
  EXPECT_EQ(InsertListRow(*state, 12, u"+49301234", u"\u0418\u0432\u0430\u043D"), 1);
  EXPECT_EQ(Rows(),
            (std::vector<std::u16string>{u"12|\u0418\u0432\u0430\u043D|+49301234", u"7|Anna|123"}));
}

TEST_F(MainListTest, ARowIsRepaintedWhenItComes) {
  const std::uint64_t before = device.screen.Repaints();
  EXPECT_EQ(InsertListRow(*state, 7, u"123", u"Anna"), 1);
  EXPECT_GT(device.screen.Repaints(), before);
}

TEST_F(MainListTest, WithoutANameOrANumberThereIsNoRow) {
  EXPECT_EQ(InsertListRow(*state, 7, nullptr, u"Anna"), 0);
  EXPECT_EQ(InsertListRow(*state, 7, u"123", nullptr), 0);
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_EQ(InsertListRow(*state, 7, u"", u""), 1);
  EXPECT_EQ(ReplaceListRow(*state, 0, 7, nullptr, u"123"), 0);
  EXPECT_EQ(ReplaceListRow(*state, 0, 7, u"Anna", nullptr), 0);
  EXPECT_EQ(RowText(0), u"7||");
}

TEST_F(MainListTest, TextsAreCutTo255Characters) {
  const std::u16string longName(300, u'n');
  const std::u16string longNumber(256, u'5');
  EXPECT_EQ(InsertListRow(*state, 1, longNumber.c_str(), longName.c_str()), 1);
  std::u16string name;
  std::u16string number;
  ASSERT_EQ(GetListRow(*state, 0, nullptr, &name, &number), 1);
  EXPECT_EQ(name, std::u16string(255, u'n'));
  EXPECT_EQ(number, std::u16string(255, u'5'));
  EXPECT_EQ(List().ItemText(0, kColumnName), name);
}

TEST_F(MainListTest, AReplacedRowHasANewBlockAndNewTexts) {
  InsertListRow(*state, 7, u"123", u"Anna");
  InsertListRow(*state, 8, u"456", u"Bert");
  std::weak_ptr<const ui::RowData> old = List().ItemData(1);
  const std::uint64_t repaints = device.screen.Repaints();
  EXPECT_EQ(ReplaceListRow(*state, 1, 7, u"Annette", u"124"), 1);
  EXPECT_GT(device.screen.Repaints(), repaints);
  EXPECT_TRUE(old.expired());
  EXPECT_EQ(RowText(1), u"7|Annette|124");
  std::uint32_t index = 0;
  std::u16string name;
  std::u16string number;
  ASSERT_EQ(GetListRow(*state, 1, &index, &name, &number), 1);
  EXPECT_EQ(index, 7u);
  EXPECT_EQ(name, u"Annette");
  EXPECT_EQ(number, u"124");
  EXPECT_EQ(RowText(0), u"8|Bert|456");
}

TEST_F(MainListTest, ARowThatIsNotThereCannotBeReplaced) {
  InsertListRow(*state, 7, u"123", u"Anna");
  EXPECT_EQ(ReplaceListRow(*state, 1, 8, u"Bert", u"456"), 0);
  EXPECT_EQ(ReplaceListRow(*state, -1, 8, u"Bert", u"456"), 0);
  EXPECT_EQ(Rows(), std::vector<std::u16string>{u"7|Anna|123"});
}

TEST_F(MainListTest, ARowsOutputsMayBeLeftOut) {
  InsertListRow(*state, 7, u"123", u"Anna");
  std::uint32_t index = 0;
  std::u16string name;
  std::u16string number;
  EXPECT_EQ(GetListRow(*state, 0, &index, nullptr, nullptr), 1);
  EXPECT_EQ(GetListRow(*state, 0, nullptr, &name, nullptr), 1);
  EXPECT_EQ(GetListRow(*state, 0, nullptr, nullptr, &number), 1);
  EXPECT_EQ(GetListRow(*state, 0, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(index, 7u);
  EXPECT_EQ(name, u"Anna");
  EXPECT_EQ(number, u"123");
}

TEST_F(MainListTest, ARowWithoutABlockGivesNothing) {
  List().InsertItem(0, u"?", nullptr);
  std::uint32_t index = 99;
  std::u16string name = u"kept";
  EXPECT_EQ(GetListRow(*state, 0, &index, &name, nullptr), 0);
  EXPECT_EQ(GetListRow(*state, 1, &index, &name, nullptr), 0);
  EXPECT_EQ(GetListRow(*state, -1, &index, &name, nullptr), 0);
  EXPECT_EQ(index, 99u);
  EXPECT_EQ(name, u"kept");
}

TEST(CompareListRows, IndexesCompareAsNumbers) {
  EXPECT_LT(CompareListRows(Entry(9, u"b", u"2"), Entry(10, u"a", u"1"), 0, true), 0);
  EXPECT_GT(CompareListRows(Entry(10, u"a", u"1"), Entry(9, u"b", u"2"), 0, true), 0);
  EXPECT_EQ(CompareListRows(Entry(9, u"a", u"1"), Entry(9, u"b", u"2"), 0, true), 0);
  EXPECT_GT(CompareListRows(Entry(0xFFFFFFFF, u"", u""), Entry(1, u"", u""), 0, true), 0);
}

TEST(CompareListRows, NamesAndNumbersCompareWithoutLetterCase) {
  EXPECT_EQ(CompareListRows(Entry(1, u"\u00C4nne", u""), Entry(2, u"\u00E4NNE", u""), 1, true), 0);
  EXPECT_LT(CompareListRows(Entry(1, u"anna", u""), Entry(2, u"Bert", u""), 1, true), 0);
  EXPECT_LT(CompareListRows(Entry(1, u"z", u"*21a"), Entry(2, u"a", u"*21B"), 2, true), 0);
  EXPECT_EQ(CompareListRows(Entry(1, u"z", u"12A"), Entry(2, u"a", u"12a"), 2, true), 0);
}

TEST(CompareListRows, DescendingOrderSwapsTheTwo) {
  EXPECT_GT(CompareListRows(Entry(9, u"a", u"1"), Entry(10, u"b", u"2"), 0, false), 0);
  EXPECT_GT(CompareListRows(Entry(9, u"a", u"1"), Entry(10, u"b", u"2"), 1, false), 0);
  EXPECT_GT(CompareListRows(Entry(9, u"a", u"1"), Entry(10, u"b", u"2"), 2, false), 0);
}

TEST(CompareListRows, ByAnyOtherColumnAllAreEqual) {
  EXPECT_EQ(CompareListRows(Entry(9, u"a", u"1"), Entry(10, u"b", u"2"), 3, true), 0);
  EXPECT_EQ(CompareListRows(Entry(9, u"a", u"1"), Entry(10, u"b", u"2"), -1, false), 0);
}

TEST_F(MainListTest, SortingShowsItsArrowAndKeepsTheSelection) {
  ASSERT_TRUE(TakeList(*state));
  InsertListRow(*state, 1, u"3", u"Cem");
  InsertListRow(*state, 2, u"1", u"anna");
  InsertListRow(*state, 3, u"2", u"Bert");
  List().SetItemState(2, ui::kItemSelected, ui::kItemSelected);  // Cem
  GiveListBack(*state);
  state->sortColumn = kColumnName;
  state->sortAscending = 0;
  SortMainList(*state);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{1, 3, 2}));
  EXPECT_EQ(List().NextItem(-1, ui::kItemSelected), 0);
  EXPECT_EQ(List().SortArrowColumn(), 1);
  EXPECT_EQ(List().SortArrowDirection(), ui::SortArrow::kDescending);
  state->sortColumn = kColumnNumber;
  state->sortAscending = 1;
  SortMainList(*state);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{2, 3, 1}));
  EXPECT_EQ(List().SortArrowColumn(), 2);
  EXPECT_EQ(List().SortArrowDirection(), ui::SortArrow::kAscending);
}

TEST_F(MainListTest, TheListTakesTheRoomBelowTheHeader) {
  ui::Metrics metrics;
  metrics.headerHeight = 60;
  device.screen.SetMetrics(metrics);
  PlaceMainList(*state, {240, 300});
  EXPECT_EQ(Dialog().Bounds(res::kMainHeader), (ui::Rect{0, 0, 240, 60}));
  EXPECT_EQ(Dialog().Bounds(res::kMainList), (ui::Rect{0, 60, 240, 240}));
  PlaceMainList(*state, {240, 40});  // lower than the header
  EXPECT_EQ(Dialog().Bounds(res::kMainHeader), (ui::Rect{0, 0, 240, 40}));
  EXPECT_EQ(Dialog().Bounds(res::kMainList), (ui::Rect{0, 40, 240, 0}));
}

TEST_F(MainListTest, ColumnsFollowTheClientsWidth) {
  state->layout = MainListLayoutFor(false, false);
  PlaceMainList(*state, {240, 300});
  EXPECT_EQ(Widths(), (std::vector<int>{38, 110, 300}));
  PlaceMainList(*state, {360, 300});
  EXPECT_EQ(Widths(), (std::vector<int>{38, 170, 360}));
  state->layout = MainListLayoutFor(false, true);
  PlaceMainList(*state, {480, 600});
  EXPECT_EQ(Widths(), (std::vector<int>{76, 220, 600}));
  state->layout = MainListLayoutFor(true, false);
  PlaceMainList(*state, {176, 180});
  EXPECT_EQ(Widths(), (std::vector<int>{38, 78, 318}));
}

TEST_F(MainListTest, AClientWithoutWidthLeavesNoNegativeColumn) {
  state->layout = MainListLayoutFor(false, false);
  PlaceMainList(*state, {0, 0});
  EXPECT_EQ(Widths(), (std::vector<int>{38, 0, 180}));
}

TEST_F(MainListTest, TheLoadingFlagAndTheListsNotificationsGoTogether) {
  ASSERT_TRUE(TakeList(*state));
  EXPECT_TRUE(IsListLoading(*state));
  EXPECT_FALSE(List().Notifying());
  GiveListBack(*state);
  EXPECT_FALSE(IsListLoading(*state));
  EXPECT_TRUE(List().Notifying());
}

TEST_F(MainListTest, WithoutADialogNothingHappens) {
  AppState empty(device.ports);
  EXPECT_EQ(InsertListRow(empty, 1, u"1", u"a"), 0);
  EXPECT_EQ(ReplaceListRow(empty, 0, 1, u"1", u"a"), 0);
  EXPECT_EQ(GetListRow(empty, 0, nullptr, nullptr, nullptr), 0);
  SortMainList(empty);
  PlaceMainList(empty, {240, 300});
}

}  // namespace
}  // namespace kelpin::app
