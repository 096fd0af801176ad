// A card in a reader: what the service of smart cards says of it, and what becomes of a session.
#include "device/pcsc/pcsc_channel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
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

using Bytes = std::vector<std::uint8_t>;

const Bytes kSelectMaster = {0x00, 0xA4, 0x00, 0x04, 0x02, 0x3F, 0x00};
const Bytes kSelectIccid = {0x00, 0xA4, 0x00, 0x04, 0x02, 0x2F, 0xE2};
const Bytes kReadIccid = {0x00, 0xB0, 0x00, 0x00, 0x0A};

class PcscChannelTest : public testing::Test {
 protected:
  void SetUp() override {
    KELPIN_NEEDS_PCSCD();
    LastingCard().Use(&card.Channel());
    Open({60s, 60s, 60s});
  }
  void TearDown() override {
    channel.reset();
    if (test::PrivatePcscd::Installed()) LastingCard().Use(nullptr);
  }

  // One that gives up after these times.
  void Open(const device::pcsc::Patience& patience) {
    channel.reset();
    channel = OpenReader(LastingCard().Reader(), patience);
    ASSERT_NE(channel, nullptr);
  }
  void Connect() {
    Bytes atr;
    ASSERT_EQ(channel->Connect(atr), TransportError::kNone);
  }
  TransportError Send(const Bytes& command) { return channel->Transmit(command, response); }
  std::string Response() const { return ToHex(response); }

  SoftCard card{"usim"};
  Bytes response;
  std::unique_ptr<PcscChannel> channel;
};

TEST_F(PcscChannelTest, CommandsReachTheCardAndItsAnswersComeBack) {
  Connect();
  ASSERT_EQ(Send(kSelectIccid), TransportError::kNone);
  EXPECT_EQ(Response().substr(0, 2), "61");  // T=0: the answer waits
  ASSERT_EQ(Send(kReadIccid), TransportError::kNone);
  EXPECT_EQ(Response(), "980001214365072205F09000");
  ASSERT_EQ(Send({0x00, 0xB0, 0x00, 0x00, 0x00}), TransportError::kNone);
  EXPECT_EQ(Response(), "6C0A");
}

TEST_F(PcscChannelTest, OverT0NoLengthOfTheAnswerGoesBehindData) {
  std::vector<std::string> lines;
  card.Channel().SetTrace([&lines](std::string_view line) { lines.emplace_back(line); });
  Connect();
  Bytes command = kSelectMaster;
  command.push_back(0x00);
  ASSERT_EQ(Send(command), TransportError::kNone);
  ASSERT_EQ(Send({0x00, 0x20, 0x00, 0x01}), TransportError::kNone);
  card.Channel().SetTrace(nullptr);
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[0], "> 00A40004023F00");
  EXPECT_EQ(lines[2], "> 0020000100");  // the fifth byte of every command of T=0
}

TEST_F(PcscChannelTest, BytesThatAreNoCommandAreNotSent) {
  Connect();
  for (const std::size_t size : {0U, 1U, 2U, 3U}) {
    EXPECT_EQ(Send(Bytes(size, 0x04)), TransportError::kCommunication) << size;
  }
  ASSERT_EQ(Send(kSelectMaster), TransportError::kNone);
}

TEST_F(PcscChannelTest, BeforeConnectAndAfterDisconnectNothingIsSent) {
  EXPECT_EQ(Send(kSelectMaster), TransportError::kReset);
  Connect();
  ASSERT_EQ(Send(kSelectMaster), TransportError::kNone);
  channel->Disconnect();
  EXPECT_EQ(Send(kSelectMaster), TransportError::kReset);
}

TEST_F(PcscChannelTest, ACardThatAnotherProgramResetIsConnectedAgain) {
  CardEvents events;
  channel->SetListener(&events);
  Connect();
  ASSERT_EQ(Send(kSelectIccid), TransportError::kNone);
  OtherProgram(LastingCard().Reader()).Reset();
  EXPECT_EQ(Send(kReadIccid), TransportError::kReset);
  EXPECT_EQ(Send(kReadIccid), TransportError::kReset);
  EXPECT_EQ(channel->BeginTransaction(), TransportError::kReset);
  EXPECT_THAT(events.Await(1), ElementsAre("reset"));
  Connect();
  ASSERT_EQ(Send(kReadIccid), TransportError::kNone);
  EXPECT_EQ(Response(), "6986");  // nothing is selected any more
  ASSERT_EQ(Send(kSelectIccid), TransportError::kNone);
  ASSERT_EQ(Send(kReadIccid), TransportError::kNone);
  EXPECT_EQ(Response(), "980001214365072205F09000");
}

