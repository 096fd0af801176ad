#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelpin::test {

// UTF-8 of a text; lone surrogates become '?'.
std::string Utf8(std::u16string_view text);

// "0x" and upper-case digits.
std::string Hex(std::uint32_t value);

// "01 A0 FF" of `size` bytes.
std::string HexBytes(const void* data, std::size_t size);

inline std::string ArgumentText(std::u16string_view text) {
  return Utf8(text);
}
inline std::string ArgumentText(const char* text) {
  return text;
}
inline std::string ArgumentText(const std::string& text) {
  return text;
}
template <std::integral T>
std::string ArgumentText(T value) {
  return std::to_string(value);
}

// A line of the journal: CallText("SimDeletePhonebookEntry", 1, 16, 5) is
// "SimDeletePhonebookEntry(1, 16, 5)".
template <typename... Arguments>
std::string CallText(std::string_view name, const Arguments&... arguments) {
  std::string text(name);
  text += '(';
  bool first = true;
  ((text += first ? "" : ", ", text += ArgumentText(arguments), first = false), ...);
  text += ')';
  return text;
}

}  // namespace kelpin::test
