// What comes in on an AT port.
// Links: kelpin_modem
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/modem/at_answer.h"
#include "device/modem/line_assembler.h"

using namespace kelpin::device::modem;

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

std::vector<std::string> Lines(std::span<const std::uint8_t> bytes, std::size_t piece) {
  LineAssembler assembler;
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    assembler.Add(bytes.subspan(at, std::min(piece, bytes.size() - at)),
                  [&lines](std::string_view line) { lines.emplace_back(line); });
  }
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::string> lines = Lines({data, size}, size == 0 ? 1 : size);
  // However the bytes come in, the lines are the same.
  Require(lines == Lines({data, size}, 1));
  Require(lines == Lines({data, size}, 7));
  for (const std::string& line : lines) {
    Require(!line.empty() && line.size() <= LineAssembler::kLongestLine);
    Require(line.find_first_of("\r\n") == std::string::npos);
    if (const auto last = ParseLastLine(line)) {
      Require(last->end == AtEnd::kOk || last->end == AtEnd::kError || last->end == AtEnd::kCme);
    }
    for (const char* name : {"+CSIM", "+CGLA", "+CRSM", "+CCHO", "+CPIN", "+CUAD"}) {
      const auto value = Behind(line, name);
      if (!value) continue;
      Require(!SplitValues(*value).empty());
      if (const auto response = ParseApduAnswer(*value)) {
        Require(response->size() >= 2 && response->size() <= 258);
        Require(FromHex(ToHex(*response)) == response);
      }
      if (const auto response = ParseFileAnswer(*value)) {
        Require(response->size() >= 2 && response->size() <= 258);
      }
    }
  }
  return 0;
}
