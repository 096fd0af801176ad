#pragma once

#include <string>
#include <vector>

namespace kelpin::device::desktop {

// Starts the first argument (looked for on PATH) with exactly these arguments and no shell, in a
// session of its own, its input empty and its output going to `output`, to this program's when that
// is below 0. True when it runs; it is never left a zombie.
[[nodiscard]] bool StartDetached(const std::vector<std::string>& arguments, int output = -1);

}  // namespace kelpin::device::desktop
