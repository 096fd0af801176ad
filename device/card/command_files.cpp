#include "device/card/command_files.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "device/card/card_code.h"

namespace kelpin::device::card {
namespace {

constexpr std::uint8_t kReadBinary = 0xB0;
constexpr std::uint8_t kReadRecord = 0xB2;
constexpr std::uint8_t kUpdateBinary = 0xD6;
constexpr std::uint8_t kUpdateRecord = 0xDC;
constexpr std::uint8_t kVerify = 0x20;
constexpr std::uint8_t kUnblock = 0x2C;
constexpr std::uint8_t kAbsolute = 0x04;

constexpr std::size_t kChunk = 0xFF;
constexpr std::size_t kLastOffset = 0x7FFF;

// A code in a command is eight bytes, its digits and then FF (TS 102 221 9.5.1).
void PutCode(std::string_view digits, std::span<std::uint8_t> bytes) {
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0xFF});
  std::copy(digits.begin(), digits.end(), bytes.begin());
}

// READ or UPDATE BINARY from an offset on.
CardCommand AtOffset(std::uint8_t instruction, std::size_t offset) {
  return {.instruction = instruction,
          .parameter1 = static_cast<std::uint8_t>(offset >> 8),
          .parameter2 = static_cast<std::uint8_t>(offset & 0xFF)};
}

bool TellsTriesLeft(StatusWord word) {
  return (static_cast<std::uint16_t>(word) & 0xFFF0) == 0x63C0;
}

bool RefusesCode(StatusWord word) {
  return TellsTriesLeft(word) || word == StatusWord::kPinBlocked ||
         word == StatusWord::kPinNeededGsm || word == StatusWord::kPinBlockedGsm;
}

}  // namespace

void CommandFiles::Close() {
  Forget();
  open_ = false;
  pinVerified_ = false;
}

CardResult CommandFiles::Noted(CardResult result) {
  switch (result.Error()) {
    case TransportError::kNoReader:
    case TransportError::kNoCard:
    case TransportError::kRemoved:
    case TransportError::kReset:
      Close();
      break;
    default:
      break;
  }
  return result;
}

CardResult CommandFiles::Info(const FilePath& path, FileInfo& info) {
  if (const auto known = infos_.find(path); known != infos_.end()) {
    info = known->second;
    return StatusWord::kOk;
  }
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  std::vector<std::uint8_t> response;
  const CardResult result = AskInfo(path, response);
  if (!result.Ok()) return result;
  const auto parsed = ParseFileInfo(response);
  if (!parsed) return StatusWord::kWrongFileKind;
  infos_[path] = *parsed;
  info = *parsed;
  return result;
}

CardResult CommandFiles::ReadRecord(const FilePath& path, std::uint8_t record, std::uint8_t length,
                                    std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes;
  const CardResult result = SendOn(path, {kReadRecord, record, kAbsolute, {}, length}, bytes);
  if (!result.Ok()) return result;
  if (bytes.size() != length) return TransportError::kCommunication;
  data = std::move(bytes);
  return result;
}

CardResult CommandFiles::UpdateRecord(const FilePath& path, std::uint8_t record,
                                      std::span<const std::uint8_t> data) {
  std::vector<std::uint8_t> ignored;
  return SendOn(path, {kUpdateRecord, record, kAbsolute, data}, ignored);
}

CardResult CommandFiles::ReadBinary(const FilePath& path, std::uint16_t offset,
                                    std::uint16_t length, std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes;
  while (bytes.size() < length) {
    const std::size_t at = offset + bytes.size();
    const std::size_t want = std::min<std::size_t>(length - bytes.size(), kChunk);
    if (at > kLastOffset) return StatusWord::kWrongOffset;
    CardCommand command = AtOffset(kReadBinary, at);
    command.answer = static_cast<int>(want);
    std::vector<std::uint8_t> chunk;
    const CardResult result = SendOn(path, command, chunk);
    if (!result.Ok()) return result;
    if (chunk.size() != want) return TransportError::kCommunication;
    bytes.insert(bytes.end(), chunk.begin(), chunk.end());
  }
  data = std::move(bytes);
  return StatusWord::kOk;
}

