#include "device/desktop/steady_clock.h"

#include <chrono>
#include <thread>

namespace kelpin::device::desktop {

std::uint64_t SteadyClock::Milliseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

void SteadyClock::Sleep(std::uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace kelpin::device::desktop
