#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/mutex.h"
#include "platform/sim_interface.h"
#include "tests/contract/known_card.h"

namespace kelpin::contract {

// What every SIM interface does. `Maker` is default-constructed for each test and has
// `platform::SimInterface& Port()`: one over the known card.
template <class Maker>
class SimInterfaceContract : public ::testing::Test {
 protected:
  using Entry = platform::SimPhonebookEntry;
  static constexpr auto kOk = platform::SimResult::kOk;
  static constexpr std::uint32_t kStorage = platform::kSimPhonebookStorageSim;

  struct Notice {
    std::uint32_t code = 0;
    std::uint32_t index = 0;
    std::uint32_t storage = 0;
    std::thread::id thread;
  };

  // The notices of one session.
  class Notices {
   public:
    static void Callback(std::uint32_t code, const void* data, std::uint32_t size,
                         void* parameter) {
      platform::SimPhonebookChange change;
      if (size >= sizeof(change)) std::memcpy(&change, data, sizeof(change));
      auto& self = *static_cast<Notices*>(parameter);
      const MutexLock lock(self.lock_);
      self.notices_.push_back(
          {code, change.entryIndex, change.storage, std::this_thread::get_id()});
      self.changed_.notify_all();
    }

    // The first `count` notices, or fewer when they do not come.
    std::vector<Notice> Await(std::size_t count) {
      const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
      const MutexLock lock(lock_);
      while (notices_.size() < count &&
             changed_.wait_until(lock_, limit) != std::cv_status::timeout) {
      }
      return notices_;
    }

    std::size_t Count() {
      const MutexLock lock(lock_);
      return notices_.size();
    }

   private:
    Mutex lock_;
    Condition changed_;
    std::vector<Notice> notices_ GUARDED_BY(lock_);
  };

  platform::SimInterface& Port() { return maker_.Port(); }

  platform::SimHandle Open() {
    platform::SimHandle sim = 0;
    EXPECT_EQ(Port().SimInitialize(platform::kSimInitNoNotifications, nullptr, nullptr, sim), kOk);
    EXPECT_NE(sim, 0u);
    return sim;
  }

  platform::SimHandle Open(Notices& notices) {
    platform::SimHandle sim = 0;
    EXPECT_EQ(Port().SimInitialize(platform::kSimInitSimCardNotifications, &Notices::Callback,
                                   &notices, sim),
              kOk);
    EXPECT_NE(sim, 0u);
    return sim;
  }

  static Entry MakeEntry(std::u16string_view name, std::u16string_view number) {
    Entry entry;
    entry.params = platform::kSimEntryAll;
    entry.addressType = number.starts_with(u'+') ? 1 : 0;
    entry.numPlan = platform::kNumPlanTelephone;
    name.copy(entry.text, platform::kSimTextLength - 1);
    number.copy(entry.address, platform::kSimTextLength - 1);
    return entry;
  }

  void ExpectEntry(platform::SimHandle sim, std::uint32_t index, std::u16string_view name,
                   std::u16string_view number, std::uint32_t addressType) {
    Entry entry;
    ASSERT_EQ(Port().SimReadPhonebookEntry(sim, kStorage, index, entry), kOk) << index;
    EXPECT_EQ(entry.size, 1040u);
    EXPECT_EQ(entry.params, 15u);
    EXPECT_TRUE(std::u16string(entry.text) == name) << index;
    EXPECT_TRUE(std::u16string(entry.address) == number) << index;
    EXPECT_EQ(entry.addressType, addressType) << index;
    EXPECT_EQ(entry.numPlan, 1u) << index;
  }

  void ExpectEmpty(platform::SimHandle sim, std::uint32_t index) {
    Entry entry;
    EXPECT_EQ(Port().SimReadPhonebookEntry(sim, kStorage, index, entry),
              platform::SimResult::kEntryEmpty);
  }

