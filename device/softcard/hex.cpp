#include "device/softcard/hex.h"

#include <cstddef>
#include <utility>

namespace kelpin::device::softcard {
namespace {

int Nibble(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  if (digit >= 'A' && digit <= 'F') {
    return digit - 'A' + 10;
  }
  if (digit >= 'a' && digit <= 'f') {
    return digit - 'a' + 10;
  }
  return -1;
}

}  // namespace

std::string ToHex(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

bool FromHex(std::string_view text, std::vector<std::uint8_t>& bytes) {
  if (text.size() % 2 != 0) {
    return false;
  }
  std::vector<std::uint8_t> decoded;
  decoded.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = Nibble(text[i]);
    const int low = Nibble(text[i + 1]);
    if (high < 0 || low < 0) {
      return false;
    }
    decoded.push_back(static_cast<std::uint8_t>(high * 16 + low));
  }
  bytes = std::move(decoded);
  return true;
}

}  // namespace kelpin::device::softcard
