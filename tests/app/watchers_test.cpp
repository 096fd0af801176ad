#include "app/watchers.h"

#include "tests/app/watchers_fixture.h"

// Start and end of the watchers; deleted entries, own numbers and the whole phone book.
namespace kelpin::app {
namespace {

using Texts = std::vector<std::u16string>;

constexpr std::uint32_t kSelected = ui::kItemSelected;

// +491 in the number part of an own-number record.
const std::vector<std::uint8_t> kInternational491 = {0x03, 0x91, 0x94, 0xF1};

TEST_F(WatchersTest, FourWaitAfterTheStart) {
  PutThree();
  ASSERT_EQ(Start(), 1);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Calls("CreateThread"), 5u);  // the load's and four
}

// Which one is missing tells the order in which they are made.
TEST_F(WatchersTest, AThreadThatIsNotMadeEndsTheStart) {
  const std::vector<std::u16string_view> order = {sim::kStoredEventName, sim::kDeletedEventName,
                                                  sim::kOwnNumbersEventName,
                                                  sim::kPhonebookEventName};
  for (std::size_t made = 0; made < order.size(); ++made) {
    Device another;
    another.failures.FailCallOf("CreateThread", static_cast<std::uint32_t>(made + 2));
    AppState app(another.ports);
    MainDialog dialog(app, wiring);
    ASSERT_EQ(InitInstance(app, dialog, 1, 0), 1);
    another.screen.RunPending();
    ASSERT_EQ(another.journal.Count("CreateThread"), made + 2);
    for (std::size_t watcher = 0; watcher < order.size(); ++watcher) {
      if (watcher < made) {
        another.kernel.AwaitWaiters(order[watcher], 1);
      } else {
        EXPECT_EQ(another.kernel.Waiters(order[watcher]), 0u) << made;
      }
    }
    app.dialog->PostClose();
    another.screen.RunMessageLoop();
    another.kernel.EndThreads();
  }
}

TEST_F(WatchersTest, TheEndOfTheProgramEndsThem) {
  PutThree();
  OpenWatched();
  Dialog().PostClose();
  device.screen.RunMessageLoop();
  device.kernel.EndThreads();  // returns
  EXPECT_FALSE(device.EveryWatcherWaits());
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(WatchersTest, ADeletedEntryLosesItsRowAndNothingElse) {
  PutThree();
  OpenWatched();
  Select(2);
  device.sim.RemoveEntry(1);
  TellDeleted(1);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Rows(), (Texts{u"2|Bert|222", u"3|Cem|333"}));
  EXPECT_EQ(List().NextItem(-1, kSelected), 1);  // still Cem
  EXPECT_EQ(List().SelectedCount(), 1);
  EXPECT_EQ(Calls("SimReadPhonebookEntry"), 0u);
  EXPECT_EQ(state->simPhonebook.Slot(1), 0);
  ExpectAtRest();
}

TEST_F(WatchersTest, ADeletedEntryThatWasNotListedChangesNothing) {
  PutThree();
  OpenWatched();
  const std::uint64_t version = List().RowsVersion();
  TellDeleted(7);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(List().RowsVersion(), version);
  ExpectAtRest();
}

TEST_F(WatchersTest, ADeletedEntryLeavesTheOrderAsItIs) {
  PutThree();
  OpenWatched();
  ASSERT_EQ(InsertListRow(*state, 9, u"999", u"Zoe"), 1);  // on top, out of order
  device.screen.RunPending();
  TellDeleted(2);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{9, 1, 3}));
  EXPECT_EQ(List().NextItem(-1, kSelected), 0);  // Zoe, as her coming left it
}

TEST_F(WatchersTest, TheLastSelectedRowTakesItsCommandsAlong) {
  PutThree();
  OpenWatched();
  Select(1);
  ASSERT_TRUE(Menu().IsEnabled(res::kCommandDelete));
  TellDeleted(2);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(List().SelectedCount(), 0);
  EXPECT_FALSE(Menu().IsEnabled(res::kCommandDelete));
}

TEST_F(WatchersTest, ALocationInUseAgainKeepsItsRow) {
  PutThree();
  OpenWatched();
  HoldList();
  TellDeleted(2);
  TellStored(2);
  LetListGo();
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Rows(), (Texts{u"1|Anna|111", u"2|Bert|222", u"3|Cem|333"}));
}

TEST_F(WatchersTest, DeletionsAreShownOnASilentListWithTheSoftKeysOff) {
  PutThree();
  OpenWatched();
  bool loading = false;
  bool keys = true;
  device.screen.onWaitCursor = [&](bool wait) {
    if (!wait) return;
    loading = IsListLoading(*state);
    keys = SoftKeyEnabled(0) || SoftKeyEnabled(1);
  };
  Dialog().Activate(true);
  TellDeleted(2);
  ASSERT_TRUE(Settle());
  device.screen.onWaitCursor = nullptr;
  EXPECT_TRUE(loading);
  EXPECT_FALSE(keys);
  EXPECT_FALSE(device.screen.WaitCursor());
  Dialog().Activate(false);
  device.journal.Clear();
  TellDeleted(3);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Calls("SetWaitCursor"), 0u);
  EXPECT_EQ(Rows(), Texts{u"1|Anna|111"});
}

