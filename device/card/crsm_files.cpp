#include "device/card/crsm_files.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace kelpin::device::card {
namespace {

constexpr std::uint8_t kGetResponse = 0xC0;

constexpr std::uint8_t kDataWaits = 0x61;
constexpr std::uint8_t kDataWaitsGsm = 0x9F;
constexpr std::uint8_t kOtherLength = 0x6C;
constexpr std::uint8_t kWrongLengthFirst = 0x67;

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

}  // namespace

TransportError CrsmFiles::Open() {
  Close();
  std::vector<std::uint8_t> atr;
  const TransportError error = channel_.Connect(atr);
  SetOpen(error == TransportError::kNone);
  return error;
}

CardResult CrsmFiles::SendOn(const FilePath& path, const CardCommand& command,
                             std::vector<std::uint8_t>& data) {
  if (!IsOpen()) return TransportError::kReset;
  if (path.Ids().empty()) return StatusWord::kFileNotFound;
  const CardTransaction transaction(*this);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  const std::size_t length =
      command.answer == kNoAnswer ? command.data.size() : static_cast<std::size_t>(command.answer);
  FileCommand sent = {.instruction = command.instruction,
                      .file = path.Ids().back(),
                      .folder = path.Ids().first(path.Ids().size() - 1),
                      .parameter1 = command.parameter1,
                      .parameter2 = command.parameter2,
                      .length = static_cast<std::uint8_t>(length),
                      .data = command.data};
  std::vector<std::uint8_t> bytes;
  CardResult result = StatusWord::kOk;
  for (int attempt = 0; attempt < 2; ++attempt) {
    std::vector<std::uint8_t> response;
    result = Noted(channel_.TransmitFileCommand(sent, response));
    if (result.Error() != TransportError::kNone) return result;
    result = Split(response, bytes);
    const bool otherLength =
        result.Error() == TransportError::kNone && sent.data.empty() &&
        (FirstByte(result.Word()) == kOtherLength ||
         (FirstByte(result.Word()) == kWrongLengthFirst && SecondByte(result.Word()) != 0));
    if (!otherLength) break;
    sent.length = SecondByte(result.Word());
  }
  if (result.Ok()) data = std::move(bytes);
  return result;
}

CardResult CrsmFiles::SelectApplication(std::span<const std::uint8_t> /*aid*/) {
  return IsOpen() ? CardResult(StatusWord::kOk) : CardResult(TransportError::kReset);
}

CardResult CrsmFiles::AskInfo(const FilePath& path, std::vector<std::uint8_t>& response) {
  return SendOn(path, {.instruction = kGetResponse, .answer = kWholeAnswer}, response);
}

CardResult CrsmFiles::SearchRecords(const FilePath& /*path*/,
                                    std::span<const std::uint8_t> /*pattern*/,
                                    std::vector<std::uint8_t>& /*records*/) {
  return StatusWord::kUnknownInstruction;
}

CardResult CrsmFiles::FindPin(PinReference& pin) {
  pin = {.enabled = true};
  return StatusWord::kOk;
}

CardResult CrsmFiles::SendPin(std::uint8_t instruction, std::uint8_t reference,
                              std::span<const std::uint8_t> codes) {
  if (!IsOpen()) return TransportError::kReset;
  std::vector<std::uint8_t> bytes;
  bytes.reserve(5 + codes.size());  // grown, it would leave copies behind
  bytes.assign({kClassUicc, instruction, 0x00, reference});
  if (!codes.empty()) {
    bytes.push_back(static_cast<std::uint8_t>(codes.size()));
    bytes.insert(bytes.end(), codes.begin(), codes.end());
  }
  std::vector<std::uint8_t> response;
  const TransportError error = channel_.Transmit(bytes, response);
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
  if (error != TransportError::kNone) return Noted(error);
  std::vector<std::uint8_t> ignored;
  return Split(response, ignored);
}

}  // namespace kelpin::device::card
