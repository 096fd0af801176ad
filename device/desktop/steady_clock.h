#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace kelpin::device::desktop {

// The machine's monotonic clock.
class SteadyClock final : public platform::Clock {
 public:
  std::uint64_t Milliseconds() override;
  void Sleep(std::uint32_t milliseconds) override;
};

}  // namespace kelpin::device::desktop
