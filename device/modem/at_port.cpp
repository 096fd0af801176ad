#include "device/modem/at_port.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/serial_port.hpp>
#include <boost/asio/write.hpp>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/mutex.h"
#include "platform/wording.h"

namespace kelpin::device::modem {
namespace {

namespace asio = boost::asio;
namespace fs = std::filesystem;
using boost::system::error_code;
using platform::Say;
using serial = asio::serial_port_base;

constexpr unsigned kBaud = 115200;
constexpr auto kLockPatience = std::chrono::milliseconds(200);
constexpr auto kLockStep = std::chrono::milliseconds(10);

// Who holds the port, as "NAME (process N)"; empty when that cannot be seen.
std::string HolderOf(const std::string& path) {
  std::error_code error;
  const fs::path port = fs::canonical(path, error);
  if (error) return {};
  const std::string own = std::to_string(::getpid());
  for (const auto& process : fs::directory_iterator("/proc", error)) {
    const std::string id = process.path().filename().string();
    if (id == own ||
        !std::all_of(id.begin(), id.end(), [](char c) { return c >= '0' && c <= '9'; }))
      continue;
    std::error_code closed;
    for (fs::directory_iterator file(process.path() / "fd", closed), end; !closed && file != end;
         file.increment(closed)) {
      std::error_code unread;
      if (fs::read_symlink(file->path(), unread) != port) continue;
      std::string name;
      std::ifstream comm(process.path() / "comm");
      std::getline(comm, name);
      // What serves a pseudo-terminal keeps it open too.
      if (name != "kelpin-softcard") return name + " (process " + id + ")";
    }
  }
  return {};
}

std::string InUse(const std::string& path) {
  const std::string holder = HolderOf(path);
  return Say(
      "%s is in use by %s. End that program. ModemManager, which takes every modem, lets go "
      "with \"sudo systemctl stop ModemManager\"; afterwards start it again, or keep it off "
      "this one port (modem.md among Kelpin's documents says how).",
      {path, holder.empty() ? Say("another program") : holder});
}

std::string Explain(const std::string& path, int error) {
  switch (error) {
    case ENOENT:
    case ENXIO:
    case ENODEV:
      return Say("There is no port %s.", {path}) + ' ' + KnownPorts();
    case EACCES:
    case EPERM:
      return Say(
          "You may not use %s. Join its group with \"sudo usermod -a -G dialout $USER\", then "
          "log in again.",
          {path});
    case EBUSY:
    case EWOULDBLOCK:
      return InUse(path);
    case ENOTTY:
      return Say("%s is no serial port.", {path}) + ' ' + KnownPorts();
    default:
      return Say(
          "%s cannot be opened: %s. Unplug the modem and plug it in again, then start again.",
          {path, std::generic_category().message(error)});
  }
}

// An open port that nobody else has, or the reason as a number of errno.
int OpenAlone(const std::string& path, int& error) {
  // Not a FIFO or a folder: what is no terminal is not even opened for writing.
  struct ::stat kind = {};
  if (::stat(path.c_str(), &kind) != 0) {
    error = errno;
    return -1;
  }
  if (!S_ISCHR(kind.st_mode)) {
    error = ENOTTY;
    return -1;
  }
  const int port = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (port < 0) {
    error = errno;
    return -1;
  }
  error = ::isatty(port) == 1 ? 0 : ENOTTY;
  const auto limit = std::chrono::steady_clock::now() + kLockPatience;
  while (error == 0 && ::flock(port, LOCK_EX | LOCK_NB) != 0) {
    error = errno;
    if (error == EWOULDBLOCK && std::chrono::steady_clock::now() < limit) {
      std::this_thread::sleep_for(kLockStep);
      error = 0;
    }
  }
  if (error == 0 && ::ioctl(port, TIOCEXCL) != 0) error = errno;
  if (error == 0) return port;
  ::close(port);
  return -1;
}

void Wipe(std::string& text) {
  volatile char* letter = text.data();
  for (std::size_t left = text.size(); left > 0; --left) *letter++ = 0;
}

}  // namespace

std::string KnownPorts() {
  std::vector<std::string> ports;
  std::error_code error;
  for (const auto& port : fs::directory_iterator("/dev/serial/by-id", error)) {
    ports.push_back(port.path().string());
  }
  if (ports.empty()) {
    for (const auto& device : fs::directory_iterator("/dev", error)) {
      const std::string name = device.path().filename().string();
      const bool port = name.starts_with("ttyUSB") || name.starts_with("ttyACM") ||
                        (name.starts_with("wwan") && name.find("at") != std::string::npos);
      if (port) ports.push_back(device.path().string());
    }
  }
  if (ports.empty()) return Say("No modem is plugged in.");
  std::sort(ports.begin(), ports.end());
  std::string text = Say("The ports there are:");
  for (const std::string& port : ports) text += "\n  " + platform::Printable(port);
  return text;
}

struct AtPort::State {
  asio::io_context context;
  asio::serial_port port{context};
  Listener listener;
  ::termios found = {};
  std::array<std::uint8_t, 4096> buffer = {};
  std::thread thread;