TEST_F(PcscChannelTest, AResetIsToldThoughNothingIsAskedOfTheCard) {
  CardEvents events;
  channel->SetListener(&events);
  Connect();
  OtherProgram(LastingCard().Reader()).Reset();
  EXPECT_THAT(events.Await(1), ElementsAre("reset"));
}

TEST_F(PcscChannelTest, ACardThatAnotherProgramHoldsIsBusyAndThenOursAgain) {
  Open({60s, 300ms, 60s});
  Connect();
  ASSERT_EQ(Send(kSelectIccid), TransportError::kNone);
  OtherProgram other(LastingCard().Reader());
  other.Begin();
  EXPECT_EQ(channel->BeginTransaction(), TransportError::kBusy);
  EXPECT_EQ(channel->BeginTransaction(), TransportError::kBusy);
  other.End();
  TransportError begun = TransportError::kBusy;
  const auto limit = std::chrono::steady_clock::now() + 60s;
  while (begun == TransportError::kBusy && std::chrono::steady_clock::now() < limit) {
    begun = channel->BeginTransaction();
  }
  ASSERT_EQ(begun, TransportError::kNone);
  ASSERT_EQ(Send(kReadIccid), TransportError::kNone);  // the session was not lost
  EXPECT_EQ(Response(), "980001214365072205F09000");
  channel->EndTransaction();
}

TEST_F(PcscChannelTest, OthersAreKeptOffForATransactionAndHaveTheCardSoonAfter) {
  Connect();
  OtherProgram other(LastingCard().Reader());
  ASSERT_EQ(channel->BeginTransaction(), TransportError::kNone);
  EXPECT_TRUE(channel->OthersMaySelect());
  std::atomic<bool> theirs = false;
  std::jthread waiting([&] {
    other.Begin();
    theirs = true;
    other.End();
  });
  std::this_thread::sleep_for(250ms);
  EXPECT_FALSE(theirs);
  channel->EndTransaction();
  waiting.join();  // though nobody asks for anything
  EXPECT_TRUE(theirs);
}

TEST_F(PcscChannelTest, ARunOfTransactionsKeepsWhatIsSelected) {
  Connect();
  OtherProgram other(LastingCard().Reader());
  ASSERT_EQ(channel->BeginTransaction(), TransportError::kNone);
  EXPECT_TRUE(channel->OthersMaySelect());
  channel->EndTransaction();
  // It is no run when the machine takes long between the two.
  bool kept = false;
  const auto limit = std::chrono::steady_clock::now() + 60s;
  while (!kept && std::chrono::steady_clock::now() < limit) {
    ASSERT_EQ(channel->BeginTransaction(), TransportError::kNone);
    kept = !channel->OthersMaySelect();
    channel->EndTransaction();
  }
  EXPECT_TRUE(kept);
  other.Begin();  // as soon as it was given back
  other.End();
  ASSERT_EQ(channel->BeginTransaction(), TransportError::kNone);
  EXPECT_TRUE(channel->OthersMaySelect());
  channel->EndTransaction();
}

TEST_F(PcscChannelTest, ALongRunLetsOthersIn) {
  Connect();
  OtherProgram other(LastingCard().Reader());
  std::atomic<bool> theirs = false;
  std::jthread waiting([&] {
    other.Begin();
    theirs = true;
    other.End();
  });
  const auto limit = std::chrono::steady_clock::now() + 60s;
  while (!theirs && std::chrono::steady_clock::now() < limit) {
    const TransportError begun = channel->BeginTransaction();
    if (begun == TransportError::kBusy) continue;
    ASSERT_EQ(begun, TransportError::kNone);
    ASSERT_EQ(Send(kSelectMaster), TransportError::kNone);
    channel->EndTransaction();
  }
  EXPECT_TRUE(theirs);
  waiting.join();
}

