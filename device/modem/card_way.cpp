#include "device/modem/card_way.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace kelpin::device::modem {
namespace {

using card::TransportError;
using Bytes = std::vector<std::uint8_t>;

// Commands of +CRSM (TS 27.007 8.18), and the instructions they stand for.
constexpr int kRestrictedReadRecord = 178;
constexpr int kRestrictedGetResponse = 192;
constexpr std::uint8_t kGetResponse = 0xC0;

constexpr std::uint16_t kMasterFile = 0x3F00;
constexpr std::uint16_t kDirectoryFile = 0x2F00;
constexpr std::uint16_t kIccidFile = 0x2FE2;
constexpr std::uint16_t kReferenceFile = 0x4F30;
constexpr std::uint16_t kAdnFile = 0x6F3A;
constexpr std::uint16_t kTelecom = 0x7F10;
constexpr std::uint16_t kPhonebook = 0x5F3A;
constexpr std::uint16_t kApplication = 0x7FFF;

constexpr std::array<std::uint8_t, 7> kUsimId = {0xA0, 0x00, 0x00, 0x00, 0x87, 0x10, 0x02};
constexpr std::uint8_t kMostDirectoryRecords = 8;
constexpr std::size_t kHeader = 5;

constexpr std::array<std::uint8_t, 7> kSelectMaster = {0x00, 0xA4, 0x00, 0x0C, 0x02, 0x3F, 0x00};
constexpr std::array<std::uint8_t, 7> kSelectMasterGsm = {0xA0, 0xA4, 0x00, 0x00, 0x02, 0x3F, 0x00};

Bytes StatusWord(std::uint8_t first, std::uint8_t second) {
  return {first, second};
}

// The id of the application that a record of EF_DIR is about: 61 LL 4F LL id. Empty: none.
Bytes ApplicationId(std::span<const std::uint8_t> record) {
  if (record.size() < 4 || record[0] != 0x61 || record[2] != 0x4F) return {};
  const std::size_t length = record[3];
  if (length > record.size() - 4) return {};
  const auto id = record.subspan(4, length);
  return {id.begin(), id.end()};
}

bool IsUsim(std::span<const std::uint8_t> id) {
  return id.size() >= kUsimId.size() && std::equal(kUsimId.begin(), kUsimId.end(), id.begin());
}

// A command as it goes over the line of T=0: always with a fifth byte, and with no length of the
// answer behind data. Modems hand it on as it is.
Bytes Frame(std::span<const std::uint8_t> command) {
  Bytes frame(command.begin(), command.end());
  if (frame.size() == kHeader - 1) frame.push_back(0);
  if (frame.size() > kHeader && frame.size() == kHeader + frame[kHeader - 1] + 1) frame.pop_back();
  return frame;
}

}  // namespace

bool Reply::Executed() const {
  if (error != TransportError::kNone || response.size() < 2) return false;
  const std::uint8_t first = response[response.size() - 2];
  return first == 0x90 || first == 0x91 || first == 0x92 || first == 0x61 || first == 0x9F;
}

Reply CardWay::Judge(const AtAnswer& answer) {
  switch (answer.end) {
    case AtEnd::kOk:
      return {};
    case AtEnd::kTimeout:
      return {.error = TransportError::kTimeout};
    case AtEnd::kGone:
      return {.error = TransportError::kRemoved};
    case AtEnd::kError:
      return {.error = TransportError::kCommunication, .refused = true};
    case AtEnd::kCme:
      break;
  }
  switch (answer.error) {
    case kCmeNoSim:
      return {.error = TransportError::kRemoved};
    case kCmePinWanted:
    case kCmeWrongPassword:
      return {.response = StatusWord(0x69, 0x82)};
    case kCmePukWanted:
      return {.response = StatusWord(0x69, 0x83)};
    case kCmeSimBusy:
      return {.error = TransportError::kBusy};
    case kCmePin2Wanted:
      return {.error = TransportError::kPin2Needed};
    case kCmePuk2Wanted:
      return {.error = TransportError::kPuk2Needed};
    case kCmeSimFailure:
    case kCmeSimWrong:
      return {.error = TransportError::kCommunication};
    default:
      return {.error = TransportError::kCommunication, .refused = true};
  }
}

