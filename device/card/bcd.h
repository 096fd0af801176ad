#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelpin::device::card {

// Dial strings on cards (TS 31.102 4.4.2.3, TS 24.008 10.5.4.7): two digits a byte, low nibble
// first, F after the last; A is *, B #, C the pause p, D the wild digit ?. A '+' is no digit: the
// TON/NPI byte says that the number is international.

inline constexpr std::uint8_t kTonNpiInternational = 0x91;
inline constexpr std::uint8_t kTonNpiUnknown = 0x81;

constexpr bool IsInternational(std::uint8_t tonNpi) {
  return (tonNpi & 0x70) == 0x10;
}

// The digits up to the first F. A nibble E stands for nothing and is left out.
void AppendDigits(std::span<const std::uint8_t> bytes, std::u16string& digits);

// Packs the digits and fills the rest with FF. The number of bytes the digits take. There must be
// room, and every character must be one that ParseAddress gives.
std::size_t PackDigits(std::u16string_view digits, std::span<std::uint8_t> out);

// What an address says, in the card's terms.
struct DialNumber {
  std::u16string digits;  // 0-9 * # p ?
  std::uint8_t tonNpi = kTonNpiUnknown;
};

// The address with its '+' where a user writes it: in front of a number that starts with a digit;
// in one that starts with * or #, in front of its second run of digits (*31#+44…), and nowhere
// when it has one run alone (*100#).
std::u16string AddressText(std::u16string_view digits, std::uint8_t tonNpi);

// Takes an address apart; P, w and W mean p. False when it holds something that no card can:
// another character, or a '+' that AddressText would put elsewhere. A '+' in front is always taken.
[[nodiscard]] bool ParseAddress(std::u16string_view address, DialNumber& number);

}  // namespace kelpin::device::card
