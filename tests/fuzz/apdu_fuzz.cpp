// Links: kelpin_softcard

// A sequence of commands against a small card. Every input is a list of commands, each a length
// byte and that many bytes; a length of FF resets the card.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "device/softcard/apdu_interpreter.h"
#include "device/softcard/card_image.h"
#include "device/softcard/image_reader.h"
#include "device/softcard/image_writer.h"

namespace {

using namespace kelpin::device::softcard;

constexpr char kCard[] = R"({"format": "kelpin card image 1", "classes": "both",
  "pins": {"pin1": {"code": "1234", "puk": "12345678"}, "pin2": {"code": "5678"}},
  "mf": {"files": [
    {"id": "2FE2", "access": {"read": "ALW", "update": "ALW"}, "structure": "transparent",
     "data": "00112233445566778899"},
    {"id": "7F10", "files": [
      {"id": "6F3A", "access": {"read": "ALW", "update": "ALW", "deactivate": "ALW",
                                "activate": "ALW"},
       "structure": "linearFixed", "recordLength": 16, "recordCount": 5,
       "records": ["4142038121F3FFFFFFFFFFFFFFFFFFFF"]},
      {"id": "6F44", "access": {"read": "PIN1", "update": "ALW"}, "structure": "cyclic",
       "recordLength": 2, "recordCount": 3, "records": []},
      {"id": "5F3A", "files": [{"id": "4F30", "sfi": 3, "link": "3F00/7F10/6F3A"}]}]},
    {"aid": "A0000000871002", "files": [
      {"id": "6F40", "fcp": "6200", "structure": "transparent", "data": "11"}]},
    {"aid": "A0000000871004", "files": []}]}})";

void Check(bool holds) {
  if (!holds) {
    std::abort();
  }
}

// Sizes that no command may change.
std::vector<std::size_t> Sizes(const CardImage& image) {
  std::vector<std::size_t> sizes;
  for (const char* path : {"3F00/2FE2", "3F00/7F10/6F3A", "3F00/7F10/6F44"}) {
    sizes.push_back(image.Find(path)->content->bytes.size());
  }
  return sizes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CardImage image;
  std::string error;
  Check(ReadImage(kCard, image, error));
  if (size > 0 && (data[0] & 1) != 0) {
    image.protocol = Protocol::kT1;
  }
  int saves = 0;
  ApduInterpreter card(image, [&saves] { return ++saves % 5 != 0; });
  const std::vector<std::size_t> sizes = Sizes(image);
  std::span<const std::uint8_t> rest(data, size);
  rest = rest.subspan(size > 0 ? 1 : 0);
  while (!rest.empty()) {
    const std::size_t length = rest[0];
    rest = rest.subspan(1);
    if (length == 0xFF) {
      card.Reset();
      continue;
    }
    const std::span<const std::uint8_t> command = rest.first(std::min(length, rest.size()));
    rest = rest.subspan(command.size());
    const std::vector<std::uint8_t> answer = card.Process(command);
    Check(answer.size() >= 2 && answer.size() <= 258);
    Check(answer[answer.size() - 2] >= 0x60 && answer[answer.size() - 2] <= 0x9F);
    Check(image.pin1.tries >= 0 && image.pin1.tries <= Pin::kTries);
    Check(image.pin1.pukTries >= 0 && image.pin1.pukTries <= Pin::kPukTries);
  }
  Check(Sizes(image) == sizes);
  // Whatever the card holds now, its image can be read again.
  CardImage again;
  Check(ReadImage(WriteImage(image), again, error));
  return 0;
}
