#include "device/desktop/utf8.h"

#include <algorithm>
#include <cstddef>

#include "platform/utf8.h"

namespace kelpin::device::desktop {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsSurrogate(char16_t unit, char16_t first) {
  return unit >= first && unit <= first + 0x3FF;
}

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
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    if (IsSurrogate(text[i], 0xD800) && i + 1 < text.size() && IsSurrogate(text[i + 1], 0xDC00)) {
      character = 0x10000 + ((character - 0xD800) << 10) + (text[i + 1] - 0xDC00u);
      ++i;
    } else if (character >= 0xD800 && character <= 0xDFFF) {
      character = kReplacement;
    }
    AppendUtf8(character, bytes);
  }
  return bytes;
}

std::string Utf8Line(std::u16string_view text) {
  std::u16string line(text);
  std::replace_if(line.begin(), line.end(), SteersTerminal, static_cast<char16_t>(kReplacement));
  return Utf8(line);
}

}  // namespace kelpin::device::desktop
