#include <atomic>

#include "tests/app/watchers_fixture.h"

// Entries that were stored behind the list come into it.
namespace kelpin::app {
namespace {

using platform::SimResult;
using Texts = std::vector<std::u16string>;

constexpr std::uint32_t kSelected = ui::kItemSelected;
constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

// What a probe saw while a watcher worked.
struct Seen {
  bool loading = false;
  bool notifying = true;
  bool leftKey = true;
  bool rightKey = true;
  bool waitCursor = false;
};

class StoredWatcherTest : public WatchersTest {
 protected:
  Seen Look() {
    return {IsListLoading(*state), List().Notifying(), SoftKeyEnabled(0), SoftKeyEnabled(1),
            device.screen.WaitCursor()};
  }
};

TEST_F(StoredWatcherTest, ListsAnEntryThatWasNotListed) {
  PutThree();
  OpenWatched();
  device.sim.SetEntry(7, u"Bea", u"+777");
  TellStored(7);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Rows(), (Texts{u"1|Anna|111", u"7|Bea|+777", u"2|Bert|222", u"3|Cem|333"}));
  EXPECT_EQ(Calls("SimReadPhonebookEntry"), 1u);
  EXPECT_EQ(state->simPhonebook.Slot(7), 1);
  EXPECT_TRUE(Boxes().empty());
  ExpectAtRest();
}

TEST_F(StoredWatcherTest, ReplacesTheRowOfAnEntryThatWasListed) {
  PutThree();
  OpenWatched();
  const std::weak_ptr<const ui::RowData> old = List().ItemData(1);
  device.sim.SetEntry(2, u"Bertha", u"2222");
  TellStored(2);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Rows(), (Texts{u"1|Anna|111", u"2|Bertha|2222", u"3|Cem|333"}));
  EXPECT_TRUE(old.expired());
}

TEST_F(StoredWatcherTest, SelectsThePlaceOfAReplacedRow) {
  PutThree();
  OpenWatched();
  Select(0);
  device.sim.SetEntry(3, u"Cem", u"3333");
  TellStored(3);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(List().ItemState(0) & kSelected, 0u);
  EXPECT_EQ(List().ItemState(2), kSelectedFocused);
  EXPECT_EQ(List().TakeEnsureVisible(), 0);
}

TEST_F(StoredWatcherTest, SelectsTheOldPlaceThoughTheEntrySortsElsewhere) {
  PutThree();
  OpenWatched();
  Select(2);
  device.sim.SetEntry(1, u"Zoe", u"111");
  TellStored(1);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Rows(), (Texts{u"2|Bert|222", u"3|Cem|333", u"1|Zoe|111"}));
  EXPECT_EQ(List().NextItem(-1, kSelected), 0);
  EXPECT_EQ(List().SelectedCount(), 1);
}

TEST_F(StoredWatcherTest, LeavesTheSelectionWhenNoRowWasReplaced) {
  PutThree();
  OpenWatched();
  Select(1);
  device.sim.SetEntry(7, u"Aaron", u"777");
  TellStored(7);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{7, 1, 2, 3}));
  EXPECT_EQ(List().SelectedCount(), 1);
  EXPECT_EQ(List().NextItem(-1, kSelected), 2);  // still Bert
}

TEST_F(StoredWatcherTest, SortsByTheColumnThatIsSortedBy) {
  PutThree();
  OpenWatched();
  List().ClickHeader(0);  // from ascending to descending
  device.sim.SetEntry(9, u"Aaa", u"9");
  TellStored(9);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{9, 3, 2, 1}));
}

TEST_F(StoredWatcherTest, WorksOnASilentListWithTheSoftKeysOff) {
  PutThree();
  Seen seen;
  OpenWatched();
  device.sim.onRead = [&](std::uint32_t) { seen = Look(); };
  TellStored(2);
  ASSERT_TRUE(Settle());
  EXPECT_TRUE(seen.loading);
  EXPECT_FALSE(seen.notifying);
  EXPECT_FALSE(seen.leftKey);
  EXPECT_FALSE(seen.rightKey);
  ExpectAtRest();
}

TEST_F(StoredWatcherTest, ShowsTheWaitCursorOnlyWhileTheWindowIsActive) {
  PutThree();
  OpenWatched();
  std::vector<bool> cursors;
  device.sim.onRead = [&](std::uint32_t) { cursors.push_back(device.screen.WaitCursor()); };
  Dialog().Activate(true);
  TellStored(2);
  ASSERT_TRUE(Settle());
  EXPECT_FALSE(device.screen.WaitCursor());
  Dialog().Activate(false);
  TellStored(2);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(cursors, (std::vector<bool>{true, false}));
  EXPECT_EQ(Calls("SetWaitCursor"), 2u);  // on and off, once
}

