#include "tools/modem_line.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace kelpin::tools {
namespace {

namespace fs = std::filesystem;

constexpr int kLook = 200;            // milliseconds between two looks whether a program has gone
constexpr int kWritePatience = 2000;  // milliseconds
constexpr std::size_t kLongestCommand = 4096;

}  // namespace

std::unique_ptr<ModemLine> ModemLine::Open(const std::string& link, std::string& why) {
  const int line = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  std::array<char, 64> name = {};
  const bool made = line >= 0 && ::grantpt(line) == 0 && ::unlockpt(line) == 0 &&
                    ::ptsname_r(line, name.data(), name.size()) == 0;
  const int slave = made ? ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC) : -1;
  const int stop = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (slave < 0 || stop < 0) {
    why = std::string("no pseudo-terminal: ") + std::strerror(errno);
    for (const int open : {line, slave, stop}) {
      if (open >= 0) ::close(open);
    }
    return nullptr;
  }
  // A line has no echo and no line discipline of its own.
  ::termios raw = {};
  ::tcgetattr(slave, &raw);
  ::cfmakeraw(&raw);
  ::tcsetattr(slave, TCSANOW, &raw);

  std::unique_ptr<ModemLine> opened(new ModemLine(line, slave, stop));
  opened->port_ = name.data();
  if (!link.empty()) {
    std::error_code error;
    // One that a former run left behind is replaced; anything else is somebody's.
    if (fs::is_symlink(fs::symlink_status(link, error))) fs::remove(link, error);
    fs::create_symlink(name.data(), link, error);
    if (error) {
      why = link + ": " + error.message();
      return nullptr;
    }
    opened->link_ = link;
    opened->port_ = link;
  }
  return opened;
}

ModemLine::~ModemLine() {
  std::error_code ignored;
  if (!link_.empty()) fs::remove(link_, ignored);
  ::close(slave_);
  ::close(line_);
  ::close(stop_);
}

void ModemLine::Stop() {
  const std::uint64_t one = 1;
  static_cast<void>(::write(stop_, &one, sizeof(one)) == sizeof(one));
}

// A program that was killed leaves the port to itself alone for ever, since our end keeps it open.
void ModemLine::LetOthersIn() const {
  if (::flock(slave_, LOCK_EX | LOCK_NB) != 0) return;
  ::ioctl(slave_, TIOCNXCL);
  ::flock(slave_, LOCK_UN);
}

void ModemLine::Tell(std::string_view text) {
  const MutexLock hold(writeLock_);
  Write(text);
}

void ModemLine::Write(std::string_view text) {
  while (!text.empty()) {
    const ::ssize_t written = ::write(line_, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      ::pollfd wait = {line_, POLLOUT, 0};
      if (::poll(&wait, 1, kWritePatience) <= 0) return;
    } else if (errno != EINTR) {
      return;
    }
  }
}

void ModemLine::Serve(const Answer& answer) {
  std::string command;
  std::array<char, 1024> bytes = {};
  for (;;) {
    std::array<::pollfd, 2> wait = {{{line_, POLLIN, 0}, {stop_, POLLIN, 0}}};
    const int ready = ::poll(wait.data(), wait.size(), kLook);
    if (ready < 0 && errno != EINTR) return;
    if ((wait[1].revents & POLLIN) != 0) return;
    if (ready == 0) LetOthersIn();
    if ((wait[0].revents & POLLIN) == 0) continue;
    const ::ssize_t size = ::read(line_, bytes.data(), bytes.size());
    for (::ssize_t at = 0; at < size; ++at) {
      const char byte = bytes[static_cast<std::size_t>(at)];
      if (byte == '\r') {
        const MutexLock hold(writeLock_);
        Write(answer(command));
        command.clear();
      } else if (byte != '\n' && command.size() < kLongestCommand) {
        command.push_back(byte);
      }
    }
  }
}

}  // namespace kelpin::tools
