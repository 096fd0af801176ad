#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "device/card/card_channel.h"
#include "device/card/card_result.h"

namespace kelpin::device::card {

inline constexpr std::uint8_t kClassUicc = 0x00;
inline constexpr std::uint8_t kClassGsm = 0xA0;

// One command of the card, without its class.
struct CardCommand {
  std::uint8_t instruction = 0;
  std::uint8_t parameter1 = 0;
  std::uint8_t parameter2 = 0;
  std::span<const std::uint8_t> data = {};  // at most 255 bytes
  // Bytes wanted in answer: kNoAnswer, kWholeAnswer, or 1 to 255.
  int answer = -1;
};
inline constexpr int kNoAnswer = -1;
inline constexpr int kWholeAnswer = 0;

// Sends single commands and follows what the card says of the transport: 61xx and 9Fxx (data
// waits), 6Cxx and 67xx (with another length). Takes it as well when the reader has done that
// already. A status word that means success comes back as it is; 61xx and 9Fxx become 9000.
class ApduExchange {
 public:
  explicit ApduExchange(CardChannel& channel) : channel_(channel) {}

  void SetClass(std::uint8_t cardClass) { class_ = cardClass; }
  std::uint8_t Class() const { return class_; }

  // `data` becomes the answer when the result is Ok, and is left alone when not.
  CardResult Send(const CardCommand& command, std::vector<std::uint8_t>& data);
  CardResult Send(const CardCommand& command);

 private:
  // `bytes` is what was sent last.
  CardResult Exchange(const CardCommand& command, std::vector<std::uint8_t>& bytes,
                      std::vector<std::uint8_t>& data);
  TransportError Transmit(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& data,
                          StatusWord& word);

  CardChannel& channel_;
  std::uint8_t class_ = kClassUicc;
  // A command with data of its own also says how much it wants. Some T=0 cards and readers take
  // that for a wrong length; then it is left out from there on.
  bool lengthAfterData_ = true;
};

}  // namespace kelpin::device::card
