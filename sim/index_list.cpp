#include "sim/index_list.h"

#include <cstring>

namespace kelpin::sim {
namespace {

constexpr std::uint32_t kHalfSignBit = 0x40000000;
constexpr std::uint32_t kCapacityLimit = 0x1FFFFFFF;

}  // namespace

std::uint32_t IndexList::GrownCapacity(std::uint32_t capacity) {
  if (capacity == 0) return 1;
  // Its double would have the sign bit.
  if ((capacity & kHalfSignBit) != 0) return 0;
  const std::uint32_t doubled = capacity * 2;
  return doubled > kCapacityLimit ? 0 : doubled;
}

int IndexList::Append(std::uint32_t index) {
  if (count_ == capacity_) {
    const std::uint32_t grown = GrownCapacity(capacity_);
    if (grown == 0) return 0;
    void* moved = std::realloc(data_.get(), grown * sizeof(std::uint32_t));
    if (moved == nullptr) return 0;
    static_cast<void>(data_.release());  // realloc has freed or kept it
    data_.reset(static_cast<std::uint32_t*>(moved));
    capacity_ = grown;
  }
  data_.get()[count_++] = index;
  return 1;
}

int IndexList::TakeFirst(std::uint32_t& index) {
  if (count_ == 0) return 0;
  index = data_.get()[0];
  --count_;
  std::memmove(data_.get(), data_.get() + 1, count_ * sizeof(std::uint32_t));
  return 1;
}

}  // namespace kelpin::sim