CardResult CommandFiles::UpdateBinary(const FilePath& path, std::uint16_t offset,
                                      std::span<const std::uint8_t> data) {
  std::size_t done = 0;
  while (done < data.size()) {
    const std::size_t at = offset + done;
    if (at > kLastOffset) return StatusWord::kWrongOffset;
    CardCommand command = AtOffset(kUpdateBinary, at);
    command.data = data.subspan(done, std::min(data.size() - done, kChunk));
    std::vector<std::uint8_t> ignored;
    const CardResult result = SendOn(path, command, ignored);
    if (!result.Ok()) return result;
    done += command.data.size();
  }
  return StatusWord::kOk;
}

CardResult CommandFiles::AskTries(std::uint8_t instruction, std::uint8_t reference, int& tries) {
  const CardResult asked = SendPin(instruction, reference, {});
  if (asked.Error() != TransportError::kNone) return asked;
  if (TellsTriesLeft(asked.Word())) tries = static_cast<std::uint16_t>(asked.Word()) & 0x0F;
  if (asked.Word() == StatusWord::kPinBlocked) tries = 0;
  return StatusWord::kOk;
}

CardResult CommandFiles::GetPinState(PinState& state) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  PinReference pin;
  if (const CardResult result = FindPin(pin); !result.Ok()) return result;
  PinState told = {pin.enabled, pin.enabled && pinVerified_, false, pin.triesLeft,
                   pin.unblockTriesLeft};
  if (TellsTries()) {
    const CardResult asked = AskTries(kVerify, pin.reference, told.triesLeft);
    if (!asked.Ok()) return asked;
  }
  told.blocked = told.triesLeft == 0;
  if (told.blocked && TellsTries()) {
    const CardResult asked = AskTries(kUnblock, pin.reference, told.unblockTriesLeft);
    if (!asked.Ok()) return asked;
  }
  state = told;
  return StatusWord::kOk;
}

CardResult CommandFiles::Present(std::uint8_t instruction, std::span<std::uint8_t> codes,
                                 PinState& state) {
  PinReference pin;
  CardResult result = FindPin(pin);
  const bool found = result.Ok();
  if (found) result = SendPin(instruction, pin.reference, codes);
  std::fill(codes.begin(), codes.end(), std::uint8_t{0});
  if (!found || result.Error() != TransportError::kNone) return result;
  if (!result.Ok() && !RefusesCode(result.Word())) return result;
  if (result.Ok()) pinVerified_ = true;
  return GetPinState(state);
}

CardResult CommandFiles::VerifyPin(std::string_view code, PinState& state) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  if (!IsPin(code)) return StatusWord::kWrongLength;
  std::array<std::uint8_t, kPinBytes> bytes;
  PutCode(code, bytes);
  return Present(kVerify, bytes, state);
}

CardResult CommandFiles::UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                    PinState& state) {
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  if (!IsPuk(unblockingCode) || !IsPin(newPin)) return StatusWord::kWrongLength;
  std::array<std::uint8_t, 2 * kPinBytes> bytes;
  PutCode(unblockingCode, std::span(bytes).first(kPinBytes));
  PutCode(newPin, std::span(bytes).last(kPinBytes));
  return Present(kUnblock, bytes, state);
}

TransportError CommandFiles::BeginTransaction() {
  if (transactions_ == 0 && stopped_) return TransportError::kBusy;
  if (transactions_++ > 0) return TransportError::kNone;
  const TransportError error = channel_.BeginTransaction();
  if (error == TransportError::kNone) {
    Begun();
  } else {
    transactions_ = 0;
    static_cast<void>(Noted(error).Ok());
  }
  return error;
}

void CommandFiles::EndTransaction() {
  if (--transactions_ == 0) channel_.EndTransaction();
}

}  // namespace kelpin::device::card
