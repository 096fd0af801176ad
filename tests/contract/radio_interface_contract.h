#pragma once

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/mutex.h"
#include "platform/radio_interface.h"
#include "tests/contract/known_card.h"

namespace kelpin::contract {

// What every radio interface does. `Maker` is default-constructed for each test and has
//   platform::RadioInterface& Port();   one over the known card
//   void TouchCard();                   another program changes the phone book
template <class Maker>
class RadioInterfaceContract : public ::testing::Test {
 protected:
  using Bytes = std::vector<std::uint8_t>;

  struct Result {
    std::uint32_t code = 0;
    std::int32_t id = 0;
    Bytes data;
    std::thread::id thread;
  };

  struct Notification {
    std::uint32_t code = 0;
    Bytes data;
  };

  // What came back for one session.
  class Session {
   public:
    static void OnResult(std::uint32_t code, std::int32_t id, const void* data, std::uint32_t size,
                         void* parameter) {
      auto& self = *static_cast<Session*>(parameter);
      const MutexLock lock(self.lock_);
      self.results_.push_back({code, id, Copy(data, size), std::this_thread::get_id()});
      self.changed_.notify_all();
    }

    static void OnNotify(std::uint32_t code, const void* data, std::uint32_t size,
                         void* parameter) {
      auto& self = *static_cast<Session*>(parameter);
      const MutexLock lock(self.lock_);
      self.notifications_.push_back({code, Copy(data, size)});
      self.changed_.notify_all();
    }

    // The result of one command; code 0 when it does not come.
    Result Await(std::int32_t id) {
      const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
      const MutexLock lock(lock_);
      for (;;) {
        for (const Result& result : results_) {
          if (result.id == id) return result;
        }
        if (changed_.wait_until(lock_, limit) == std::cv_status::timeout) return {};
      }
    }

    // The first notification of this code; code 0 when it does not come.
    Notification AwaitNotification(std::uint32_t code) {
      const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
      const MutexLock lock(lock_);
      for (;;) {
        for (const Notification& notification : notifications_) {
          if (notification.code == code) return notification;
        }
        if (changed_.wait_until(lock_, limit) == std::cv_status::timeout) return {};
      }
    }

    std::vector<Result> Results() {
      const MutexLock lock(lock_);
      return results_;
    }

    std::size_t NotificationCount() {
      const MutexLock lock(lock_);
      return notifications_.size();
    }

   private:
    static Bytes Copy(const void* data, std::uint32_t size) {
      if (size == 0) return {};
      const auto* bytes = static_cast<const std::uint8_t*>(data);
      return {bytes, bytes + size};
    }

    Mutex lock_;
    Condition changed_;
    std::vector<Result> results_ GUARDED_BY(lock_);
    std::vector<Notification> notifications_ GUARDED_BY(lock_);
  };

  platform::RadioInterface& Port() { return maker_.Port(); }
  void TouchCard() { maker_.TouchCard(); }

  platform::RilHandle Open(Session& session, std::uint32_t classes = 0) {
    platform::RilHandle ril = 0;
    EXPECT_EQ(Port().RIL_Initialize(platform::kRilPort, &Session::OnResult, &Session::OnNotify,
                                    classes, &session, ril),
              0);
    EXPECT_NE(ril, 0u);
    return ril;
  }

  std::int32_t SimCommand(platform::RilHandle ril, std::uint32_t command, std::uint32_t file,
                          std::uint32_t record, const Bytes& data = {}) {
    platform::RilSimCmdParameters parameters;
    parameters.fileId = file;
    if (command != platform::kRilSimGetResponse) {
      parameters.parameter1 = record;
      parameters.parameter2 = platform::kRilSimAbsoluteMode;
      parameters.parameter3 = 28;
    }
    return Port().RIL_SendRestrictedSimCmd(ril, command, parameters,
                                           data.empty() ? nullptr : data.data(),
                                           static_cast<std::uint32_t>(data.size()));
  }