// Finding the way.

TransportError CardWay::Find() {
  Leave();
  fatal_ = TransportError::kNone;
  // A modem's answer to the test form of these commands says little: some refuse it and know the
  // command all the same. What counts is what becomes of the command itself.
  static_cast<void>(TryLogicalChannel() || TryBasicChannel() || TryFileCommands());
  return way_ == Way::kNone ? fatal_ : TransportError::kNone;
}

void CardWay::Leave() {
  if (way_ == Way::kLogicalChannel) {
    static_cast<void>(session_.Send("AT+CCHC=" + channel_, "", session_.Times().plain));
  }
  Forget();
}

void CardWay::Forget() {
  way_ = Way::kNone;
  channel_.clear();
  classBits_ = 0;
  folders_ = false;
  locked_ = false;
}

void CardWay::UseLocked() {
  Leave();
  way_ = Way::kFileCommands;
  locked_ = true;
}

std::vector<Bytes> CardWay::ApplicationIds(bool& known) {
  std::vector<Bytes> ids;
  const AtAnswer told = session_.Send("AT+CUAD", "+CUAD", session_.Times().card);
  known = told.Ok() && !told.lines.empty();
  for (const std::string& line : told.lines) {
    const auto value = Behind(line, "+CUAD");
    const auto record = value ? FromHex(SplitValues(*value).front()) : std::nullopt;
    if (!record) continue;
    // The records of the directory, one behind the other; what pads them out is FF.
    std::span<const std::uint8_t> rest = *record;
    while (rest.size() >= 2) {
      if (rest[0] != 0x61) {
        rest = rest.subspan(1);
        continue;
      }
      ids.push_back(ApplicationId(rest));
      rest = rest.subspan(std::min<std::size_t>(rest.size(), 2U + rest[1]));
    }
  }
  if (known) return ids;
  std::uint8_t length = 0;
  for (std::uint8_t record = 1; record <= kMostDirectoryRecords; ++record) {
    Reply reply = Restricted(kRestrictedReadRecord, kDirectoryFile, record, 4, length, {}, "");
    // The length of a record is told by the one that was wrong.
    if (reply.response.size() == 2 && reply.response[0] == 0x6C && length == 0) {
      length = reply.response[1];
      reply = Restricted(kRestrictedReadRecord, kDirectoryFile, record, 4, length, {}, "");
    }
    if (!reply.Executed()) {
      // 6A82, 6A83, 9404, 9402: no such record, so that all of them are known.
      known =
          reply.response.size() == 2 && (reply.response[0] == 0x6A || reply.response[0] == 0x94);
      break;
    }
    known = true;
    ids.push_back(ApplicationId(reply.response));
  }
  return ids;
}

bool CardWay::TryLogicalChannel() {
  bool known = false;
  Bytes id(kUsimId.begin(), kUsimId.end());
  const std::vector<Bytes> ids = ApplicationIds(known);
  const auto found =
      std::find_if(ids.begin(), ids.end(), [](const Bytes& one) { return IsUsim(one); });
  if (found != ids.end()) {
    id = *found;
  } else if (known) {
    return false;  // a card without the application has no other channels
  }
  const AtAnswer opened =
      session_.Send("AT+CCHO=\"" + ToHex(id) + "\"", "+CCHO", session_.Times().card, true);
  if (!opened.Ok() || opened.lines.empty()) {
    if (opened.end == AtEnd::kTimeout || opened.end == AtEnd::kGone) fatal_ = Judge(opened).error;
    return false;
  }
  const std::string& line = opened.lines.back();
  channel_ = SplitValues(Behind(line, "+CCHO").value_or(line)).front();
  const auto number = ParseNumber(channel_);
  classBits_ = number && *number >= 1 && *number <= 3 ? static_cast<std::uint8_t>(*number) : 0;
  way_ = Way::kLogicalChannel;
  if (SendOnChannel(kSelectMaster).Executed()) return true;
  Leave();
  return false;
}

