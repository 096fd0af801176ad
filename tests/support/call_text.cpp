#include "tests/support/call_text.h"

#include <cstdio>

namespace kelpin::test {
namespace {

void AppendUtf8(std::string& out, std::uint32_t c) {
  const auto put = [&out](std::uint32_t byte) { out += static_cast<char>(byte); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | (c >> 6));
    put(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    put(0xE0 | (c >> 12));
    put(0x80 | ((c >> 6) & 0x3F));
    put(0x80 | (c & 0x3F));
  } else {
    put(0xF0 | (c >> 18));
    put(0x80 | ((c >> 12) & 0x3F));
    put(0x80 | ((c >> 6) & 0x3F));
    put(0x80 | (c & 0x3F));
  }
}

}  // namespace

std::string Utf8(std::u16string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::uint32_t unit = text[i];
    const bool high = unit >= 0xD800 && unit < 0xDC00;
    const bool low = unit >= 0xDC00 && unit < 0xE000;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
      ++i;
      AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (text[i] - 0xDC00U));
    } else {
      AppendUtf8(out, high || low ? std::uint32_t{'?'} : unit);
    }
  }
  return out;
}

std::string Hex(std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%X", value);
  return text;
}

std::string HexBytes(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  std::string out;
  for (std::size_t i = 0; i < size; ++i) {
    char text[4];
    std::snprintf(text, sizeof(text), i == 0 ? "%02X" : " %02X", bytes[i]);
    out += text;
  }
  return out;
}

}  // namespace kelpin::test
