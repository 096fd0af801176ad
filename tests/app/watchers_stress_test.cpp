#include <set>
#include <thread>

#include "app/delete_entries.h"
#include "app/own_number_header.h"
#include "tests/app/watchers_fixture.h"

// Notices, refreshes, deletions, header updates and the user against each other, bounded in count.
// A thread sanitizer makes the most of it.
namespace kelpin::app {
namespace {

using platform::kSimPhonebookStorageSim;

constexpr std::uint32_t kCapacity = 40;
constexpr std::uint32_t kFirst =
    1;  // from here to kOthers - 1 are the entries of the card at first
constexpr std::uint32_t kOthers = 21;  // from here on another program writes and deletes
constexpr int kOtherChanges = 400;
constexpr int kHeaderUpdates = 80;
constexpr int kNews = 25;
constexpr int kUserTurns = 60;

class WatchersStressTest : public WatchersTest {
 protected:
  WatchersStressTest() {
    std::erase(known, res::kCommandDelete);
    wiring.fillCommands = [fill = wiring.fillCommands](AppState& app, Commands& commands,
                                                       ListLoader& loader) {
      fill(app, commands, loader);
      RegisterDelete(app, commands, loader, nullptr);
    };
    device.sim.SetCapacity(kCapacity);
    for (std::uint32_t index = kFirst; index < kOthers; ++index) {
      device.sim.SetEntry(index, u"Name", u"123");
    }
    device.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  }

  // Stores and deletes entries through a session of its own, as another program does.
  void ChangeAsAnother() {
    platform::SimHandle another = 0;
    ASSERT_TRUE(Succeeded(device.sim.SimInitialize(0, nullptr, nullptr, another)));
    platform::SimPhonebookEntry entry;
    entry.params = platform::kSimEntryAll;
    entry.address[0] = u'9';
    for (int change = 0; change < kOtherChanges; ++change) {
      const auto place = static_cast<std::uint32_t>(change) % (kCapacity - kOthers + 1);
      entry.text[0] = static_cast<char16_t>(u'A' + change % 26);
      // Two out of three are stored; a location is deleted after it was stored.
      const platform::SimResult result =
          change % 3 == 2 ? device.sim.SimDeletePhonebookEntry(another, kSimPhonebookStorageSim,
                                                               kOthers + (place + 20 - 1) % 20)
                          : device.sim.SimWritePhonebookEntry(another, kSimPhonebookStorageSim,
                                                              kOthers + place, entry);
      ASSERT_TRUE(Succeeded(result));
      std::this_thread::yield();
    }
    ASSERT_TRUE(Succeeded(device.sim.SimDeinitialize(another)));
  }

  std::set<std::uint32_t> OnTheCard() const {
    std::set<std::uint32_t> indexes;
    for (const auto& [index, entry] : device.sim.Entries()) indexes.insert(index);
    return indexes;
  }
};

TEST_F(WatchersStressTest, TheListEndsUpAsTheCardIs) {
  SetOwnNumbers({{0x03, 0x91, 0x94, 0xF1}});
  OpenWatched();
  const platform::SimHandle own = state->simPhonebook.Handle();
  std::vector<std::thread> threads;
  threads.emplace_back([this] { ChangeAsAnother(); });
  threads.emplace_back([this] {
    for (int update = 0; update < kHeaderUpdates; ++update) {
      EXPECT_EQ(UpdateOwnNumberHeader(*state), 1);
    }
  });
  threads.emplace_back([this] {
    for (int news = 0; news < kNews; ++news) {
      TellRadio(news % 2 == 0 ? -4 : -1);
      std::this_thread::yield();
    }
  });
  for (int turn = 0; turn < kUserTurns; ++turn) {
    device.screen.RunPending();
    Select(turn % 5);
    Dialog().Command(turn % 6 == 5 ? res::kCommandRefresh : res::kCommandDelete);
    List().ClickHeader(turn % 3);
    Dialog().KeyDown({ui::Key::kDown});
    Dialog().Activate(turn % 2 == 0);
  }
  // The threads may need the screen for a box.
  std::atomic<bool> over = false;
  std::thread last([&] {
    for (std::thread& thread : threads) thread.join();
    over = true;
  });
  EXPECT_TRUE(device.screen.RunUntil([&] { return over.load(); }, 240));
  last.join();
  device.sim.Drain();
  ASSERT_TRUE(Settle());
  device.screen.RunPending();
  ASSERT_TRUE(Settle());

  // A last refresh, so that news that came while nobody waited count too.
  theLoader->Refresh();
  ASSERT_TRUE(Settle());
  const std::vector<std::uint32_t> rows = RowIndexes();
  EXPECT_EQ(std::set<std::uint32_t>(rows.begin(), rows.end()), OnTheCard());
  EXPECT_EQ(rows.size(), OnTheCard().size());
  for (std::uint32_t index = 1; index <= kCapacity; ++index) {
    EXPECT_EQ(state->simPhonebook.Slot(index), OnTheCard().count(index)) << index;
  }
  EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
  EXPECT_EQ(state->simPhonebook.Handle(), own);
  EXPECT_EQ(Header(), u"My No. +491");
  EXPECT_TRUE(device.screen.RunUntil([this] { return !device.screen.WaitCursor(); }));
  ExpectAtRest();
}

}  // namespace
}  // namespace kelpin::app