  std::int32_t DevSpecific(platform::RilHandle ril, std::array<std::uint32_t, 3> words) {
    return Port().RIL_DevSpecific(ril, words.data(), sizeof(words[0]));
  }

  template <typename Record>
  static std::vector<Record> Records(const Bytes& data) {
    EXPECT_EQ(data.size() % sizeof(Record), 0u);
    std::vector<Record> records(data.size() / sizeof(Record));
    if (!records.empty()) std::memcpy(records.data(), data.data(), data.size());
    return records;
  }

  template <typename Record>
  static void ExpectEntry(const Record& record, const KnownEntry& entry) {
    EXPECT_EQ(record.size, sizeof(Record));
    EXPECT_EQ(record.index, entry.index);
    EXPECT_TRUE(std::u16string(record.address) == entry.digits) << entry.index;
    EXPECT_EQ(record.addressType, entry.addressType) << entry.index;
    EXPECT_EQ(record.numPlan, 1u) << entry.index;
    EXPECT_TRUE(std::u16string(record.text) == entry.name) << entry.index;
  }

  // The bytes behind the header of a SIM command's response, which must tell of success.
  static Bytes Response(const Result& result) {
    EXPECT_EQ(result.code, platform::kRilResultOk);
    platform::RilSimResponse header;
    EXPECT_GE(result.data.size(), sizeof(header));
    if (result.data.size() < sizeof(header)) return {};
    std::memcpy(&header, result.data.data(), sizeof(header));
    EXPECT_EQ(header.size, 16u);
    EXPECT_EQ(header.statusWord1, 0x90u);
    EXPECT_EQ(header.statusWord2, 0x00u);
    return {result.data.begin() + sizeof(header), result.data.end()};
  }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(RadioInterfaceContract);

TYPED_TEST_P(RadioInterfaceContract, ASessionIsOpenedOnPortOneOnly) {
  typename TestFixture::Session session;
  platform::RilHandle ril = 77;
  EXPECT_NE(this->Port().RIL_Initialize(2, &TestFixture::Session::OnResult,
                                        &TestFixture::Session::OnNotify, 0, &session, ril),
            0);
  EXPECT_EQ(ril, 0u);
  ril = this->Open(session);
  EXPECT_EQ(this->Port().RIL_Deinitialize(ril), 0);
  EXPECT_NE(this->Port().RIL_Deinitialize(ril), 0);
}

TYPED_TEST_P(RadioInterfaceContract, AClosedSessionTakesNoCommand) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  ASSERT_EQ(this->Port().RIL_Deinitialize(ril), 0);
  EXPECT_LT(this->Port().RIL_ReadPhonebookEntries(ril, 1, 10), 0);
  EXPECT_LT(this->SimCommand(ril, platform::kRilSimGetResponse, kKnownOwnNumbers, 0), 0);
  EXPECT_LT(this->DevSpecific(ril, {platform::kRilDevPhonebookChanged}), 0);
  EXPECT_TRUE(session.Results().empty());
}

TYPED_TEST_P(RadioInterfaceContract, TheBulkReadGivesUsedLocationsAscending) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  const auto result = session.Await(this->Port().RIL_ReadPhonebookEntries(ril, 1, kKnownTotal));
  EXPECT_EQ(result.code, platform::kRilResultOk);
  const auto records = this->template Records<platform::RilPhonebookEntry>(result.data);
  ASSERT_EQ(records.size(), kKnownEntries.size());
  for (std::size_t at = 0; at < records.size(); ++at) {
    this->ExpectEntry(records[at], kKnownEntries[at]);
  }
}

