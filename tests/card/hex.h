#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::device::card {

// "62 82 05" → bytes; blanks between them do not count.
inline std::vector<std::uint8_t> Hex(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  int high = -1;
  for (const char character : text) {
    if (character == ' ') continue;
    const int digit = character <= '9' ? character - '0' : (character | 0x20) - 'a' + 10;
    if (high < 0) {
      high = digit;
    } else {
      bytes.push_back(static_cast<std::uint8_t>((high << 4) | digit));
      high = -1;
    }
  }
  return bytes;
}

inline std::string ToHex(const std::vector<std::uint8_t>& bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0x0F]);
  }
  return text;
}

}  // namespace kelpin::device::card
