#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "platform/sim_interface.h"
#include "sim/ril_client.h"
#include "sim/sim_phonebook.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/fake_radio.h"
#include "tests/support/fake_sim.h"
#include "tests/support/journal.h"

namespace kelpin {
namespace {

using platform::SimResult;
using platform::Succeeded;
using Bytes = std::vector<std::uint8_t>;

struct Bench {
  test::Journal journal;
  test::FailPlan failures;
  test::FakeClock clock{journal};
  test::FakeKernel kernel{journal, failures, &clock};
  test::FakeSim sim{journal, failures};
  test::FakeRadio radio{journal, failures};
  test::FakeDevices devices{journal, failures};
};

// One session with every operation. What each call says must be what the card says.
void UsePhonebook(Bench& bench, SimResult failure) {
  const auto check = [&](sim::SimPhonebook& phonebook, SimResult result) {
    EXPECT_EQ(phonebook.LastResult(), result);
    EXPECT_TRUE(Succeeded(result) || result == failure || result == SimResult::kBadParameter)
        << static_cast<std::uint32_t>(result);
    return Succeeded(result);
  };
  sim::SimPhonebook phonebook(bench.sim, bench.kernel);
  const bool open = check(phonebook, phonebook.Open());
  EXPECT_EQ(open, phonebook.Handle() != 0);
  EXPECT_EQ(bench.sim.OpenSessions(), open ? 1u : 0u);

  const bool status = check(phonebook, phonebook.ReadStatus());
  EXPECT_EQ(phonebook.Total(), status ? 10u : 0u);
  EXPECT_EQ(phonebook.Used(), status ? 2u : 0u);
  const bool caps = check(phonebook, phonebook.ReadCaps());
  EXPECT_EQ(phonebook.MaxNameLength(), caps ? 14u : 0u);
  const bool messages = check(phonebook, phonebook.ReadSmsStatus());
  EXPECT_EQ(phonebook.SmsTotal(), messages ? 5u : 0u);
  phonebook.PrepareSlotMap();
  phonebook.MarkSlot(1, 1);
  phonebook.MarkSlot(2, 1);
  EXPECT_EQ(phonebook.FirstFreeSlot(), status ? 3u : 0u);

  std::u16string name = u"before";
  std::u16string number = u"0";
  const bool read = check(phonebook, phonebook.ReadEntry(1, &name, &number));
  EXPECT_EQ(name, read ? u"Ada" : u"before");
  EXPECT_EQ(number, read ? u"+44" : u"0");
  const bool written = check(phonebook, phonebook.WriteEntry(3, u"Cy", u"3"));
  EXPECT_EQ(bench.sim.Name(3), written ? u"Cy" : u"");
  const bool deleted = check(phonebook, phonebook.DeleteEntry(2));
  EXPECT_EQ(bench.sim.Name(2), deleted ? u"" : u"Bo");
  EXPECT_EQ(bench.sim.Name(1), u"Ada");

  bench.sim.Drain();
  std::uint32_t index = 0;
  EXPECT_EQ(phonebook.TakeStored(index), open && status && written ? 1 : 0);
  EXPECT_EQ(phonebook.TakeDeleted(index), open && status && deleted ? 1 : 0);
}

TEST(SimSessionFaults, EveryFailedCallIsToldAndNothingElseChanges) {
  const SimResult failure = SimResult::kMemoryFailure;
  for (std::uint32_t call = 1;; ++call) {
    Bench bench;
    bench.sim.SetPlannedFailure(failure);
    bench.sim.SetSms(1, 5);
    bench.sim.SetEntry(1, u"Ada", u"+44");
    bench.sim.SetEntry(2, u"Bo", u"2");
    bench.failures.FailCall(call);
    UsePhonebook(bench, failure);
    const bool failed = bench.failures.Failed();
    SCOPED_TRACE(bench.failures.FailedKind());
    EXPECT_EQ(bench.kernel.OpenEvents(), 0u);
    if (bench.failures.FailedKind() != "SimDeinitialize") {
      EXPECT_EQ(bench.sim.OpenSessions(), 0u);
    }
    if (!failed) {
      EXPECT_GE(call, 10u);  // two events, eight operations
      break;
    }
    if (testing::Test::HasFailure()) return;
  }
}

// One session with every command. Commands that failed left their outputs alone.
void UseClient(Bench& bench) {
  sim::RilClient client(bench.radio, bench.kernel, bench.devices);
  const bool open = client.Open(0x80C00000);
  EXPECT_EQ(open, client.IsOpen());
  const bool informed = client.GetFileInfo(0x6F40);
  EXPECT_EQ(client.RecordLength(), informed ? 28u : 0u);
  EXPECT_EQ(client.RecordCount(), informed ? 2u : 0u);

  Bytes response = {7};
  const bool read = client.ReadRecord(0x6F40, 1, response);
  EXPECT_EQ(response, read ? test::FakeRadio::SimResponse(Bytes(28, 1)) : Bytes{7});
  const bool updated = client.UpdateRecord(0x6F40, 2, Bytes(28, 9));
  EXPECT_EQ(bench.radio.GetFile(0x6F40)->records[1], Bytes(28, updated ? 9 : 2));
  EXPECT_EQ(bench.radio.GetFile(0x6F40)->records[0], Bytes(28, 1));

  response = {7};
  const bool listed = client.ReadPhonebookEntries(1, 10, response);
  EXPECT_EQ(response.size(), listed ? 1044u : 1u);
  response = {7};
  const bool listedEx = client.ReadPhonebookEntriesEx(1, 10, response);
  EXPECT_EQ(response.size(), listedEx ? 1048u : 1u);
  std::uint32_t changed = 7;
  const bool asked = client.PhonebookChanged(changed);
  EXPECT_EQ(changed, asked ? 1u : 7u);
  response = {7};
  const bool readExt = client.ReadExtRecord(12, 1, response);
  EXPECT_EQ(response, readExt ? test::FakeRadio::SimResponse({1, 2}) : Bytes{7});
  const bool writtenExt = client.WriteExtRecord(12, 1, Bytes{3, 4});
  EXPECT_EQ(bench.radio.GetCodedFile(12)->records[0], writtenExt ? (Bytes{3, 4}) : (Bytes{1, 2}));
  EXPECT_EQ(bench.devices.OpenHandles(), 0u);
}

// Fails the first, second, … call of UseClient; commands as `how` says.
void FailEveryCall(const test::FakeRadio::Answer& how) {
  for (std::uint32_t call = 1;; ++call) {
    Bench bench;
    bench.radio.SetPlannedFailure(how);
    bench.radio.SetFile(0x6F40, {28, {Bytes(28, 1), Bytes(28, 2)}});
    bench.radio.SetCodedFile(12, {2, {{1, 2}}});
    bench.radio.SetEntry(1, {u"Ada", u"44", 1, 1, {}});
    bench.radio.SetPhonebookChanged(1);
    bench.failures.FailCall(call);
    // A minute passes for the command that is never answered.
    std::atomic<bool> done = how.answering != test::FakeRadio::Answering::kNever;
    std::thread time([&] {
      while (!done) {
        if (bench.failures.FailedKind().starts_with("RIL_") && bench.kernel.Waiters({}) > 0) {
          bench.clock.Advance(60000);
          return;
        }
        std::this_thread::yield();
      }
    });
    UseClient(bench);
    done = true;
    time.join();
    SCOPED_TRACE(bench.failures.FailedKind());
    EXPECT_EQ(bench.kernel.OpenEvents(), 0u);
    if (bench.failures.FailedKind() != "RIL_Deinitialize") {
      EXPECT_EQ(bench.radio.OpenSessions(), 0u);
    }
    if (!bench.failures.Failed()) {
      EXPECT_GE(call, 15u);  // three events, two of the session, eight commands, two of the driver
      break;
    }
    if (testing::Test::HasFailure()) return;
  }
}

TEST(SimSessionFaults, CommandsAnsweredWithAnErrorAreTold) {
  FailEveryCall({platform::kRilResultError, {}, test::FakeRadio::Answering::kResult});
}

TEST(SimSessionFaults, CommandsNotTakenAreTold) {
  FailEveryCall({0, {}, test::FakeRadio::Answering::kNotTaken});
}

TEST(SimSessionFaults, CommandsNeverAnsweredAreTold) {
  FailEveryCall({0, {}, test::FakeRadio::Answering::kNever});
}

}  // namespace
}  // namespace kelpin
