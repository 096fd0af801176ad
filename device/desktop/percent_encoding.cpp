#include "device/desktop/percent_encoding.h"

#include <cstdio>

namespace kelpin::device::desktop {

bool IsUnreserved(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~';
}

std::string PercentEncoded(std::string_view text, std::string_view kept) {
  std::string encoded;
  for (const char c : text) {
    if (IsUnreserved(c) || kept.find(c) != std::string_view::npos) {
      encoded.push_back(c);
    } else {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned char>(c));
      encoded += escaped;
    }
  }
  return encoded;
}

}  // namespace kelpin::device::desktop
