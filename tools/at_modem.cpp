#include "tools/at_modem.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <utility>

#include "device/softcard/hex.h"

namespace kelpin::tools {
namespace {

using device::card::TransportError;
using device::softcard::FromHex;
using device::softcard::ToHex;

constexpr int kNone = -1;
constexpr int kPlain = -2;
// TS 27.007 9.2.1.
constexpr int kNotAllowed = 3;
constexpr int kNoSim = 10;
constexpr int kPinWanted = 11;
constexpr int kPukWanted = 12;
constexpr int kSimFailure = 13;
constexpr int kWrongPassword = 16;
constexpr int kMemoryFailure = 23;
constexpr int kNotFound = 22;
constexpr int kInvalidCharacters = 25;

constexpr std::uint16_t kMasterFile = 0x3F00;
constexpr std::uint16_t kDirectoryFile = 0x2F00;
constexpr std::uint16_t kTelecom = 0x7F10;
constexpr std::uint16_t kNetwork = 0x7F20;
constexpr std::uint16_t kApplication = 0x7FFF;

const char* Words(int error) {
  switch (error) {
    case kNotAllowed:
      return "operation not allowed";
    case kNoSim:
      return "SIM not inserted";
    case kPinWanted:
      return "SIM PIN required";
    case kPukWanted:
      return "SIM PUK required";
    case kSimFailure:
      return "SIM failure";
    case kWrongPassword:
      return "incorrect password";
    case kMemoryFailure:
      return "memory failure";
    case kNotFound:
      return "not found";
    default:
      return "invalid characters in text string";
  }
}

std::string Upper(std::string_view text) {
  std::string upper(text);
  for (char& letter : upper) {
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
  }
  return upper;
}

// The values between commas, without their quotes.
std::vector<std::string> Values(std::string_view text) {
  std::vector<std::string> values(1);
  bool quoted = false;
  for (const char letter : text) {
    if (letter == '"') {
      quoted = !quoted;
    } else if (letter == ',' && !quoted) {
      values.emplace_back();
    } else if (letter != ' ' || quoted) {
      values.back().push_back(letter);
    }
  }
  return values;
}

std::optional<int> Number(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<std::uint8_t> Byte(std::string_view text) {
  const auto number = Number(text);
  if (!number || *number < 0 || *number > 0xFF) return std::nullopt;
  return static_cast<std::uint8_t>(*number);
}

std::string ApduLine(const char* name, std::span<const std::uint8_t> response) {
  return std::string(name) + ": " + std::to_string(2 * response.size()) + ",\"" + ToHex(response) +
         '"';
}

// Digits, padded with FF to the eight bytes of a code.
std::vector<std::uint8_t> CodeBytes(std::string_view digits) {
  std::vector<std::uint8_t> bytes(digits.begin(), digits.end());
  bytes.resize(8, 0xFF);
  return bytes;
}

bool IsCode(std::string_view text) {
  return text.size() >= 4 && text.size() <= 8 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The protocol that an ATR offers first (ISO/IEC 7816-3 8.2.3): T of TD1, 0 when there is none.
int FirstProtocol(std::span<const std::uint8_t> atr) {
  if (atr.size() < 2 || (atr[1] & 0x80) == 0) return 0;
  std::size_t at = 2;
  for (const int present : {0x10, 0x20, 0x40}) at += (atr[1] & present) != 0 ? 1 : 0;
  return at < atr.size() ? atr[at] & 0x0F : 0;
}

std::uint8_t First(std::span<const std::uint8_t> response) {
  return response.size() < 2 ? std::uint8_t{0} : response[response.size() - 2];
}

std::uint8_t Second(std::span<const std::uint8_t> response) {
  return response.size() < 2 ? std::uint8_t{0} : response[response.size() - 1];
}

bool Good(std::span<const std::uint8_t> response) {
  return First(response) == 0x90 || First(response) == 0x91;
}

}  // namespace

AtModem::AtModem(device::card::CardChannel& card, const Abilities& abilities)
    : card_(card), abilities_(abilities) {}

std::string AtModem::SetPresent(bool present) {
  present_ = present;
  powered_ = false;
  pinTaken_ = false;
  if (!present) return "\r\n+CPIN: NOT READY\r\n";
  const Lock lock = PowerUp() ? LockState() : Lock::kReady;
  const char* state = lock == Lock::kPin ? "SIM PIN" : lock == Lock::kPuk ? "SIM PUK" : "READY";
  return std::string("\r\n+CPIN: ") + state + "\r\n";
}

std::string AtModem::Answer(std::string_view line) {
  while (!line.empty() && (line.front() == ' ' || line.front() == '\x1B')) line.remove_prefix(1);
  if (line.empty()) return "";
  std::string answer = echo_ ? std::string(line) + "\r" : "";
  const std::string upper = Upper(line);
  Result result{"", kPlain};
  if (upper.starts_with("AT")) result = Run(std::string_view(upper).substr(2));
  if (!result.line.empty()) answer += "\r\n" + result.line + "\r\n";
  if (result.error == kNone) return answer + "\r\nOK\r\n";
  if (result.error == kPlain || errors_ == 0) return answer + "\r\nERROR\r\n";
  return answer +
         "\r\n+CME ERROR: " + (errors_ == 1 ? std::to_string(result.error) : Words(result.error)) +
         "\r\n";
}

AtModem::Result AtModem::Identify(std::string_view command, bool& known) {
  known = true;
  if (command.empty() || command == "Z" || command == "&F" || command == "V1" ||
      command == "+CFUN=1") {
    return {"", kNone};
  }
  if (command == "E" || command == "E0" || command == "E1") {
    echo_ = command == "E1";
    return {"", kNone};
  }
  if (command.starts_with("+CMEE=") && command.size() == 7 && command[6] >= '0' &&
      command[6] <= '2') {
    errors_ = command[6] - '0';
    return {"", kNone};
  }
  if (command == "+CMEE=?") return {"+CMEE: (0-2)", kNone};
  if (command == "+CMEE?") return {"+CMEE: " + std::to_string(errors_), kNone};
  if (command == "I" || command == "+CGMM") return {"Software card", kNone};
  if (command == "+CGMI") return {"Kelpin", kNone};
  if (command == "+CGMR") return {"6.80", kNone};
  if (command == "+CGSN") return {"004400000000000", kNone};
  if (command == "+CFUN?") return {"+CFUN: 1", kNone};
  const std::array<std::pair<std::string_view, bool>, 8> tests = {{
      {"+CPIN=?", true},
      {"+CPINR=?", true},
      {"+CSIM=?", abilities_.apdus},
      {"+CRSM=?", abilities_.fileCommands},
      {"+CCHO=?", abilities_.logicalChannels},
      {"+CGLA=?", abilities_.logicalChannels},
      {"+CCHC=?", abilities_.logicalChannels},
      {"+CUAD=?", abilities_.logicalChannels},
  }};
  for (const auto& [test, able] : tests) {
    if (command == test) return {"", able ? kNone : kPlain};
  }
  known = false;
  return {};
}

AtModem::Result AtModem::Run(std::string_view command) {
  bool known = false;
  const Result identified = Identify(command, known);
  if (known) return identified;
  struct Row {
    std::string_view name;
    bool able;
    bool whileLocked;
    Result (AtModem::*run)(const std::vector<std::string>& values);
  };
  const Row rows[] = {
      {"+CPIN=", true, true, &AtModem::EnterCode},
      {"+CPINR=", true, true, &AtModem::TellTries},
      {"+CSIM=", abilities_.apdus, false, &AtModem::GenericAccess},
      {"+CRSM=", abilities_.fileCommands, false, &AtModem::RestrictedAccess},
      {"+CCHO=", abilities_.logicalChannels, false, &AtModem::OpenChannel},
      {"+CGLA=", abilities_.logicalChannels, false, &AtModem::UseChannel},
      {"+CCHC=", abilities_.logicalChannels, false, &AtModem::CloseChannel},
  };
  const auto row = std::find_if(std::begin(rows), std::end(rows), [command](const Row& one) {
    return command.starts_with(one.name);
  });
  const bool applications = command == "+CUAD" && abilities_.logicalChannels;
  const bool state = command == "+CPIN?";
  if (!state && !applications && (row == std::end(rows) || !row->able)) return {"", kPlain};
  if (!present_) return {"", kNoSim};
  if (!PowerUp()) return {"", kSimFailure};
  const Lock lock = LockState();
  if (state) {
    return {lock == Lock::kPin   ? "+CPIN: SIM PIN"
            : lock == Lock::kPuk ? "+CPIN: SIM PUK"
                                 : "+CPIN: READY",
            kNone};
  }
  if (lock != Lock::kReady && (applications || !row->whileLocked)) {
    return {"", lock == Lock::kPin ? kPinWanted : kPukWanted};
  }
  if (applications) return Applications();
  return (this->*row->run)(Values(command.substr(row->name.size())));
}

// The card.

bool AtModem::PowerUp() {
  if (powered_) return true;
  std::vector<std::uint8_t> atr;
  if (card_.Connect(atr) != TransportError::kNone) return false;
  powered_ = true;
  blocks_ = FirstProtocol(atr) == 1;
  pinTaken_ = false;
  lockKnown_ = false;
  Bytes response;
  gsm_ = false;
  if (!Send({0x00, 0xA4, 0x00, 0x04, 0x02, 0x3F, 0x00}, response)) return false;
  gsm_ = First(response) == 0x6E;
  return true;
}

bool AtModem::Send(Bytes command, Bytes& response) {
  if (command.size() < 5) command.push_back(0x00);  // T=0 has always five bytes
  if (gsm_ && command[0] == 0x00) command[0] = 0xA0;
  const bool tells = command[1] == 0xA2 || (command[1] == 0xA4 && command[3] != 0x0C);
  if (blocks_ && tells && command.size() == 5U + command[4]) command.push_back(0x00);
  TransportError error = card_.Transmit(command, response);
  if (error == TransportError::kStorage) error = TransportError::kNone;
  if (error == TransportError::kNone) {
    // VERIFY, CHANGE, DISABLE, ENABLE and UNBLOCK, with a code.
    const bool code = command.size() > 5 && command[1] >= 0x20 && command[1] <= 0x2C;
    if (code) lockKnown_ = false;
    if (code && Good(response) && (command[1] == 0x20 || command[1] == 0x2C) &&
        command[3] <= 0x01) {
      pinTaken_ = true;
    }
    return true;
  }
  powered_ = false;
  return false;
}

bool AtModem::SendWhole(Bytes command, Bytes& response) {
  if (!Send(command, response)) return false;
  if (First(response) == 0x6C) {
    command.back() = Second(response);
    return Send(command, response);
  }
  if (First(response) == 0x61 || First(response) == 0x9F) {
    return Send({0x00, 0xC0, 0x00, 0x00, Second(response)}, response);
  }
  return true;
}

AtModem::Lock AtModem::LockState() {
  if (!lockKnown_) lock_ = AskLockState();
  lockKnown_ = true;
  return lock_;
}

AtModem::Lock AtModem::AskLockState() {
  if (pinTaken_) return Lock::kReady;
  Bytes response;
  const std::uint8_t tell = gsm_ ? 0x00 : 0x04;
  if (!SendWhole({0x00, 0xA4, 0x00, tell, 0x02, 0x3F, 0x00}, response)) return Lock::kReady;
  if (gsm_) {
    // TS 51.011 9.2.1: CHV1 switched off in byte 14, its tries in byte 19.
    if (response.size() < 19 || (response[13] & 0x80) != 0) return Lock::kReady;
    return (response[18] & 0x0F) == 0 ? Lock::kPuk : Lock::kPin;
  }
  // TS 102 221 11.1.1.4.10: the first PIN's bit in the status bytes (tag 90) of the template C6.
  const Bytes mark = {0x90, 0x01};
  const auto status = std::search(response.begin(), response.end(), mark.begin(), mark.end());
  if (response.end() - status < 3 || (*(status + 2) & 0x80) == 0) return Lock::kReady;
  if (!Send({0x00, 0x20, 0x00, 0x01, 0x00}, response)) return Lock::kReady;
  return response == Bytes{0x69, 0x83} || response == Bytes{0x63, 0xC0} ? Lock::kPuk : Lock::kPin;
}

bool AtModem::Select(std::uint16_t file, std::span<const std::uint8_t> folder, Bytes& response) {
  std::vector<std::uint16_t> ids;
  for (std::size_t at = 0; at + 1 < folder.size(); at += 2) {
    const auto id = static_cast<std::uint16_t>((folder[at] << 8) | folder[at + 1]);
    if (id != kMasterFile || at != 0) ids.push_back(id);
  }
  if (folder.empty()) {
    // Without a path a modem knows where files of these numbers are.
    const int kind = file >> 8;
    if (kind == 0x6F) {
      const int low = file & 0xFF;
      ids.push_back(low >= 0x3A && low <= 0x4F ? kTelecom : kNetwork);
    } else if (kind != 0x2F) {
      response = {0x6A, 0x82};
      return true;
    }
  }
  ids.push_back(file);
  if (!gsm_ && ids.front() == kApplication) {
    // Tag 4F, the length, and an id that begins as a USIM's does (TS 101 220 annex E).
    const Bytes usim = {0xA0, 0x00, 0x00, 0x00, 0x87, 0x10, 0x02};
    const Result told = Applications();
    Bytes records;
    if (!told.line.empty()) {
      static_cast<void>(FromHex(told.line.substr(told.line.find(' ') + 1), records));
    }
    const auto id = std::search(records.begin(), records.end(), usim.begin(), usim.end());
    const std::size_t length = id == records.begin() || id == records.end() ? 0 : *(id - 1);
    if (length < usim.size() || static_cast<std::size_t>(records.end() - id) < length) {
      response = {0x6A, 0x82};
      return true;
    }
    Bytes select = {0x00, 0xA4, 0x04, 0x0C, static_cast<std::uint8_t>(length)};
    select.insert(select.end(), id, id + static_cast<std::ptrdiff_t>(length));
    if (!Send(select, response)) return false;
  }
  if (gsm_) {
    if (!Send({0x00, 0xA4, 0x00, 0x00, 0x02, 0x3F, 0x00}, response)) return false;
    for (const std::uint16_t id : ids) {
      const Bytes select = {0x00,
                            0xA4,
                            0x00,
                            0x00,
                            0x02,
                            static_cast<std::uint8_t>(id >> 8),
                            static_cast<std::uint8_t>(id & 0xFF)};
      if (!SendWhole(select, response)) return false;
      if (!Good(response)) return true;
    }
    return true;
  }
  Bytes select = {0x00, 0xA4, 0x08, 0x04, static_cast<std::uint8_t>(2 * ids.size())};
  for (const std::uint16_t id : ids) {
    select.push_back(static_cast<std::uint8_t>(id >> 8));
    select.push_back(static_cast<std::uint8_t>(id & 0xFF));
  }
  return SendWhole(select, response);
}

// The commands.

AtModem::Result AtModem::EnterCode(const std::vector<std::string>& values) {
  if (!IsCode(values[0]) || (values.size() > 1 && !IsCode(values[1]))) {
    return {"", kInvalidCharacters};
  }
  const Lock lock = LockState();
  if (lock == Lock::kReady) return {"", kNotAllowed};
  if (lock == Lock::kPuk && values.size() < 2) return {"", kPukWanted};
  if (lock == Lock::kPin && values.size() > 1) return {"", kNotAllowed};
  Bytes command = {0x00, static_cast<std::uint8_t>(lock == Lock::kPuk ? 0x2C : 0x20), 0x00,
                   static_cast<std::uint8_t>(lock == Lock::kPuk && gsm_ ? 0x00 : 0x01),
                   static_cast<std::uint8_t>(lock == Lock::kPuk ? 16 : 8)};
  for (const std::string& code : values) {
    const Bytes bytes = CodeBytes(code);
    command.insert(command.end(), bytes.begin(), bytes.end());
  }
  Bytes response;
  if (!Send(command, response)) return {"", kSimFailure};
  if (Good(response)) return {"", kNone};
  return {"", LockState() == Lock::kPuk && lock == Lock::kPin ? kPukWanted : kWrongPassword};
}

AtModem::Result AtModem::TellTries(const std::vector<std::string>& values) {
  const bool puk = values[0] == "SIM PUK";
  if (!puk && values[0] != "SIM PIN") return {"", kNotAllowed};
  Bytes response;
  int tries = 0;
  if (gsm_) {
    if (!SendWhole({0x00, 0xA4, 0x00, 0x00, 0x02, 0x3F, 0x00}, response)) return {"", kSimFailure};
    if (response.size() < 20) return {"", kNotFound};
    tries = response[puk ? 19 : 18] & 0x0F;
  } else {
    const auto instruction = static_cast<std::uint8_t>(puk ? 0x2C : 0x20);
    if (!Send({0x00, instruction, 0x00, 0x01, 0x00}, response)) return {"", kSimFailure};
    if (First(response) == 0x63) tries = Second(response) & 0x0F;
  }
  return {"+CPINR: " + values[0] + ',' + std::to_string(tries) + ',' + (puk ? "10" : "3"), kNone};
}

AtModem::Result AtModem::GenericAccess(const std::vector<std::string>& values) {
  Bytes command;
  const auto length = Number(values[0]);
  if (values.size() != 2 || !FromHex(values[1], command) || command.size() < 4 || !length ||
      static_cast<std::size_t>(*length) != values[1].size()) {
    return {"", kInvalidCharacters};
  }
  Bytes response;
  const bool gsm = std::exchange(gsm_, false);  // the class is the caller's here
  const bool sent = Send(command, response);
  gsm_ = gsm;
  if (!sent) return {"", kSimFailure};
  return {ApduLine("+CSIM", response), kNone};
}

AtModem::Result AtModem::RestrictedAccess(const std::vector<std::string>& values) {
  const auto instruction = Byte(values[0]);
  const auto file = values.size() > 1 ? Number(values[1]) : std::nullopt;
  std::array<std::uint8_t, 3> parameters = {};
  for (std::size_t at = 0; at < parameters.size() && at + 2 < values.size(); ++at) {
    const auto parameter = Byte(values[at + 2]);
    if (!parameter) return {"", kInvalidCharacters};
    parameters[at] = *parameter;
  }
  Bytes data;
  Bytes folder;
  if (!instruction || !file || *file < 0 || *file > 0xFFFF ||
      (values.size() > 5 && !FromHex(values[5], data)) ||
      (values.size() > 6 && !FromHex(values[6], folder))) {
    return {"", kInvalidCharacters};
  }
  if (!abilities_.folders) folder.clear();
  Bytes response;
  if (!Select(static_cast<std::uint16_t>(*file), folder, response)) return {"", kSimFailure};
  if (*instruction == 192 && Good(response)) {
    // As much of it as was asked for.
    const Bytes word(response.end() - 2, response.end());
    response.resize(response.size() - 2);
    if (parameters[2] != 0 && parameters[2] < response.size()) response.resize(parameters[2]);
    response.insert(response.end(), word.begin(), word.end());
  } else if (Good(response)) {
    Bytes command = {0x00, *instruction, parameters[0], parameters[1], parameters[2]};
    command.insert(command.end(), data.begin(), data.end());
    switch (*instruction) {
      case 176:
      case 178:
      case 214:
      case 220:
        if (!Send(command, response)) return {"", kSimFailure};
        break;
      default:
        return {"", kNotAllowed};
    }
  }
  std::string line =
      "+CRSM: " + std::to_string(First(response)) + ',' + std::to_string(Second(response));
  if (response.size() > 2) {
    line += ",\"" + ToHex(std::span(response).first(response.size() - 2)) + '"';
  }
  return {line, kNone};
}

AtModem::Result AtModem::Applications() {
  Bytes response;
  Bytes records;
  if (!Select(kDirectoryFile, {}, response)) return {"", kSimFailure};
  for (std::uint8_t record = 1; Good(response); ++record) {
    if (!SendWhole({0x00, 0xB2, record, 0x04, 0x00}, response)) return {"", kSimFailure};
    if (!Good(response)) break;
    records.insert(records.end(), response.begin(), response.end() - 2);
  }
  if (records.empty()) return {"", kNotFound};
  return {"+CUAD: " + ToHex(records), kNone};
}

AtModem::Result AtModem::OpenChannel(const std::vector<std::string>& values) {
  Bytes id;
  if (!FromHex(values[0], id) || id.empty() || id.size() > 16) return {"", kInvalidCharacters};
  Bytes response;
  if (!SendWhole({0x00, 0x70, 0x00, 0x00, 0x01}, response)) return {"", kSimFailure};
  if (!Good(response) || response.size() != 3) return {"", kNotAllowed};
  const std::uint8_t channel = response[0];
  Bytes select = {channel, 0xA4, 0x04, 0x0C, static_cast<std::uint8_t>(id.size())};
  select.insert(select.end(), id.begin(), id.end());
  if (!Send(select, response)) return {"", kSimFailure};
  if (Good(response)) return {"+CCHO: " + std::to_string(channel), kNone};
  if (!Send({0x00, 0x70, 0x80, channel}, response)) return {"", kSimFailure};
  return {"", kNotFound};
}

AtModem::Result AtModem::UseChannel(const std::vector<std::string>& values) {
  Bytes command;
  const auto channel = Byte(values[0]);
  const auto length = values.size() == 3 ? Number(values[1]) : std::nullopt;
  if (!channel || *channel == 0 || *channel > 3 || !length || !FromHex(values[2], command) ||
      command.size() < 4 || static_cast<std::size_t>(*length) != values[2].size()) {
    return {"", kInvalidCharacters};
  }
  // Which channel it is says the session, not the class.
  command[0] = static_cast<std::uint8_t>((command[0] & 0xFC) | *channel);
  Bytes response;
  if (!Send(command, response)) return {"", kSimFailure};
  if (First(response) == 0x68) return {"", kNotAllowed};  // it is not open
  return {ApduLine("+CGLA", response), kNone};
}

AtModem::Result AtModem::CloseChannel(const std::vector<std::string>& values) {
  const auto channel = Byte(values[0]);
  if (!channel || *channel == 0 || *channel > 3) return {"", kInvalidCharacters};
  Bytes response;
  if (!Send({0x00, 0x70, 0x80, *channel}, response)) return {"", kSimFailure};
  return {"", Good(response) ? kNone : kNotAllowed};
}

}  // namespace kelpin::tools
