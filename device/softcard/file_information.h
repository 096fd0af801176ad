#pragma once

#include <cstdint>
#include <vector>

#include "device/softcard/card_image.h"

namespace kelpin::device::softcard {

// The FCP template a SELECT or STATUS of class 00 answers (TS 102 221 11.1.1.3): the file's own
// where the image gives one, else made from what the file is.
std::vector<std::uint8_t> FileControlParameters(const CardImage& image, const CardFile& file);

// The answer of class A0 (TS 51.011 9.2.1): 22 bytes for a directory, 15 for a file.
std::vector<std::uint8_t> GsmFileInformation(const CardImage& image, const CardFile& file);

}  // namespace kelpin::device::softcard
