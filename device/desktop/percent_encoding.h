#pragma once

#include <string>
#include <string_view>

namespace kelpin::device::desktop {

// Letters, digits and "-._~" (RFC 3986 2.3).
bool IsUnreserved(char c);

// What is not unreserved, and not in `kept`, as %XX.
std::string PercentEncoded(std::string_view text, std::string_view kept = "/");

}  // namespace kelpin::device::desktop
