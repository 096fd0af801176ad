#include "app/list_turn.h"
#include "tests/app/delete_fixture.h"

// What else happens while entries are being deleted, or while the user is asked.
namespace kelpin::app {
namespace {

using Indexes = std::vector<std::uint32_t>;
using Lines = std::vector<std::string>;

class DeleteMeanwhileTest : public DeleteTest {
 protected:
  // Runs `action` when the card is told to empty this location.
  void AtDeletionOf(std::uint32_t location, std::function<void()> action) {
    device.sim.onDelete = [location, action = std::move(action)](std::uint32_t index) {
      if (index == location) action();
    };
  }
  // Runs `action` while the user is asked whether to delete.
  void AtTheQuestion(std::function<void()> action) {
    device.screen.OnBox([this, action = std::move(action)](const test::ShownBox&) {
      if (Boxes().size() == 1) action();
    });
  }
};

TEST_F(DeleteMeanwhileTest, TheScreenIsServedBetweenAnyTwoOfManyEntries) {
  constexpr std::uint32_t kMany = 500;
  device.sim.SetCapacity(kMany);
  for (std::uint32_t index = 1; index <= kMany; ++index) {
    device.sim.SetEntry(index, u"Name", u"1");
  }
  Open();
  Dialog().Command(res::kCommandSelectAll);
  std::size_t deletions = 0;
  std::size_t served = 0;
  device.sim.onDelete = [&](std::uint32_t) {
    EXPECT_EQ(served, deletions);  // what was posted at the last deletion was done since
    ++deletions;
    device.screen.PostToScreen([&] {
      ++served;
      EXPECT_EQ(List().ItemCount(), static_cast<int>(kMany - deletions));  // seen to go
    });
  };
  DeleteAnsweringYes();
  EXPECT_EQ(deletions, kMany);
  EXPECT_EQ(served, kMany);
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_TRUE(device.sim.Entries().empty());
  ExpectAtRest();
}

TEST_F(DeleteMeanwhileTest, TheListAndTheCommandsAreOff) {
  PutThree();
  Open();
  SelectRows({0, 1});
  AtDeletionOf(1, [this] {
    device.screen.PostToScreen([this] {
      List().Click(1, 1, ui::kNoModifier);  // would open the entry
      List().DoubleClick(1);
      List().LongPress(1, {5, 5});
      Dialog().Command(res::kCommandEdit);
      Dialog().Command(res::kCommandRefresh);
      Dialog().PressSoftKey(0);
      Dialog().Command(res::kCommandDelete);
    });
  });
  DeleteAnsweringYes();
  EXPECT_TRUE(ran.empty());
  EXPECT_TRUE(device.screen.Popups().empty());
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(RowIndexes(), Indexes{3});
}

TEST_F(DeleteMeanwhileTest, WhatTheUserSelectsMeanwhileIsNotDeleted) {
  PutThree();
  Open();
  SelectRows({0, 1});
  AtDeletionOf(1,
               [this] { device.screen.PostToScreen([this] { Select(List().ItemCount() - 1); }); });
  DeleteAnsweringYes();
  EXPECT_EQ(Deleted(), (Lines{"1", "2"}));
  EXPECT_EQ(RowIndexes(), Indexes{3});
  ExpectAtRest();
}

TEST_F(DeleteMeanwhileTest, AListThatWasReadAgainDuringTheQuestionIsSpared) {
  PutThree();
  Open();
  SelectRows({0, 2});
  AtTheQuestion([this] {
    theLoader->Refresh();
    device.kernel.RunHeldThreads();
    ASSERT_EQ(List().SelectedCount(), 1);  // row 0, by the load
  });
  DeleteAnsweringYes();
  EXPECT_EQ(Calls("SimDeletePhonebookEntry"), 0u);
  EXPECT_EQ(RowIndexes(), (Indexes{1, 2, 3}));
  ExpectAtRest();
}

TEST_F(DeleteMeanwhileTest, AnEntryThatWasChangedDuringTheQuestionIsSpared) {
  PutThree();
  Open();
  SelectRows({0, 1});
  AtTheQuestion([this] {
    List().DeleteItem(0);
    InsertListRow(*state, 1, u"999", u"Somebody else");
    List().SetItemState(0, ui::kItemSelected, ui::kItemSelected);
  });
  DeleteAnsweringYes();
  EXPECT_EQ(Deleted(), Lines{"2"});
  EXPECT_EQ(RowIndexes(), (Indexes{1, 3}));
  ExpectAtRest();
}

TEST_F(DeleteMeanwhileTest, AListThatIsToBeReadAgainEndsIt) {
  PutThree();
  Open();
  SelectRows({0, 1, 2});
  AtDeletionOf(1, [this] { theLoader->Refresh(); });
  DeleteAnsweringYes();
  EXPECT_EQ(Deleted(), Lines{"1"});
  ASSERT_EQ(Boxes().size(), 2u);
  EXPECT_EQ(Boxes()[1].text,
            u"1 of 3 entries are deleted. The card was changed meanwhile, so the others were left "
            u"on it and the list is read again.");
  EXPECT_EQ(Boxes()[1].style, ui::kBoxWarning);
  EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
  Load();
  EXPECT_EQ(RowIndexes(), (Indexes{2, 3}));
  ExpectAtRest();
}

TEST_F(DeleteMeanwhileTest, ItWaitsForWhoeverHasTheList) {
  PutThree();
  Open();
  ASSERT_TRUE(TakeList(*state));
  DeleteAnsweringYes();
  EXPECT_EQ(Calls("SimDeletePhonebookEntry"), 0u);
  GiveListBack(*state);
  device.screen.RunPending();
  EXPECT_EQ(Deleted(), Lines{"1"});
  ExpectAtRest();
}

TEST_F(DeleteMeanwhileTest, ASecondDeleteDuringTheQuestionIsNotHeard) {
  PutThree();
  Open();
  AtTheQuestion([this] { theCommands->Run(res::kCommandDelete); });
  DeleteAnsweringYes();
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Deleted(), Lines{"1"});
}

TEST_F(DeleteMeanwhileTest, TheWindowDoesNotCloseWithoutAsking) {
  PutThree();
  Open();
  SelectRows({0, 1, 2});
  AtDeletionOf(2, [this] { Dialog().PostClose(); });
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  device.screen.ScriptBox(ui::BoxAnswer::kNo);
  Delete();
  ASSERT_EQ(Boxes().size(), 2u);
  EXPECT_EQ(Boxes()[1].text,
            u"2 of 3 entries are deleted, the others are still on the card.\nStop and close?");
  EXPECT_EQ(Boxes()[1].style, ui::kBoxQuestion);
  EXPECT_FALSE(Dialog().Ended());
  EXPECT_EQ(Deleted(), (Lines{"1", "2", "3"}));  // each once
  ExpectAtRest();
}

TEST_F(DeleteMeanwhileTest, AYesClosesTheWindowAndLeavesTheRestOnTheCard) {
  PutThree();
  Open();
  SelectRows({0, 1, 2});
  AtDeletionOf(2, [this] { Dialog().PostClose(); });
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  Delete();
  EXPECT_TRUE(Dialog().Ended());
  EXPECT_EQ(Deleted(), (Lines{"1", "2"}));
  EXPECT_EQ(device.sim.Entries().size(), 1u);
}

TEST_F(DeleteMeanwhileTest, NothingGoesOnUnderTheQuestionWhetherToClose) {
  PutThree();
  Open();
  SelectRows({0, 1, 2});
  AtDeletionOf(1, [this] { Dialog().PostClose(); });
  device.screen.OnBox([this](const test::ShownBox&) {
    if (Boxes().size() != 2) return;
    device.screen.RunPending();
    EXPECT_EQ(Deleted(), Lines{"1"});
    Dialog().Close();  // once more: one question is enough
  });
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  device.screen.ScriptBox(ui::BoxAnswer::kNo);
  Delete();
  EXPECT_EQ(Boxes().size(), 2u);
  EXPECT_EQ(Deleted(), (Lines{"1", "2", "3"}));
  EXPECT_FALSE(Dialog().Ended());
}

TEST_F(DeleteMeanwhileTest, WithNothingUnderWayTheWindowClosesAtOnce) {
  PutThree();
  Open();
  DeleteAnsweringYes();
  Dialog().Close();
  EXPECT_TRUE(Dialog().Ended());
  EXPECT_EQ(Boxes().size(), 1u);
}

TEST_F(DeleteMeanwhileTest, AWindowThatIsTakenAwayEndsItAndEveryWaitForTheList) {
  device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kRun);
  PutThree();
  ASSERT_EQ(Start(), 1);
  ASSERT_TRUE(device.screen.RunUntil(
      [this] { return List().Visible() && List().SelectedCount() == 1 && SoftKeyEnabled(1); }));
  SelectRows({0, 1, 2});
  AtDeletionOf(1, [this] {
    theLoader->StartLoad();  // waits for the list
    Dialog().End(0);
  });
  DeleteAnsweringYes();
  device.screen.RunMessageLoop();
  device.kernel.EndThreads();  // returns
  EXPECT_EQ(Deleted(), Lines{"1"});
}

}  // namespace
}  // namespace kelpin::app
