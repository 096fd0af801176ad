#include "app/list_turn.h"
#include "app/main_dialog.h"
#include "tests/app/app_fixture.h"

// What the main dialog does for its list: notifications and keys.
namespace kelpin::app {
namespace {

const ui::KeyPress kDown = {ui::Key::kDown};
const ui::KeyPress kUp = {ui::Key::kUp};

class MainDialogListTest : public AppTest {
 protected:
  // The rows that are selected, and the one that has the focus.
  std::pair<std::vector<int>, int> Selection() {
    std::vector<int> selected;
    for (int row = List().NextItem(-1, ui::kItemSelected); row >= 0;
         row = List().NextItem(row, ui::kItemSelected)) {
      selected.push_back(row);
    }
    return {selected, List().FocusedItem()};
  }
  static std::pair<std::vector<int>, int> Only(int row) { return {{row}, row}; }
  // A notification as the list would send it.
  ui::Notification Note(ui::NotifyCode code) {
    ui::Notification note;
    note.control = res::kMainList;
    note.code = code;
    return note;
  }
  void Send(const ui::Notification& note) { mainDialog->OnNotify(Dialog(), note); }
};

TEST_F(MainDialogListTest, NothingIsDoneForTheListWhileItLoads) {
  PutThree();
  Open();
  Dialog().Command(res::kCommandSelectAll);
  ASSERT_TRUE(TakeList(*state));
  ran.clear();
  for (const ui::NotifyCode code : {ui::NotifyCode::kContextMenu, ui::NotifyCode::kItemActivated,
                                    ui::NotifyCode::kClick, ui::NotifyCode::kColumnClick,
                                    ui::NotifyCode::kItemInserted, ui::NotifyCode::kItemChanged}) {
    Send(Note(code));
  }
  List().SetItemState(-1, 0, ui::kItemSelected);
  Send(Note(ui::NotifyCode::kItemChanged));
  EXPECT_TRUE(device.screen.Popups().empty());
  EXPECT_TRUE(ran.empty());
  EXPECT_EQ(state->sortColumn, 1);
  EXPECT_EQ(state->sortAscending, 1);
  EXPECT_EQ(List().SelectedCount(), 0);
  EXPECT_TRUE(Menu().IsEnabled(res::kCommandDelete));  // as it was
}

TEST_F(MainDialogListTest, ALongPressWithoutARowOpensNoMenu) {
  PutThree();
  Open();
  List().SetItemState(-1, 0, ui::kItemSelected);
  List().LongPress(-1, {10, 400});
  EXPECT_TRUE(device.screen.Popups().empty());
  List().LongPress(1, {10, 100});
  EXPECT_EQ(device.screen.Popups().size(), 1u);
}

TEST_F(MainDialogListTest, AnActivatedRowIsEdited) {
  PutThree();
  Open();
  Dialog().SetFocus(res::kMainList);
  EXPECT_TRUE(Dialog().KeyDown({ui::Key::kEnter}));
  EXPECT_EQ(ran, (std::vector<int>{res::kCommandEdit}));
}

TEST_F(MainDialogListTest, AClickThatLeavesOneRowSelectedEditsIt) {
  PutThree();
  Open();
  List().Click(1, kColumnName, ui::kNoModifier);
  EXPECT_EQ(ran, (std::vector<int>{res::kCommandEdit}));
  ran.clear();
  List().Click(2, kColumnName, ui::kControl);
  EXPECT_EQ(List().SelectedCount(), 2);
  EXPECT_TRUE(ran.empty());
  List().Click(-1, -1, ui::kNoModifier);
  EXPECT_EQ(List().SelectedCount(), 0);
  EXPECT_TRUE(ran.empty());
}

TEST_F(MainDialogListTest, AHeaderTapTurnsTheOrderAroundForAllColumns) {
  PutThree();
  Open();
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{1, 2, 3}));
  List().ClickHeader(kColumnName);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{3, 2, 1}));
  EXPECT_EQ(state->sortAscending, 0);
  List().ClickHeader(kColumnName);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{1, 2, 3}));
  List().ClickHeader(kColumnNumber);
  EXPECT_EQ(state->sortColumn, 2);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{3, 2, 1}));
  EXPECT_EQ(List().SortArrowColumn(), 2);
  List().ClickHeader(kColumnIndex);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{1, 2, 3}));
  EXPECT_EQ(List().SortArrowDirection(), ui::SortArrow::kAscending);
}

TEST_F(MainDialogListTest, NameThenIndexSortsTheIndexAscending) {
  PutThree();
  Open();
  List().ClickHeader(kColumnName);
  EXPECT_EQ(state->sortAscending, 0);
  List().ClickHeader(kColumnIndex);
  EXPECT_EQ(state->sortAscending, 1);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{1, 2, 3}));
}

