#include "device/kernel/thread_identity.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace kelpin::device::kernel {
namespace {

struct ThreadStatus {
  char state = '\0';
  std::uint64_t start = 0;
};

// proc(5): "pid (name) state …", the start time being the 22nd field; the name may hold anything.
bool ReadStatus(std::int32_t thread, ThreadStatus& status) {
  char path[32];
  std::snprintf(path, sizeof path, "/proc/%d/stat", thread);
  const int file = ::open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  char buffer[1024];
  const ::ssize_t length = ::read(file, buffer, sizeof buffer - 1);
  ::close(file);
  if (length <= 0) return false;
  buffer[length] = '\0';
  const std::string_view line(buffer, static_cast<std::size_t>(length));
  std::size_t at = line.rfind(')');
  if (at == std::string_view::npos || at + 2 >= line.size()) return false;
  at += 2;
  status.state = line[at];
  constexpr int kFieldsBetween = 22 - 3;
  for (int field = 0; field < kFieldsBetween; ++field) {
    at = line.find(' ', at);
    if (at == std::string_view::npos) return false;
    ++at;
  }
  status.start = std::strtoull(buffer + at, nullptr, 10);
  return true;
}

}  // namespace

ThreadIdentity CurrentThread() {
  thread_local ThreadIdentity known;
  const auto thread = static_cast<std::int32_t>(::syscall(SYS_gettid));
  // A thread that fork() has doubled keeps the copy of its parent's.
  if (known.thread != thread) {
    ThreadStatus status;
    known.process = ::getpid();
    known.thread = thread;
    known.start = ReadStatus(thread, status) ? status.start : 0;
  }
  return known;
}

bool IsAlive(const ThreadIdentity& thread) {
  if (::syscall(SYS_tgkill, thread.process, thread.thread, 0) != 0 && errno == ESRCH) return false;
  ThreadStatus status;
  if (thread.start == 0 || !ReadStatus(thread.thread, status)) return true;
  return status.start == thread.start && status.state != 'Z' && status.state != 'X';
}

}  // namespace kelpin::device::kernel
