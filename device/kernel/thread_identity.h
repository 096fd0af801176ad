#pragma once

#include <cstdint>

namespace kelpin::device::kernel {

// A thread of this machine, told apart from a later one of the same number.
struct ThreadIdentity {
  std::int32_t process = 0;
  std::int32_t thread = 0;
  std::uint64_t start = 0;  // clock ticks after boot; 0 when it cannot be known
};

ThreadIdentity CurrentThread();

// False when the thread is known to have ended. A zombie has ended.
bool IsAlive(const ThreadIdentity& thread);

}  // namespace kelpin::device::kernel
