#pragma once

#include <cstddef>
#include <string_view>

namespace kelpin::app {

// A code of the card between who typed it and the card. Gone from memory with the object, or when
// it is cleared; never copied.
class SecretCode {
 public:
  static constexpr std::size_t kLongest = 8;

  SecretCode() = default;
  ~SecretCode() { Clear(); }
  SecretCode(const SecretCode&) = delete;
  SecretCode& operator=(const SecretCode&) = delete;

  // False, and nothing kept, when `text` is not `shortest` to 8 digits.
  template <typename Char>
  bool Set(std::basic_string_view<Char> text, std::size_t shortest) {
    Clear();
    if (text.size() < shortest || text.size() > kLongest) return false;
    for (const Char unit : text) {
      if (unit < Char{'0'} || unit > Char{'9'}) {
        Clear();
        return false;
      }
      digits_[size_++] = static_cast<char>(unit);
    }
    return true;
  }
  void Clear() {
    volatile char* const bytes = digits_;
    for (std::size_t at = 0; at < kLongest; ++at) bytes[at] = 0;
    size_ = 0;
  }
  bool Empty() const { return size_ == 0; }
  std::string_view Digits() const { return {digits_, size_}; }

 private:
  char digits_[kLongest] = {};
  std::size_t size_ = 0;
};

}  // namespace kelpin::app