TYPED_TEST_P(RadioInterfaceContract, TheBulkReadKeepsToItsRange) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  const auto inner = session.Await(this->Port().RIL_ReadPhonebookEntries(ril, 5, 8));
  EXPECT_EQ(inner.code, platform::kRilResultOk);
  const auto records = this->template Records<platform::RilPhonebookEntry>(inner.data);
  ASSERT_EQ(records.size(), 1u);
  this->ExpectEntry(records[0], kKnownEntries[1]);

  const auto none = session.Await(this->Port().RIL_ReadPhonebookEntries(ril, 6, 8));
  EXPECT_EQ(none.code, platform::kRilResultOk);
  EXPECT_TRUE(none.data.empty());
}

TYPED_TEST_P(RadioInterfaceContract, TheExtendedBulkReadGivesTheSameEntriesUnhidden) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  const auto result =
      session.Await(this->DevSpecific(ril, {platform::kRilDevReadPhonebook, 1, kKnownTotal}));
  EXPECT_EQ(result.code, platform::kRilResultOk);
  const auto records = this->template Records<platform::RilPhonebookEntryEx>(result.data);
  ASSERT_EQ(records.size(), kKnownEntries.size());
  for (std::size_t at = 0; at < records.size(); ++at) {
    this->ExpectEntry(records[at], kKnownEntries[at]);
    EXPECT_EQ(records[at].hidden, 0u);
  }
}

TYPED_TEST_P(RadioInterfaceContract, AFilesMeasuresComeInOneForm) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  const auto response = this->Response(
      session.Await(this->SimCommand(ril, platform::kRilSimGetResponse, kKnownOwnNumbers, 0)));
  ASSERT_GE(response.size(), 15u);
  EXPECT_EQ(response[2], 0);
  EXPECT_EQ(response[3], 56);  // two records
  EXPECT_EQ(response[14], 28);
}

TYPED_TEST_P(RadioInterfaceContract, RecordsAreReadAndUpdatedByNumber) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  const auto records = KnownFiles()[1].records;
  EXPECT_EQ(this->Response(session.Await(
                this->SimCommand(ril, platform::kRilSimReadRecord, kKnownOwnNumbers, 1))),
            records[0]);
  EXPECT_EQ(this->Response(session.Await(
                this->SimCommand(ril, platform::kRilSimReadRecord, kKnownOwnNumbers, 2))),
            records[1]);
  const auto updated = KnownRecord({0x42}, {0x02, 0x81, 0x21});
  EXPECT_TRUE(this->Response(session.Await(this->SimCommand(ril, platform::kRilSimUpdateRecord,
                                                            kKnownOwnNumbers, 2, updated)))
                  .empty());
  EXPECT_EQ(this->Response(session.Await(
                this->SimCommand(ril, platform::kRilSimReadRecord, kKnownOwnNumbers, 2))),
            updated);
  EXPECT_EQ(this->Response(session.Await(
                this->SimCommand(ril, platform::kRilSimReadRecord, kKnownOwnNumbers, 1))),
            records[0]);
}

TYPED_TEST_P(RadioInterfaceContract, WhatTheCardRefusesIsAnError) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  const std::uint32_t noFile = 0x6FFE;
  const std::vector<std::int32_t> ids = {
      this->SimCommand(ril, platform::kRilSimReadRecord, kKnownOwnNumbers, 3),
      this->SimCommand(ril, platform::kRilSimReadRecord, kKnownOwnNumbers, 0),
      this->SimCommand(ril, platform::kRilSimReadRecord, noFile, 1),
      this->SimCommand(ril, platform::kRilSimGetResponse, noFile, 0),
      this->SimCommand(ril, platform::kRilSimUpdateRecord, kKnownOwnNumbers, 3,
                       KnownRecord({}, {})),
      this->SimCommand(ril, platform::kRilSimUpdateRecord, kKnownOwnNumbers, 1, {1, 2, 3}),
  };
  for (const std::int32_t id : ids) {
    ASSERT_GT(id, 0);
    const auto result = session.Await(id);
    EXPECT_EQ(result.code, platform::kRilResultError) << id;
    EXPECT_LE(result.data.size(), sizeof(platform::RilSimResponse)) << id;
  }
  EXPECT_EQ(this->Response(session.Await(
                this->SimCommand(ril, platform::kRilSimReadRecord, kKnownOwnNumbers, 1))),
            KnownFiles()[1].records[0]);
}

