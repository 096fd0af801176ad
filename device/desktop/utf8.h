#pragma once

#include <string>
#include <string_view>

namespace kelpin::device::desktop {

// Half a surrogate pair becomes U+FFFD.
std::string Utf8(std::u16string_view text);

}  // namespace kelpin::device::desktop
