#include "device/registry/reg_text.h"

#include "platform/utf8.h"

namespace kelpin::device::registry {
namespace {

bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Bytes of the sequence that `lead` opens and the lowest character that needs as many; 0 for a
// byte that opens none.
struct Utf8Form {
  std::size_t length;
  char32_t lowest;
  char32_t leadBits;
};

Utf8Form FormOf(std::uint8_t lead) {
  if (lead < 0x80) return {1, 0, lead};
  if (lead >= 0xC2 && lead <= 0xDF) return {2, 0x80, lead & 0x1Fu};
  if (lead >= 0xE0 && lead <= 0xEF) return {3, 0x800, lead & 0x0Fu};
  if (lead >= 0xF0 && lead <= 0xF4) return {4, 0x10000, lead & 0x07u};
  return {0, 0, 0};
}

bool Within(char16_t unit, char16_t first, char16_t last) {
  return unit >= first && unit <= last;
}

// Blocks where a capital stands right before its small letter.
bool IsCapitalOfPair(char16_t unit) {
  const bool even = unit % 2 == 0;
  if (Within(unit, 0x0100, 0x012F) || Within(unit, 0x0132, 0x0137) ||
      Within(unit, 0x014A, 0x0177) || Within(unit, 0x0460, 0x0481) ||
      Within(unit, 0x048A, 0x04BF) || Within(unit, 0x04D0, 0x052F)) {
    return even;
  }
  return (Within(unit, 0x0139, 0x0148) || Within(unit, 0x0179, 0x017E)) && !even;
}

char16_t FoldUnit(char16_t unit) {
  const auto moved = [unit](int by) { return static_cast<char16_t>(unit + by); };
  if (unit < 0x80) return Within(unit, u'A', u'Z') ? moved(32) : unit;
  if (Within(unit, 0x00C0, 0x00DE) && unit != 0x00D7) return moved(32);
  if (IsCapitalOfPair(unit)) return moved(1);
  if (unit == 0x0178) return 0x00FF;
  if (unit == 0x0386) return 0x03AC;
  if (Within(unit, 0x0388, 0x038A)) return moved(37);
  if (unit == 0x038C) return 0x03CC;
  if (Within(unit, 0x038E, 0x038F)) return moved(63);
  if (Within(unit, 0x0391, 0x03AB) && unit != 0x03A2) return moved(32);
  if (Within(unit, 0x0400, 0x040F)) return moved(80);
  if (Within(unit, 0x0410, 0x042F)) return moved(32);
  return unit;
}

}  // namespace

bool Utf16FromUtf8(std::string_view bytes, std::u16string& text) {
  text.clear();
  text.reserve(bytes.size());
  std::size_t at = 0;
  while (at < bytes.size()) {
    const Utf8Form form = FormOf(static_cast<std::uint8_t>(bytes[at]));
    if (form.length == 0 || bytes.size() - at < form.length) return false;
    char32_t character = form.leadBits;
    for (std::size_t i = 1; i < form.length; ++i) {
      const auto next = static_cast<std::uint8_t>(bytes[at + i]);
      if ((next & 0xC0) != 0x80) return false;
      character = (character << 6) | (next & 0x3Fu);
    }
    if (character < form.lowest || character > 0x10FFFF || IsHighSurrogate(character) ||
        IsLowSurrogate(character)) {
      return false;
    }
    if (character >= 0x10000) {
      text.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
    } else {
      text.push_back(static_cast<char16_t>(character));
    }
    at += form.length;
  }
  return true;
}

bool Utf8FromUtf16(std::u16string_view text, std::string& bytes) {
  bytes.clear();
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    if (IsLowSurrogate(character)) return false;
    if (IsHighSurrogate(character)) {
      if (i + 1 == text.size() || !IsLowSurrogate(text[i + 1])) return false;
      ++i;
      character = 0x10000 + ((character - 0xD800) << 10) + (text[i] - 0xDC00u);
    }
    AppendUtf8(character, bytes);
  }
  return true;
}

std::u16string Utf16FromLittleEndian(std::span<const std::uint8_t> bytes) {
  std::u16string text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    text.push_back(static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8)));
  }
  return text;
}

std::vector<std::uint8_t> StringValueBytes(std::u16string_view text) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(2 * text.size() + 2);
  for (const char16_t unit : text) {
    bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  bytes.insert(bytes.end(), {0, 0});
  return bytes;
}

std::u16string FoldCase(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& unit : folded) unit = FoldUnit(unit);
  return folded;
}

}  // namespace kelpin::device::registry
