#include "device/desktop/process_output.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <optional>

#include "device/desktop/detached_process.h"

namespace kelpin::device::desktop {
namespace {

constexpr std::size_t kMost = 4096;

// Reads until the writers are gone, the time is over or it is enough. True when they are gone.
bool ReadAll(int stream, int milliseconds, std::string& text) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
  while (text.size() < kMost) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    pollfd waiting = {stream, POLLIN, 0};
    const int ready = left.count() > 0 ? ::poll(&waiting, 1, static_cast<int>(left.count())) : 0;
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    char bytes[512];
    const ::ssize_t count = ::read(stream, bytes, sizeof bytes);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count == 0;
    text.append(bytes, static_cast<std::size_t>(count));
  }
  return false;
}

}  // namespace

std::string ProcessOutput(const std::vector<std::string>& arguments, int milliseconds) {
  int ends[2] = {-1, -1};
  if (::pipe2(ends, O_CLOEXEC) != 0) return {};
  const std::optional<::pid_t> process = StartProcess(arguments, ends[1]);
  ::close(ends[1]);
  std::string text;
  if (process) {
    // It leads a session of its own, and so a group that is ended with all it has started.
    if (!ReadAll(ends[0], milliseconds, text)) ::kill(-*process, SIGKILL);
    ReapDetached(*process);
  }
  ::close(ends[0]);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace kelpin::device::desktop
