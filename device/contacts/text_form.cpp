#include "device/contacts/text_form.h"

#include <algorithm>
#include <cstdint>

#include "platform/utf8.h"

namespace kelpin::device::contacts {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

}  // namespace

std::string ToUtf8(std::u16string_view text) {
  text = text.substr(0, text.find(u'\0'));
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    AppendUtf8(TakeUtf16(text).value_or(kReplacement), bytes);
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
    AppendUtf16(TakeUtf8(bytes).value_or(kReplacement), text);
  }
  return text;
}

}  // namespace kelpin::device::contacts
