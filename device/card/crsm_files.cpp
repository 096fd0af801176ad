#include "device/card/crsm_files.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "device/card/card_code.h"

namespace kelpin::device::card {
namespace {

constexpr std::uint8_t kGetResponse = 0xC0;
constexpr std::uint8_t kReadBinary = 0xB0;
constexpr std::uint8_t kReadRecord = 0xB2;
constexpr std::uint8_t kUpdateBinary = 0xD6;
constexpr std::uint8_t kUpdateRecord = 0xDC;
constexpr std::uint8_t kVerify = 0x20;
constexpr std::uint8_t kUnblock = 0x2C;
constexpr std::uint8_t kAbsolute = 0x04;
constexpr std::uint8_t kFirstPin = 0x01;

constexpr std::uint8_t kDataWaits = 0x61;
constexpr std::uint8_t kDataWaitsGsm = 0x9F;
constexpr std::uint8_t kOtherLength = 0x6C;
constexpr std::uint8_t kWrongLengthFirst = 0x67;

constexpr std::size_t kChunk = 0xFF;

// Takes the response apart into data and status word.
CardResult Split(std::vector<std::uint8_t>& response, std::vector<std::uint8_t>& data) {
  if (response.size() < 2) return TransportError::kCommunication;
  const std::size_t length = response.size() - 2;
  auto word = static_cast<StatusWord>((response[length] << 8) | response[length + 1]);
  // Some modems tell so although they have fetched the data themselves.
  if (FirstByte(word) == kDataWaits || FirstByte(word) == kDataWaitsGsm) word = StatusWord::kOk;
  response.resize(length);
  data = std::move(response);
  return word;
}

void PutCode(std::string_view digits, std::span<std::uint8_t> bytes) {
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0xFF});
  std::copy(digits.begin(), digits.end(), bytes.begin());
}

}  // namespace

TransportError CrsmFiles::Open() {
  Close();
  std::vector<std::uint8_t> atr;
  const TransportError error = channel_.Connect(atr);
  open_ = error == TransportError::kNone;
  return error;
}

void CrsmFiles::Close() {
  Forget();
  open_ = false;
  pinVerified_ = false;
}