  Mutex lock;
  Condition changed;
  bool gone GUARDED_BY(lock) = false;
  bool writing GUARDED_BY(lock) = false;

  // All of the rest on the port's thread.
  void Read() {
    port.async_read_some(asio::buffer(buffer), [this](const error_code& error, std::size_t size) {
      if (error) {
        Go();
        return;
      }
      listener.received({buffer.data(), size});
      Read();
    });
  }
  void Go() {
    {
      const MutexLock hold(lock);
      gone = true;
      changed.notify_all();
    }
    listener.gone();
  }
};

std::unique_ptr<AtPort> AtPort::Open(const std::string& path, Listener listener, std::string& why) {
  int error = 0;
  const int descriptor = OpenAlone(path, error);
  if (descriptor < 0) {
    why = Explain(path, error);
    return nullptr;
  }
  auto state = std::make_unique<State>();
  state->listener = std::move(listener);
  bool set = ::tcgetattr(descriptor, &state->found) == 0;
  ::termios raw = state->found;
  ::cfmakeraw(&raw);
  raw.c_cflag |= CLOCAL | CREAD;
  // The line stays up when the port is closed: some modems take its fall for a reset.
  raw.c_cflag &= ~static_cast<::tcflag_t>(HUPCL);
  raw.c_cc[VMIN] = 1;
  raw.c_cc[VTIME] = 0;
  set = set && ::tcsetattr(descriptor, TCSANOW, &raw) == 0;
  error_code failed;
  if (set) state->port.assign(descriptor, failed);
  if (!set || failed) {
    why = Explain(path, set ? failed.value() : errno);
    ::close(descriptor);
    return nullptr;
  }
  // A pseudo-terminal has no line to set; it takes what it can.
  state->port.set_option(serial::baud_rate(kBaud), failed);
  state->port.set_option(serial::character_size(8), failed);
  state->port.set_option(serial::parity(serial::parity::none), failed);
  state->port.set_option(serial::stop_bits(serial::stop_bits::one), failed);
  state->port.set_option(serial::flow_control(serial::flow_control::none), failed);
  ::tcflush(descriptor, TCIOFLUSH);
  return std::unique_ptr<AtPort>(new AtPort(std::move(state)));
}

AtPort::AtPort(std::unique_ptr<State> state) : state_(std::move(state)) {
  state_->Read();
  state_->thread = std::thread([state = state_.get()] { state->context.run(); });
}

AtPort::~AtPort() {
  state_->context.stop();
  state_->thread.join();
  const int descriptor = state_->port.native_handle();
  ::tcflush(descriptor, TCOFLUSH);
  ::tcsetattr(descriptor, TCSANOW, &state_->found);
  ::ioctl(descriptor, TIOCNXCL);
  error_code ignored;
  state_->port.close(ignored);
}

bool AtPort::Write(std::string bytes, std::chrono::milliseconds patience) {
  struct Job {
    explicit Job(std::string text) : bytes(std::move(text)) {}
    ~Job() { Wipe(bytes); }
    std::string bytes;
    bool done = false;
    bool failed = false;
  };
  const auto limit = std::chrono::steady_clock::now() + patience;
  const auto job = std::make_shared<Job>(std::move(bytes));
  {
    const MutexLock hold(state_->lock);
    // One that did not go out in time is still on its way.
    while (state_->writing && !state_->gone) {
      if (state_->changed.wait_until(state_->lock, limit) == std::cv_status::timeout) return false;
    }
    if (state_->gone) return false;
    state_->writing = true;
  }
  asio::post(state_->context, [state = state_.get(), job] {
    asio::async_write(state->port, asio::buffer(job->bytes),
                      [state, job](const error_code& error, std::size_t /*written*/) {
                        const MutexLock hold(state->lock);
                        job->done = true;
                        job->failed = static_cast<bool>(error);
                        state->writing = false;
                        state->changed.notify_all();
                      });
  });
  const MutexLock hold(state_->lock);
  while (!job->done && !state_->gone) {
    if (state_->changed.wait_until(state_->lock, limit) == std::cv_status::timeout) break;
  }
  return job->done && !job->failed;
}

}  // namespace kelpin::device::modem
