#include "device/softcard/apdu_interpreter.h"

#include <algorithm>
#include <utility>

namespace kelpin::device::softcard {
namespace {

constexpr std::size_t kWholeAnswer = 256;  // Le = 00

bool IsProprietaryInstruction(std::uint8_t instruction) {
  return instruction == kStatus || instruction == kTerminalProfile || instruction == kEnvelope ||
         instruction == kFetch || instruction == kTerminalResponse;
}

bool IsInterindustryInstruction(std::uint8_t instruction) {
  switch (instruction) {
    case kDeactivateFile:
    case kVerifyPin:
    case kChangePin:
    case kDisablePin:
    case kEnablePin:
    case kUnblockPin:
    case kActivateFile:
    case kManageChannel:
    case kSearchRecord:
    case kSelect:
    case kReadBinary:
    case kReadRecord:
    case kGetResponse:
    case kUpdateBinary:
    case kUpdateRecord:
      return true;
    default:
      return false;
  }
}

// SW1 with a length in SW2; 256 is told as 00.
std::uint16_t WithLength(std::uint8_t sw1, std::size_t length) {
  return static_cast<std::uint16_t>(std::size_t{sw1} << 8 | (length & 0xFF));
}

std::vector<std::uint8_t> Bare(std::uint16_t statusWord) {
  return {static_cast<std::uint8_t>(statusWord >> 8), static_cast<std::uint8_t>(statusWord & 0xFF)};
}

std::vector<std::uint8_t> WithData(std::vector<std::uint8_t> data, std::uint16_t statusWord) {
  data.push_back(static_cast<std::uint8_t>(statusWord >> 8));
  data.push_back(static_cast<std::uint8_t>(statusWord & 0xFF));
  return data;
}

}  // namespace

ApduInterpreter::ApduInterpreter(CardImage& image, Persist persist)
    : image_(image), persist_(std::move(persist)) {
  Reset();
}

void ApduInterpreter::Reset() {
  channels_.fill(Channel{});
  channels_[0].open = true;
  channels_[0].directory = image_.mf.get();
  channel_ = 0;
  gsm_ = false;
  modeFixed_ = false;
  pin1Verified_ = false;
  pin2Verified_ = false;
  admVerified_ = false;
  pending_.clear();
}

std::vector<std::uint8_t> ApduInterpreter::Process(std::span<const std::uint8_t> bytes) {
  CommandApdu command;
  if (!ParseCommand(bytes, command)) {
    pending_.clear();
    return Bare(StatusWord(Status::kWrongLength, false));
  }
  if (command.ins != kGetResponse) {
    pending_.clear();  // any other command discards what was not fetched
  }
  gsm_ = command.IsGsm();
  const Status admitted = Admit(command);
  if (admitted != Status::kOk) {
    return Bare(StatusWord(admitted, gsm_));
  }
  if (command.ins == kGetResponse) {
    return FetchPending(command);
  }
  return Deliver(command, Dispatch(command));
}

Status ApduInterpreter::Admit(const CommandApdu& command) {
  const Classes classes = image_.classes;
  if (gsm_ ? classes == Classes::kUicc : classes == Classes::kGsm) {
    return Status::kWrongClass;
  }
  if (classes == Classes::kFirst && modeFixed_ && modeGsm_ != gsm_) {
    return Status::kWrongClass;
  }
  if (gsm_) {
    channel_ = 0;
  } else {
    const std::uint8_t family = command.cla & 0xF0;
    if ((command.cla & 0x40) != 0) {
      return command.cla == 0xFF ? Status::kWrongClass : Status::kNoSuchChannel;
    }
    if (family != 0x00 && family != 0x80) {
      return Status::kWrongClass;
    }
    if ((command.cla & 0x0C) != 0) {
      return Status::kSecureMessaging;
    }
    const std::size_t channel = command.cla & 0x03;
    if (!channels_[channel].open) {
      return Status::kNoSuchChannel;
    }
    const bool proprietary = family == 0x80;
    const bool known =
        IsProprietaryInstruction(command.ins) || IsInterindustryInstruction(command.ins);
    if (!known) {
      return Status::kUnknownInstruction;
    }
    // Terminals fetch the answer of an 8X command with either class.
    if (IsProprietaryInstruction(command.ins) != proprietary && command.ins != kGetResponse) {
      return Status::kWrongClass;
    }
    channel_ = channel;
  }
  if (classes == Classes::kFirst && !modeFixed_) {
    modeFixed_ = true;
    modeGsm_ = gsm_;
  }
  return Status::kOk;
}

CommandResult ApduInterpreter::Answer(Status status) const {
  return {StatusWord(status, gsm_), {}, false};
}

CommandResult ApduInterpreter::WrongLength(std::size_t right) const {
  // Class A0 tells the length that would be right (TS 51.011 9.4.6).
  return gsm_ ? CommandResult{WithLength(0x67, right), {}, false} : Answer(Status::kWrongLength);
}

CommandResult ApduInterpreter::Dispatch(const CommandApdu& command) {
  switch (command.ins) {
    case kSelect:
      return gsm_ ? SelectGsm(command) : Select(command);
    case kStatus:
      return TellStatus(command);
    case kReadBinary:
      return ReadBinary(command);
    case kUpdateBinary:
      return UpdateBinary(command);
    case kReadRecord:
      return ReadRecord(command);
    case kUpdateRecord:
      return UpdateRecord(command);
    case kSearchRecord:
      if (!image_.searchRecord) {
        return Answer(Status::kUnknownInstruction);
      }
      return gsm_ ? Seek(command) : SearchRecord(command);
    case kVerifyPin:
      return VerifyPin(command);
    case kChangePin:
      return ChangePin(command);
    case kDisablePin:
      return SwitchPin(command, false);
    case kEnablePin:
      return SwitchPin(command, true);
    case kUnblockPin:
      return UnblockPin(command);
    case kDeactivateFile:
    case kActivateFile:
      return ChangeActivation(command);
    case kManageChannel:
      return gsm_ ? Answer(Status::kUnknownInstruction) : ManageChannel(command);
    case kTerminalProfile:
    case kEnvelope:
      return command.hasData ? Answer(Status::kOk) : WrongLength(0);
    case kFetch:
    case kTerminalResponse:
      return Answer(Status::kNothingPending);  // this card has no command of its own
    case kSleep:
      return Answer(Status::kOk);
    default:
      return Answer(Status::kUnknownInstruction);
  }
}

std::vector<std::uint8_t> ApduInterpreter::Deliver(const CommandApdu& command,
                                                   CommandResult result) {
  if (result.data.empty()) {
    return Bare(result.statusWord);
  }
  return command.hasData ? DeliverToCase4(command, std::move(result))
                         : DeliverToCase2(command, std::move(result));
}

// Data went in and data comes out. T=0 cannot do both at once: the answer waits for GET RESPONSE.
std::vector<std::uint8_t> ApduInterpreter::DeliverToCase4(const CommandApdu& command,
                                                          CommandResult result) {
  const std::size_t size = result.data.size();
  if (image_.protocol == Protocol::kT0) {
    Hold(std::move(result.data));
    return Bare(result.statusWord == 0x9000 ? WithLength(gsm_ ? 0x9F : 0x61, size)
                                            : result.statusWord);
  }
  if (!command.expected) {
    return Bare(result.statusWord);  // nothing was asked for
  }
  if (*command.expected >= size) {
    return WithData(std::move(result.data), result.statusWord);
  }
  std::vector<std::uint8_t> part(
      result.data.begin(), result.data.begin() + static_cast<std::ptrdiff_t>(*command.expected));
  result.data.erase(result.data.begin(),
                    result.data.begin() + static_cast<std::ptrdiff_t>(*command.expected));
  const std::uint16_t statusWord = WithLength(0x61, result.data.size());
  Hold(std::move(result.data));
  return WithData(std::move(part), statusWord);
}

bool ApduInterpreter::LengthFits(const CommandApdu& command, std::size_t size) const {
  const std::size_t expected = command.expected.value_or(kWholeAnswer);
  return expected == size || (image_.protocol == Protocol::kT1 && expected == kWholeAnswer);
}

std::vector<std::uint8_t> ApduInterpreter::DeliverToCase2(const CommandApdu& command,
                                                          CommandResult result) {
  if (image_.protocol == Protocol::kT1 && !command.expected) {
    return Bare(result.statusWord);
  }
  const std::size_t size = result.data.size();
  const std::size_t expected = command.expected.value_or(kWholeAnswer);
  if (LengthFits(command, size)) {
    return WithData(std::move(result.data), result.statusWord);
  }
  if (result.anyLength && (expected < size || result.statusWord != 0x9000)) {
    result.data.resize(std::min(expected, size));
    return WithData(std::move(result.data), result.statusWord);
  }
  return Bare(WithLength(gsm_ ? 0x67 : 0x6C, size));
}

void ApduInterpreter::Hold(std::vector<std::uint8_t> data) {
  pending_ = std::move(data);
  pendingGsm_ = gsm_;
  pendingChannel_ = channel_;
}

std::vector<std::uint8_t> ApduInterpreter::FetchPending(const CommandApdu& command) {
  if (command.hasData) {
    return Bare(StatusWord(Status::kWrongLength, gsm_));
  }
  if (command.p1 != 0 || command.p2 != 0) {
    return Bare(StatusWord(Status::kWrongParameters, gsm_));
  }
  if (pending_.empty() || pendingGsm_ != gsm_ || pendingChannel_ != channel_) {
    return Bare(StatusWord(Status::kNothingPending, gsm_));
  }
  const std::size_t size = pending_.size();
  const std::size_t expected = command.expected.value_or(kWholeAnswer);
  if (LengthFits(command, size)) {
    return WithData(std::exchange(pending_, {}), 0x9000);
  }
  if (expected > size) {
    return Bare(WithLength(gsm_ ? 0x67 : 0x6C, size));
  }
  const auto cut = pending_.begin() + static_cast<std::ptrdiff_t>(expected);
  std::vector<std::uint8_t> part(pending_.begin(), cut);
  if (gsm_) {
    pending_.clear();
    return WithData(std::move(part), 0x9000);
  }
  pending_.erase(pending_.begin(), cut);
  return WithData(std::move(part), WithLength(0x61, pending_.size()));
}

}  // namespace kelpin::device::softcard
