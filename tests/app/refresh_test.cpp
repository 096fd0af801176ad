#include "tests/app/app_fixture.h"

// A list that is there already is read again.
namespace kelpin::app {
namespace {

using platform::SimResult;
using Texts = std::vector<std::u16string>;

class RefreshTest : public AppTest {};

TEST_F(RefreshTest, ARefreshReadsTheListAnew) {
  device.sim.SetEntry(1, u"Anna", u"1");
  Open();
  std::weak_ptr<const ui::RowData> block = List().ItemData(0);
  device.sim.SetEntry(2, u"Bert", u"2");
  device.sim.RemoveEntry(1);
  Dialog().Command(res::kCommandRefresh);
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_TRUE(block.expired());
  EXPECT_FALSE(Menu().IsEnabled(res::kCommandDelete));
  EXPECT_FALSE(device.screen.WaitCursor());
  const std::vector<bool> cursor = device.screen.WaitCursorLog();
  ASSERT_GE(cursor.size(), 2u);
  EXPECT_TRUE(cursor[cursor.size() - 2]);  // shown until the thread was made
  Load();
  EXPECT_EQ(Rows(), Texts{u"2|Bert|2"});
  EXPECT_EQ(state->simPhonebook.Slot(1), 0);
  ExpectAtRest();
}

TEST_F(RefreshTest, ARefreshOfACardThatIsNotReadyChangesNothing) {
  device.sim.SetEntry(1, u"Anna", u"1");
  Open();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  Dialog().Command(res::kCommandRefresh);
  EXPECT_EQ(BoxTexts(), Texts{u"SIM is busy."});
  EXPECT_EQ(Rows(), Texts{u"1|Anna|1"});
  EXPECT_EQ(Calls("CreateThread"), 1u);
  ExpectAtRest();
}

TEST_F(RefreshTest, ARefreshWithoutAThreadSaysThatNothingWasRead) {
  device.sim.SetEntry(1, u"Anna", u"1");
  Open();
  device.failures.FailCallOf("CreateThread", 1);
  Dialog().Command(res::kCommandRefresh);
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_EQ(List().Message().text, u"The card could not be read");
  ExpectAtRest();
  Refresh();  // the next one works
  EXPECT_EQ(Rows(), Texts{u"1|Anna|1"});
}

TEST_F(RefreshTest, AListThatWasNotReadWholeShowsNoOrder) {
  device.sim.SetEntry(1, u"Anna", u"1");
  Open();
  ASSERT_EQ(List().SortArrowColumn(), 1);
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimFailure);
  Refresh();
  EXPECT_EQ(List().SortArrowColumn(), -1);
}

TEST_F(RefreshTest, LoadsThatWaitBecomeOne) {
  device.sim.SetEntry(1, u"Anna", u"1");
  Open();
  const std::size_t threads = Calls("CreateThread");
  theLoader->Refresh();
  theLoader->Refresh();
  theLoader->Refresh();
  EXPECT_EQ(Calls("CreateThread"), threads + 1);
  Load();
  EXPECT_EQ(Rows(), Texts{u"1|Anna|1"});
}

TEST_F(RefreshTest, ASecondLoadWaitsForTheFirstAndStartsOver) {
  device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kRun);
  device.sim.SetEntry(1, u"Anna", u"1");
  device.sim.SetEntry(2, u"Bert", u"2");
  device.radio.SetResponder([](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.name == "RIL_ReadPhonebookEntries" && command.id <= 2) {
      answer.emplace().answering = test::FakeRadio::Answering::kNever;
    }
    return answer;
  });
  ASSERT_EQ(Start(), 1);
  device.radio.AwaitCommands(2);  // the header's question and the first batch, which hangs
  theLoader->Refresh();
  EXPECT_TRUE(IsListLoading(*state));
  const test::FakeRadio::Command hanging = device.radio.LastCommand();
  device.radio.Deliver(hanging.ril, platform::kRilResultError, hanging.id, {});
  ASSERT_TRUE(device.screen.RunUntil(
      [this] { return Batches().size() == 2 && !IsListLoading(*state) && List().Visible(); }));
  EXPECT_EQ(Rows(), (Texts{u"1|Anna|1", u"2|Bert|2"}));
}

TEST_F(RefreshTest, ALoadThatBeginsAfterTheEndDoesNothing) {
  device.sim.SetEntry(1, u"Anna", u"1");
  ASSERT_EQ(Start(), 1);
  Dialog().Close();
  device.screen.RunMessageLoop();
  const std::size_t calls = device.journal.Entries().size();
  device.kernel.RunHeldThreads();
  EXPECT_EQ(device.journal.Entries().size(), calls);
  EXPECT_TRUE(Boxes().empty());
}

}  // namespace
}  // namespace kelpin::app
