// Kinds of cards in a reader: listed, changed and asked for their PIN.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/radio_interface.h"
#include "sim/ril_ext_phonebook.h"
#include "tests/contract/pcsc/reader_card_test.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_kernel.h"

namespace kelpin::contract {
namespace {

using kelpin::sim::FieldResult;
using kelpin::sim::FieldSlot;
using platform::CardLockResult;
using platform::CardLockState;
using platform::LastTry;
using platform::SimResult;
using Paths = std::vector<std::string>;

const Paths kGlobalAdn = {"7F10", "5F3A", "4F3A"};

class CardKindsTest : public ReaderCardTest {
 protected:
  // The locations that a list of the whole card names.
  std::vector<std::uint32_t> Listed(std::uint32_t last) {
    const auto result = radio->ReadEntries(1, last);
    EXPECT_EQ(result.code, platform::kRilResultOk);
    std::vector<std::uint32_t> locations;
    for (const auto& entry :
         device::card::RadioClient::Records<platform::RilPhonebookEntry>(result)) {
      locations.push_back(entry.index);
    }
    return locations;
  }
  std::uint32_t Used() {
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(sim->Status(used, total), SimResult::kOk);
    return used;
  }
};

// Write, read back, delete; what the card holds is worked out from TS 31.102 4.4.2.3.
TEST_F(CardKindsTest, AUsimIsListedAndChanged) {
  Use("usim");
  EXPECT_EQ(Used(), 180U);
  EXPECT_EQ(Listed(500).size(), 180U);
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  ASSERT_EQ(sim->Write(1, u"Kelpin", u"+442079460000"), SimResult::kOk);
  EXPECT_EQ(Held(kGlobalAdn, 1).substr(0, 12), "4B656C70696E");
  EXPECT_EQ(sim->Text(1), u"Kelpin|+442079460000");
  ASSERT_EQ(sim->Delete(1), SimResult::kOk);
  EXPECT_EQ(Used(), 179U);
}

TEST_F(CardKindsTest, AGsmCardIsListedAndChanged) {
  Use("sim-250");
  EXPECT_EQ(Listed(250).size(), 120U);
  ASSERT_EQ(sim->Write(101, u"New", u"123456789012345678901"), SimResult::kOk);
  EXPECT_EQ(Held({"7F10", "6F3A"}, 101),
            "4E6577" + std::string(26, 'F') + "0B8121436587092143658709FF05");
  EXPECT_EQ(Held({"7F10", "6F4A"}, 5), "0201F1FFFFFFFFFFFFFFFFFFFF");
  ASSERT_EQ(sim->Delete(101), SimResult::kOk);
  EXPECT_EQ(Held({"7F10", "6F4A"}, 5), "");  // free
}

TEST_F(CardKindsTest, ACardOfT1WithALocalPhoneBookIsListedAndChanged) {
  Insert("usim-local");
  EXPECT_EQ(Used(), 81U);
  ASSERT_EQ(sim->Write(1, u"Local", u"12"), SimResult::kOk);
  EXPECT_EQ(sim->Text(1), u"Local|12");
}

TEST_F(CardKindsTest, ACardThatCannotSearchIsReadRecordByRecord) {
  Use("usim-empty", [](nlohmann::json& image) { image["searchRecord"] = false; });
  EXPECT_EQ(Used(), 0U);
  ASSERT_EQ(sim->Write(3, u"Here", u"12"), SimResult::kOk);
  EXPECT_EQ(Used(), 1U);
  EXPECT_EQ(Listed(250), (std::vector<std::uint32_t>{3}));
}

TEST_F(CardKindsTest, AListOf180EntriesDoesNotSelectItsFileForEach) {
  Use("usim");
  EXPECT_EQ(Used(), 180U);
  const std::uint64_t before = card->Channel().CommandCount();
  // The card is left to others after 30 ms without a command, and once a second: then the file is
  // selected again.
  using Clock = std::chrono::steady_clock;
  const auto since = Clock::now();
  std::atomic<std::uint64_t> left = 0;
  LastingCard().SetPlan([&left, last = since](std::span<const std::uint8_t>) mutable {
    const auto now = Clock::now();
    if (now - std::exchange(last, now) > std::chrono::milliseconds(25)) ++left;
    return Fate::kAnswered;
  });
  EXPECT_EQ(Listed(500).size(), 180U);
  LastingCard().SetPlan(nullptr);
  left += static_cast<std::uint64_t>((Clock::now() - since) / std::chrono::milliseconds(900));
  // One READ RECORD for each entry; the file is found in a few more, each time in up to six.
  EXPECT_LE(card->Channel().CommandCount() - before, 180U + 20U + 6U * left);
}

TEST_F(CardKindsTest, ExtendedFieldsAreReadAndWritten) {
  Use("usim");
  test::Journal journal;
  test::FailPlan failures;
  test::FakeDevices devices(journal, failures);
  test::FakeKernel kernel(journal, failures);
  kelpin::sim::RilExtPhonebook book(*service, kernel, devices);
  ASSERT_TRUE(book.Open(0));
  ASSERT_TRUE(book.LoadLayout({false, false, false, true}));
  std::uint32_t existing = 0;
  std::u16string text;
  ASSERT_EQ(book.ReadTextField(FieldSlot::kEmail, 4, false, existing, text), FieldResult::kRead);
  EXPECT_EQ(text, u"info@example.org");
  ASSERT_EQ(book.WriteTextField(FieldSlot::kEmail, 4, u"new@example.org", existing), 0U);
  ASSERT_EQ(book.ReadTextField(FieldSlot::kEmail, 4, false, existing, text), FieldResult::kRead);
  EXPECT_EQ(text, u"new@example.org");
}

// The PIN.

void WantPin(nlohmann::json& image) {
  image["pins"]["pin1"]["enabled"] = true;
}

TEST_F(CardKindsTest, APinIsWantedRefusedAndTaken) {
  for (const std::string sample : {"usim", "sim-250"}) {
    SCOPED_TRACE(sample);
    Use(sample, WantPin);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(sim->Status(used, total), SimResult::kPinRequired);
    CardLockState lock;
    ASSERT_EQ(service->GetLockState(lock), SimResult::kOk);
    EXPECT_TRUE(lock.wanted);
    EXPECT_EQ(lock.triesLeft, 3);
    EXPECT_EQ(service->VerifyPin("4321", LastTry::kKeep, lock), CardLockResult::kRefused);
    EXPECT_EQ(lock.triesLeft, 2);
    EXPECT_EQ(service->VerifyPin("1234", LastTry::kKeep, lock), CardLockResult::kTaken);
    EXPECT_FALSE(lock.wanted);
    EXPECT_EQ(sim->Status(used, total), SimResult::kOk);
    EXPECT_EQ(used, sample == "usim" ? 180U : 120U);
    TearDown();
  }
}

TEST_F(CardKindsTest, ABlockedPinIsSaidAndThePukOpensTheCard) {
  Use("usim", [](nlohmann::json& image) {
    WantPin(image);
    image["pins"]["pin1"]["tries"] = 1;
  });
  CardLockState lock;
  EXPECT_EQ(service->VerifyPin("4321", LastTry::kKeep, lock), CardLockResult::kLastTry);
  EXPECT_EQ(card->Image()["pins"]["pin1"]["tries"], 1);
  EXPECT_EQ(service->VerifyPin("4321", LastTry::kRisk, lock), CardLockResult::kBlocked);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim->Status(used, total), SimResult::kPukRequired);
  EXPECT_EQ(service->UnblockPin("12345678", "2468", LastTry::kKeep, lock), CardLockResult::kTaken);
  EXPECT_EQ(sim->Status(used, total), SimResult::kOk);
  EXPECT_EQ(card->Image()["pins"]["pin1"]["code"], "2468");
}

TEST_F(CardKindsTest, APinIsWantedAgainAfterAnotherProgramResetTheCard) {
  Use("usim", WantPin);
  CardLockState lock;
  ASSERT_EQ(service->VerifyPin("1234", LastTry::kKeep, lock), CardLockResult::kTaken);
  EXPECT_EQ(Used(), 180U);
  const std::uint32_t powerUp = lock.powerUp;
  OtherProgram(LastingCard().Reader()).Reset();
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim->Status(used, total), SimResult::kPinRequired);
  ASSERT_EQ(service->GetLockState(lock), SimResult::kOk);
  EXPECT_TRUE(lock.wanted);
  EXPECT_EQ(lock.triesLeft, 3);
  EXPECT_NE(lock.powerUp, powerUp);
}

TEST_F(CardKindsTest, APinIsNotWantedAgainWhileTheCardRests) {
  Use("usim", WantPin);
  CardLockState lock;
  ASSERT_EQ(service->VerifyPin("1234", LastTry::kKeep, lock), CardLockResult::kTaken);
  // The daemon takes the power from a card that nobody is connected to after some 400 ms.
  std::this_thread::sleep_for(std::chrono::milliseconds(1200));
  EXPECT_EQ(sim->Write(1, u"Awake", u"1"), SimResult::kOk);
}

}  // namespace
}  // namespace kelpin::contract
