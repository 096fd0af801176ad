#include "tests/app/delete_fixture.h"

// What Delete does to the card and to the list.
namespace kelpin::app {
namespace {

using platform::SimResult;
using Indexes = std::vector<std::uint32_t>;
using Lines = std::vector<std::string>;
using Texts = std::vector<std::u16string>;

constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

TEST_F(DeleteTest, WithNothingSelectedNobodyIsAsked) {
  PutThree();
  Open();
  SelectRows({});
  device.journal.Clear();
  EXPECT_TRUE(theCommands->Run(res::kCommandDelete));
  device.screen.RunPending();
  EXPECT_TRUE(device.journal.Entries().empty());
}

TEST_F(DeleteTest, ACardThatIsNotReadyEndsItBeforeTheQuestion) {
  PutThree();
  Open();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  Delete();
  EXPECT_EQ(BoxTexts(), Texts{u"SIM is busy."});
  EXPECT_EQ(Calls("SimDeletePhonebookEntry"), 0u);
  EXPECT_EQ(List().ItemCount(), 3);
}

TEST_F(DeleteTest, TheUserIsAskedFirst) {
  PutThree();
  Open();
  device.screen.ScriptBox(ui::BoxAnswer::kNo);
  Delete();
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text,
            u"The selected items will be permanently deleted from the SIM card.\nContinue?");
  EXPECT_EQ(Boxes()[0].caption, u"Warning");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxQuestion);
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
  EXPECT_EQ(Calls("SimDeletePhonebookEntry"), 0u);
  EXPECT_EQ(device.sim.Entries().size(), 3u);
  EXPECT_EQ(List().ItemCount(), 3);
  EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
  ExpectAtRest();
}

TEST_F(DeleteTest, TakesTheSelectedRowsFromTheTop) {
  PutThree();
  device.sim.SetEntry(4, u"Aaron", u"444");
  Open();
  SelectRows({0, 1, 3});  // Aaron, Anna, Cem
  DeleteAnsweringYes();
  EXPECT_EQ(Deleted(), (Lines{"4", "1", "3"}));
  EXPECT_EQ(Rows(), Texts{u"2|Bert|222"});
  EXPECT_EQ(device.sim.Entries().size(), 1u);
  EXPECT_EQ(device.sim.Name(2), u"Bert");
  EXPECT_EQ(state->simPhonebook.FirstFreeSlot(), 1u);
  ExpectAtRest();
}

TEST_F(DeleteTest, WorksSilentlyUnderTheWaitCursorWithTheNoticesKeptAway) {
  PutThree();
  Open();
  int looks = 0;
  device.sim.onDelete = [&](std::uint32_t) {
    ++looks;
    EXPECT_TRUE(device.screen.WaitCursor());
    EXPECT_FALSE(SoftKeyEnabled(0));
    EXPECT_FALSE(SoftKeyEnabled(1));
    EXPECT_TRUE(IsListLoading(*state));
    EXPECT_EQ(state->simPhonebook.CollectDeletions(), 0u);
    EXPECT_EQ(state->simPhonebook.CollectStores(), 1u);
  };
  onClear = [this](std::uint32_t) { device.sim.Drain(); };  // the entry's notice has come
  SelectRows({0, 1});
  DeleteAnsweringYes();
  EXPECT_EQ(looks, 2);
  EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
  EXPECT_EQ(state->simPhonebook.DeletedCount(), 0u);
  ExpectAtRest();
}

TEST_F(DeleteTest, TheRowAtTheMarkIsSelectedAfterwards) {
  PutThree();
  Open();
  SelectRows({1});
  List().SetSelectionMark(1);
  DeleteAnsweringYes();
  EXPECT_EQ(RowIndexes(), (Indexes{1, 3}));
  EXPECT_EQ(List().SelectionMark(), 1);
  EXPECT_EQ(List().ItemState(1), kSelectedFocused);
  EXPECT_EQ(List().SelectedCount(), 1);
  EXPECT_EQ(List().TakeEnsureVisible(), 0);
  EXPECT_TRUE(Menu().IsEnabled(res::kCommandDelete));
}

TEST_F(DeleteTest, AListThatIsEmptyAfterwardsHasNothingSelected) {
  PutThree();
  Open();
  Dialog().Command(res::kCommandSelectAll);
  DeleteAnsweringYes();
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_FALSE(Menu().IsEnabled(res::kCommandDelete));
  ExpectAtRest();
}