TEST_F(PcscChannelTest, ASilentCardEndsInAResultAndIsHeardAgain) {
  Open({200ms, 200ms, 60s});
  Connect();
  LastingCard().SetPlan([](std::span<const std::uint8_t>) { return Fate::kSilent; });
  EXPECT_EQ(Send(kSelectIccid), TransportError::kTimeout);
  EXPECT_EQ(Send(kSelectIccid), TransportError::kTimeout);  // at once
  EXPECT_EQ(channel->BeginTransaction(), TransportError::kTimeout);
  LastingCard().SetPlan(nullptr);
  LastingCard().Speak();
  TransportError sent = TransportError::kTimeout;
  const auto limit = std::chrono::steady_clock::now() + 60s;
  while (sent == TransportError::kTimeout && std::chrono::steady_clock::now() < limit) {
    sent = Send(kSelectIccid);
    if (sent == TransportError::kNone) sent = Send(kReadIccid);  // its own answer, not the late one
  }
  ASSERT_EQ(sent, TransportError::kNone);
  EXPECT_EQ(Response(), "980001214365072205F09000");
}

TEST_F(PcscChannelTest, ASilentCardDoesNotKeepTheProgramFromEnding) {
  Open({100ms, 100ms, 60s});
  Connect();
  LastingCard().SetPlan([](std::span<const std::uint8_t>) { return Fate::kSilent; });
  EXPECT_EQ(Send(kSelectIccid), TransportError::kTimeout);
  channel.reset();
  LastingCard().SetPlan(nullptr);
  LastingCard().Speak();
}

// Readers.

TEST_F(PcscChannelTest, AReaderIsFoundByAPartOfItsNameInAnyCase) {
  const std::string whole = LastingCard().Reader();  // "Kelpin Test 123 карта 00 00"
  const std::string part = "KELPIN TEST " + whole.substr(12, whole.find(' ', 12) - 12);
  std::string why;
  EXPECT_EQ(PcscChannel::Open(part, why), nullptr);
  EXPECT_THAT(why, HasSubstr("More than one reader is called"));
  EXPECT_THAT(why, HasSubstr(whole));
  const auto found = PcscChannel::Open("\u043A\u0430\u0440\u0442\u0430 00 01", why);
  ASSERT_NE(found, nullptr) << why;
  EXPECT_EQ(found->ReaderName(), Daemon::Get().ReaderName(1));
  EXPECT_FALSE(found->HadCard());
}

TEST_F(PcscChannelTest, WithoutANameTheReaderWithACardIsTaken) {
  std::string why;
  const auto found = PcscChannel::Open("", why);
  ASSERT_NE(found, nullptr) << why;
  EXPECT_EQ(found->ReaderName(), LastingCard().Reader());
  EXPECT_TRUE(found->HadCard());
}

TEST_F(PcscChannelTest, AReaderThatIsNotThereIsNamedWithThoseThatAre) {
  std::string why;
  EXPECT_EQ(PcscChannel::Open("Nobody", why), nullptr);
  EXPECT_THAT(why, HasSubstr("No reader is called \"Nobody\""));
  EXPECT_THAT(why, HasSubstr(Daemon::Get().ReaderName(0)));
  EXPECT_THAT(why, HasSubstr(Daemon::Get().ReaderName(1)));
}

TEST_F(PcscChannelTest, TheReadersAreListed) {
  std::vector<device::pcsc::Reader> readers;
  std::string why;
  ASSERT_TRUE(device::pcsc::ListReaders(readers, why)) << why;
  ASSERT_EQ(readers.size(), 2U);
  EXPECT_EQ(readers[0].name, Daemon::Get().ReaderName(0));
  EXPECT_TRUE(readers[0].hasCard);
  EXPECT_EQ(readers[1].name, Daemon::Get().ReaderName(1));
  EXPECT_FALSE(readers[1].hasCard);
}

TEST(ReaderNames, AreTakenFromTheListAndNeverFromBehindIt) {
  using device::pcsc::SplitNames;
  const std::string two("Reader A\0\xD0\xB6\0\0", 13);
  EXPECT_THAT(SplitNames(two), ElementsAre("Reader A", "\xD0\xB6"));
  const std::string endless("Reader", 6);
  EXPECT_THAT(SplitNames(endless), ElementsAre("Reader"));
  EXPECT_THAT(SplitNames(std::string("\0\0", 2)), ElementsAre());
  EXPECT_THAT(SplitNames({}), ElementsAre());
}

}  // namespace
}  // namespace kelpin::contract