  void ExpectStatus(platform::SimHandle sim, std::uint32_t expectedUsed) {
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(Port().SimGetPhonebookStatus(sim, kStorage, used, total), kOk);
    EXPECT_EQ(used, expectedUsed);
    EXPECT_EQ(total, kKnownTotal);
  }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(SimInterfaceContract);

TYPED_TEST_P(SimInterfaceContract, TheStatusTellsUsedAndTotal) {
  this->ExpectStatus(this->Open(), 3);
}

TYPED_TEST_P(SimInterfaceContract, TheCapabilitiesTellLengthsAndLocations) {
  platform::SimCaps caps;
  ASSERT_EQ(this->Port().SimGetDevCaps(this->Open(), platform::kSimCapsAll, caps), this->kOk);
  EXPECT_EQ(caps.size, 24u);
  EXPECT_EQ(caps.params, 63u);
  EXPECT_EQ(caps.maxAddressLength, kKnownMaxAddress);
  EXPECT_EQ(caps.maxTextLength, kKnownMaxText);
  EXPECT_EQ(caps.minIndex, 1u);
  EXPECT_EQ(caps.maxIndex, kKnownTotal);
}

TYPED_TEST_P(SimInterfaceContract, TheMessageStatusTellsUsedAndTotal) {
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(
      this->Port().SimGetSmsStorageStatus(this->Open(), platform::kSimSmsStorageSim, used, total),
      this->kOk);
  EXPECT_EQ(used, kKnownSmsUsed);
  EXPECT_EQ(total, kKnownSmsTotal);
}

TYPED_TEST_P(SimInterfaceContract, EntriesReadAsTheyStandOnTheCard) {
  const platform::SimHandle sim = this->Open();
  for (const KnownEntry& entry : kKnownEntries) {
    this->ExpectEntry(sim, entry.index, entry.name, entry.number, entry.addressType);
  }
}

TYPED_TEST_P(SimInterfaceContract, AFailedReadLeavesTheRecord) {
  const platform::SimHandle sim = this->Open();
  const auto before = this->MakeEntry(u"before", u"123");
  for (const std::uint32_t index : {1u, kKnownTotal, kKnownTotal + 1, 0u, 0xFFFFFFFFu}) {
    auto entry = before;
    EXPECT_NE(this->Port().SimReadPhonebookEntry(sim, this->kStorage, index, entry), this->kOk);
    EXPECT_EQ(std::memcmp(&entry, &before, sizeof(entry)), 0) << index;
  }
}

TYPED_TEST_P(SimInterfaceContract, AnEmptyLocationAndOneBeyondTheCardAreToldApart) {
  const platform::SimHandle sim = this->Open();
  this->ExpectEmpty(sim, 1);
  this->ExpectEmpty(sim, kKnownTotal);
  auto entry = this->MakeEntry(u"Eve", u"1");
  EXPECT_EQ(this->Port().SimReadPhonebookEntry(sim, this->kStorage, kKnownTotal + 1, entry),
            platform::SimResult::kInvalidIndex);
  EXPECT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, kKnownTotal + 1, entry),
            platform::SimResult::kInvalidIndex);
  EXPECT_EQ(this->Port().SimDeletePhonebookEntry(sim, this->kStorage, kKnownTotal + 1),
            platform::SimResult::kInvalidIndex);
  this->ExpectStatus(sim, 3);
}

TYPED_TEST_P(SimInterfaceContract, AWrittenEntryIsReadBack) {
  const platform::SimHandle sim = this->Open();
  const auto plain = this->MakeEntry(u"Eve", u"*21#0301p1");
  ASSERT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 1, plain), this->kOk);
  const auto international = this->MakeEntry(u"\u0416\u00E9", u"+358");
  ASSERT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, kKnownTotal, international),
            this->kOk);
  this->ExpectEntry(sim, 1, u"Eve", u"*21#0301p1", 0);
  this->ExpectEntry(sim, kKnownTotal, u"\u0416\u00E9", u"+358", 1);
  this->ExpectStatus(sim, 5);
}

TYPED_TEST_P(SimInterfaceContract, AWrittenEntryReplacesTheWholeLocation) {
  const platform::SimHandle sim = this->Open();
  const auto entry = this->MakeEntry(u"B", u"1");
  ASSERT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 2, entry), this->kOk);
  this->ExpectEntry(sim, 2, u"B", u"1", 0);
  this->ExpectStatus(sim, 3);
}

