#include "device/contacts/text_form.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/utf8.h"

namespace kelpin::device::contacts {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

bool IsFirstOfPair(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsSecondOfPair(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Takes one character from the front of `text`.
char32_t TakeCharacter(std::u16string_view& text) {
  const char16_t unit = text.front();
  text.remove_prefix(1);
  if (IsFirstOfPair(unit) && !text.empty() && IsSecondOfPair(text.front())) {
    const char32_t character = 0x10000u + ((unit - 0xD800u) << 10) + (text.front() - 0xDC00u);
    text.remove_prefix(1);
    return character;
  }
  return IsFirstOfPair(unit) || IsSecondOfPair(unit) ? kReplacement : unit;
}

// How many bytes the character that starts with `lead` takes, and the least it may then be; 0 for
// a byte that starts none.
struct Sequence {
  std::size_t length = 0;
  char32_t least = 0;
};

Sequence SequenceOf(std::uint8_t lead) {
  if (lead < 0x80) return {1, 0};
  if (lead >= 0xC2 && lead <= 0xDF) return {2, 0x80};
  if (lead >= 0xE0 && lead <= 0xEF) return {3, 0x800};
  if (lead >= 0xF0 && lead <= 0xF4) return {4, 0x10000};
  return {};
}

// The character at the front of `bytes`, whose length becomes `length`; U+FFFD and 1 when there is
// none.
char32_t CharacterAt(std::string_view bytes, std::size_t& length) {
  const auto lead = static_cast<std::uint8_t>(bytes.front());
  const Sequence sequence = SequenceOf(lead);
  length = 1;
  if (sequence.length == 1) return lead;
  if (sequence.length == 0 || bytes.size() < sequence.length) return kReplacement;
  char32_t character = lead & (0xFFu >> (sequence.length + 1));
  for (std::size_t i = 1; i < sequence.length; ++i) {
    const auto byte = static_cast<std::uint8_t>(bytes[i]);
    if ((byte & 0xC0) != 0x80) return kReplacement;
    character = (character << 6) | (byte & 0x3Fu);
  }
  const bool halfPair = character >= 0xD800 && character <= 0xDFFF;
  if (character < sequence.least || character > 0x10FFFF || halfPair) return kReplacement;
  length = sequence.length;
  return character;
}

}  // namespace

std::string ToUtf8(std::u16string_view text) {
  text = text.substr(0, text.find(u'\0'));
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    const char32_t character = TakeCharacter(text);
    AppendUtf8(character, bytes);
  }
  return bytes;
}

std::u16string ToUtf16(std::string_view bytes) {
  // Most texts are ASCII, all or most of them.
  const auto* const other = std::find_if(bytes.begin(), bytes.end(), [](char byte) {
    return static_cast<std::uint8_t>(byte) >= 0x80;
  });
  std::u16string text(bytes.begin(), other);
  bytes.remove_prefix(text.size());
  text.reserve(text.size() + bytes.size());
  while (!bytes.empty()) {
    std::size_t length = 1;
    const char32_t character = CharacterAt(bytes, length);
    bytes.remove_prefix(length);
    if (character >= 0x10000) {
      text.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
    } else {
      text.push_back(static_cast<char16_t>(character));
    }
  }
  return text;
}

}  // namespace kelpin::device::contacts