TEST_F(MainDialogListTest, ARowThatComesIsSelectedAlone) {
  PutThree();
  Open();
  Dialog().Command(res::kCommandSelectAll);
  EXPECT_EQ(InsertListRow(*state, 9, u"999", u"Zoe"), 1);
  device.screen.RunPending();
  EXPECT_EQ(Selection(), Only(0));
  EXPECT_EQ(RowText(0), u"9|Zoe|999");
}

TEST_F(MainDialogListTest, AChangeOfTheSelectionGreysOrEnables) {
  PutThree();
  Open();
  EXPECT_TRUE(Menu().IsEnabled(res::kCommandDelete));
  List().Click(-1, -1, ui::kNoModifier);
  EXPECT_FALSE(Menu().IsEnabled(res::kCommandDelete));
  List().Click(2, kColumnName, ui::kControl);
  EXPECT_TRUE(Menu().IsEnabled(res::kCommandDelete));
}

TEST_F(MainDialogListTest, NotificationsOfOtherControlsAreNobodys) {
  PutThree();
  Open();
  ui::Notification note = Note(ui::NotifyCode::kItemActivated);
  note.control = res::kMainHeader;
  Send(note);
  EXPECT_TRUE(ran.empty());
}

// Keys.

TEST_F(MainDialogListTest, DownOnTheLastRowGoesToTheFirst) {
  PutThree();
  Open();
  Dialog().SetFocus(res::kMainList);
  Select(2);
  List().TakeEnsureVisible();
  EXPECT_TRUE(List().WantsKey(kDown));
  EXPECT_TRUE(Dialog().KeyDown(kDown));
  EXPECT_EQ(Selection(), Only(0));
  EXPECT_EQ(List().TakeEnsureVisible(), 0);
  Dialog().KeyDown({ui::Key::kDown, ui::kShift});  // extends from where it went
  EXPECT_EQ(Selection(), (std::pair<std::vector<int>, int>{{0, 1}, 1}));
}

TEST_F(MainDialogListTest, UpOnTheFirstRowGoesToTheLast) {
  PutThree();
  Open();
  Dialog().SetFocus(res::kMainList);
  Select(0);
  List().TakeEnsureVisible();
  EXPECT_TRUE(List().WantsKey(kUp));
  EXPECT_TRUE(Dialog().KeyDown(kUp));
  EXPECT_EQ(Selection(), Only(2));
  EXPECT_EQ(List().TakeEnsureVisible(), 2);
}

TEST_F(MainDialogListTest, ElsewhereTheArrowsAreTheLists) {
  PutThree();
  Open();
  Dialog().SetFocus(res::kMainList);
  Select(1);
  EXPECT_FALSE(List().WantsKey(kDown));
  EXPECT_FALSE(List().WantsKey(kUp));
  Dialog().KeyDown(kDown);
  EXPECT_EQ(Selection(), Only(2));
  Dialog().KeyDown(kUp);
  EXPECT_EQ(Selection(), Only(1));
}

TEST_F(MainDialogListTest, WithAModifierTheArrowsDoNotGoAround) {
  PutThree();
  Open();
  Dialog().SetFocus(res::kMainList);
  Select(2);
  Dialog().KeyDown({ui::Key::kDown, ui::kShift});
  EXPECT_EQ(Selection(), Only(2));
}

TEST_F(MainDialogListTest, AnEmptyListLeavesTheArrowsAlone) {
  Open();
  EXPECT_FALSE(List().WantsKey(kDown));
  EXPECT_FALSE(List().WantsKey(kUp));
}

TEST_F(MainDialogListTest, TheTalkKeyCalls) {
  PutThree();
  Open();
  EXPECT_TRUE(Dialog().HotKey(0x72, 0));
  EXPECT_EQ(ran, (std::vector<int>{res::kCommandCall}));
  ran.clear();
  EXPECT_FALSE(Dialog().HotKey(0x72, ui::kShift));
  EXPECT_FALSE(Dialog().HotKey(27, 0));
  EXPECT_TRUE(ran.empty());
}

TEST_F(MainDialogListTest, OkEditsOnASmartphoneOnly) {
  PutThree();
  Open();
  mainDialog->OnCommand(Dialog(), 1);
  EXPECT_TRUE(ran.empty());
  state->isSmartphone = 1;
  mainDialog->OnCommand(Dialog(), 1);
  EXPECT_EQ(ran, (std::vector<int>{res::kCommandEdit}));
}

TEST_F(MainDialogListTest, CancelDoesNothing) {
  PutThree();
  Open();
  Dialog().KeyDown({ui::Key::kEscape});
  EXPECT_FALSE(Dialog().Ended());
  EXPECT_TRUE(ran.empty());
}

}  // namespace
}  // namespace kelpin::app
