#include "device/pcsc/pcsc_channel.h"

#include <algorithm>
#include <atomic>
#include <string_view>
#include <utility>

#include "platform/wording.h"

namespace kelpin::device::pcsc {
namespace {

using card::TransportError;
using platform::Say;

std::string Explain(Verdict verdict) {
  switch (verdict) {
    case Verdict::kNoReader:
      return Say(
          "No card reader is connected. Plug a reader in, then start again. A reader that is "
          "plugged in and not found needs its driver; for most it is in the package libccid.");
    case Verdict::kTimedOut:
      return Say(
          "The smart-card service does not answer. Restart it with \"sudo systemctl restart "
          "pcscd\".");
    default:
      return Say(
          "The smart-card service (pcscd) is not running. Install the package pcscd and start it "
          "with \"sudo systemctl start pcscd.socket\" (without systemd: run pcscd as root).");
  }
}

// Only letters of ASCII have two cases here; bytes of other letters stand for themselves.
char Lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool Contains(std::string_view text, std::string_view part) {
  return std::search(text.begin(), text.end(), part.begin(), part.end(), [](char left, char right) {
           return Lower(left) == Lower(right);
         }) != text.end();
}

const Reader* Choose(const std::vector<Reader>& readers, const std::string& name,
                     std::string& why) {
  if (name.empty()) {
    const auto filled = std::find_if(readers.begin(), readers.end(),
                                     [](const Reader& reader) { return reader.hasCard; });
    return filled == readers.end() ? &readers.front() : &*filled;
  }
  std::vector<const Reader*> fits;
  for (const Reader& reader : readers) {
    if (reader.name == name) return &reader;
    if (Contains(reader.name, name)) fits.push_back(&reader);
  }
  if (fits.size() == 1) return fits.front();
  why = fits.empty()
            ? Say("No reader is called \"%s\". Write one of these names behind pcsc:", {name})
            : Say("More than one reader is called \"%s\". Write more of the name:", {name});
  for (const Reader& reader : readers) {
    if (fits.empty() || Contains(reader.name, name))
      why += "\n  " + platform::Printable(reader.name);
  }
  return nullptr;
}

// A PIN may be in it.
void Wipe(std::vector<std::uint8_t>& bytes) {
  volatile std::uint8_t* byte = bytes.data();
  for (std::size_t left = bytes.size(); left > 0; --left) *byte++ = 0;
}

}  // namespace

bool ListReaders(std::vector<Reader>& readers, std::string& why) {
  struct Found {
    std::vector<Reader> readers;
    Verdict verdict = Verdict::kTimedOut;
  };
  const auto found = std::make_shared<Found>();
  DeadlineThread thread([] { return DeadlineThread::Duration{3600000}; }, [] {});
  const bool told = thread.Run(
      [found] {
        Context context;
        found->verdict = context.Establish();
        if (found->verdict == Verdict::kDone) found->verdict = context.ListReaders(found->readers);
      },
      Patience().connection);
  const Verdict verdict = told ? found->verdict : Verdict::kTimedOut;
  if (verdict != Verdict::kDone) {
    why = Explain(verdict);
    return false;
  }
  readers = std::move(found->readers);
  return true;
}

std::unique_ptr<PcscChannel> PcscChannel::Open(const std::string& name, std::string& why,
                                               const Patience& patience) {
  std::vector<Reader> readers;
  if (!ListReaders(readers, why)) return nullptr;
  const Reader* reader = Choose(readers, name, why);
  if (reader == nullptr) return nullptr;
  return std::unique_ptr<PcscChannel>(new PcscChannel(*reader, patience));
}

void PcscChannel::Shared::Tell() {
  const Verdict verdict = session.TakeEnd();
  // The watcher tells of a card that was taken out.
  if (verdict == Verdict::kReset || verdict == Verdict::kLost) events->Reset();
}

PcscChannel::PcscChannel(const Reader& reader, const Patience& patience)
    : reader_(reader.name),
      hadCard_(reader.hasCard),
      patience_(patience),
      shared_(std::make_shared<Shared>(reader.name)),
      thread_(
          [shared = shared_] {
            const auto pause = shared->session.Idle();
            shared->Tell();
            return pause;
          },
          [shared = shared_] { shared->session.Disconnect(); }),
      watcher_(reader.name, reader.hasCard, shared_->events) {}

PcscChannel::~PcscChannel() {
  SetListener(nullptr);
}

TransportError PcscChannel::Connect(std::vector<std::uint8_t>& atr) {
  struct Call {
    std::vector<std::uint8_t> atr;
    Verdict verdict = Verdict::kDone;
  };
  const auto call = std::make_shared<Call>();
  const bool done =
      thread_.Run([shared = shared_, call] { call->verdict = shared->session.Connect(call->atr); },
                  patience_.connection);
  if (!done) return TransportError::kTimeout;
  if (call->verdict == Verdict::kDone) atr = std::move(call->atr);
  return ToTransportError(call->verdict);
}

void PcscChannel::Disconnect() {
  thread_.Post([shared = shared_] { shared->session.Disconnect(); });
}

TransportError PcscChannel::Transmit(std::span<const std::uint8_t> command,
                                     std::vector<std::uint8_t>& response) {
  struct Call {
    ~Call() { Wipe(command); }
    std::vector<std::uint8_t> command;
    std::vector<std::uint8_t> response;
    Verdict verdict = Verdict::kDone;
  };
  const auto call = std::make_shared<Call>();
  call->command.assign(command.begin(), command.end());
  const bool alreadyOverdue = thread_.Overdue();
  const bool done = thread_.Run(
      [shared = shared_, call] {
        call->verdict = shared->session.Transmit(call->command, call->response);
        shared->Tell();
      },
      patience_.answer);
  if (!done) {
    if (!alreadyOverdue) overdue_ = TransportError::kTimeout;
    return TransportError::kTimeout;
  }
  if (call->verdict == Verdict::kDone) response = std::move(call->response);
  // The service gone in the middle of a session ends the session; connecting again tells why.
  if (call->verdict == Verdict::kNoService) return TransportError::kReset;
  return ToTransportError(call->verdict);
}

TransportError PcscChannel::BeginTransaction() {
  struct Call {
    std::atomic<bool> givenUp = false;
    bool fresh = false;
    Verdict verdict = Verdict::kDone;
  };
  const auto call = std::make_shared<Call>();
  const bool alreadyOverdue = thread_.Overdue();
  const bool done = thread_.Run(
      [shared = shared_, call] {
        if (call->givenUp) return;
        call->verdict = shared->session.BeginTransaction(call->fresh);
        shared->Tell();
        if (call->givenUp) shared->session.EndTransaction();
      },
      patience_.turn);
  if (!done) {
    call->givenUp = true;
    if (!alreadyOverdue) overdue_ = TransportError::kBusy;
    return overdue_;
  }
  othersMaySelect_ = call->fresh;
  if (call->verdict == Verdict::kNoService) return TransportError::kReset;
  return ToTransportError(call->verdict);
}

void PcscChannel::EndTransaction() {
  thread_.Post([shared = shared_] { shared->session.EndTransaction(); });
}

void PcscChannel::SetListener(card::CardChannelListener* listener) {
  shared_->events->SetListener(listener);
}

std::string PcscChannel::Description() const {
  return "card reader " + reader_;
}

}  // namespace kelpin::device::pcsc
