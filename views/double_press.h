#pragma once

#include <cstdint>
#include <optional>

#include "platform/clock.h"

namespace kelpin::views {

// Two quick presses on a row are reported as a click and then as an activation. Where both do the
// same, and it is to be done once, the activation that follows a click at once is left out.
class DoublePress {
 public:
  static constexpr std::uint64_t kTime = 600;  // milliseconds

  void Clicked(platform::Clock& clock) { clickedAt_ = clock.Milliseconds(); }
  // Whether an activation now is the second half of a double press.
  bool IsSecondPress(platform::Clock& clock) const {
    return clickedAt_ && clock.Milliseconds() - *clickedAt_ < kTime;
  }

 private:
  std::optional<std::uint64_t> clickedAt_;
};

}  // namespace kelpin::views
