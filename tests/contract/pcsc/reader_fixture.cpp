#include "tests/contract/pcsc/reader_fixture.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "tests/card/soft_card.h"

namespace kelpin::contract {

using device::card::TransportError;
using device::pcsc::Verdict;
using namespace std::chrono_literals;

namespace {

// Names are the test's, so that two runs at once are told apart.
std::string ReaderNameOfThisRun() {
  return "Kelpin Test " + std::to_string(::getpid()) + " \u043A\u0430\u0440\u0442\u0430";
}

struct World {
  World() {
    // The library reads the name once.
    ::setenv("PCSCLITE_CSOCK_NAME", daemon.Socket().c_str(), 1);
    Start();
  }

  // Until the readers are there: another program may have taken a port meanwhile, or the machine
  // be slow.
  void Start() {
    std::string why;
    for (auto patience = 2s; patience < 60s; patience *= 2) {
      if (!daemon.Start(why)) continue;
      device::pcsc::Context context;
      std::vector<device::pcsc::Reader> readers;
      const auto limit = std::chrono::steady_clock::now() + patience;
      while (std::chrono::steady_clock::now() < limit) {
        if (context.Establish() == Verdict::kDone &&
            context.ListReaders(readers) == Verdict::kDone && readers.size() == 2) {
          return;
        }
        std::this_thread::sleep_for(5ms);
      }
      why = "no readers; see the daemon's log";
    }
    ADD_FAILURE() << why;
  }

