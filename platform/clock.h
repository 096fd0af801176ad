#pragma once

#include <cstdint>

namespace kelpin::platform {

// Any thread.
class Clock {
 public:
  virtual ~Clock() = default;
  // Milliseconds since some fixed moment; never goes back.
  virtual std::uint64_t Milliseconds() = 0;
  virtual void Sleep(std::uint32_t milliseconds) = 0;
};

}  // namespace kelpin::platform
