#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelpin::device::desktop {

// Starts the first argument (looked for on PATH) with exactly these arguments and no shell, in a
// session of its own, its input empty and its output going to `output`, to this program's when that
// is below 0. Nothing else that is open here is open there. None when it cannot be started.
//
// Who starts it reaps it, at once with ReapDetached or later; until then the number is its own.
[[nodiscard]] std::optional<::pid_t> StartProcess(const std::vector<std::string>& arguments,
                                                  int output = -1);

// Told, on a thread of its own, what the process ended with; -1 for one that a signal ended.
using ProcessEnded = std::function<void(int code)>;

// Waits for its end on a thread of its own, so that it is never left a zombie.
void ReapDetached(::pid_t process, ProcessEnded ended = nullptr);

// Both. True when it runs.
[[nodiscard]] bool StartDetached(const std::vector<std::string>& arguments,
                                 ProcessEnded ended = nullptr);

// Whether there is such a program to start, by its path or on PATH.
bool IsStartable(const std::string& program);

}  // namespace kelpin::device::desktop
