#include "device/desktop/secrets.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>

namespace kelpin::device::desktop {

void KeepMemoryPrivate() {
  // The limit is for files; a program that takes the picture over a pipe heeds the other alone.
  const rlimit none = {0, 0};
  static_cast<void>(setrlimit(RLIMIT_CORE, &none));
  static_cast<void>(prctl(PR_SET_DUMPABLE, 0, 0, 0, 0));
}

std::size_t ReadSecretLine(int descriptor, std::span<char> line) {
  std::size_t size = 0;
  while (size < line.size()) {
    const ssize_t got = read(descriptor, &line[size], 1);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got <= 0 || line[size] == '\n') {
      break;
    }
    ++size;
  }
  close(descriptor);
  return size > 0 && line[size - 1] == '\r' ? size - 1 : size;
}

}  // namespace kelpin::device::desktop
