#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "sim/sim_phonebook.h"
#include "tests/sim/sim_bench.h"

namespace kelpin::sim {
namespace {

using platform::SimResult;
using platform::WaitResult;
using ::testing::ElementsAre;

constexpr std::uint32_t kStored = 0x104;
constexpr std::uint32_t kDeleted = 0x105;
constexpr const char* kStoredPulse = "EventModify(OEM_MY_SIM_STORED_EVENT_OEM, pulse)";
constexpr const char* kDeletedPulse = "EventModify(OEM_MY_SIM_DELETED_EVENT_OEM, pulse)";

// A phone book of ten locations whose map is there, and of which `used` are occupied.
class SimNoticeTest : public ::testing::Test {
 protected:
  void Prepare(const std::vector<std::uint32_t>& used, std::uint32_t capacity = 10) {
    bench_.sim.SetCapacity(capacity);
    ASSERT_EQ(phonebook_.Open(), SimResult::kOk);
    ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
    phonebook_.PrepareSlotMap();
    for (const std::uint32_t index : used) phonebook_.MarkSlot(index, 1);
    bench_.journal.Clear();
  }

  std::vector<std::uint32_t> Occupied() {
    std::vector<std::uint32_t> occupied;
    for (std::uint32_t index = 0; index <= phonebook_.Total(); ++index) {
      if (phonebook_.Slot(index) != 0) occupied.push_back(index);
    }
    return occupied;
  }

  std::vector<std::uint32_t> TakeAllStored() {
    std::vector<std::uint32_t> taken;
    for (std::uint32_t index = 0; phonebook_.TakeStored(index) != 0;) taken.push_back(index);
    return taken;
  }

  std::vector<std::uint32_t> TakeAllDeleted() {
    std::vector<std::uint32_t> taken;
    for (std::uint32_t index = 0; phonebook_.TakeDeleted(index) != 0;) taken.push_back(index);
    return taken;
  }

  void ExpectNothingHappened(const std::vector<std::uint32_t>& used) {
    EXPECT_EQ(Occupied(), used);
    EXPECT_EQ(phonebook_.StoredCount(), 0u);
    EXPECT_EQ(phonebook_.DeletedCount(), 0u);
    EXPECT_EQ(bench_.journal.Count("EventModify"), 0u);
  }

  test::SimBench bench_;
  SimPhonebook phonebook_{bench_.sim, bench_.kernel};
};

TEST_F(SimNoticeTest, TheMapStartsWithEveryLocationFree) {
  Prepare({});
  EXPECT_THAT(Occupied(), ElementsAre());
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 1u);
}

TEST_F(SimNoticeTest, PreparingAgainFreesEveryLocation) {
  Prepare({1, 2, 10});
  phonebook_.PrepareSlotMap();
  EXPECT_THAT(Occupied(), ElementsAre());
}

TEST_F(SimNoticeTest, PreparingForALargerCardKnowsItsLocations) {
  Prepare({1}, 10);
  bench_.sim.SetCapacity(12);
  ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
  phonebook_.PrepareSlotMap();
  phonebook_.MarkSlot(12, 1);
  EXPECT_THAT(Occupied(), ElementsAre(12));
}

TEST_F(SimNoticeTest, TheLastLocationCanBeMarkedAndOnesBeyondItCannot) {
  Prepare({});
  phonebook_.MarkSlot(10, 1);
  phonebook_.MarkSlot(11, 1);
  phonebook_.MarkSlot(0xFFFFFFFF, 1);
  EXPECT_THAT(Occupied(), ElementsAre(10));
  phonebook_.MarkSlot(10, 0);
  EXPECT_THAT(Occupied(), ElementsAre());
}

TEST_F(SimNoticeTest, TheFirstFreeLocationIsTheLowestOne) {
  Prepare({1, 2, 3});
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 4u);
  phonebook_.MarkSlot(2, 0);
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 2u);
}

TEST_F(SimNoticeTest, TheLastLocationIsFoundFree) {
  Prepare({1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 10u);
}

TEST_F(SimNoticeTest, AFullSimHasNoFreeLocation) {
  Prepare({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 0u);
}

TEST_F(SimNoticeTest, ASimWithoutLocationsHasNoFreeOne) {
  Prepare({}, 0);
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 0u);
}

TEST_F(SimNoticeTest, WithoutAMapNoLocationIsFree) {
  ASSERT_EQ(phonebook_.Open(), SimResult::kOk);
  ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
  ASSERT_EQ(phonebook_.Total(), 10u);
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 0u);
}