TYPED_TEST_P(RadioInterfaceContract, ChangesByOthersAreToldOnce) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session, platform::kRilClassDeviceSpecific);
  const auto ask = [&] {
    const auto result = session.Await(this->DevSpecific(ril, {platform::kRilDevPhonebookChanged}));
    EXPECT_EQ(result.code, platform::kRilResultOk);
    std::uint32_t changed = 99;
    EXPECT_EQ(result.data.size(), sizeof(changed));
    if (result.data.size() == sizeof(changed)) {
      std::memcpy(&changed, result.data.data(), sizeof(changed));
    }
    return changed;
  };
  // A card that nobody has read yet cannot have changed since.
  session.Await(this->Port().RIL_ReadPhonebookEntries(ril, 1, kKnownTotal));
  ask();
  EXPECT_EQ(ask(), 0u);
  this->TouchCard();
  EXPECT_EQ(session.AwaitNotification(0x8000000B).code, 0x8000000Bu);
  EXPECT_EQ(ask(), 1u);
  EXPECT_EQ(ask(), 0u);
}

TYPED_TEST_P(RadioInterfaceContract, ARewrittenPhonebookIsToldAndThenThatItIsReady) {
  typename TestFixture::Session all;
  typename TestFixture::Session stateOnly;
  typename TestFixture::Session none;
  this->Open(all, 0x80C00000);
  this->Open(stateOnly, platform::kRilClassRadioState);
  const platform::RilHandle silent = this->Open(none, 0);
  none.Await(this->Port().RIL_ReadPhonebookEntries(silent, 1, kKnownTotal));
  const std::size_t before = stateOnly.NotificationCount();
  this->TouchCard();
  EXPECT_EQ(all.AwaitNotification(0x8000000B).code, 0x8000000Bu);
  for (auto* session : {&all, &stateOnly}) {
    const auto ready = session->AwaitNotification(0x00800001);
    platform::RilEquipmentState state;
    ASSERT_GE(ready.data.size(), sizeof(state));
    std::memcpy(&state, ready.data.data(), sizeof(state));
    EXPECT_NE(state.readyState & platform::kRilReadyPhonebook, 0u);
  }
  EXPECT_EQ(stateOnly.NotificationCount(), before + 1);
  ASSERT_EQ(this->Port().RIL_Deinitialize(silent), 0);
  EXPECT_EQ(none.NotificationCount(), 0u);
}

TYPED_TEST_P(RadioInterfaceContract, EveryCommandHasItsIdAndOneResultFromAnotherThread) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  std::set<std::int32_t> ids;
  for (int round = 0; round < 10; ++round) {
    ids.insert(this->Port().RIL_ReadPhonebookEntries(ril, 2, 2));
    ids.insert(this->SimCommand(ril, platform::kRilSimReadRecord, kKnownOwnNumbers, 1));
    ids.insert(this->DevSpecific(ril, {platform::kRilDevPhonebookChanged}));
  }
  ASSERT_EQ(ids.size(), 30u);
  EXPECT_GT(*ids.begin(), 0);
  for (const std::int32_t id : ids) EXPECT_EQ(session.Await(id).code, platform::kRilResultOk);
  ASSERT_EQ(this->Port().RIL_Deinitialize(ril), 0);
  const auto results = session.Results();
  EXPECT_EQ(results.size(), 30u);
  for (const auto& result : results) EXPECT_NE(result.thread, std::this_thread::get_id());
}