TEST_F(DeleteTest, StopsAtTheFirstEntryThatTheCardKeeps) {
  PutThree();
  Open();
  SelectRows({0, 1, 2});
  device.failures.FailCallOf("SimDeletePhonebookEntry", 2);
  DeleteAnsweringYes();
  EXPECT_EQ(BoxTexts().back(), u"SIM failure was detected. ");
  EXPECT_EQ(Boxes().size(), 2u);  // the question and this
  EXPECT_EQ(RowIndexes(), (Indexes{2, 3}));
  EXPECT_EQ(List().SelectedCount(), 2);
  EXPECT_EQ(device.sim.Entries().size(), 2u);
  EXPECT_EQ(Deleted(), (Lines{"1", "2"}));  // tried
  EXPECT_EQ(Cleared().front().substr(0, 2), "1 ");
  EXPECT_EQ(Cleared().back().substr(0, 2), "1 ");  // of the second entry nothing was touched
  EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
  ExpectAtRest();
}

TEST_F(DeleteTest, TheErrorIsToldWhenEverythingIsBackInPlace) {
  PutThree();
  Open();
  device.failures.FailCallOf("SimDeletePhonebookEntry", 1);
  device.screen.OnBox([this](const test::ShownBox& box) {
    if (box.style == ui::kBoxQuestion) return;
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
    EXPECT_TRUE(SoftKeyEnabled(1));
  });
  DeleteAnsweringYes();
  EXPECT_EQ(Boxes().size(), 2u);
}

TEST_F(DeleteTest, ARowThatHoldsNoEntryStopsIt) {
  PutThree();
  Open();
  List().InsertItem(0, u"?", nullptr);
  SelectRows({0, 1});
  DeleteAnsweringYes();
  EXPECT_EQ(Calls("SimDeletePhonebookEntry"), 0u);
  EXPECT_EQ(List().ItemCount(), 4);
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
  ExpectAtRest();
}

TEST_F(DeleteTest, ClearsTheFieldsOfEachEntryInOrder) {
  SetSwitch(u"Enable_SNE", 1);
  SetSwitch(u"Enable_GAS", 1);
  PutThree();
  Open();
  SelectRows({1, 2});
  DeleteAnsweringYes();
  EXPECT_EQ(Cleared(), (Lines{"2 number2", "2 number3", "2 email", "2 nickname", "2 group",
                              "3 number2", "3 number3", "3 email", "3 nickname", "3 group"}));
}

TEST_F(DeleteTest, ClearsTheFieldsBetweenTheEntryAndItsRow) {
  PutThree();
  Open();
  SelectRows({0});
  int looks = 0;
  onClear = [&](std::uint32_t index) {
    ++looks;
    EXPECT_EQ(device.sim.Name(index), u"");
    EXPECT_EQ(List().ItemCount(), 3);
  };
  DeleteAnsweringYes();
  EXPECT_EQ(looks, 3);
  EXPECT_EQ(List().ItemCount(), 2);
}

struct FieldSwitch {
  std::u16string_view name;
  std::uint32_t value;
  Lines cleared;
};

class DeleteFieldsTest : public DeleteTest, public testing::WithParamInterface<FieldSwitch> {};

TEST_P(DeleteFieldsTest, TheSettingsSayWhichAreCleared) {
  SetSwitch(GetParam().name, GetParam().value);
  PutThree();
  Open();
  DeleteAnsweringYes();
  EXPECT_EQ(Cleared(), GetParam().cleared);
}

INSTANTIATE_TEST_SUITE_P(
    Switches, DeleteFieldsTest,
    testing::Values(
        FieldSwitch{u"Enable_SNE", 0, {"1 number2", "1 number3", "1 email"}},
        FieldSwitch{u"Disable_ANR", 1, {"1 number3", "1 email"}},
        FieldSwitch{u"Disable_ANRA", 2, {"1 number2", "1 email"}},
        FieldSwitch{u"Disable_EMAIL", 1, {"1 number2", "1 number3"}},
        FieldSwitch{u"Enable_SNE", 2, {"1 number2", "1 number3", "1 email", "1 nickname"}},
        FieldSwitch{u"Enable_GAS", 2, {"1 number2", "1 number3", "1 email", "1 group"}}));

}  // namespace
}  // namespace kelpin::app