TEST_F(StoredWatcherTest, TellsOfAnEntryThatCannotBeReadAndGoesOn) {
  PutThree();
  OpenWatched();
  HoldList();
  TellStored(2);  // its watcher waits for the list
  TellStored(8);
  device.sim.SetEntry(8, u"Dan", u"8");
  device.failures.FailCallOf("SimReadPhonebookEntry", 1);
  LetListGo();
  ASSERT_TRUE(Settle());
  EXPECT_EQ(BoxTexts(), Texts{u"SIM failure was detected. "});
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
  EXPECT_EQ(Rows(), (Texts{u"1|Anna|111", u"3|Cem|333", u"8|Dan|8"}));
  ExpectAtRest();
}

TEST_F(StoredWatcherTest, AListThatLosesItsOnlyEntryHasNothingToSelect) {
  device.sim.SetEntry(2, u"Bert", u"222");
  OpenWatched();
  device.failures.FailCallOf("SimReadPhonebookEntry", 1);
  TellStored(2);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(BoxTexts(), Texts{u"SIM failure was detected. "});
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_EQ(List().SelectedCount(), 0);
  EXPECT_FALSE(Menu().IsEnabled(res::kCommandDelete));
  ExpectAtRest();
}

TEST_F(StoredWatcherTest, WithNothingQueuedLeavesTheSoftKeysAlone) {
  PutThree();
  OpenWatched();
  HoldList();
  Pulse(sim::kStoredEventName);
  Dialog().Bar()->EnableSoftKey(1, false);  // as whoever has the list left them
  LetListGo();
  ASSERT_TRUE(device.screen.RunUntil([this] { return device.EveryWatcherWaits(); }));
  EXPECT_FALSE(SoftKeyEnabled(1));
  EXPECT_FALSE(IsListLoading(*state));
  EXPECT_TRUE(List().Notifying());
  EXPECT_EQ(Calls("SetWaitCursor"), 0u);
  EXPECT_EQ(Calls("SimReadPhonebookEntry"), 0u);
}

TEST_F(StoredWatcherTest, WaitsForWhoeverHasTheList) {
  PutThree();
  OpenWatched();
  std::atomic<bool> held = true;
  std::atomic<bool> early = false;
  device.sim.onRead = [&](std::uint32_t) { early = early || held; };
  HoldList();
  device.sim.SetEntry(4, u"Dan", u"444");
  TellStored(4);
  // The pulse freed the watcher; what it may do before the list is free it has time for here.
  for (int look = 0; look < 50; ++look) std::this_thread::yield();
  EXPECT_EQ(List().ItemCount(), 3);
  held = false;
  LetListGo();
  ASSERT_TRUE(Settle());
  EXPECT_FALSE(early);
  EXPECT_EQ(List().ItemCount(), 4);
}

TEST_F(StoredWatcherTest, ListsWhatCameWhileItWorked) {
  PutThree();
  OpenWatched();
  device.sim.SetEntry(4, u"Dan", u"4");
  device.sim.SetEntry(5, u"Eva", u"5");
  std::atomic<bool> told = false;
  device.sim.onRead = [&](std::uint32_t) {
    // On the watcher's thread: nobody waits for the pulse of this notice.
    if (!told.exchange(true)) TellStored(5);
  };
  TellStored(4);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{1, 2, 3, 4, 5}));
}

TEST_F(StoredWatcherTest, SeesWhatAnotherProgramStores) {
  PutThree();
  OpenWatched();
  platform::SimHandle another = 0;
  ASSERT_EQ(device.sim.SimInitialize(0, nullptr, nullptr, another), SimResult::kOk);
  platform::SimPhonebookEntry entry;
  entry.params = platform::kSimEntryAll;
  entry.text[0] = u'X';
  entry.address[0] = u'9';
  ASSERT_EQ(device.sim.SimWritePhonebookEntry(another, platform::kSimPhonebookStorageSim, 5, entry),
            SimResult::kOk);
  device.sim.Drain();
  ASSERT_TRUE(Settle());
  EXPECT_EQ(RowText(3), u"5|X|9");
  ASSERT_EQ(device.sim.SimDeletePhonebookEntry(another, platform::kSimPhonebookStorageSim, 1),
            SimResult::kOk);
  device.sim.Drain();
  ASSERT_TRUE(Settle());
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{2, 3, 5}));
  ASSERT_EQ(device.sim.SimDeinitialize(another), SimResult::kOk);
}

TEST_F(StoredWatcherTest, SaysNothingWhenTheProgramEndsUnderItsHands) {
  PutThree();
  OpenWatched();
  HoldList();
  TellStored(2);
  Dialog().PostClose();
  device.screen.RunMessageLoop();
  device.kernel.EndThreads();
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(Calls("SimReadPhonebookEntry"), 0u);
}

}  // namespace
}  // namespace kelpin::app