  device::card::ScratchFolder folder;
  test::PrivatePcscd daemon{folder.Path(), ReaderNameOfThisRun()};
};

// Made with the first test that needs it and ended after the last one, on the main thread both.
std::unique_ptr<World> world;
std::unique_ptr<ReaderCard> lasting;

class Ending : public ::testing::Environment {
 public:
  void TearDown() override {
    lasting.reset();
    world.reset();
  }
};

const ::testing::Environment* const kEnding = ::testing::AddGlobalTestEnvironment(new Ending);

World& TheWorld() {
  if (world == nullptr) world = std::make_unique<World>();
  return *world;
}

}  // namespace

test::PrivatePcscd& Daemon::Get() {
  return TheWorld().daemon;
}

void Daemon::Restart(int signal) {
  lasting.reset();  // its reader goes
  TheWorld().daemon.Stop(signal);
  TheWorld().Start();
}

OtherProgram::OtherProgram(const std::string& reader) {
  EXPECT_EQ(context_.Establish(), Verdict::kDone);
  EXPECT_EQ(SCardConnect(context_.Handle(), reader.c_str(), SCARD_SHARE_SHARED,
                         SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1, &card_, &protocol_),
            SCARD_S_SUCCESS);
}

OtherProgram::~OtherProgram() {
  SCardDisconnect(card_, SCARD_LEAVE_CARD);
}

void OtherProgram::Reset() {
  EXPECT_EQ(SCardReconnect(card_, SCARD_SHARE_SHARED, SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1,
                           SCARD_RESET_CARD, &protocol_),
            SCARD_S_SUCCESS);
}

void OtherProgram::Begin() {
  EXPECT_EQ(SCardBeginTransaction(card_), SCARD_S_SUCCESS);
}

void OtherProgram::End() {
  EXPECT_EQ(SCardEndTransaction(card_, SCARD_LEAVE_CARD), SCARD_S_SUCCESS);
}

std::vector<std::uint8_t> OtherProgram::Transmit(std::vector<std::uint8_t> command) {
  std::vector<std::uint8_t> answer(300);
  DWORD length = answer.size();
  const SCARD_IO_REQUEST* protocol = protocol_ == SCARD_PROTOCOL_T0 ? SCARD_PCI_T0 : SCARD_PCI_T1;
  if (SCardTransmit(card_, protocol, command.data(), command.size(), nullptr, answer.data(),
                    &length) != SCARD_S_SUCCESS) {
    return {};
  }
  answer.resize(length);
  return answer;
}

bool AwaitCard(const std::string& reader, bool present) {
  device::pcsc::Context context;
  if (context.Establish() != Verdict::kDone) return false;
  SCARD_READERSTATE state = {};
  state.szReader = reader.c_str();
  const auto limit = std::chrono::steady_clock::now() + 60s;
  while (std::chrono::steady_clock::now() < limit) {
    // Asked anew each time: a wait that is over just when the card comes or goes may tell nothing.
    state.dwCurrentState = SCARD_STATE_UNAWARE;
    if (SCardGetStatusChange(context.Handle(), 0, &state, 1) == SCARD_S_SUCCESS &&
        ((state.dwEventState & SCARD_STATE_PRESENT) != 0) == present) {
      return true;
    }
    std::this_thread::sleep_for(5ms);
  }
  return false;
}

ReaderCard::~ReaderCard() {
  Unplug();
}

void ReaderCard::Use(device::card::CardChannel* card) {
  const MutexLock hold(lock_);
  card_ = card;
  plan_ = nullptr;
  silent_ = false;
  if (card_ != nullptr) {
    EXPECT_EQ(card_->Connect(atr_), TransportError::kNone);
  }
  changed_.notify_all();
}

void ReaderCard::SetPlan(Plan plan) {
  const MutexLock hold(lock_);
  plan_ = std::move(plan);
}

void ReaderCard::Plug() {
  Unplug();
  std::string why;
  link_ =
      tools::VpcdLink::Connect("127.0.0.1", std::to_string(Daemon::Get().Port(slot_)), 60s, why);
  ASSERT_NE(link_, nullptr) << why;
  thread_ = std::thread([this, link = link_.get()] {
    static_cast<void>(link->Serve(*this, 0ms));
    link->Close();
  });
}

void ReaderCard::Unplug() {
  if (link_ != nullptr) link_->Stop();
  Speak();
  if (thread_.joinable()) thread_.join();
  link_.reset();
}

void ReaderCard::Insert() {
  Plug();
  EXPECT_TRUE(AwaitCard(Reader(), true));
}

void ReaderCard::Remove() {
  Unplug();
  EXPECT_TRUE(AwaitCard(Reader(), false));
}

void ReaderCard::Flick() {
  Unplug();
  Plug();
}

void ReaderCard::Speak() {
  const MutexLock hold(lock_);
  silent_ = false;
  changed_.notify_all();
}

TransportError ReaderCard::Connect(std::vector<std::uint8_t>& atr) {
  const MutexLock hold(lock_);
  if (card_ != nullptr) {
    if (const TransportError error = card_->Connect(atr_); error != TransportError::kNone) {
      return error;
    }
  }
  atr = atr_;
  return TransportError::kNone;
}

void ReaderCard::Disconnect() {
  const MutexLock hold(lock_);
  if (card_ != nullptr) card_->Disconnect();
}

TransportError ReaderCard::BeginTransaction() {
  return TransportError::kNone;
}

TransportError ReaderCard::Transmit(std::span<const std::uint8_t> command,
                                    std::vector<std::uint8_t>& response) {
  const MutexLock hold(lock_);
  const Fate fate = plan_ ? plan_(command) : Fate::kAnswered;
  if (fate == Fate::kPulledBefore) return TransportError::kRemoved;
  silent_ = fate == Fate::kSilent;
  while (silent_) changed_.wait(lock_);
  if (card_ == nullptr) {
    response = {0x6F, 0x00};
    return TransportError::kNone;
  }
  const TransportError error = card_->Transmit(command, response);
  return fate == Fate::kPulledAfter ? TransportError::kRemoved : error;
}

ReaderCard& LastingCard() {
  if (lasting == nullptr) {
    lasting = std::make_unique<ReaderCard>(0);
    lasting->Insert();
  }
  return *lasting;
}

std::unique_ptr<device::pcsc::PcscChannel> OpenReader(const std::string& reader,
                                                      const device::pcsc::Patience& patience) {
  std::string why;
  auto channel = device::pcsc::PcscChannel::Open(reader, why, patience);
  EXPECT_NE(channel, nullptr) << why;
  return channel;
}

}  // namespace kelpin::contract