TYPED_TEST_P(SimInterfaceContract, TheLongestTextsFitAndLongerOnesChangeNothing) {
  const platform::SimHandle sim = this->Open();
  const std::u16string name(kKnownMaxText, u'n');
  const std::u16string number(kKnownMaxAddress, u'7');
  const auto longest = this->MakeEntry(name, u"+" + number);
  ASSERT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 2, longest), this->kOk);
  this->ExpectEntry(sim, 2, name, u"+" + number, 1);

  const auto longName = this->MakeEntry(name + u"n", u"1");
  EXPECT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 2, longName),
            platform::SimResult::kBadParameter);
  const auto longNumber = this->MakeEntry(u"n", number + u"7");
  EXPECT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 2, longNumber),
            platform::SimResult::kBadParameter);
  this->ExpectEntry(sim, 2, name, u"+" + number, 1);
}

TYPED_TEST_P(SimInterfaceContract, ADeletedLocationIsEmptyAndStaysSoWhenDeletedAgain) {
  const platform::SimHandle sim = this->Open();
  EXPECT_EQ(this->Port().SimDeletePhonebookEntry(sim, this->kStorage, 5), this->kOk);
  this->ExpectEmpty(sim, 5);
  this->ExpectStatus(sim, 2);
  EXPECT_EQ(this->Port().SimDeletePhonebookEntry(sim, this->kStorage, 5), this->kOk);
  this->ExpectStatus(sim, 2);
  this->ExpectEntry(sim, 2, u"Ada", u"+4420123", 1);
}

TYPED_TEST_P(SimInterfaceContract, AChangeOnConditionIsMadeOnlyWhereTheConditionHolds) {
  constexpr auto kChanged = platform::SimResult::kEntryChanged;
  const platform::SimHandle sim = this->Open();
  auto& port = this->Port();
  const auto eve = this->MakeEntry(u"Eve", u"+358");
  const auto ada = this->MakeEntry(u"Ada", u"+4420123");
  // Location 2 is Ada's, 1 is free.
  EXPECT_EQ(port.SimWritePhonebookEntryIf(sim, this->kStorage, 2, eve, nullptr), kChanged);
  EXPECT_EQ(port.SimWritePhonebookEntryIf(sim, this->kStorage, 2, eve, &eve), kChanged);
  EXPECT_EQ(port.SimWritePhonebookEntryIf(sim, this->kStorage, 1, eve, &ada), kChanged);
  EXPECT_EQ(port.SimDeletePhonebookEntryIf(sim, this->kStorage, 2, &eve), kChanged);
  EXPECT_EQ(port.SimDeletePhonebookEntryIf(sim, this->kStorage, 2, nullptr), kChanged);
  const auto otherNumber = this->MakeEntry(u"Ada", u"4420123");
  EXPECT_EQ(port.SimDeletePhonebookEntryIf(sim, this->kStorage, 2, &otherNumber), kChanged);
  this->ExpectEntry(sim, 2, u"Ada", u"+4420123", 1);
  this->ExpectEmpty(sim, 1);
  this->ExpectStatus(sim, 3);

  EXPECT_EQ(port.SimWritePhonebookEntryIf(sim, this->kStorage, 1, eve, nullptr), this->kOk);
  EXPECT_EQ(port.SimWritePhonebookEntryIf(sim, this->kStorage, 2, eve, &ada), this->kOk);
  this->ExpectEntry(sim, 1, u"Eve", u"+358", 1);
  this->ExpectEntry(sim, 2, u"Eve", u"+358", 1);
  EXPECT_EQ(port.SimDeletePhonebookEntryIf(sim, this->kStorage, 2, &eve), this->kOk);
  EXPECT_EQ(port.SimDeletePhonebookEntryIf(sim, this->kStorage, 2, nullptr), this->kOk);
  this->ExpectEmpty(sim, 2);
  EXPECT_EQ(port.SimWritePhonebookEntryIf(sim, this->kStorage, kKnownTotal + 1, eve, nullptr),
            platform::SimResult::kInvalidIndex);
}

