// Kinds of cards in a modem, on each way to them: listed, changed and asked for their PIN.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/contract/card_kinds_contract.h"
#include "tests/contract/modem/modem_card_test.h"

namespace kelpin::contract {
namespace {

using platform::SimResult;
using ::testing::HasSubstr;

template <int kWay>
class OnWay : public ModemCardTest {
 protected:
  void Put(const std::string& sample, const device::card::ImageChange& change = nullptr) {
    const WayToCard way = WaysToCard()[kWay];
    AtModem::Abilities abilities = way.abilities;
    std::string told = way.told;
    // A GSM card has no logical channels; a modem that knows them goes the next way.
    if (sample == "sim-250" && abilities.logicalChannels) {
      abilities.apdus = true;
      told = "(+CSIM)";
    }
    Use(sample, abilities, change);
    // A PIN that is wanted leaves no way until it was taken.
    if (change == nullptr) {
      EXPECT_THAT(channel->Description(), HasSubstr(told));
    }
  }
};

struct WayNames {
  template <class Way>
  static std::string GetName(int way) {
    return WaysToCard()[static_cast<std::size_t>(way)].name;
  }
};
using Ways = ::testing::Types<OnWay<0>, OnWay<1>, OnWay<2>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Modem, CardKindsContract, Ways, WayNames);

class ModemPinTest : public ModemCardTest, public testing::WithParamInterface<WayToCard> {};

TEST_P(ModemPinTest, NoCodeIsSentThatNobodyTyped) {
  Use("usim", GetParam().abilities, WantPin);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim->Status(used, total), SimResult::kPinRequired);
  platform::CardLockState lock;
  ASSERT_EQ(service->GetLockState(lock), SimResult::kOk);
  for (const std::string& command : modem->TakeCommands()) {
    EXPECT_FALSE(command.starts_with("AT+CPIN=")) << command;
  }
}

INSTANTIATE_TEST_SUITE_P(Modem, ModemPinTest, testing::ValuesIn(WaysToCard()),
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

// "usim" has its phone book under both names, so that name and number are there; "usim-local" has
// it in the application's folder alone.
TEST_F(ModemWaysTest, APhoneBookThatTheModemDoesNotReachIsSaidWithWhatToDo) {
  auto abilities = FileCommands();
  abilities.folders = false;
  Use("usim", abilities);
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  device::card::SoftCard local("usim-local");
  TestModem blind(local.Channel(), abilities);
  std::string why;
  EXPECT_EQ(device::modem::ModemChannel::Open(blind.Port(), why, LongPatience()), nullptr);
  EXPECT_THAT(why, HasSubstr("The modem on " + blind.Port() +
                             " does not let other programs at the phone book of its card"));
  EXPECT_THAT(why, HasSubstr("Put the card into a card reader and use --sim pcsc."));
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
