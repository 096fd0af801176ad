#pragma once

#include <string>

namespace kelpin {

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

}  // namespace kelpin