bool CardWay::TryBasicChannel() {
  if (fatal_ == TransportError::kRemoved) return false;
  const Reply reply = SendOnBasic(kSelectMaster);
  if (reply.error == TransportError::kTimeout || reply.error == TransportError::kRemoved) {
    fatal_ = reply.error;
    return false;
  }
  if (!reply.Executed() && !SendOnBasic(kSelectMasterGsm).Executed()) return false;
  way_ = Way::kBasicChannel;
  return true;
}

bool CardWay::TryFileCommands() {
  if (fatal_ == TransportError::kRemoved) return false;
  wholeLength_ = 0xFF;
  Reply reply = Restricted(kRestrictedGetResponse, kIccidFile, 0, 0, wholeLength_, {}, "");
  if (reply.refused) {
    wholeLength_ = 15;
    reply = Restricted(kRestrictedGetResponse, kIccidFile, 0, 0, wholeLength_, {}, "");
  }
  if (reply.error != TransportError::kNone) {
    fatal_ = reply.refused ? TransportError::kNone : reply.error;
    return false;
  }
  way_ = Way::kFileCommands;
  folders_ = FindFolders();
  return true;
}

// A modem may take the path of a folder, refuse it, or take no notice of it.
bool CardWay::FindFolders() {
  struct Known {
    std::uint16_t file;
    std::vector<std::uint16_t> folder;
  };
  const Known files[] = {{kReferenceFile, {kTelecom, kPhonebook}},
                         {kReferenceFile, {kApplication, kPhonebook}},
                         {kAdnFile, {kTelecom}}};
  for (const bool master : {true, false}) {
    masterInPath_ = master;
    const bool wrongTaken = Restricted(kRestrictedGetResponse, kIccidFile, 0, 0, wholeLength_, {},
                                       FolderText(std::array{kTelecom}))
                                .Executed();
    if (wrongTaken) continue;
    for (const Known& known : files) {
      if (Restricted(kRestrictedGetResponse, known.file, 0, 0, wholeLength_, {},
                     FolderText(known.folder))
              .Executed()) {
        return true;
      }
    }
  }
  return false;
}

// Using it.

Reply CardWay::SendFramed(const std::string& start, std::string_view name, Bytes frame) {
  const std::string length = std::to_string(2 * frame.size());
  std::string digits = ToHex(frame);
  std::fill(frame.begin(), frame.end(), std::uint8_t{0});
  std::string command;
  command.reserve(start.size() + length.size() + digits.size() + 3);  // leaves no copies behind
  command.append(start).append(length).append(",\"").append(digits).append("\"");
  std::fill(digits.begin(), digits.end(), '\0');
  const AtAnswer answer = session_.Send(command, name, session_.Times().card);
  std::fill(command.begin(), command.end(), '\0');
  Reply reply = Judge(answer);
  if (!answer.Ok()) return reply;
  const auto value = answer.lines.empty() ? std::nullopt : Behind(answer.lines.back(), name);
  auto response = value ? ParseApduAnswer(*value) : std::nullopt;
  if (!response) return {.error = TransportError::kCommunication};
  reply.response = std::move(*response);
  return reply;
}

Reply CardWay::SendOnBasic(std::span<const std::uint8_t> command) {
  return SendFramed("AT+CSIM=", "+CSIM", Frame(command));
}

Reply CardWay::SendOnChannel(std::span<const std::uint8_t> command) {
  Bytes frame = Frame(command);
  if ((frame[0] & 0xF0) == 0x00 || (frame[0] & 0xF0) == 0x80) frame[0] |= classBits_;
  return SendFramed("AT+CGLA=" + channel_ + ',', "+CGLA", std::move(frame));
}

Reply CardWay::SendApdu(std::span<const std::uint8_t> command) {
  return way_ == Way::kLogicalChannel ? SendOnChannel(command) : SendOnBasic(command);
}

std::string CardWay::FolderText(std::span<const std::uint16_t> folder) const {
  Bytes bytes;
  if (masterInPath_) bytes = {kMasterFile >> 8, kMasterFile & 0xFF};
  for (const std::uint16_t id : folder) {
    bytes.push_back(static_cast<std::uint8_t>(id >> 8));
    bytes.push_back(static_cast<std::uint8_t>(id & 0xFF));
  }
  return ToHex(bytes);
}

