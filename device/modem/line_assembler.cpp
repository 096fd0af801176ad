#include "device/modem/line_assembler.h"

#include <algorithm>

namespace kelpin::device::modem {
namespace {

constexpr std::uint8_t kDelete = 0x7F;

bool IsText(std::uint8_t byte) {
  return byte >= ' ' && byte != kDelete;
}

}  // namespace

void LineAssembler::Add(std::span<const std::uint8_t> bytes, const LineEnded& ended) {
  for (const std::uint8_t byte : bytes) {
    if (byte == '\r' || byte == '\n') {
      if (!line_.empty() && !tooLong_) ended(line_);
      Clear();
    } else if (line_.size() >= kLongestLine) {
      tooLong_ = true;
    } else if (IsText(byte)) {
      line_.push_back(static_cast<char>(byte));
    }
  }
}

void LineAssembler::Clear() {
  std::fill(line_.begin(), line_.end(), '\0');  // the echo of a code is not to stay
  line_.clear();
  tooLong_ = false;
}

}  // namespace kelpin::device::modem
