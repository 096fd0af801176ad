// Cards that come and go, and a daemon that does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/card/hex.h"
#include "tests/card/soft_card.h"
#include "tests/contract/pcsc/card_events.h"
#include "tests/contract/pcsc/reader_fixture.h"

namespace kelpin::contract {
namespace {

using device::card::SoftCard;
using device::card::ToHex;
using device::card::TransportError;
using device::pcsc::PcscChannel;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

const Bytes kSelectIccid = {0x00, 0xA4, 0x00, 0x04, 0x02, 0x2F, 0xE2};
const Bytes kReadIccid = {0x00, 0xB0, 0x00, 0x00, 0x0A};

class PcscRemovalTest : public testing::Test {
 protected:
  void SetUp() override {
    KELPIN_NEEDS_PCSCD();
    slot.Use(&card.Channel());
    slot.Insert();
    Open();
  }
  void TearDown() override {
    channel.reset();
    if (test::PrivatePcscd::Installed()) slot.Remove();
  }
  void Open() {
    channel = OpenReader(slot.Reader());
    ASSERT_NE(channel, nullptr);
    channel->SetListener(&events);
  }
  TransportError Connect() { return channel->Connect(atr); }
  TransportError Send(const Bytes& command) { return channel->Transmit(command, response); }
  // What the card is, read anew.
  std::string Iccid() {
    if (Send(kSelectIccid) != TransportError::kNone) return "no answer";
    return Send(kReadIccid) == TransportError::kNone ? ToHex(response) : "no answer";
  }

  SoftCard card{"usim"};
  ReaderCard slot{1};
  CardEvents events;
  Bytes atr;
  Bytes response;
  std::unique_ptr<PcscChannel> channel;
};

TEST_F(PcscRemovalTest, RemovalAndInsertionEndTheSession) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  slot.Unplug();
  EXPECT_THAT(events.Await(1), ElementsAre("removed"));
  EXPECT_EQ(Send(kReadIccid), TransportError::kRemoved);
  EXPECT_EQ(Connect(), TransportError::kNoCard);
  EXPECT_EQ(Send(kReadIccid), TransportError::kRemoved);
  slot.Plug();
  EXPECT_THAT(events.Await(2), ElementsAre("removed", "inserted"));
  EXPECT_EQ(Send(kReadIccid), TransportError::kRemoved);
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(ToHex(atr), "3B9E96801FC78031E073FE2113564B454C50494EFD");
  EXPECT_EQ(Iccid(), "980001214365072205F09000");
}

// A machine that has much else to do may be late now and then, but not each time.
TEST_F(PcscRemovalTest, RemovalAndInsertionAreToldWithinASecond) {
  constexpr int kTries = 20;
  std::vector<std::string> told;
  // From `change` until the event is told.
  const auto takes = [&](void (ReaderCard::*change)(), const char* event) {
    told.emplace_back(event);
    const auto since = Clock::now();
    (slot.*change)();
    EXPECT_EQ(events.Await(told.size()), told);
    return Clock::now() - since;
  };
  bool soon = false;
  for (int tries = 0; tries < kTries && !soon && !HasFailure(); ++tries) {
    const auto removal = takes(&ReaderCard::Unplug, "removed");
    const auto insertion = takes(&ReaderCard::Plug, "inserted");
    soon = removal < 1s && insertion < 1s;
  }
  EXPECT_TRUE(soon);
}

TEST_F(PcscRemovalTest, WithoutAConnectionCardsAreToldAllTheSame) {
  slot.Remove();
  EXPECT_THAT(events.Await(1), ElementsAre("removed"));
  slot.Insert();
  EXPECT_THAT(events.Await(2), ElementsAre("removed", "inserted"));
}

TEST_F(PcscRemovalTest, ACardPulledUnderACommandIsRemoved) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  slot.SetPlan([](std::span<const std::uint8_t>) { return Fate::kPulledBefore; });
  EXPECT_EQ(Send(kSelectIccid), TransportError::kRemoved);
  EXPECT_THAT(events.Await(1), ElementsAre("removed"));
}

