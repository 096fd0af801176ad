#include "device/pcsc/pcsc_session.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <thread>

namespace kelpin::device::pcsc {
namespace {

using namespace std::chrono_literals;

// The longest a short command's answer can be is 258 bytes; some readers put the parts of a longer
// one together.
constexpr std::size_t kAnswerRoom = 4096;

// How long the card stays ours after a transaction, for the next command of the same run.
constexpr auto kLinger = 30ms;
// Others wait in line by asking every 100 ms: a run longer than this lets them in for one turn.
constexpr auto kLongestHold = 1000ms;
constexpr auto kTurn = 120ms;
// The service looks every 400 ms whether the card is there; until then it cannot tell why a card
// does not answer.
constexpr auto kPresencePoll = 600ms;
constexpr auto kPresenceStep = 20ms;
// How often a card that nobody uses is looked after. Costs the card nothing.
constexpr auto kLook = 500ms;
constexpr auto kNothingToDo = 3600s;

constexpr std::size_t kHeader = 5;
constexpr std::size_t kStatusWord = 2;

}  // namespace

std::vector<std::string> SplitNames(std::span<const char> list) {
  std::vector<std::string> names;
  auto from = list.begin();
  while (from != list.end() && *from != '\0') {
    const auto to = std::find(from, list.end(), '\0');
    names.emplace_back(from, to);
    if (to == list.end()) break;
    from = to + 1;
  }
  return names;
}

Verdict Context::Establish() {
  Release();
  const Verdict verdict =
      Judge(SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &handle_));
  established_ = verdict == Verdict::kDone;
  return verdict;
}

void Context::Release() {
  if (established_) SCardReleaseContext(handle_);
  established_ = false;
}

Verdict Context::ListReaders(std::vector<Reader>& readers) {
  readers.clear();
  std::vector<char> list;
  // A reader may come between the two questions.
  for (int attempt = 0; attempt < 3; ++attempt) {
    DWORD size = 0;
    Verdict verdict = Judge(SCardListReaders(handle_, nullptr, nullptr, &size));
    if (verdict != Verdict::kDone) return verdict;
    list.assign(size, '\0');
    const LONG code = SCardListReaders(handle_, nullptr, list.data(), &size);
    if (code == SCARD_E_INSUFFICIENT_BUFFER) continue;
    verdict = Judge(code);
    if (verdict != Verdict::kDone) return verdict;
    list.resize(std::min<std::size_t>(size, list.size()));
    break;
  }
  for (std::string& name : SplitNames(list)) {
    SCARD_READERSTATE state = {};
    state.szReader = name.c_str();
    state.dwCurrentState = SCARD_STATE_UNAWARE;
    const bool told = SCardGetStatusChange(handle_, 0, &state, 1) == SCARD_S_SUCCESS;
    const bool hasCard = told && (state.dwEventState & SCARD_STATE_PRESENT) != 0;
    readers.push_back({std::move(name), hasCard});
  }
  return readers.empty() ? Verdict::kNoReader : Verdict::kDone;
}

Verdict PcscSession::Connect(std::vector<std::uint8_t>& atr) {
  Disconnect();
  Verdict verdict = Verdict::kDone;
  // A context outlives its daemon and looks well; once more with a new one tells.
  for (int attempt = 0; attempt < 2; ++attempt) {
    const bool renewed = !context_.Established();
    if (renewed) {
      verdict = context_.Establish();
      if (verdict != Verdict::kDone) return verdict;
    }
    verdict = Judge(SCardConnect(context_.Handle(), reader_.c_str(), SCARD_SHARE_SHARED,
                                 SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1, &card_, &protocol_));
    if (verdict != Verdict::kNoService) break;
    context_.Release();
    if (renewed) break;
  }
  if (verdict != Verdict::kDone) return verdict;
  connected_ = true;
  lost_ = Verdict::kDone;

  std::array<BYTE, MAX_ATR_SIZE> bytes = {};
  DWORD length = bytes.size();
  const Verdict asked =
      Settle(SCardStatus(card_, nullptr, nullptr, nullptr, nullptr, bytes.data(), &length));
  if (EndsSession(asked)) {
    Disconnect();
    return asked;
  }
  atr.assign(bytes.begin(), bytes.begin() + std::min<std::size_t>(length, bytes.size()));
  return Verdict::kDone;
}

void PcscSession::Disconnect() {
  Release();
  if (connected_) SCardDisconnect(card_, suspect_ ? SCARD_RESET_CARD : SCARD_LEAVE_CARD);
  connected_ = false;
  suspect_ = false;
  wanted_ = false;
}

