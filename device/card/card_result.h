#pragma once

#include <cstdint>

#include "device/card/card_channel.h"

namespace kelpin::device::card {

// SW1 SW2 as the card gave them (TS 102 221 10.2.1, TS 51.011 9.4).
enum class [[nodiscard]] StatusWord : std::uint16_t{
    kOk = 0x9000,
    kNothingFound = 0x6282,
    kFileInvalidated = 0x6283,
    kMemoryProblem = 0x6581,
    kWrongLength = 0x6700,
    kWrongFileKind = 0x6981,
    kSecurityStatus = 0x6982,
    kPinBlocked = 0x6983,
    kPinDisabled = 0x6984,
    kConditionsNotMet = 0x6985,
    kNoFileSelected = 0x6986,
    kFunctionUnsupported = 0x6A81,
    kFileNotFound = 0x6A82,
    kRecordNotFound = 0x6A83,
    kWrongParameters = 0x6A86,
    kWrongOffset = 0x6B00,
    kUnknownInstruction = 0x6D00,
    kUnknownClass = 0x6E00,
    kNoFileSelectedGsm = 0x9400,
    kOutOfRangeGsm = 0x9402,
    kFileNotFoundGsm = 0x9404,
    kWrongFileKindGsm = 0x9408,
    kPinNeededGsm = 0x9804,
    kPinBlockedGsm = 0x9840,
};

constexpr std::uint8_t FirstByte(StatusWord word) {
  return static_cast<std::uint8_t>(static_cast<std::uint16_t>(word) >> 8);
}

constexpr std::uint8_t SecondByte(StatusWord word) {
  return static_cast<std::uint8_t>(static_cast<std::uint16_t>(word) & 0xFF);
}

// Executed: 9000, 91xx (a proactive command waits as well), 920x (after that many retries inside
// the card) and the warning that the selected file is invalidated.
constexpr bool Succeeded(StatusWord word) {
  return word == StatusWord::kOk || FirstByte(word) == 0x91 ||
         (FirstByte(word) == 0x92 && SecondByte(word) < 0x10) ||
         word == StatusWord::kFileInvalidated;
}

constexpr bool IsNotFound(StatusWord word) {
  return word == StatusWord::kFileNotFound || word == StatusWord::kFileNotFoundGsm;
}

// What came of one operation on the card: an error below the card's own answer or, where there was
// none, the card's status word.
class [[nodiscard]] CardResult {
 public:
  constexpr CardResult(TransportError error) : error_(error) {}  // NOLINT: converts on purpose
  constexpr CardResult(StatusWord word) : word_(word) {}         // NOLINT: converts on purpose

  constexpr bool Ok() const { return error_ == TransportError::kNone && Succeeded(word_); }
  constexpr TransportError Error() const { return error_; }
  // Counts only while Error() is kNone.
  constexpr StatusWord Word() const { return word_; }
  // The card itself said that there is no such file.
  constexpr bool Missing() const { return error_ == TransportError::kNone && IsNotFound(word_); }

 private:
  TransportError error_ = TransportError::kNone;
  StatusWord word_ = StatusWord::kOk;
};

}  // namespace kelpin::device::card