TEST_F(PcscRemovalTest, ACardThatWasOutBetweenTwoLooksIsASessionLost) {
  ASSERT_EQ(Connect(), TransportError::kNone);
  ASSERT_EQ(Send(kSelectIccid), TransportError::kNone);
  slot.Flick();
  // The card that is in now was never selected anything on; whichever way the daemon notices, the
  // next command must not be answered as if nothing had happened.
  const TransportError error = Send(kReadIccid);
  EXPECT_TRUE(error == TransportError::kReset || error == TransportError::kRemoved ||
              (error == TransportError::kNone && ToHex(response) == "6986"));
  const auto limit = Clock::now() + 60s;
  while (Connect() != TransportError::kNone && Clock::now() < limit) {
    std::this_thread::sleep_for(20ms);
  }
  std::string iccid = Iccid();
  while (iccid == "no answer" && Clock::now() < limit) {
    if (Connect() == TransportError::kNone) iccid = Iccid();
  }
  EXPECT_EQ(iccid, "980001214365072205F09000");
}

TEST_F(PcscRemovalTest, ACardOfT1Answers) {
  slot.Remove();
  SoftCard other("usim-local");
  slot.Use(&other.Channel());
  slot.Insert();
  ASSERT_EQ(Connect(), TransportError::kNone);
  EXPECT_EQ(ToHex(atr), "3B9E968131FE458031E073FE2113564B454C50494EAE");
  ASSERT_EQ(Send({0x00, 0xA4, 0x00, 0x04, 0x02, 0x2F, 0xE2, 0x00}), TransportError::kNone);
  EXPECT_EQ(ToHex(response).substr(0, 2), "62");  // at once, with the file's description
  ASSERT_EQ(Send({0x00, 0x20, 0x00, 0x01}), TransportError::kNone);  // four bytes are four bytes
  EXPECT_EQ(response.size(), 2U);
  slot.Remove();
  slot.Use(&card.Channel());
}

TEST_F(PcscRemovalTest, ACardWhoseAtrIsGarbageIsNoCardToTalkTo) {
  slot.Remove();
  SoftCard garbage("usim", [](nlohmann::json& image) { image["atr"] = "FF"; });
  slot.Use(&garbage.Channel());
  slot.Insert();
  EXPECT_EQ(Connect(), TransportError::kCommunication);
  slot.Remove();
  slot.Use(&card.Channel());
}

// The daemon.

TEST_F(PcscRemovalTest, ADaemonThatEndsAndComesBackIsFoundAgain) {
  std::vector<std::string> told;
  for (const int signal : {SIGTERM, SIGKILL}) {
    SCOPED_TRACE(signal);
    ASSERT_EQ(Connect(), TransportError::kNone);
    EXPECT_EQ(Iccid(), "980001214365072205F09000");
    Daemon::Get().Stop(signal);
    EXPECT_EQ(Send(kReadIccid), TransportError::kReset);
    EXPECT_EQ(Connect(), TransportError::kNoReader);
    EXPECT_EQ(Connect(), TransportError::kNoReader);
    Daemon::Restart(signal);
    slot.Insert();
    told.insert(told.end(), {"removed", "inserted"});
    EXPECT_EQ(events.Await(told.size()), told);
    EXPECT_EQ(Connect(), TransportError::kNone);
    EXPECT_EQ(Iccid(), "980001214365072205F09000");
  }
}

TEST_F(PcscRemovalTest, WithoutADaemonItIsSaidWhatToDo) {
  channel.reset();
  Daemon::Get().Stop(SIGTERM);
  std::string why;
  EXPECT_EQ(PcscChannel::Open("", why), nullptr);
  EXPECT_THAT(why, HasSubstr("The smart-card service (pcscd) is not running."));
  EXPECT_THAT(why, HasSubstr("Install the package pcscd"));
  EXPECT_THAT(why, HasSubstr("systemctl start pcscd.socket"));
  Daemon::Restart(SIGTERM);
}

}  // namespace
}  // namespace kelpin::contract
