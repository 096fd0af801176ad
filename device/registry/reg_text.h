#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::device::registry {

// Strict in both directions: false, and the output in an unspecified state, at the first
// malformed sequence, overlong form or unpaired surrogate.
[[nodiscard]] bool Utf16FromUtf8(std::string_view bytes, std::u16string& text);
[[nodiscard]] bool Utf8FromUtf16(std::u16string_view text, std::string& bytes);

std::u16string Utf16FromLittleEndian(std::span<const std::uint8_t> bytes);  // an odd byte is left
// A string value's bytes: UTF-16LE and the terminator.
std::vector<std::uint8_t> StringValueBytes(std::u16string_view text);

// The text with upper and lower case made one: Latin, Greek and Cyrillic letters.
std::u16string FoldCase(std::u16string_view text);

}  // namespace kelpin::device::registry
