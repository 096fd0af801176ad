#include "device/card/bcd.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kelpin::device::card {
namespace {

constexpr std::u16string_view kDigits = u"0123456789*#p?";
constexpr std::uint8_t kEndNibble = 0xF;
constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

bool IsSeparator(char16_t digit) {
  return digit == u'*' || digit == u'#';
}

char16_t FoldDigit(char16_t character) {
  return character == u'P' || character == u'w' || character == u'W' ? u'p' : character;
}

std::uint8_t Nibble(char16_t digit) {
  const std::size_t place = kDigits.find(digit);
  return place == std::u16string_view::npos ? kEndNibble : static_cast<std::uint8_t>(place);
}

// Where the '+' of an international number stands among its digits.
std::size_t PlusPlace(std::u16string_view digits) {
  if (digits.empty() || !IsSeparator(digits.front())) return 0;
  bool runSeen = false;  // of digits after a separator
  for (std::size_t i = 1; i < digits.size(); ++i) {
    if (IsSeparator(digits[i]) || !IsSeparator(digits[i - 1])) continue;
    if (runSeen) return i;
    runSeen = true;
  }
  return kNowhere;
}

}  // namespace

void AppendDigits(std::span<const std::uint8_t> bytes, std::u16string& digits) {
  for (const std::uint8_t byte : bytes) {
    for (const int nibble : {byte & 0x0F, byte >> 4}) {
      if (nibble == kEndNibble) return;
      const auto place = static_cast<std::size_t>(nibble);
      if (place < kDigits.size()) digits.push_back(kDigits[place]);
    }
  }
}

std::size_t PackDigits(std::u16string_view digits, std::span<std::uint8_t> out) {
  std::fill(out.begin(), out.end(), std::uint8_t{0xFF});
  for (std::size_t i = 0; i < digits.size() && i / 2 < out.size(); ++i) {
    const std::uint8_t nibble = Nibble(digits[i]);
    std::uint8_t& byte = out[i / 2];
    byte = i % 2 == 0 ? static_cast<std::uint8_t>(0xF0 | nibble)
                      : static_cast<std::uint8_t>((nibble << 4) | (byte & 0x0F));
  }
  return (digits.size() + 1) / 2;
}

std::u16string AddressText(std::u16string_view digits, std::uint8_t tonNpi) {
  std::u16string text(digits);
  if (!IsInternational(tonNpi) || digits.empty()) return text;
  const std::size_t place = PlusPlace(digits);
  if (place != kNowhere) text.insert(place, 1, u'+');
  return text;
}

bool ParseAddress(std::u16string_view address, DialNumber& number) {
  DialNumber parsed;
  std::optional<std::size_t> plus;
  for (const char16_t character : address) {
    if (character == u'+') {
      if (plus) return false;
      plus = parsed.digits.size();
      continue;
    }
    const char16_t digit = FoldDigit(character);
    if (kDigits.find(digit) == std::u16string_view::npos) return false;
    parsed.digits.push_back(digit);
  }
  if (plus) {
    if (parsed.digits.empty() || (*plus != 0 && *plus != PlusPlace(parsed.digits))) return false;
    parsed.tonNpi = kTonNpiInternational;
  }
  number = std::move(parsed);
  return true;
}

}  // namespace kelpin::device::card