TYPED_TEST_P(RadioInterfaceContract, ResultsGoToTheSessionThatAsked) {
  typename TestFixture::Session one;
  typename TestFixture::Session two;
  const platform::RilHandle first = this->Open(one);
  const platform::RilHandle second = this->Open(two);
  EXPECT_NE(first, second);
  const std::int32_t firstId = this->Port().RIL_ReadPhonebookEntries(first, 2, 2);
  const std::int32_t secondId = this->Port().RIL_ReadPhonebookEntries(second, 5, 5);
  const auto firstRecords =
      this->template Records<platform::RilPhonebookEntry>(one.Await(firstId).data);
  const auto secondRecords =
      this->template Records<platform::RilPhonebookEntry>(two.Await(secondId).data);
  ASSERT_EQ(firstRecords.size(), 1u);
  ASSERT_EQ(secondRecords.size(), 1u);
  EXPECT_EQ(firstRecords[0].index, 2u);
  EXPECT_EQ(secondRecords[0].index, 5u);
  ASSERT_EQ(this->Port().RIL_Deinitialize(first), 0);
  EXPECT_EQ(two.Await(this->Port().RIL_ReadPhonebookEntries(second, 9, 9)).code,
            platform::kRilResultOk);
  EXPECT_EQ(one.Results().size(), 1u);
  EXPECT_EQ(two.Results().size(), 2u);
}

TYPED_TEST_P(RadioInterfaceContract, ClosingAnswersWhatIsUnderWayAndCallsNobodyAfterwards) {
  typename TestFixture::Session other;
  const platform::RilHandle staying = this->Open(other);
  for (int round = 0; round < 10; ++round) {
    typename TestFixture::Session session;
    const platform::RilHandle ril = this->Open(session);
    std::multiset<std::int32_t> ids;
    for (int command = 0; command < 10; ++command) {
      ids.insert(this->Port().RIL_ReadPhonebookEntries(ril, 1, kKnownTotal));
    }
    ASSERT_EQ(this->Port().RIL_Deinitialize(ril), 0);
    const auto results = session.Results();
    std::multiset<std::int32_t> answered;
    for (const auto& result : results) {
      answered.insert(result.id);
      EXPECT_TRUE(result.code == platform::kRilResultOk || result.code == platform::kRilResultError)
          << result.code;
    }
    EXPECT_EQ(answered, ids);
    EXPECT_EQ(other.Await(this->Port().RIL_ReadPhonebookEntries(staying, 2, 2)).code,
              platform::kRilResultOk);
    EXPECT_EQ(session.Results().size(), results.size());
  }
}

TYPED_TEST_P(RadioInterfaceContract, CommandsMayComeFromSeveralThreads) {
  typename TestFixture::Session session;
  const platform::RilHandle ril = this->Open(session);
  std::vector<std::thread> threads;
  for (const KnownEntry& entry : kKnownEntries) {
    threads.emplace_back([this, &session, ril, &entry] {
      for (int round = 0; round < 10; ++round) {
        const auto result =
            session.Await(this->Port().RIL_ReadPhonebookEntries(ril, entry.index, entry.index));
        const auto records = this->template Records<platform::RilPhonebookEntry>(result.data);
        ASSERT_EQ(records.size(), 1u);
        this->ExpectEntry(records[0], entry);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

REGISTER_TYPED_TEST_SUITE_P(
    RadioInterfaceContract, ASessionIsOpenedOnPortOneOnly, AClosedSessionTakesNoCommand,
    TheBulkReadGivesUsedLocationsAscending, TheBulkReadKeepsToItsRange,
    TheExtendedBulkReadGivesTheSameEntriesUnhidden, AFilesMeasuresComeInOneForm,
    RecordsAreReadAndUpdatedByNumber, WhatTheCardRefusesIsAnError, ChangesByOthersAreToldOnce,
    ARewrittenPhonebookIsToldAndThenThatItIsReady,
    EveryCommandHasItsIdAndOneResultFromAnotherThread, ResultsGoToTheSessionThatAsked,
    ClosingAnswersWhatIsUnderWayAndCallsNobodyAfterwards, CommandsMayComeFromSeveralThreads);

}  // namespace kelpin::contract