void PcscSession::Close() {
  Disconnect();
  context_.Release();
}

LONG PcscSession::Look() {
  return SCardStatus(card_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

Verdict PcscSession::Settle(LONG code) {
  Verdict verdict = Judge(code);
  if (verdict == Verdict::kLost) {
    // Taken out, or silent: told apart as soon as the service has looked.
    suspect_ = true;
    const auto limit = Clock::now() + kPresencePoll;
    while (Clock::now() < limit) {
      std::this_thread::sleep_for(kPresenceStep);
      const Verdict now = Judge(Look());
      if (EndsSession(now)) {
        verdict = now;
        break;
      }
    }
  }
  if (EndsSession(verdict)) {
    lost_ = verdict;
    news_ = verdict;
    // A card that was taken out or reset is nobody's.
    held_ = false;
    wanted_ = false;
    if (verdict == Verdict::kNoService) {
      connected_ = false;
      context_.Release();
    }
  }
  return verdict;
}

std::span<const std::uint8_t> PcscSession::Frame(std::span<const std::uint8_t> command,
                                                 std::vector<std::uint8_t>& buffer) const {
  if (protocol_ != SCARD_PROTOCOL_T0) return command;
  if (command.size() == kHeader - 1) {
    buffer.assign(command.begin(), command.end());
    buffer.push_back(0);
    return buffer;
  }
  const bool lengthBehindData =
      command.size() > kHeader && command.size() == kHeader + command[kHeader - 1] + 1;
  return lengthBehindData ? command.first(command.size() - 1) : command;
}

Verdict PcscSession::Transmit(std::span<const std::uint8_t> command,
                              std::vector<std::uint8_t>& response) {
  if (lost_ != Verdict::kDone) return lost_;
  if (!connected_) return Verdict::kReset;
  // One byte would be taken for a control of the reader, and no command is that short.
  if (command.size() < kHeader - 1) return Verdict::kFailed;
  std::vector<std::uint8_t> buffer;
  const auto frame = Frame(command, buffer);
  std::vector<std::uint8_t> answer(kAnswerRoom);
  DWORD length = answer.size();
  const SCARD_IO_REQUEST* protocol = protocol_ == SCARD_PROTOCOL_T0 ? SCARD_PCI_T0 : SCARD_PCI_T1;
  const Verdict verdict = Settle(
      SCardTransmit(card_, protocol, frame.data(), frame.size(), nullptr, answer.data(), &length));
  lastUse_ = Clock::now();
  if (verdict != Verdict::kDone) return verdict;
  // Without a status word it is no card's answer; drivers tell so of a card that was pulled out.
  if (length < kStatusWord) return Settle(SCARD_E_NOT_TRANSACTED);
  answer.resize(std::min<std::size_t>(length, answer.size()));
  response = std::move(answer);
  return verdict;
}

Verdict PcscSession::BeginTransaction(bool& fresh) {
  fresh = false;
  if (lost_ != Verdict::kDone) return lost_;
  if (!connected_) return Verdict::kReset;
  if (!held_) {
    std::this_thread::sleep_until(othersUntil_);
    const Verdict verdict = Settle(SCardBeginTransaction(card_));
    if (verdict != Verdict::kDone) return verdict;
    held_ = true;
    heldSince_ = Clock::now();
    fresh = true;
  }
  wanted_ = true;
  lastUse_ = Clock::now();
  return Verdict::kDone;
}

void PcscSession::EndTransaction() {
  wanted_ = false;
  if (!held_) return;
  lastUse_ = Clock::now();
  if (lastUse_ - heldSince_ < kLongestHold) return;
  Release();
  othersUntil_ = lastUse_ + kTurn;
}

void PcscSession::Release() {
  if (held_ && connected_) SCardEndTransaction(card_, SCARD_LEAVE_CARD);
  held_ = false;
}

PcscSession::Duration PcscSession::Idle() {
  if (!connected_ || lost_ != Verdict::kDone) return kNothingToDo;
  if (wanted_) return kLook;
  const auto idleFor = std::chrono::duration_cast<Duration>(Clock::now() - lastUse_);
  if (held_) {
    if (idleFor < kLinger) return kLinger - idleFor;
    Release();
    return kLook;
  }
  if (idleFor < kLook) return kLook - idleFor;
  static_cast<void>(Settle(Look()));
  lastUse_ = Clock::now();
  return kLook;
}

}  // namespace kelpin::device::pcsc
