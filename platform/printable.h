#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "platform/utf8.h"

namespace kelpin::platform {

// Whether the character, printed as it is, would steer a terminal, break the line or turn it round.
constexpr bool IsSteering(char32_t character) {
  const auto within = [character](char32_t first, char32_t last) {
    return character >= first && character <= last;
  };
  return character < 0x20 || within(0x7F, 0x9F) ||          // C0, DEL and C1
         within(0x2028, 0x202E) || within(0x2066, 0x2069);  // line ends and directions
}

// What came from outside, a file's name above all, for a message on one line: characters that
// would steer what shows it are written as \x1B or \u202E, bytes that are no UTF-8 as \xFF. Those
// in `kept` stay as they are.
inline std::string Printable(std::string_view text, std::string_view kept = {}) {
  std::string shown;
  char escaped[16];
  while (!text.empty()) {
    const std::string_view whole = text;
    const std::optional<char32_t> character = TakeUtf8(text);
    const std::string_view bytes = whole.substr(0, whole.size() - text.size());
    const bool keep = bytes.size() == 1 && kept.find(bytes.front()) != std::string_view::npos;
    if (keep || (character.has_value() && !IsSteering(*character))) {
      shown += bytes;
    } else if (character.value_or(0) < 0x80) {
      const unsigned byte = static_cast<std::uint8_t>(bytes.front());
      std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
      shown += escaped;
    } else {
      std::snprintf(escaped, sizeof escaped, "\\u%04X", static_cast<unsigned>(*character));
      shown += escaped;
    }
  }
  return shown;
}

// The same of a message that may have several lines.
inline std::string PrintableLines(std::string_view text) {
  return Printable(text, "\n");
}

}  // namespace kelpin::platform
