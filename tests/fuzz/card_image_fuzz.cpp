// Links: kelpin_softcard

// The text of a card image from outside. What is taken is written, read again, and must be the
// same; and a card made of it answers.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "device/softcard/apdu_interpreter.h"
#include "device/softcard/card_image.h"
#include "device/softcard/image_reader.h"
#include "device/softcard/image_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelpin::device::softcard;
  CardImage image;
  std::string error;
  if (!ReadImage(std::string_view(reinterpret_cast<const char*>(data), size), image, error)) {
    if (error.empty()) {
      std::abort();  // a refusal without a reason
    }
    return 0;
  }
  const std::string text = WriteImage(image);
  CardImage again;
  if (!ReadImage(text, again, error) || WriteImage(again) != text) {
    std::abort();
  }
  ApduInterpreter card(image, [] { return true; });
  const std::vector<std::uint8_t> status = {0x80, 0xF2, 0x00, 0x0C};
  card.Process(status);
  for (const auto& file : image.mf->children) {
    const std::vector<std::uint8_t> select = {0x00,
                                              0xA4,
                                              0x00,
                                              0x04,
                                              0x02,
                                              static_cast<std::uint8_t>(file->id >> 8),
                                              static_cast<std::uint8_t>(file->id & 0xFF)};
    card.Process(select);
    const std::vector<std::uint8_t> fetch = {0x00, 0xC0, 0x00, 0x00, 0x00};
    card.Process(fetch);
    const std::vector<std::uint8_t> read = {0x00, 0xB2, 0x01, 0x04, 0x00};
    card.Process(read);
    const std::vector<std::uint8_t> readBinary = {0x00, 0xB0, 0x00, 0x00, 0x00};
    card.Process(readBinary);
  }
  return 0;
}