TEST_F(SimNoticeTest, AStoredEntryIsMarkedKeptAndPulsed) {
  Prepare({1});
  bench_.sim.NotifyChange(kStored, 5);
  EXPECT_THAT(Occupied(), ElementsAre(1, 5));
  EXPECT_THAT(TakeAllStored(), ElementsAre(5));
  EXPECT_THAT(bench_.journal.Entries("EventModify"), ElementsAre(kStoredPulse));
  EXPECT_EQ(phonebook_.DeletedCount(), 0u);
}

TEST_F(SimNoticeTest, ADeletedEntryIsFreedKeptAndPulsed) {
  Prepare({1, 5});
  bench_.sim.NotifyChange(kDeleted, 5);
  EXPECT_THAT(Occupied(), ElementsAre(1));
  EXPECT_THAT(TakeAllDeleted(), ElementsAre(5));
  EXPECT_THAT(bench_.journal.Entries("EventModify"), ElementsAre(kDeletedPulse));
  EXPECT_EQ(phonebook_.StoredCount(), 0u);
}

TEST_F(SimNoticeTest, StoredEntriesThatAreNotCollectedOnlyMarkTheMap) {
  Prepare({});
  phonebook_.SetCollectStores(0);
  bench_.sim.NotifyChange(kStored, 5);
  EXPECT_THAT(Occupied(), ElementsAre(5));
  EXPECT_EQ(phonebook_.StoredCount(), 0u);
  EXPECT_EQ(bench_.journal.Count("EventModify"), 0u);
  bench_.sim.NotifyChange(kDeleted, 5);  // deletions are told apart
  EXPECT_EQ(phonebook_.DeletedCount(), 1u);
}

TEST_F(SimNoticeTest, DeletedEntriesThatAreNotCollectedOnlyFreeTheMap) {
  Prepare({5});
  phonebook_.SetCollectDeletions(0);
  bench_.sim.NotifyChange(kDeleted, 5);
  EXPECT_THAT(Occupied(), ElementsAre());
  EXPECT_EQ(phonebook_.DeletedCount(), 0u);
  EXPECT_EQ(bench_.journal.Count("EventModify"), 0u);
  bench_.sim.NotifyChange(kStored, 5);
  EXPECT_EQ(phonebook_.StoredCount(), 1u);
}

TEST_F(SimNoticeTest, OtherNoticesAreIgnored) {
  Prepare({5});
  for (const std::uint32_t code : {0x103u, 0x106u, 0u, 0x104u << 16}) {
    bench_.sim.NotifyChange(code, 6);
  }
  ExpectNothingHappened({5});
}

TEST_F(SimNoticeTest, NoticesTooShortToNameAnEntryAreIgnored) {
  Prepare({5});
  const platform::SimPhonebookChange stored{6, 16};
  const platform::SimPhonebookChange deleted{5, 16};
  bench_.sim.Notify(kStored, &stored, 7);
  bench_.sim.Notify(kDeleted, &deleted, 7);
  bench_.sim.Notify(kStored, &stored, 0);
  ExpectNothingHappened({5});
}

TEST_F(SimNoticeTest, ALongerNoticeIsReadFromItsStart) {
  Prepare({});
  const std::uint32_t words[] = {6, 16, 99};
  bench_.sim.Notify(kStored, words, sizeof(words));
  EXPECT_THAT(Occupied(), ElementsAre(6));
}

TEST_F(SimNoticeTest, NoticesOfAnotherStorageAreIgnored) {
  Prepare({5});
  bench_.sim.NotifyChange(kStored, 6, 1);
  bench_.sim.NotifyChange(kDeleted, 5, 1);
  ExpectNothingHappened({5});
}