TYPED_TEST_P(SimInterfaceContract, OtherStoragesAreRefused) {
  const platform::SimHandle sim = this->Open();
  const std::uint32_t other = 1;
  std::uint32_t used = 71;
  std::uint32_t total = 72;
  auto entry = this->MakeEntry(u"B", u"1");
  EXPECT_NE(this->Port().SimGetPhonebookStatus(sim, other, used, total), this->kOk);
  EXPECT_NE(this->Port().SimGetSmsStorageStatus(sim, other, used, total), this->kOk);
  EXPECT_EQ(used, 71u);
  EXPECT_EQ(total, 72u);
  EXPECT_NE(this->Port().SimReadPhonebookEntry(sim, other, 2, entry), this->kOk);
  EXPECT_NE(this->Port().SimWritePhonebookEntry(sim, other, 2, entry), this->kOk);
  EXPECT_NE(this->Port().SimDeletePhonebookEntry(sim, other, 2), this->kOk);
  this->ExpectEntry(sim, 2, u"Ada", u"+4420123", 1);
}

TYPED_TEST_P(SimInterfaceContract, AClosedSessionAnswersNothing) {
  const platform::SimHandle open = this->Open();
  const platform::SimHandle closed = this->Open();
  ASSERT_EQ(this->Port().SimDeinitialize(closed), this->kOk);
  EXPECT_NE(this->Port().SimDeinitialize(closed), this->kOk);
  std::uint32_t used = 71;
  std::uint32_t total = 72;
  platform::SimCaps caps;
  caps.maxTextLength = 73;
  auto entry = this->MakeEntry(u"B", u"1");
  EXPECT_NE(this->Port().SimGetPhonebookStatus(closed, this->kStorage, used, total), this->kOk);
  EXPECT_EQ(used, 71u);
  EXPECT_EQ(total, 72u);
  EXPECT_NE(this->Port().SimGetDevCaps(closed, platform::kSimCapsAll, caps), this->kOk);
  EXPECT_EQ(caps.maxTextLength, 73u);
  EXPECT_NE(this->Port().SimWritePhonebookEntry(closed, this->kStorage, 2, entry), this->kOk);
  EXPECT_NE(this->Port().SimDeletePhonebookEntry(closed, this->kStorage, 2), this->kOk);
  this->ExpectEntry(open, 2, u"Ada", u"+4420123", 1);
}

TYPED_TEST_P(SimInterfaceContract, SessionsShareTheCard) {
  const platform::SimHandle one = this->Open();
  const platform::SimHandle two = this->Open();
  EXPECT_NE(one, two);
  const auto entry = this->MakeEntry(u"B", u"1");
  ASSERT_EQ(this->Port().SimWritePhonebookEntry(one, this->kStorage, 3, entry), this->kOk);
  this->ExpectEntry(two, 3, u"B", u"1", 0);
  ASSERT_EQ(this->Port().SimDeinitialize(one), this->kOk);
  this->ExpectEntry(two, 3, u"B", u"1", 0);
}

TYPED_TEST_P(SimInterfaceContract, ChangesAreToldToEverySessionWithNotifications) {
  typename TestFixture::Notices writer;
  typename TestFixture::Notices other;
  const platform::SimHandle sim = this->Open(writer);
  this->Open(other);
  const auto entry = this->MakeEntry(u"B", u"1");
  ASSERT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 7, entry), this->kOk);
  ASSERT_EQ(this->Port().SimDeletePhonebookEntry(sim, this->kStorage, 2), this->kOk);
  for (auto* notices : {&writer, &other}) {
    const auto told = notices->Await(2);
    ASSERT_EQ(told.size(), 2u);
    EXPECT_EQ(told[0].code, 0x104u);
    EXPECT_EQ(told[0].index, 7u);
    EXPECT_EQ(told[0].storage, 16u);
    EXPECT_EQ(told[1].code, 0x105u);
    EXPECT_EQ(told[1].index, 2u);
    EXPECT_EQ(told[1].storage, 16u);
    EXPECT_NE(told[0].thread, std::this_thread::get_id());
    EXPECT_NE(told[1].thread, std::this_thread::get_id());
  }
}

