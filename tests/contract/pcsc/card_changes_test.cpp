// What becomes of lists and changes when the card does not stay as it was.
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "platform/radio_interface.h"
#include "tests/contract/pcsc/reader_card_test.h"

namespace kelpin::contract {
namespace {

using platform::SimResult;
using namespace std::chrono_literals;

constexpr std::uint8_t kUpdateRecord = 0xDC;
constexpr std::uint8_t kReadRecord = 0xB2;
const std::vector<std::string> kAdn = {"7F10", "5F3A", "4F3A"};
const std::u16string kFirst = u"Bauer, Anna|+12125550100";

class CardChangesTest : public ReaderCardTest {
 protected:
  // Reads until it is this, for the time that it takes to notice a card.
  std::u16string Await(std::uint32_t location, const std::u16string& wanted) {
    const auto limit = std::chrono::steady_clock::now() + 60s;
    std::u16string text = sim->Text(location);
    while (text != wanted && std::chrono::steady_clock::now() < limit) {
      std::this_thread::sleep_for(20ms);
      text = sim->Text(location);
    }
    return text;
  }
};

// The card is pulled at this command of an instruction.
ReaderCard::Plan PulledAt(std::uint8_t instruction, int number, Fate fate) {
  auto seen = std::make_shared<int>(0);
  return [instruction, number, fate, seen](std::span<const std::uint8_t> command) {
    return command.size() > 1 && command[1] == instruction && ++*seen == number ? fate
                                                                                : Fate::kAnswered;
  };
}

TEST_F(CardChangesTest, ACardPulledInTheMiddleOfAListEndsItAndIsReadAgainWhenItIsBack) {
  Insert("usim");
  slot->SetPlan(PulledAt(kReadRecord, 40, Fate::kPulledBefore));
  EXPECT_EQ(radio->ReadEntries(1, 500).code, platform::kRilResultError);
  EXPECT_EQ(sim->Text(1), u"!88000207");
  slot->SetPlan(nullptr);
  slot->Insert();
  EXPECT_EQ(Await(1, kFirst), kFirst);
  const auto result = radio->ReadEntries(1, 500);
  ASSERT_EQ(result.code, platform::kRilResultOk);
  EXPECT_EQ(device::card::RadioClient::Records<platform::RilPhonebookEntry>(result).size(), 180U);
}

TEST_F(CardChangesTest, ACardPulledBeforeAWriteKeepsTheOldEntryAndTheCallerIsTold) {
  Insert("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  slot->SetPlan(PulledAt(kUpdateRecord, 1, Fate::kPulledBefore));
  EXPECT_EQ(sim->Write(1, u"Lost", u"1"), SimResult::kNotInserted);
  slot->SetPlan(nullptr);
  slot->Insert();
  EXPECT_EQ(Await(1, kFirst), kFirst);
  EXPECT_EQ(sim->Write(1, u"Again", u"1"), SimResult::kOk);
  EXPECT_EQ(sim->Text(1), u"Again|1");
}

TEST_F(CardChangesTest, ACardPulledAfterAWriteIsReadAsItIsWhenItIsBack) {
  Insert("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  slot->SetPlan(PulledAt(kUpdateRecord, 1, Fate::kPulledAfter));
  EXPECT_EQ(sim->Write(1, u"Kept", u"1"), SimResult::kNotInserted);  // nobody can know
  slot->SetPlan(nullptr);
  slot->Insert();
  EXPECT_EQ(Await(1, u"Kept|1"), u"Kept|1");
}

TEST_F(CardChangesTest, AWriteWhoseAnswerWasLostIsReadBackFromTheCard) {
  Insert("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  std::atomic<int> updates = 0;
  // In again before the write is judged: the card is asked what it holds, and not written again.
  slot->SetPlan([&updates](std::span<const std::uint8_t> command) {
    if (command.size() < 2 || command[1] != kUpdateRecord) return Fate::kAnswered;
    return ++updates == 1 ? Fate::kPulledAfter : Fate::kAnswered;
  });
  std::jthread back([this, &updates] {
    while (updates == 0) std::this_thread::yield();
    slot->Flick();
  });
  const SimResult result = sim->Write(1, u"Kept", u"1");
  back.join();
  // Whether the daemon saw the card gone decides between the two.
  EXPECT_TRUE(result == SimResult::kOk || result == SimResult::kNotInserted);
  EXPECT_EQ(Await(1, u"Kept|1"), u"Kept|1");
  EXPECT_EQ(updates, 1);
}

TEST_F(CardChangesTest, ListenersAreToldOfRemovalAndInsertion) {
  Insert("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  slot->Remove();
  slot->Insert();
  const auto notices = radio->Notices(3);
  ASSERT_GE(notices.size(), 3U);
  EXPECT_EQ(notices[0].code, platform::kRilNotifyEquipmentState);
  EXPECT_EQ(notices[1].code, platform::kRilNotifyPhonebookRewritten);
  EXPECT_EQ(notices[2].code, platform::kRilNotifyEquipmentState);
}

TEST_F(CardChangesTest, AnotherCardIsNotWrittenUntilItWasListed) {
  Insert("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  Replace("usim-full");
  EXPECT_EQ(Await(1, u"Notruf|112"), u"Notruf|112");
  EXPECT_EQ(sim->Write(1, u"Old list", u"1"), SimResult::kWrongSim);
  EXPECT_EQ(sim->Delete(1), SimResult::kWrongSim);
  ASSERT_EQ(radio->ReadEntries(1, 10).code, platform::kRilResultOk);
  EXPECT_EQ(sim->Write(1, u"New list", u"1"), SimResult::kOk);
}

TEST_F(CardChangesTest, AResetByAnotherProgramLosesNothing) {
  Use("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  OtherProgram other(LastingCard().Reader());
  other.Reset();
  EXPECT_EQ(sim->Text(2), u"Ay\u015Fe G\u00FCne\u015F|+442079460000");
  EXPECT_GE(radio->Notices(2).size(), 2U);
  other.Reset();
  EXPECT_EQ(sim->Write(1, u"After reset", u"1"), SimResult::kOk);
  EXPECT_EQ(sim->Text(1), u"After reset|1");
}

TEST_F(CardChangesTest, AFileThatAnotherProgramSelectedIsNotWrittenByMistake) {
  Use("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  OtherProgram other(LastingCard().Reader());
  other.Begin();
  // EF_DIR, by its path from the master file.
  const auto selected = other.Transmit({0x00, 0xA4, 0x08, 0x04, 0x02, 0x2F, 0x00});
  EXPECT_EQ(device::card::ToHex(selected).substr(0, 2), "61");
  other.End();
  EXPECT_EQ(sim->Write(1, u"Right file", u"1"), SimResult::kOk);
  EXPECT_EQ(Held(kAdn, 1).substr(0, 20), "52696768742066696C65");
}

TEST_F(CardChangesTest, ACardHeldByAnotherProgramIsBusyAndNothingIsWritten) {
  Use("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  radio.reset();
  sim.reset();
  service.reset();
  channel = OpenReader(LastingCard().Reader(), {5s, 200ms, 5s});
  service = std::make_unique<device::card::SimService>(*channel);
  sim = std::make_unique<device::card::SimClient>(*service);
  ASSERT_EQ(Await(1, kFirst), kFirst);
  OtherProgram other(LastingCard().Reader());
  other.Begin();
  EXPECT_EQ(sim->Write(1, u"Busy", u"1"), SimResult::kSimBusy);
  other.End();
  EXPECT_EQ(Await(1, kFirst), kFirst);
  SimResult written = SimResult::kSimBusy;
  const auto limit = std::chrono::steady_clock::now() + 60s;
  while (written == SimResult::kSimBusy && std::chrono::steady_clock::now() < limit) {
    written = sim->Write(1, u"Free", u"1");
  }
  EXPECT_EQ(written, SimResult::kOk);
  EXPECT_EQ(Await(1, u"Free|1"), u"Free|1");
}

TEST_F(CardChangesTest, ADaemonThatGoesIsSaidAndTheCardIsUsedAgainWhenItIsBack) {
  Insert("usim");
  ASSERT_EQ(sim->Text(1), kFirst);
  Daemon::Get().Stop(SIGKILL);
  EXPECT_EQ(sim->Write(1, u"Nowhere", u"1"), SimResult::kRadioNotPresent);
  EXPECT_EQ(sim->Text(1), u"!8800006A");
  Daemon::Restart(SIGKILL);
  slot->Insert();
  EXPECT_EQ(Await(1, kFirst), kFirst);
  EXPECT_EQ(sim->Write(1, u"Back", u"1"), SimResult::kOk);
}

}  // namespace
}  // namespace kelpin::contract
