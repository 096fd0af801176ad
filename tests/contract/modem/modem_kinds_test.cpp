// Kinds of cards in a modem, on each way to them: listed, changed and asked for their PIN.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/radio_interface.h"
#include "sim/ril_ext_phonebook.h"
#include "tests/contract/modem/modem_card_test.h"
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
using ::testing::HasSubstr;
using Paths = std::vector<std::string>;

const Paths kGlobalAdn = {"7F10", "5F3A", "4F3A"};

class ModemKindsTest : public ModemCardTest, public testing::WithParamInterface<WayToCard> {
 protected:
  void Use(const std::string& sample, const device::card::ImageChange& change = nullptr) {
    AtModem::Abilities abilities = GetParam().abilities;
    // A GSM card has no logical channels; a modem that knows them goes the next way.
    if (sample == "sim-250" && abilities.logicalChannels) abilities.apdus = true;
    ModemCardTest::Use(sample, abilities, change);
  }
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
TEST_P(ModemKindsTest, AUsimIsListedAndChanged) {
  Use("usim");
  EXPECT_THAT(channel->Description(), HasSubstr(GetParam().told));
  EXPECT_EQ(Used(), 180U);
  EXPECT_EQ(Listed(500).size(), 180U);
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  ASSERT_EQ(sim->Write(1, u"Kelpin", u"+442079460000"), SimResult::kOk);
  EXPECT_EQ(Held(kGlobalAdn, 1).substr(0, 12), "4B656C70696E");
  EXPECT_EQ(sim->Text(1), u"Kelpin|+442079460000");
  ASSERT_EQ(sim->Delete(1), SimResult::kOk);
  EXPECT_EQ(Held(kGlobalAdn, 1), "");
  EXPECT_EQ(Used(), 179U);
}

TEST_P(ModemKindsTest, ExtendedFieldsAreReadAndWritten) {
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

TEST_P(ModemKindsTest, APhoneBookOfTheApplicationIsListedAndChanged) {
  Use("usim-local");
  EXPECT_EQ(Used(), 81U);
  ASSERT_EQ(sim->Write(1, u"Local", u"12"), SimResult::kOk);
  EXPECT_EQ(sim->Text(1), u"Local|12");
}

TEST_P(ModemKindsTest, AGsmCardIsListedAndChangedAndHasNoLogicalChannels) {
  Use("sim-250");
  EXPECT_THAT(channel->Description(),
              HasSubstr(GetParam().abilities.fileCommands ? "(+CRSM)" : "(+CSIM)"));
  EXPECT_EQ(Listed(250).size(), 120U);
  ASSERT_EQ(sim->Write(101, u"New", u"123456789012345678901"), SimResult::kOk);
  EXPECT_EQ(Held({"7F10", "6F3A"}, 101),
            "4E6577" + std::string(26, 'F') + "0B8121436587092143658709FF05");
  EXPECT_EQ(Held({"7F10", "6F4A"}, 5), "0201F1FFFFFFFFFFFFFFFFFFFF");
  ASSERT_EQ(sim->Delete(101), SimResult::kOk);
  EXPECT_EQ(Held({"7F10", "6F4A"}, 5), "");  // free
}

// The PIN.

void WantPin(nlohmann::json& image) {
  image["pins"]["pin1"]["enabled"] = true;
}

TEST_P(ModemKindsTest, APinIsWantedRefusedAndTakenThroughTheModem) {
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
    for (const std::string& command : modem->TakeCommands()) {
      EXPECT_FALSE(command.starts_with("AT+CPIN=")) << "nobody typed one";
    }
    EXPECT_EQ(service->VerifyPin("4321", LastTry::kKeep, lock), CardLockResult::kRefused);
    EXPECT_EQ(lock.triesLeft, 2);
    EXPECT_TRUE(lock.wanted);
    EXPECT_EQ(service->VerifyPin("1234", LastTry::kKeep, lock), CardLockResult::kTaken);
    EXPECT_FALSE(lock.wanted);
    EXPECT_EQ(sim->Status(used, total), SimResult::kOk);
    EXPECT_EQ(used, sample == "usim" ? 180U : 120U);
  }
}

TEST_P(ModemKindsTest, ABlockedPinIsSaidAndThePukOpensTheCard) {
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
  EXPECT_EQ(service->UnblockPin("87654321", "2468", LastTry::kKeep, lock),
            CardLockResult::kRefused);
  EXPECT_EQ(lock.unblockTriesLeft, 9);
  EXPECT_EQ(service->UnblockPin("12345678", "2468", LastTry::kKeep, lock), CardLockResult::kTaken);
  EXPECT_EQ(sim->Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, 180U);
  EXPECT_EQ(card->Image()["pins"]["pin1"]["code"], "2468");
}

INSTANTIATE_TEST_SUITE_P(Modem, ModemKindsTest, testing::ValuesIn(WaysToCard()),
                         [](const auto& way) { return way.param.name; });

// Which way is taken.

class ModemWaysTest : public ModemCardTest {};

TEST_F(ModemWaysTest, AChannelOfOurOwnComesFirstAndFileCommandsLast) {
  struct Row {
    AtModem::Abilities abilities;
    const char* told;
  };
  const Row rows[] = {{{}, "(+CGLA)"},
                      {{.logicalChannels = false}, "(+CSIM)"},
                      {{.logicalChannels = false, .apdus = false}, "(+CRSM)"}};
  for (const Row& row : rows) {
    Use("usim", row.abilities);
    EXPECT_THAT(channel->Description(), HasSubstr(row.told));
  }
}

TEST_F(ModemWaysTest, TheChannelIsOpenedOnceAndClosedAtTheEnd) {
  Use("usim", {});
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  Close();
  int opened = 0;
  std::string last;
  for (const std::string& command : modem->TakeCommands()) {
    if (command == "AT+CCHO=\"A0000000871002FF49FF0589\"") ++opened;
    last = command;
  }
  EXPECT_EQ(opened, 1);
  EXPECT_EQ(last, "AT+CCHC=1");
}

TEST_F(ModemWaysTest, AModemThatTakesNoPathsGivesThePhoneBookOfTheOldKind) {
  auto abilities = FileCommands();
  abilities.folders = false;
  // The card's files under DF TELECOM alone are reached; those of the phone book's own folder are
  // never asked for, since another file would answer.
  Use("sim-250", abilities);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim->Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, 120U);
  EXPECT_EQ(total, 250U);
}

TEST_F(ModemWaysTest, AModemThatGivesNoWayToItsCardIsRefusedWithWhatToDo) {
  device::card::SoftCard none("usim");
  TestModem shut(none.Channel(), {.logicalChannels = false, .apdus = false, .fileCommands = false});
  std::string why;
  EXPECT_EQ(device::modem::ModemChannel::Open(shut.Port(), why, LongPatience()), nullptr);
  EXPECT_THAT(why, HasSubstr("The modem on " + shut.Port()));
  EXPECT_THAT(why, HasSubstr("Put the card into a card reader and use --sim pcsc."));
}

}  // namespace
}  // namespace kelpin::contract
