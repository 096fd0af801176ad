#pragma once

#include <string>
#include <string_view>

#include "device/softcard/card_image.h"

namespace kelpin::device::softcard {

inline constexpr std::string_view kImageFormat = "kelpin card image 1";
// A larger text is refused unread.
inline constexpr std::size_t kMaxImageText = 4u << 20;

// Reads the JSON text of a card image (its members: image_writer.h). Strict: an unknown or
// repeated member, a wrong type, hex that is none, a size out of range, a link to nowhere are
// refused. On failure `error` says where and why ("/mf/files/3/records/17: 31 bytes, …") and
// `image` is left as it was.
bool ReadImage(std::string_view text, CardImage& image, std::string& error);

}  // namespace kelpin::device::softcard
