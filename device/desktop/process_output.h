#pragma once

#include <string>
#include <vector>

namespace kelpin::device::desktop {

// Runs the first argument (looked for on PATH) with exactly these arguments and no shell, its input
// empty, and returns the start of what it printed, without the last line's end; empty when it
// cannot be started or printed nothing within `milliseconds`. One that goes on then, or prints
// more than 4096 bytes, is ended with all it has started. Any thread.
std::string ProcessOutput(const std::vector<std::string>& arguments, int milliseconds);

}  // namespace kelpin::device::desktop