TEST_F(SimNoticeTest, TheLastLocationIsAcceptedAndTheOneBeyondItIgnored) {
  Prepare({});
  bench_.sim.NotifyChange(kStored, 11);
  ExpectNothingHappened({});
  bench_.sim.NotifyChange(kDeleted, 11);
  ExpectNothingHappened({});
  bench_.sim.NotifyChange(kStored, 10);
  EXPECT_THAT(Occupied(), ElementsAre(10));
  bench_.sim.NotifyChange(kDeleted, 10);
  EXPECT_THAT(Occupied(), ElementsAre());
  EXPECT_THAT(TakeAllStored(), ElementsAre(10));
  EXPECT_THAT(TakeAllDeleted(), ElementsAre(10));
}

TEST_F(SimNoticeTest, AStoredNoticeWithoutAnIndexTakesTheFirstFreeLocation) {
  Prepare({1, 2, 3});
  bench_.sim.NotifyChange(kStored, 0xFFFFFFFF);
  EXPECT_THAT(Occupied(), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(TakeAllStored(), ElementsAre(4));
  EXPECT_THAT(bench_.journal.Entries("EventModify"), ElementsAre(kStoredPulse));
}

TEST_F(SimNoticeTest, AStoredNoticeWithoutAnIndexOnAFullSimChangesNothing) {
  const std::vector<std::uint32_t> full = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  Prepare(full);
  bench_.sim.NotifyChange(kStored, 0xFFFFFFFF);
  ExpectNothingHappened(full);
}

TEST_F(SimNoticeTest, ADeletedNoticeWithoutAnIndexIsNeverGuessed) {
  Prepare({1, 2, 3});
  bench_.sim.NotifyChange(kDeleted, 0xFFFFFFFF);
  ExpectNothingHappened({1, 2, 3});
}

TEST_F(SimNoticeTest, NoticesBeforeTheFirstMapAreIgnored) {
  ASSERT_EQ(phonebook_.Open(), SimResult::kOk);
  bench_.sim.NotifyChange(kStored, 0);
  ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
  bench_.sim.NotifyChange(kStored, 3);
  bench_.sim.NotifyChange(kStored, 0xFFFFFFFF);
  bench_.sim.NotifyChange(kDeleted, 3);
  EXPECT_EQ(phonebook_.StoredCount(), 0u);
  EXPECT_EQ(phonebook_.DeletedCount(), 0u);
  EXPECT_EQ(bench_.journal.Count("EventModify"), 0u);
}

TEST_F(SimNoticeTest, NoLocationIsNeverAnEntry) {
  Prepare({});
  bench_.sim.NotifyChange(kStored, 0);
  EXPECT_THAT(Occupied(), ElementsAre(0));
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 1u);
  bench_.sim.NotifyChange(kDeleted, 0);
  ExpectNothingHappened({});
}

TEST_F(SimNoticeTest, AnEntryOnAGrownCardIsToldOfBeforeTheMapKnowsIt) {
  Prepare({1}, 10);
  bench_.sim.SetCapacity(12);
  ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
  bench_.sim.NotifyChange(kStored, 12);
  EXPECT_THAT(TakeAllStored(), ElementsAre(12));
  for (std::uint32_t index = 1; index <= 10; ++index) phonebook_.MarkSlot(index, 1);
  EXPECT_EQ(phonebook_.FirstFreeSlot(), 0u);  // 11 and 12 may hold anything
}

TEST_F(SimNoticeTest, AnObjectThatIsMissingIsNotCalled) {
  const platform::SimPhonebookChange change{1, 16};
  SimPhonebook::OnSimNotify(kStored, &change, sizeof(change), nullptr);
  Prepare({});
  SimPhonebook::OnSimNotify(kStored, nullptr, sizeof(change), &phonebook_);
  ExpectNothingHappened({});
}

TEST_F(SimNoticeTest, APulseWithNobodyWaitingIsLostAndTheIndexStays) {
  Prepare({});
  bench_.sim.NotifyChange(kStored, 5);
  EXPECT_FALSE(bench_.kernel.EventIsSet(kStoredEventName));
  EXPECT_EQ(phonebook_.WaitStored(0), WaitResult::kTimeout);
  EXPECT_EQ(phonebook_.StoredCount(), 1u);
}