CardResult CrsmFiles::Noted(CardResult result) {
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

CardResult CrsmFiles::Send(const FilePath& path, FileCommand command,
                           std::vector<std::uint8_t>& data) {
  if (!open_) return TransportError::kReset;
  if (path.Ids().empty()) return StatusWord::kFileNotFound;
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  command.file = path.Ids().back();
  command.folder = path.Ids().first(path.Ids().size() - 1);
  std::vector<std::uint8_t> bytes;
  CardResult result = StatusWord::kOk;
  for (int attempt = 0; attempt < 2; ++attempt) {
    std::vector<std::uint8_t> response;
    result = Noted(channel_.TransmitFileCommand(command, response));
    if (result.Error() != TransportError::kNone) return result;
    result = Split(response, bytes);
    const bool otherLength =
        result.Error() == TransportError::kNone && command.data.empty() &&
        (FirstByte(result.Word()) == kOtherLength ||
         (FirstByte(result.Word()) == kWrongLengthFirst && SecondByte(result.Word()) != 0));
    if (!otherLength) break;
    command.length = SecondByte(result.Word());
  }
  if (result.Ok()) data = std::move(bytes);
  return result;
}

CardResult CrsmFiles::SelectApplication(std::span<const std::uint8_t> /*aid*/) {
  return open_ ? CardResult(StatusWord::kOk) : CardResult(TransportError::kReset);
}

CardResult CrsmFiles::Info(const FilePath& path, FileInfo& info) {
  if (const auto known = infos_.find(path); known != infos_.end()) {
    info = known->second;
    return StatusWord::kOk;
  }
  std::vector<std::uint8_t> response;
  const CardResult result = Send(path, {.instruction = kGetResponse}, response);
  if (!result.Ok()) return result;
  const auto parsed = ParseFileInfo(response);
  if (!parsed) return StatusWord::kWrongFileKind;
  infos_[path] = *parsed;
  info = *parsed;
  return result;
}

CardResult CrsmFiles::ReadRecord(const FilePath& path, std::uint8_t record, std::uint8_t length,
                                 std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes;
  const CardResult result = Send(
      path,
      {.instruction = kReadRecord, .parameter1 = record, .parameter2 = kAbsolute, .length = length},
      bytes);
  if (!result.Ok()) return result;
  if (bytes.size() != length) return TransportError::kCommunication;
  data = std::move(bytes);
  return result;
}

CardResult CrsmFiles::UpdateRecord(const FilePath& path, std::uint8_t record,
                                   std::span<const std::uint8_t> data) {
  std::vector<std::uint8_t> ignored;
  return Send(path,
              {.instruction = kUpdateRecord,
               .parameter1 = record,
               .parameter2 = kAbsolute,
               .length = static_cast<std::uint8_t>(data.size()),
               .data = data},
              ignored);
}

CardResult CrsmFiles::ReadBinary(const FilePath& path, std::uint16_t offset, std::uint16_t length,
                                 std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes;
  while (bytes.size() < length) {
    const std::size_t at = offset + bytes.size();
    const std::size_t want = std::min<std::size_t>(length - bytes.size(), kChunk);
    if (at > 0x7FFF) return StatusWord::kWrongOffset;
    std::vector<std::uint8_t> chunk;
    const CardResult result = Send(path,
                                   {.instruction = kReadBinary,
                                    .parameter1 = static_cast<std::uint8_t>(at >> 8),
                                    .parameter2 = static_cast<std::uint8_t>(at & 0xFF),
                                    .length = static_cast<std::uint8_t>(want)},
                                   chunk);
    if (!result.Ok()) return result;
    if (chunk.size() != want) return TransportError::kCommunication;
    bytes.insert(bytes.end(), chunk.begin(), chunk.end());
  }
  data = std::move(bytes);
  return StatusWord::kOk;
}

CardResult CrsmFiles::UpdateBinary(const FilePath& path, std::uint16_t offset,
                                   std::span<const std::uint8_t> data) {
  std::size_t done = 0;
  while (done < data.size()) {
    const std::size_t at = offset + done;
    const std::size_t size = std::min(data.size() - done, kChunk);
    if (at > 0x7FFF) return StatusWord::kWrongOffset;
    std::vector<std::uint8_t> ignored;
    const CardResult result = Send(path,
                                   {.instruction = kUpdateBinary,
                                    .parameter1 = static_cast<std::uint8_t>(at >> 8),
                                    .parameter2 = static_cast<std::uint8_t>(at & 0xFF),
                                    .length = static_cast<std::uint8_t>(size),
                                    .data = data.subspan(done, size)},
                                   ignored);
    if (!result.Ok()) return result;
    done += size;
  }
  return StatusWord::kOk;
}

CardResult CrsmFiles::SearchRecords(const FilePath& /*path*/,
                                    std::span<const std::uint8_t> /*pattern*/,
                                    std::vector<std::uint8_t>& /*records*/) {
  return StatusWord::kUnknownInstruction;
}

CardResult CrsmFiles::SendCode(std::uint8_t instruction, std::span<std::uint8_t> codes) {
  if (!open_) return TransportError::kReset;
  std::vector<std::uint8_t> bytes;
  bytes.reserve(5 + codes.size());  // grown, it would leave copies behind
  bytes.assign({0x00, instruction, 0x00, kFirstPin});
  if (!codes.empty()) {
    bytes.push_back(static_cast<std::uint8_t>(codes.size()));
    bytes.insert(bytes.end(), codes.begin(), codes.end());
  }
  std::vector<std::uint8_t> response;
  const TransportError error = channel_.Transmit(bytes, response);
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
  std::fill(codes.begin(), codes.end(), std::uint8_t{0});
  if (error != TransportError::kNone) return Noted(error);
  std::vector<std::uint8_t> ignored;
  return Split(response, ignored);
}

CardResult CrsmFiles::GetPinState(PinState& state) {
  PinState told = {.enabled = true, .verified = pinVerified_};
  const auto ask = [this](std::uint8_t instruction, int& tries) {
    const CardResult asked = SendCode(instruction, {});
    if (asked.Error() != TransportError::kNone) return asked;
    const auto word = static_cast<std::uint16_t>(asked.Word());
    if ((word & 0xFFF0) == 0x63C0) tries = word & 0x0F;
    if (asked.Word() == StatusWord::kPinBlocked) tries = 0;
    return CardResult(StatusWord::kOk);
  };
  if (const CardResult asked = ask(kVerify, told.triesLeft); !asked.Ok()) return asked;
  told.blocked = told.triesLeft == 0;
  if (told.blocked) {
    if (const CardResult asked = ask(kUnblock, told.unblockTriesLeft); !asked.Ok()) return asked;
  }
  state = told;
  return StatusWord::kOk;
}

CardResult CrsmFiles::Present(std::uint8_t instruction, std::span<std::uint8_t> codes,
                              PinState& state) {
  const CardResult result = SendCode(instruction, codes);
  if (result.Error() != TransportError::kNone) return result;
  const auto word = static_cast<std::uint16_t>(result.Word());
  const bool refused = (word & 0xFFF0) == 0x63C0 || result.Word() == StatusWord::kPinBlocked ||
                       result.Word() == StatusWord::kPinNeededGsm;
  if (!result.Ok() && !refused) return result;
  pinVerified_ = result.Ok();
  return GetPinState(state);
}

CardResult CrsmFiles::VerifyPin(std::string_view code, PinState& state) {
  if (!IsPin(code)) return StatusWord::kWrongLength;
  std::array<std::uint8_t, kPinBytes> bytes;
  PutCode(code, bytes);
  return Present(kVerify, bytes, state);
}

CardResult CrsmFiles::UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                 PinState& state) {
  if (!IsPuk(unblockingCode) || !IsPin(newPin)) return StatusWord::kWrongLength;
  std::array<std::uint8_t, 2 * kPinBytes> bytes;
  PutCode(unblockingCode, std::span(bytes).first(kPinBytes));
  PutCode(newPin, std::span(bytes).last(kPinBytes));
  return Present(kUnblock, bytes, state);
}

TransportError CrsmFiles::BeginTransaction() {
  if (transactions_ == 0 && stopped_) return TransportError::kBusy;
  if (transactions_++ > 0) return TransportError::kNone;
  const TransportError error = channel_.BeginTransaction();
  if (error != TransportError::kNone) {
    transactions_ = 0;
    static_cast<void>(Noted(error).Ok());
  }
  return error;
}

void CrsmFiles::EndTransaction() {
  if (--transactions_ == 0) channel_.EndTransaction();
}

}  // namespace kelpin::device::card
