#pragma once

#include <cstddef>
#include <span>

namespace kelpin::device::desktop {

// From here on the system writes no picture of this process's memory when it crashes, and other
// processes of the user cannot look into it. There is no way back, as what was typed may be found
// in memory for as long as the program runs.
void KeepMemoryPrivate();

// Reads from `descriptor` up to a line's end, the end, or until `line` is full, and closes it. How
// much there is in `line`, without the line's end; 0 when it cannot be read. Nothing is read ahead.
std::size_t ReadSecretLine(int descriptor, std::span<char> line);

}  // namespace kelpin::device::desktop