TEST_F(SimNoticeTest, AWaitingThreadIsFreedOnceAndFindsTheIndexes) {
  Prepare({7});
  std::vector<std::uint32_t> stored;
  std::vector<std::uint32_t> deleted;
  std::thread storedWatcher([&] {
    ASSERT_EQ(phonebook_.WaitStored(), WaitResult::kSignaled);
    stored = TakeAllStored();
  });
  std::thread deletedWatcher([&] {
    ASSERT_EQ(phonebook_.WaitDeleted(), WaitResult::kSignaled);
    deleted = TakeAllDeleted();
  });
  bench_.kernel.AwaitWaiters(kStoredEventName, 1);
  bench_.kernel.AwaitWaiters(kDeletedEventName, 1);
  bench_.sim.NotifyChange(kStored, 5);
  storedWatcher.join();
  bench_.sim.NotifyChange(kDeleted, 7);
  deletedWatcher.join();
  EXPECT_THAT(stored, ElementsAre(5));
  EXPECT_THAT(deleted, ElementsAre(7));
}

TEST_F(SimNoticeTest, IndexesWaitInOrderForABusyWatcher) {
  Prepare({});
  for (const std::uint32_t index : {3u, 9u, 3u}) bench_.sim.NotifyChange(kStored, index);
  EXPECT_THAT(TakeAllStored(), ElementsAre(3, 9, 3));
  EXPECT_THAT(TakeAllStored(), ElementsAre());
}

TEST_F(SimNoticeTest, OwnWritesAndDeletionsAreToldOfToo) {
  Prepare({});
  ASSERT_EQ(phonebook_.WriteEntry(4, u"Ada", u"1"), SimResult::kOk);
  ASSERT_EQ(phonebook_.DeleteEntry(4), SimResult::kOk);
  bench_.sim.Drain();
  EXPECT_THAT(TakeAllStored(), ElementsAre(4));
  EXPECT_THAT(TakeAllDeleted(), ElementsAre(4));
}

TEST_F(SimNoticeTest, AThreadThatWaitsOutlivesTheSessionAndEndsWithTheProgram) {
  Prepare({});
  std::atomic<int> ended = 0;
  ASSERT_EQ(bench_.kernel.CreateThread([&] {
    EXPECT_EQ(phonebook_.WaitStored(), WaitResult::kAbandoned);
    ++ended;
  }),
            1);
  bench_.kernel.AwaitWaiters(kStoredEventName, 1);
  phonebook_.Close();
  EXPECT_EQ(bench_.kernel.Waiters(kStoredEventName), 1u);
  EXPECT_EQ(phonebook_.WaitStored(), WaitResult::kAbandoned);
  EXPECT_EQ(phonebook_.WaitDeleted(), WaitResult::kAbandoned);
  bench_.kernel.EndThreads();
  EXPECT_EQ(ended, 1);
}

TEST_F(SimNoticeTest, WithoutEventsNoticesAreStillKept) {
  bench_.failures.FailCallOf("CreateEvent", 1);
  ASSERT_EQ(phonebook_.Open(), SimResult::kOk);
  ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
  phonebook_.PrepareSlotMap();
  bench_.sim.NotifyChange(kStored, 5);
  EXPECT_THAT(TakeAllStored(), ElementsAre(5));
  EXPECT_EQ(phonebook_.WaitStored(), WaitResult::kAbandoned);
}

TEST_F(SimNoticeTest, NoticesFillsAndSearchesMayMeet) {
  constexpr std::uint32_t kCapacity = 64;
  constexpr int kRounds = 200;
  Prepare({}, kCapacity);
  std::thread filler([&] {
    for (int round = 0; round < kRounds; ++round) {
      ASSERT_EQ(phonebook_.ReadStatus(), SimResult::kOk);
      phonebook_.PrepareSlotMap();
      for (std::uint32_t index = 1; index <= kCapacity; ++index) phonebook_.MarkSlot(index, 1);
    }
  });
  std::thread searcher([&] {
    for (int round = 0; round < kRounds; ++round) {
      EXPECT_LE(phonebook_.FirstFreeSlot(), kCapacity);
      std::uint32_t index = 0;
      if (phonebook_.TakeStored(index) != 0) {
        EXPECT_EQ(index, 5u);
      }
    }
  });
  for (int round = 0; round < kRounds; ++round) {
    bench_.sim.NotifyChange(kStored, 5);
    bench_.sim.NotifyChange(kDeleted, 6);
  }
  filler.join();
  searcher.join();
  EXPECT_EQ(phonebook_.DeletedCount(), static_cast<std::uint32_t>(kRounds));
}

}  // namespace
}  // namespace kelpin::sim