TEST_F(WatchersTest, WithNothingDeletedTheSoftKeysComeBack) {
  PutThree();
  OpenWatched();
  HoldList();
  Pulse(sim::kDeletedEventName);
  Dialog().Bar()->EnableSoftKey(1, false);
  LetListGo();
  ASSERT_TRUE(Settle());
  EXPECT_TRUE(SoftKeyEnabled(1));
  ExpectAtRest();
}

TEST_F(WatchersTest, OwnNumbersThatWereRewrittenAreShown) {
  PutThree();
  OpenWatched();
  EXPECT_EQ(Header(), u"My No. ");
  SetOwnNumbers({kInternational491});
  TellRadio(-1);
  ASSERT_TRUE(device.screen.RunUntil([this] { return Header() == u"My No. +491"; }));
  SetOwnNumbers({});
  ASSERT_TRUE(Settle());
  Pulse(sim::kOwnNumbersEventName);  // another program says so, again
  ASSERT_TRUE(device.screen.RunUntil([this] { return Header() == u"My No. "; }));
  EXPECT_TRUE(Batches().size() == 1);  // the list was read once, at the start
}

TEST_F(WatchersTest, APhonebookThatWasRewrittenIsReadAgain) {
  PutThree();
  OpenWatched();
  device.sim.SetEntry(4, u"Dan", u"444");
  device.sim.RemoveEntry(1);
  TellRadio(-3);
  ASSERT_TRUE(device.screen.RunUntil([this] { return Batches().size() == 2; }));
  ASSERT_TRUE(Settle());
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{2, 3, 4}));
  Pulse(sim::kPhonebookEventName);  // another program says so, again
  ASSERT_TRUE(device.screen.RunUntil([this] { return Batches().size() == 3; }));
  ASSERT_TRUE(Settle());
  ExpectAtRest();
}

TEST_F(WatchersTest, OneNewsMayConcernBoth) {
  PutThree();
  OpenWatched();
  SetOwnNumbers({kInternational491});
  device.sim.SetEntry(4, u"Dan", u"444");
  TellRadio(-4);
  ASSERT_TRUE(device.screen.RunUntil(
      [this] { return Batches().size() == 2 && Header() == u"My No. +491"; }));
  ASSERT_TRUE(Settle());
  EXPECT_EQ(List().ItemCount(), 4);
}

// A card that was reset or exchanged: the driver tells that it was rewritten, then that it is
// ready.
TEST_F(WatchersTest, ACardThatWasExchangedIsListed) {
  PutThree();
  OpenWatched();
  for (const std::uint32_t index : {1u, 2u, 3u}) device.sim.RemoveEntry(index);
  device.sim.SetEntry(1, u"Other", u"1");
  device.radio.Notify(platform::kRilNotifyPhonebookRewritten, nullptr, 0);
  platform::RilEquipmentState ready;
  ready.readyState = platform::kRilReadyPhonebook;
  device.radio.Notify(platform::kRilNotifyEquipmentState, &ready, sizeof(ready));
  ASSERT_TRUE(device.screen.RunUntil([this] { return Batches().size() == 2; }));
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Rows(), Texts{u"1|Other|1"});
  // Ready once more without anything rewritten is no news.
  device.radio.Notify(platform::kRilNotifyEquipmentState, &ready, sizeof(ready));
  ASSERT_TRUE(Settle());
  device.screen.RunPending();
  EXPECT_EQ(Batches().size(), 2u);
}

TEST_F(WatchersTest, NewsThatNobodyWaitsForAreLost) {
  PutThree();
  Make();
  Pulse(sim::kPhonebookEventName);
  Pulse(sim::kOwnNumbersEventName);
  OpenWatched();
  device.screen.RunPending();
  EXPECT_EQ(Batches().size(), 1u);
  EXPECT_FALSE(device.kernel.EventIsSet(sim::kPhonebookEventName));
  EXPECT_FALSE(device.kernel.EventIsSet(sim::kOwnNumbersEventName));
}

TEST_F(WatchersTest, ARefreshWithADialogOpenIsDoneUnderIt) {
  PutThree();
  OpenWatched();
  device.screen.OnBox([this](const test::ShownBox&) {
    device.sim.SetEntry(4, u"Dan", u"444");
    Pulse(sim::kPhonebookEventName);
    EXPECT_TRUE(device.screen.RunUntil([this] { return Batches().size() == 2; }));
    EXPECT_TRUE(Settle());
  });
  device.screen.MessageBox(state->mainDialog, u"Text", u"Caption", ui::kBoxNotice);
  EXPECT_EQ(List().ItemCount(), 4);
}

}  // namespace
}  // namespace kelpin::app