Reply CardWay::Restricted(int instruction, std::uint16_t file, int parameter1, int parameter2,
                          int length, std::span<const std::uint8_t> data,
                          const std::string& folder) {
  std::string command = "AT+CRSM=" + std::to_string(instruction) + ',' + std::to_string(file) +
                        ',' + std::to_string(parameter1) + ',' + std::to_string(parameter2) + ',' +
                        std::to_string(length);
  if (!data.empty()) command += ",\"" + ToHex(data) + '"';
  if (!folder.empty()) command += (data.empty() ? ",,\"" : ",\"") + folder + '"';
  const AtAnswer answer = session_.Send(command, "+CRSM", session_.Times().card);
  Reply reply = Judge(answer);
  if (!answer.Ok()) return reply;
  const auto value = answer.lines.empty() ? std::nullopt : Behind(answer.lines.back(), "+CRSM");
  auto response = value ? ParseFileAnswer(*value) : std::nullopt;
  if (!response) return {.error = TransportError::kCommunication};
  reply.response = std::move(*response);
  return reply;
}

Reply CardWay::SendFileCommand(const card::FileCommand& command) {
  std::string folder;
  if (folders_ && !command.folder.empty()) {
    folder = FolderText(command.folder);
  } else if (command.folder.size() > 1 ||
             (command.folder.size() == 1 && command.folder[0] != kTelecom)) {
    // Without a path the modem finds the files of the master file and of DF TELECOM alone.
    return {.response = StatusWord(0x6A, 0x82)};
  }
  int length = command.length;
  if (command.instruction == kGetResponse && length == 0) length = wholeLength_;
  return Restricted(command.instruction, command.file, command.parameter1, command.parameter2,
                    length, command.data, folder);
}

// The lock.

TransportError CardWay::AskLock(Lock& lock) {
  lock = Lock::kUnknown;
  const AtAnswer answer = session_.Send("AT+CPIN?", "+CPIN", session_.Times().plain);
  if (answer.Ok() && !answer.lines.empty()) {
    const std::string_view value = Behind(answer.lines.back(), "+CPIN").value_or("");
    if (value == "READY") lock = Lock::kReady;
    if (value == "SIM PIN") lock = Lock::kPin;
    if (value == "SIM PUK") lock = Lock::kPuk;
    const bool out = value == "NOT INSERTED" || value == "NOT READY" || value == "SIM REMOVED";
    return out ? TransportError::kNoCard : TransportError::kNone;
  }
  if (answer.end == AtEnd::kCme) {
    switch (answer.error) {
      case kCmePinWanted:
        lock = Lock::kPin;
        return TransportError::kNone;
      case kCmePukWanted:
        lock = Lock::kPuk;
        return TransportError::kNone;
      case kCmeNoSim:
        return TransportError::kNoCard;
      default:
        break;
    }
    // Switched off, the modem knows nothing of its card.
    const AtAnswer radio = session_.Send("AT+CFUN?", "+CFUN", session_.Times().plain);
    const auto on = radio.lines.empty() ? std::nullopt : Behind(radio.lines.back(), "+CFUN");
    if (radio.Ok() && on && (*on == "0" || *on == "4")) return TransportError::kRadioOff;
  }
  const Reply reply = Judge(answer);
  // A modem that does not know the question leaves it to the card.
  return reply.refused ? TransportError::kNone : reply.error;
}

int CardWay::AskTries(std::string_view code) {
  const std::string question = "AT+CPINR=\"" + std::string(code) + '"';
  const AtAnswer answer = session_.Send(question, "+CPINR", session_.Times().card);
  if (!answer.Ok()) return -1;
  for (const std::string& line : answer.lines) {
    const auto value = Behind(line, "+CPINR");
    if (!value) continue;
    const std::size_t comma = value->find(',');
    if (comma == std::string_view::npos) continue;
    // The code's name has a blank within, with quotes around it or without.
    std::string name(value->substr(0, comma));
    name.erase(std::remove(name.begin(), name.end(), '"'), name.end());
    const auto tries = ParseNumber(SplitValues(value->substr(comma + 1)).front());
    if (name == code && tries && *tries >= 0 && *tries <= 15) return *tries;
  }
  return -1;
}

}  // namespace kelpin::device::modem
