#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelpin {

constexpr bool IsFirstOfPair(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool IsSecondOfPair(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

// One character, at most U+10FFFF, as UTF-8 (RFC 3629) at the end of `bytes`.
inline void AppendUtf8(char32_t character, std::string& bytes) {
  const auto put = [&bytes](char32_t value) { bytes.push_back(static_cast<char>(value)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6));
    put(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12));
    put(0x80 | ((character >> 6) & 0x3F));
    put(0x80 | (character & 0x3F));
  } else {
    put(0xF0 | (character >> 18));
    put(0x80 | ((character >> 12) & 0x3F));
    put(0x80 | ((character >> 6) & 0x3F));
    put(0x80 | (character & 0x3F));
  }
}

// The same as UTF-16.
inline void AppendUtf16(char32_t character, std::u16string& text) {
  if (character >= 0x10000) {
    text.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
  } else {
    text.push_back(static_cast<char16_t>(character));
  }
}

// Takes the first character off `bytes`, which are not empty. Where they begin with none it takes
// one byte and gives nothing.
inline std::optional<char32_t> TakeUtf8(std::string_view& bytes) {
  struct Form {
    std::size_t length;
    char32_t least;  // the lowest character that needs as many bytes
  };
  const auto formOf = [](std::uint8_t lead) -> Form {
    if (lead < 0x80) return {1, 0};
    if (lead >= 0xC2 && lead <= 0xDF) return {2, 0x80};
    if (lead >= 0xE0 && lead <= 0xEF) return {3, 0x800};
    if (lead >= 0xF0 && lead <= 0xF4) return {4, 0x10000};
    return {0, 0};
  };
  const std::string_view whole = bytes;
  const auto lead = static_cast<std::uint8_t>(whole.front());
  bytes.remove_prefix(1);
  const Form form = formOf(lead);
  if (form.length == 1) return lead;
  if (form.length == 0 || whole.size() < form.length) return std::nullopt;
  char32_t character = lead & (0xFFu >> (form.length + 1));
  for (const char next : whole.substr(1, form.length - 1)) {
    const auto byte = static_cast<std::uint8_t>(next);
    if ((byte & 0xC0) != 0x80) return std::nullopt;
    character = (character << 6) | (byte & 0x3Fu);
  }
  if (character < form.least || character > 0x10FFFF || IsFirstOfPair(character) ||
      IsSecondOfPair(character)) {
    return std::nullopt;
  }
  bytes = whole.substr(form.length);
  return character;
}

// The same of a text; half a surrogate pair is no character.
inline std::optional<char32_t> TakeUtf16(std::u16string_view& text) {
  const char16_t unit = text.front();
  text.remove_prefix(1);
  if (IsFirstOfPair(unit) && !text.empty() && IsSecondOfPair(text.front())) {
    const char32_t character = 0x10000u + ((unit - 0xD800u) << 10) + (text.front() - 0xDC00u);
    text.remove_prefix(1);
    return character;
  }
  if (IsFirstOfPair(unit) || IsSecondOfPair(unit)) return std::nullopt;
  return unit;
}

}  // namespace kelpin
