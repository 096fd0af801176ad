#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace kelpin::device::card {

// The codes of a card (TS 102 221 9.3): digits, 4 to 8 of a PIN and 8 of a PUK.
inline constexpr std::size_t kPinBytes = 8;

inline bool IsDigits(std::string_view code) {
  return std::all_of(code.begin(), code.end(),
                     [](char digit) { return digit >= '0' && digit <= '9'; });
}

inline bool IsPin(std::string_view code) {
  return code.size() >= 4 && code.size() <= kPinBytes && IsDigits(code);
}

inline bool IsPuk(std::string_view code) {
  return code.size() == kPinBytes && IsDigits(code);
}

// A code on its way to the card: kept apart from its giver, and gone with the object.
class CardCode {
 public:
  // What is longer than any code is cut to one that is none.
  explicit CardCode(std::string_view digits) : size_(std::min(digits.size(), sizeof(digits_))) {
    std::copy_n(digits.begin(), size_, digits_);
  }
  ~CardCode() {
    volatile char* const bytes = digits_;
    for (std::size_t at = 0; at < sizeof(digits_); ++at) bytes[at] = 0;
  }
  CardCode(const CardCode&) = delete;
  CardCode& operator=(const CardCode&) = delete;
  std::string_view Digits() const { return {digits_, size_}; }

 private:
  char digits_[kPinBytes + 1] = {};
  std::size_t size_;
};

}  // namespace kelpin::device::card
