#include "device/card/apdu_exchange.h"

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
// A card that never comes to an end must not hold us for ever.
constexpr int kMostSteps = 64;
constexpr std::size_t kLongestCommand = 4 + 1 + 0xFF + 1;

bool DataWaits(StatusWord word) {
  return FirstByte(word) == kDataWaits || FirstByte(word) == kDataWaitsGsm;
}

void Build(std::uint8_t cardClass, const CardCommand& command, bool lengthAfterData,
           std::vector<std::uint8_t>& bytes) {
  bytes.assign({cardClass, command.instruction, command.parameter1, command.parameter2});
  if (!command.data.empty()) {
    bytes.push_back(static_cast<std::uint8_t>(command.data.size()));
    bytes.insert(bytes.end(), command.data.begin(), command.data.end());
    if (!lengthAfterData) return;
  }
  if (command.answer != kNoAnswer) bytes.push_back(static_cast<std::uint8_t>(command.answer));
}

}  // namespace

TransportError ApduExchange::Transmit(std::span<const std::uint8_t> bytes,
                                      std::vector<std::uint8_t>& data, StatusWord& word) {
  std::vector<std::uint8_t> response;
  const TransportError error = channel_.Transmit(bytes, response);
  if (error != TransportError::kNone) return error;
  if (response.size() < 2) return TransportError::kCommunication;
  const std::size_t length = response.size() - 2;
  word = static_cast<StatusWord>((response[length] << 8) | response[length + 1]);
  data.insert(data.end(), response.begin(), response.begin() + static_cast<std::ptrdiff_t>(length));
  return TransportError::kNone;
}

CardResult ApduExchange::Send(const CardCommand& command, std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes;
  const CardResult result = Exchange(command, bytes, data);
  // A code that was in it is not to outlive it.
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
  return result;
}

CardResult ApduExchange::Exchange(const CardCommand& command, std::vector<std::uint8_t>& bytes,
                                  std::vector<std::uint8_t>& data) {
  if (command.data.size() > 0xFF) return StatusWord::kWrongLength;
  bytes.reserve(kLongestCommand);  // grown, it would leave copies behind
  Build(class_, command, lengthAfterData_, bytes);
  std::vector<std::uint8_t> answer;
  StatusWord word = StatusWord::kOk;
  bool lengthCorrected = false;
  for (int step = 0; step < kMostSteps; ++step) {
    const TransportError error = Transmit(bytes, answer, word);
    if (error != TransportError::kNone) return error;

    if (DataWaits(word)) {
      if (command.answer == kNoAnswer) return StatusWord::kOk;
      bytes.assign({class_, kGetResponse, 0, 0, SecondByte(word)});
      lengthCorrected = false;
      continue;
    }
    const bool fetching = bytes[1] == kGetResponse;
    const bool plain = fetching || command.data.empty();
    const bool corrected =
        FirstByte(word) == kOtherLength
            ? plain || lengthAfterData_
            : plain && FirstByte(word) == kWrongLengthFirst && SecondByte(word) != 0;
    if (corrected && !lengthCorrected && command.answer != kNoAnswer) {
      bytes.back() = SecondByte(word);
      lengthCorrected = true;
      continue;
    }
    if (FirstByte(word) == kWrongLengthFirst && !plain && lengthAfterData_ &&
        command.answer != kNoAnswer) {
      lengthAfterData_ = false;
      Build(class_, command, lengthAfterData_, bytes);
      continue;
    }
    if (Succeeded(word)) data = std::move(answer);
    return word;
  }
  return TransportError::kCommunication;
}

CardResult ApduExchange::Send(const CardCommand& command) {
  std::vector<std::uint8_t> ignored;
  return Send(command, ignored);
}

}  // namespace kelpin::device::card
