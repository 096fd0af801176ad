#pragma once

#include <string>
#include <string_view>

namespace kelpin::device::desktop {

// Half a surrogate pair becomes U+FFFD.
std::string Utf8(std::u16string_view text);

// For a line of a terminal: what would steer it, break the line or turn it round becomes U+FFFD.
std::string Utf8Line(std::u16string_view text);

}  // namespace kelpin::device::desktop
