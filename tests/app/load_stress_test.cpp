#include <atomic>
#include <thread>

#include "app/own_number_header.h"
#include "tests/app/app_fixture.h"

// Refreshes, header updates and the user against each other, bounded in count. A thread sanitizer
// makes the most of it.
namespace kelpin::app {
namespace {

constexpr int kRefreshes = 40;
constexpr int kHeaderThreads = 3;
constexpr int kHeaderUpdates = 60;

class LoadStressTest : public AppTest {
 protected:
  LoadStressTest() {
    device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kRun);
    wiring.loadLayout = [this](AppState&) { ++loadsBegun; };
  }
  // Waits until every load that was asked for has come to its end.
  bool AwaitRest() {
    return device.screen.RunUntil([this] {
      return static_cast<std::size_t>(loadsBegun) == Calls("CreateThread") && List().Visible();
    });
  }
  std::atomic<int> loadsBegun = 0;
};

TEST_F(LoadStressTest, RefreshesAndHeaderUpdatesLeaveTheWholeList) {
  device.sim.SetCapacity(40);
  for (std::uint32_t index = 1; index <= 35; ++index) {
    device.sim.SetEntry(index, u"Name", u"123");
  }
  SetOwnNumbers({{0x04, 0x81, 0x10, 0x32, 0xF4}});
  ASSERT_EQ(Start(), 1);

  std::atomic<int> refused = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kHeaderThreads; ++thread) {
    threads.emplace_back([&] {
      for (int update = 0; update < kHeaderUpdates; ++update) {
        refused += UpdateOwnNumberHeader(*state) == 1 ? 0 : 1;
      }
    });
  }
  for (int refresh = 0; refresh < kRefreshes; ++refresh) {
    theLoader->Refresh();
    device.screen.RunPending();
    Dialog().Command(res::kCommandSelectAll);
    List().ClickHeader(refresh % 3);
    Dialog().KeyDown({ui::Key::kDown});
    Dialog().Activate(refresh % 2 == 0);
    device.screen.RunPending();
    std::this_thread::yield();
  }
  for (std::thread& thread : threads) thread.join();
  ASSERT_TRUE(AwaitRest());
  EXPECT_EQ(List().ItemCount(), 35);
  ExpectAtRest();
  EXPECT_EQ(refused, 0);
  EXPECT_EQ(Header(), u"My No. 01234");
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(state->simPhonebook.FirstFreeSlot(), 36u);
}

TEST_F(LoadStressTest, TheEndMayComeAtAnyMomentOfALoad) {
  // The header's two questions, then four batches.
  for (std::uint32_t command = 1; command <= 6; ++command) {
    Device another;
    another.sim.SetCapacity(40);
    for (std::uint32_t index = 1; index <= 35; ++index) {
      another.sim.SetEntry(index, u"Name", u"123");
    }
    test::FakeRadio::File own;
    own.recordLength = 28;
    own.records.assign(1, std::vector<std::uint8_t>(28, 0xFF));
    another.radio.SetFile(0x6F40, own);
    another.radio.SetEntrySource([&another] { return test::RadioEntries(another.sim); });
    wiring.startWatchers = [&another, command](AppState& app, Commands&, ListLoader& loader) {
      another.radio.AwaitCommands(command);
      if (command % 2 == 0) loader.Refresh();  // and one that waits
      app.dialog->PostClose();
    };
    EXPECT_EQ(app::Run(another.ports, wiring), 0);
    EXPECT_EQ(another.sim.OpenSessions(), 0u) << command;
    EXPECT_EQ(another.radio.OpenSessions(), 0u) << command;
    EXPECT_EQ(another.kernel.OpenEvents(), 0u) << command;
    EXPECT_TRUE(another.screen.Boxes().empty()) << command;
  }
}

}  // namespace
}  // namespace kelpin::app