TYPED_TEST_P(SimInterfaceContract, WhatFailedIsNotTold) {
  typename TestFixture::Notices notices;
  const platform::SimHandle sim = this->Open(notices);
  const auto entry = this->MakeEntry(u"B", u"1");
  const auto longEntry = this->MakeEntry(std::u16string(kKnownMaxText + 1, u'n'), u"1");
  EXPECT_NE(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 7, longEntry), this->kOk);
  EXPECT_NE(this->Port().SimWritePhonebookEntry(sim, this->kStorage, kKnownTotal + 1, entry),
            this->kOk);
  EXPECT_NE(this->Port().SimDeletePhonebookEntry(sim, this->kStorage, kKnownTotal + 1), this->kOk);
  ASSERT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 7, entry), this->kOk);
  const auto told = notices.Await(1);
  ASSERT_EQ(told.size(), 1u);
  EXPECT_EQ(told[0].index, 7u);
}

TYPED_TEST_P(SimInterfaceContract, ASessionWithoutNotificationsIsNotCalled) {
  typename TestFixture::Notices silent;
  typename TestFixture::Notices told;
  platform::SimHandle sim = 0;
  ASSERT_EQ(this->Port().SimInitialize(platform::kSimInitNoNotifications,
                                       &TestFixture::Notices::Callback, &silent, sim),
            this->kOk);
  this->Open(told);
  const auto entry = this->MakeEntry(u"B", u"1");
  ASSERT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, 7, entry), this->kOk);
  EXPECT_EQ(told.Await(1).size(), 1u);
  ASSERT_EQ(this->Port().SimDeinitialize(sim), this->kOk);
  EXPECT_EQ(silent.Count(), 0u);
}

TYPED_TEST_P(SimInterfaceContract, NoCallbackRunsAfterTheSessionWasClosed) {
  const platform::SimHandle writer = this->Open();
  const auto entry = this->MakeEntry(u"B", u"1");
  for (int round = 0; round < 20; ++round) {
    typename TestFixture::Notices closed;
    typename TestFixture::Notices open;
    const platform::SimHandle closing = this->Open(closed);
    const platform::SimHandle staying = this->Open(open);
    ASSERT_EQ(this->Port().SimWritePhonebookEntry(writer, this->kStorage, 7, entry), this->kOk);
    ASSERT_EQ(this->Port().SimDeinitialize(closing), this->kOk);
    const std::size_t before = closed.Count();
    ASSERT_EQ(this->Port().SimDeletePhonebookEntry(writer, this->kStorage, 7), this->kOk);
    EXPECT_EQ(open.Await(2).size(), 2u);
    EXPECT_EQ(closed.Count(), before);
    ASSERT_EQ(this->Port().SimDeinitialize(staying), this->kOk);
  }
}

TYPED_TEST_P(SimInterfaceContract, CallsMayComeFromSeveralThreads) {
  const platform::SimHandle sim = this->Open();
  std::vector<std::thread> threads;
  for (const std::uint32_t index : {1u, 3u, 4u}) {
    threads.emplace_back([this, sim, index] {
      const std::u16string number(index, u'7');
      const auto entry = this->MakeEntry(u"n", number);
      for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(this->Port().SimWritePhonebookEntry(sim, this->kStorage, index, entry),
                  this->kOk);
        this->ExpectEntry(sim, index, u"n", number, 0);
        this->ExpectEntry(sim, 2, u"Ada", u"+4420123", 1);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  this->ExpectStatus(sim, 6);
}

REGISTER_TYPED_TEST_SUITE_P(SimInterfaceContract, TheStatusTellsUsedAndTotal,
                            TheCapabilitiesTellLengthsAndLocations,
                            TheMessageStatusTellsUsedAndTotal, EntriesReadAsTheyStandOnTheCard,
                            AFailedReadLeavesTheRecord,
                            AnEmptyLocationAndOneBeyondTheCardAreToldApart, AWrittenEntryIsReadBack,
                            AWrittenEntryReplacesTheWholeLocation,
                            TheLongestTextsFitAndLongerOnesChangeNothing,
                            ADeletedLocationIsEmptyAndStaysSoWhenDeletedAgain,
                            AChangeOnConditionIsMadeOnlyWhereTheConditionHolds,
                            OtherStoragesAreRefused, AClosedSessionAnswersNothing,
                            SessionsShareTheCard, ChangesAreToldToEverySessionWithNotifications,
                            WhatFailedIsNotTold, ASessionWithoutNotificationsIsNotCalled,
                            NoCallbackRunsAfterTheSessionWasClosed, CallsMayComeFromSeveralThreads);

}  // namespace kelpin::contract
