#include "device/desktop/utf8.h"

#include <algorithm>

#include "platform/utf8.h"

namespace kelpin::device::desktop {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool SteersTerminal(char16_t unit) {
  const auto within = [unit](char16_t first, char16_t last) {
    return unit >= first && unit <= last;
  };
  return unit < 0x20 || within(0x7F, 0x9F) ||               // C0, DEL and C1
         within(0x2028, 0x202E) || within(0x2066, 0x2069);  // line ends and directions
}

}  // namespace

std::string Utf8(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    AppendUtf8(TakeUtf16(text).value_or(kReplacement), bytes);
  }
  return bytes;
}

std::string Utf8Line(std::u16string_view text) {
  std::u16string line(text);
  std::replace_if(line.begin(), line.end(), SteersTerminal, static_cast<char16_t>(kReplacement));
  return Utf8(line);
}

}  // namespace kelpin::device::desktop
