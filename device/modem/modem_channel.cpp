#include "device/modem/modem_channel.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "platform/wording.h"

namespace kelpin::device::modem {
namespace {

using card::TransportError;
using Clock = std::chrono::steady_clock;

constexpr std::uint8_t kSelect = 0xA4;
constexpr std::uint8_t kReadBinary = 0xB0;
constexpr std::uint8_t kReadRecord = 0xB2;
constexpr std::uint8_t kSearchRecord = 0xA2;
constexpr std::uint8_t kGetResponse = 0xC0;
constexpr std::uint8_t kVerify = 0x20;
constexpr std::uint8_t kUnblock = 0x2C;
constexpr std::size_t kHeader = 5;
constexpr std::size_t kCodeBytes = 8;
constexpr std::uint8_t kFill = 0xFF;

bool OnlyReads(std::uint8_t instruction) {
  return instruction == kSelect || instruction == kReadBinary || instruction == kReadRecord ||
         instruction == kSearchRecord || instruction == kGetResponse;
}

// What a modem tells of its own accord of the card's presence; nothing when it is about something
// else. Vendors have names of their own for it.
std::optional<bool> PresenceIn(std::string_view line) {
  if (const auto state = Behind(line, "+CPIN")) {
    return !(*state == "NOT READY" || *state == "NOT INSERTED" || *state == "SIM REMOVED");
  }
  if (const auto state = Behind(line, "+QSIMSTAT")) {
    const auto values = SplitValues(*state);
    return values.size() < 2 ? std::nullopt : std::optional(values[1] == "1");
  }
  if (const auto state = Behind(line, "+SIMCARD")) return *state != "NOT AVAILABLE";
  if (const auto state = Behind(line, "^SIMST")) {
    return !(state->starts_with("255") || state->starts_with("0"));
  }
  if (const auto state = Behind(line, "#QSS")) return *state != "0";
  return std::nullopt;
}

// The modem has started anew: everything that it was told is forgotten, the card was reset.
bool SaysRestarted(std::string_view line) {
  return line == "RDY" || line == "^SYSSTART" || Behind(line, "+AT").value_or("") == "READY";
}

std::vector<std::uint8_t> Word(std::uint8_t first, std::uint8_t second) {
  return {first, second};
}

// The digits of a code in a command, up to what pads it out.
std::string Digits(std::span<const std::uint8_t> code) {
  std::string digits;
  digits.reserve(kCodeBytes + 1);
  for (const std::uint8_t byte : code) {
    if (byte == kFill) break;
    digits.push_back(static_cast<char>(byte));
  }
  return digits;
}

bool EndsCard(TransportError error) {
  return error == TransportError::kRemoved || error == TransportError::kNoCard ||
         error == TransportError::kNoReader || error == TransportError::kReset;
}

}  // namespace

std::unique_ptr<ModemChannel> ModemChannel::Open(const std::string& path, std::string& why,
                                                 const Patience& patience) {
  std::unique_ptr<ModemChannel> channel(new ModemChannel(path, patience));
  TransportError error = TransportError::kNone;
  {
    const MutexLock turn(channel->turn_);
    if (!channel->session_.Open(path, why)) return nullptr;
    error = channel->FindWay();
    if (error == TransportError::kNone && channel->way_.Kind() == Way::kNone) {
      why = platform::Say(
          "The modem on %s does not let other programs at its card: it knows none of +CCHO, +CSIM "
          "and +CRSM. Put the card into a card reader and use --sim pcsc.",
          {path});
      return nullptr;
    }
    if (error == TransportError::kNone && !channel->ReachesPhonebook()) {
      why = platform::Say(
          "The modem on %s does not let other programs at the phone book of its card: it knows "
          "+CRSM alone, and that without the paths of folders. Put the card into a card reader and "
          "use --sim pcsc.",
          {path});
      return nullptr;
    }
  }
  channel->hadCard_ = error != TransportError::kNoCard;
  {
    const MutexLock hold(channel->lock_);
    channel->present_ = channel->hadCard_;
  }
  channel->watcher_ = std::thread([watched = channel.get()] { watched->Watch(); });
  return channel;
}

ModemChannel::ModemChannel(std::string path, const Patience& patience)
    : path_(std::move(path)),
      patience_(patience),
      session_(patience, {.line = [this](std::string_view line) { Heard(line); },
                          .gone = [this] { PortGone(); }}),
      way_(session_),
      lastUse_(Clock::now()) {}

ModemChannel::~ModemChannel() {
  SetListener(nullptr);
  {
    const MutexLock hold(lock_);
    ending_ = true;
    changed_.notify_all();
  }
  if (watcher_.joinable()) watcher_.join();
  const MutexLock turn(turn_);
  way_.Leave();
  session_.Close();
}

// What comes without being asked for.

void ModemChannel::Heard(std::string_view line) {
  if (SaysRestarted(line)) {
    NoteReset();
  } else if (const auto present = PresenceIn(line)) {
    Note(*present);
  }
}

void ModemChannel::PortGone() {
  {
    const MutexLock hold(lock_);
    portGone_ = true;
    changed_.notify_all();
  }
  Note(false);
}

void ModemChannel::Note(bool present) {
  {
    const MutexLock hold(lock_);
    if (present_ == present) return;
    present_ = present;
    if (!present) lost_ = TransportError::kRemoved;
  }
  Tell(present ? Event::kInserted : Event::kRemoved);
}

void ModemChannel::NoteReset() {
  {
    const MutexLock hold(lock_);
    if (!present_) return;
    lost_ = TransportError::kReset;
  }
  Tell(Event::kReset);
}

void ModemChannel::Tell(Event event) {
  const MutexLock hold(listenerLock_);
  if (listener_ == nullptr) return;
  switch (event) {
    case Event::kInserted:
      listener_->CardInserted();
      break;
    case Event::kRemoved:
      listener_->CardRemoved();
      break;
    case Event::kReset:
      listener_->CardReset();
      break;
  }
}

void ModemChannel::SetListener(card::CardChannelListener* listener) {
  const MutexLock hold(listenerLock_);
  listener_ = listener;
}

bool ModemChannel::Pause(std::chrono::milliseconds time) {
  const auto until = Clock::now() + time;
  const MutexLock hold(lock_);
  while (!ending_ && Clock::now() < until) changed_.wait_until(lock_, until);
  return !ending_;
}

void ModemChannel::Watch() {
  while (Pause(std::min(patience_.look, patience_.reopening))) {
    bool gone = false;
    {
      const MutexLock hold(lock_);
      gone = portGone_;
      if (!gone && (transactions_ > 0 || Clock::now() - lastUse_ < patience_.look)) continue;
    }
    const MutexLock turn(turn_);
    if (gone) {
      session_.Close();  // a port that is kept open keeps its name from coming back
      way_.Forget();
      {
        const MutexLock hold(lock_);
        portGone_ = false;
        lastUse_ = Clock::now();
      }
      std::string why;
      if (!session_.Open(path_, why)) {
        const MutexLock hold(lock_);
        portGone_ = true;
        continue;
      }
    }
    Lock lock = Lock::kUnknown;
    const TransportError error = way_.AskLock(lock);
    {
      const MutexLock hold(lock_);
      lastUse_ = Clock::now();
    }
    if (error == TransportError::kNoCard) Note(false);
    if (error != TransportError::kNone) continue;
    Note(true);
    if (way_.Locked() && lock == Lock::kReady) NoteReset();
  }
}

// The card.

TransportError ModemChannel::Lost() {
  const MutexLock hold(lock_);
  return lost_;
}

void ModemChannel::Lose(TransportError error) {
  const MutexLock hold(lock_);
  lost_ = error;
}

TransportError ModemChannel::FindWay() {
  Lock lock = Lock::kUnknown;
  TransportError error = TransportError::kNone;
  const auto limit = Clock::now() + patience_.busy;
  for (;;) {
    error = way_.AskLock(lock);
    if (error == TransportError::kNone && lock != Lock::kPin && lock != Lock::kPuk) {
      error = way_.Find();
    } else if (error == TransportError::kNone) {
      way_.UseLocked();
    }
    if (error != TransportError::kBusy || Clock::now() >= limit) break;
    if (!Pause(patience_.busyPause)) break;
  }
  if (error == TransportError::kRemoved) error = TransportError::kNoCard;
  if (error != TransportError::kNone) way_.Forget();
  const MutexLock hold(lock_);
  kind_ = way_.Kind();
  return error;
}

bool ModemChannel::ReachesPhonebook() {
  if (way_.Locked() || way_.ReachesFolders()) return true;
  constexpr std::uint16_t kTelecom = 0x7F10;
  constexpr std::uint16_t kAdnFile = 0x6F3A;
  const Reply reply = way_.SendFileCommand(
      {.instruction = kGetResponse, .file = kAdnFile, .folder = {&kTelecom, 1}});
  // 6A82, 9404: there is none of the old kind, which is all that is found without a path.
  return reply.response != Word(0x6A, 0x82) && reply.response != Word(0x94, 0x04);
}

TransportError ModemChannel::Prepare() {
  const MutexLock turn(turn_);
  {
    const MutexLock hold(lock_);
    if (portGone_ || !session_.IsOpen()) return TransportError::kNoReader;
    // What was found when the port was opened still holds.
    if (lost_ == TransportError::kReset && kind_ != Way::kNone && present_ && fresh_) {
      fresh_ = false;
      return TransportError::kNone;
    }
    fresh_ = false;
  }
  const TransportError error = FindWay();
  {
    const MutexLock hold(lock_);
    if (portGone_) return TransportError::kNoReader;
    lastUse_ = Clock::now();
  }
  if (error == TransportError::kNone) {
    Note(true);
    return way_.Kind() == Way::kNone ? TransportError::kCommunication : error;
  }
  if (error == TransportError::kNoCard) Note(false);
  return error;
}

bool ModemChannel::TakesApdus() const {
  const MutexLock hold(lock_);
  return kind_ == Way::kLogicalChannel || kind_ == Way::kBasicChannel;
}

bool ModemChannel::OthersMaySelect() const {
  const MutexLock hold(lock_);
  return kind_ == Way::kBasicChannel;
}

TransportError ModemChannel::Connect(std::vector<std::uint8_t>& atr) {
  const MutexLock hold(lock_);
  if (portGone_) return TransportError::kNoReader;
  if (!present_) return TransportError::kNoCard;
  if (kind_ == Way::kNone) return TransportError::kCommunication;
  lost_ = TransportError::kNone;
  atr.clear();
  return TransportError::kNone;
}

void ModemChannel::Disconnect() {
  Lose(TransportError::kReset);
}

template <typename Send>
Reply ModemChannel::Patiently(bool onlyReads, Send send) {
  const auto limit = Clock::now() + patience_.busy;
  for (;;) {
    Reply reply = send(way_);
    const bool again = onlyReads && reply.error == TransportError::kBusy && Clock::now() < limit;
    if (!again || !Pause(patience_.busyPause)) return reply;
  }
}

TransportError ModemChannel::Settle(Reply& reply, bool onlyReads,
                                    std::vector<std::uint8_t>& response) {
  {
    const MutexLock hold(lock_);
    lastUse_ = Clock::now();
    // Taken out, or the modem started anew, while the answer was under way.
    if (lost_ != TransportError::kNone) return lost_;
  }
  if (reply.refused && way_.Kind() == Way::kLogicalChannel) {
    // Closed behind us, as when the modem was reset: found again, and opened anew.
    reply.error = TransportError::kReset;
  } else if (reply.refused && onlyReads) {
    reply = {.response = Word(0x6A, 0x81)};
  }
  if (reply.error == TransportError::kRemoved) {
    Note(false);
  }
  if (EndsCard(reply.error)) Lose(reply.error);
  if (reply.error == TransportError::kNone) response = std::move(reply.response);
  return reply.error;
}

TransportError ModemChannel::Transmit(std::span<const std::uint8_t> command,
                                      std::vector<std::uint8_t>& response) {
  const MutexLock turn(turn_);
  if (const TransportError lost = Lost(); lost != TransportError::kNone) return lost;
  if (command.size() < kHeader - 1) return TransportError::kCommunication;
  const std::uint8_t instruction = command[1];
  Reply reply;
  if ((instruction == kVerify || instruction == kUnblock) && AnswerPin(command, reply)) {
    return Settle(reply, false, response);
  }
  if (!TakesApdus()) {
    // The PIN was taken, or the modem leaves all that to itself.
    response =
        instruction == kVerify && command.size() > kHeader ? Word(0x90, 0x00) : Word(0x6D, 0x00);
    return TransportError::kNone;
  }
  const bool onlyReads = OnlyReads(instruction);
  reply = Patiently(onlyReads, [command](CardWay& way) { return way.SendApdu(command); });
  return Settle(reply, onlyReads, response);
}

TransportError ModemChannel::TransmitFileCommand(const card::FileCommand& command,
                                                 std::vector<std::uint8_t>& response) {
  const MutexLock turn(turn_);
  if (const TransportError lost = Lost(); lost != TransportError::kNone) return lost;
  const bool onlyReads = OnlyReads(command.instruction);
  if (way_.Kind() == Way::kNone) return TransportError::kReset;
  if (way_.Locked()) {
    Reply reply = AnswerLocked();
    return Settle(reply, onlyReads, response);
  }
  Reply reply =
      Patiently(onlyReads, [&command](CardWay& way) { return way.SendFileCommand(command); });
  return Settle(reply, onlyReads, response);
}

// The PIN.

Reply ModemChannel::AnswerLocked() {
  Lock lock = Lock::kUnknown;
  const TransportError error = way_.AskLock(lock);
  if (error != TransportError::kNone) {
    return {.error = error == TransportError::kNoCard ? TransportError::kRemoved : error};
  }
  if (lock == Lock::kPin) return {.response = Word(0x69, 0x82)};
  if (lock == Lock::kPuk) return {.response = Word(0x69, 0x83)};
  // Opened at the phone itself, say: now there is a way to be found.
  return {.error = TransportError::kReset};
}

bool ModemChannel::AnswerPin(std::span<const std::uint8_t> command, Reply& reply) {
  Lock lock = Lock::kUnknown;
  const TransportError error = way_.AskLock(lock);
  if (error != TransportError::kNone) {
    reply.error = error == TransportError::kNoCard ? TransportError::kRemoved : error;
    return true;
  }
  if (lock != Lock::kPin && lock != Lock::kPuk) return false;
  const bool verify = command[1] == kVerify;
  const bool asks = command.size() <= kHeader;
  if (verify == (lock == Lock::kPuk)) {
    // A PIN while the PUK is wanted, or the other way round.
    reply.response = verify ? Word(0x69, 0x83) : Word(0x69, 0x84);
    return true;
  }
  const std::string_view name = verify ? "SIM PIN" : "SIM PUK";
  if (asks) {
    const int tries = way_.AskTries(name);
    reply.response =
        tries < 0 ? Word(0x69, 0x84) : Word(0x63, static_cast<std::uint8_t>(0xC0 | tries));
    return true;
  }
  const auto codes = command.subspan(kHeader);
  std::string text;
  text.reserve(4 * kCodeBytes);
  text = '"';
  for (std::size_t at = 0; at + kCodeBytes <= codes.size(); at += kCodeBytes) {
    std::string digits = Digits(codes.subspan(at, kCodeBytes));
    if (at != 0) text += "\",\"";
    text += digits;
    std::fill(digits.begin(), digits.end(), '\0');
  }
  text += '"';
  reply = PresentCodes(text, name);
  std::fill(text.begin(), text.end(), '\0');
  return true;
}

Reply ModemChannel::PresentCodes(const std::string& codes, std::string_view name) {
  std::string command;
  command.reserve(codes.size() + 16);
  command = "AT+CPIN=";
  command += codes;
  const AtAnswer answer = session_.Send(command, "+CPIN", patience_.card);
  std::fill(command.begin(), command.end(), '\0');
  const bool refused = answer.end == AtEnd::kError ||
                       (answer.end == AtEnd::kCme &&
                        (answer.error == kCmeWrongPassword || answer.error == kCmePinWanted ||
                         answer.error == kCmePukWanted));
  if (!answer.Ok() && !refused) return CardWay::Judge(answer);
  if (answer.Ok()) {
    // Now the modem reads the card; before that it lets nobody else.
    Lock lock = Lock::kPin;
    const auto limit = Clock::now() + patience_.busy;
    for (;;) {
      const TransportError error = way_.AskLock(lock);
      const bool waits = lock == Lock::kPin || error == TransportError::kBusy;
      if (!waits || Clock::now() >= limit || !Pause(patience_.busyPause)) break;
    }
    way_.Forget();  // there is a better one now
    return {.response = Word(0x90, 0x00)};
  }
  if (answer.end == AtEnd::kCme && answer.error == kCmePukWanted && name == "SIM PIN") {
    return {.response = Word(0x69, 0x83)};
  }
  const int tries = way_.AskTries(name);
  return {.response =
              tries < 0 ? Word(0x98, 0x04) : Word(0x63, static_cast<std::uint8_t>(0xC0 | tries))};
}

// Others.

TransportError ModemChannel::BeginTransaction() {
  const MutexLock hold(lock_);
  if (lost_ != TransportError::kNone) return lost_;
  ++transactions_;
  return TransportError::kNone;
}

void ModemChannel::EndTransaction() {
  const MutexLock hold(lock_);
  if (transactions_ > 0) --transactions_;
  lastUse_ = Clock::now();
}

std::string ModemChannel::Description() const {
  const MutexLock hold(lock_);
  const char* way = "";
  switch (kind_) {
    case Way::kNone:
      break;
    case Way::kLogicalChannel:
      way = " (+CGLA)";
      break;
    case Way::kBasicChannel:
      way = " (+CSIM)";
      break;
    case Way::kFileCommands:
      way = " (+CRSM)";
      break;
  }
  return "modem " + path_ + way;
}

}  // namespace kelpin::device::modem
