// Ports that come and go, that others hold, and that are no modem's; and cards that come and go.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/contract/modem/modem_card_test.h"
#include "tests/contract/pcsc/card_events.h"

namespace kelpin::contract {
namespace {

using device::modem::ModemChannel;
using platform::SimResult;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ModemPortTest : public ModemCardTest {
 protected:
  bool Recovers() {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    while (sim->Status(used, total) != SimResult::kOk) {
      if (std::chrono::steady_clock::now() > limit) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
  }
  // Why the port is not opened.
  static std::string Refusal(const std::string& port) {
    std::string why;
    EXPECT_EQ(ModemChannel::Open(port, why, NoPatience()), nullptr);
    return why;
  }
};

TEST_F(ModemPortTest, APortThatIsInUseIsRefusedWithWhatToDo) {
  Use("usim", {});
  const std::string why = Refusal(modem->Port());
  EXPECT_THAT(why, HasSubstr(modem->Port() + " is in use by another program."));
  EXPECT_THAT(why, HasSubstr("sudo systemctl stop ModemManager"));
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");  // and goes on in the first
}

TEST_F(ModemPortTest, APortThatWasClosedIsFreeAgain) {
  Use("usim", {});
  Close();
  Open();
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
}

TEST_F(ModemPortTest, WhatIsNoPortIsRefused) {
  const std::string file = (folder.Path() / "file").string();
  std::ofstream(file) << "text";
  EXPECT_THAT(Refusal(file), HasSubstr(file + " is no serial port."));
  EXPECT_THAT(Refusal(folder.Path().string()), HasSubstr("is no serial port."));
  EXPECT_THAT(Refusal("/dev/null"), HasSubstr("/dev/null is no serial port."));
  const std::string none = (folder.Path() / "none").string();
  EXPECT_THAT(Refusal(none), HasSubstr("There is no port " + none));
}

TEST_F(ModemPortTest, AMuteModemIsRefusedWithWhatToDo) {
  device::card::SoftCard mute("usim");
  TestModem silent(mute.Channel(), {});
  silent.SetBetween([](std::string_view, const TestModem::Rest&) { return std::string(); });
  EXPECT_THAT(Refusal(silent.Port()),
              HasSubstr(silent.Port() + " does not answer as a modem does."));
}

TEST_F(ModemPortTest, APortThatTalksOfItsOwnAccordAloneIsNoModem) {
  device::card::SoftCard mute("usim");
  TestModem position(mute.Channel(), {});
  position.SetBetween([](std::string_view, const TestModem::Rest&) {
    return std::string("$GPRMC,,V,,,,,,,,,,N*53\r\n");
  });
  EXPECT_THAT(Refusal(position.Port()), HasSubstr("does not answer as a modem does."));
}

TEST_F(ModemPortTest, AModemThatEchoesAndNeverStopsTalkingIsUsedAllTheSame) {
  card = std::make_unique<device::card::SoftCard>("usim");
  modem = std::make_unique<TestModem>(card->Channel(), AtModem::Abilities{});
  std::atomic<bool> talking = true;
  std::thread talker([&] {
    while (talking) {
      modem->Tell("\r\n^HCSQ: \"LTE\",40,36,111,20\r\n");
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
  Open();
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  Close();
  talking = false;
  talker.join();
}

TEST_F(ModemPortTest, ACardTakenOutAndPutInIsToldAndReadAgain) {
  Use("usim", {});
  CardEvents events;
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  radio.reset();
  sim.reset();
  service.reset();
  channel->SetListener(&events);
  modem->SetPresent(false);
  EXPECT_THAT(events.Await(1), ElementsAre("removed"));
  std::vector<std::uint8_t> atr;
  EXPECT_EQ(channel->Prepare(), device::card::TransportError::kNoCard);
  modem->SetPresent(true);
  EXPECT_THAT(events.Await(2), ElementsAre("removed", "inserted"));
  EXPECT_EQ(channel->Prepare(), device::card::TransportError::kNone);
  EXPECT_EQ(channel->Connect(atr), device::card::TransportError::kNone);
  channel->SetListener(nullptr);
}

TEST_F(ModemPortTest, ACardThatGoesWithoutAWordIsMissedSoon) {
  Use("usim", {});
  CardEvents events;
  channel->SetListener(&events);
  modem->SetBetween([](std::string_view command, const TestModem::Rest& rest) {
    return command == "AT+CPIN?" ? std::string("\r\n+CME ERROR: 10\r\n") : rest();
  });
  EXPECT_THAT(events.Await(1), ElementsAre("removed"));
  modem->SetBetween(nullptr);
  EXPECT_THAT(events.Await(2), ElementsAre("removed", "inserted"));
  channel->SetListener(nullptr);
}

TEST_F(ModemPortTest, AModemThatIsUnpluggedIsACardTakenOutAndIsFoundAgain) {
  Use("usim", {});
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  modem->PullOut();
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  SimResult told = sim->Status(used, total);
  while (told == SimResult::kOk && std::chrono::steady_clock::now() < limit) {
    told = sim->Status(used, total);
  }
  EXPECT_TRUE(told == SimResult::kNotInserted || told == SimResult::kRadioNotPresent)
      << std::hex << static_cast<std::uint32_t>(told);
  modem->PlugIn();
  EXPECT_TRUE(Recovers());
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
}

// Whichever of the two it was, the entry is whole and what is shown afterwards is what is there.
class ModemUnpluggedTest : public ModemPortTest, public testing::WithParamInterface<bool> {};

TEST_P(ModemUnpluggedTest, InTheMiddleOfAnUpdateNothingIsLostAndNoSuccessIsClaimed) {
  const bool carriedOut = GetParam();
  Use("usim", {});
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  {
    const PulledOutAtUpdate pulled(*modem, carriedOut);
    EXPECT_NE(sim->Write(1, u"Kelpin", u"12"), SimResult::kOk);
    EXPECT_EQ(pulled.Updates(), 1);
  }
  modem->PlugIn();
  ASSERT_TRUE(Recovers());
  EXPECT_EQ(sim->Text(1), carriedOut ? u"Kelpin|12" : u"Bauer, Anna|+12125550100");
}

INSTANTIATE_TEST_SUITE_P(Modem, ModemUnpluggedTest, testing::Bool());

}  // namespace
}  // namespace kelpin::contract
