#pragma once

#include <string>
#include <string_view>

namespace kelpin::device::contacts {

// A text up to a NUL; half a surrogate pair becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);

// What is no UTF-8 becomes U+FFFD, one for each byte.
std::u16string ToUtf16(std::string_view bytes);

}  // namespace kelpin::device::contacts
