#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace kelpin::sim {

// A queue of 32-bit locations: appended to at the end, taken from the front. It doubles when it is
// full and never shrinks. Not guarded.
class IndexList {
 public:
  // The capacity that follows `capacity` when the list is full: 1 after 0, else twice as much; 0
  // when the list may not grow any more.
  static std::uint32_t GrownCapacity(std::uint32_t capacity);

  // 1 on success; 0 when the list cannot grow, which leaves it as it was.
  int Append(std::uint32_t index);
  // Takes the oldest index out; 0 when there is none, which leaves `index` as it was, else 1.
  int TakeFirst(std::uint32_t& index);

  std::uint32_t Count() const { return count_; }
  std::uint32_t Capacity() const { return capacity_; }
  // `at` counts from 0, the oldest, and is below Count().
  std::uint32_t operator[](std::size_t at) const { return data_.get()[at]; }

 private:
  struct Free {
    void operator()(std::uint32_t* data) const { std::free(data); }
  };

  std::unique_ptr<std::uint32_t, Free> data_;
  std::uint32_t count_ = 0;
  std::uint32_t capacity_ = 0;
};

}  // namespace kelpin::sim
