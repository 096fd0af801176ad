#include "device/desktop/utf8.h"

#include <algorithm>

#include "platform/printable.h"
#include "platform/utf8.h"

namespace kelpin::device::desktop {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

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
  std::replace_if(line.begin(), line.end(), platform::IsSteering,
                  static_cast<char16_t>(kReplacement));
  return Utf8(line);
}

}  // namespace kelpin::device::desktop
