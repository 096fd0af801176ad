#include "device/registry/reg_text.h"

#include <optional>

#include "platform/utf8.h"

namespace kelpin::device::registry {
namespace {

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
  while (!bytes.empty()) {
    const std::optional<char32_t> character = TakeUtf8(bytes);
    if (!character.has_value()) return false;
    AppendUtf16(*character, text);
  }
  return true;
}

bool Utf8FromUtf16(std::u16string_view text, std::string& bytes) {
  bytes.clear();
  bytes.reserve(text.size());
  while (!text.empty()) {
    const std::optional<char32_t> character = TakeUtf16(text);
    if (!character.has_value()) return false;
    AppendUtf8(*character, bytes);
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
