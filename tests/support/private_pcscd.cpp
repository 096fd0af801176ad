#include "tests/support/private_pcscd.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

extern char** environ;

namespace kelpin::test {
namespace {

constexpr char kDaemon[] = "/usr/sbin/pcscd";
constexpr char kDriver[] = "/usr/lib/pcsc/drivers/serial/libifdvpcd.so";
// The first descriptor that is handed over to a daemon started for a socket.
constexpr int kHandedOver = 3;

// A socket that listens on this port of the machine, 0: on a free one; -1 when it is taken.
int Listen(std::uint16_t& port) {
  const int made = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  socklen_t size = sizeof(address);
  if (::bind(made, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(made, 1) != 0 ||
      ::getsockname(made, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    ::close(made);
    return -1;
  }
  port = ntohs(address.sin_port);
  return made;
}

// The first of two free ports in a row; 0 when there are none.
std::uint16_t FindPorts() {
  for (int attempt = 0; attempt < 100; ++attempt) {
    std::uint16_t port = 0;
    const int first = Listen(port);
    if (first < 0) continue;
    auto next = static_cast<std::uint16_t>(port + 1);
    const int second = next == 0 ? -1 : Listen(next);
    ::close(first);
    if (second < 0) continue;
    ::close(second);
    return port;
  }
  return 0;
}

int ListenOn(const std::string& path, std::string& why) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) {
    why = path + ": too long for a socket";
    return -1;
  }
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  ::unlink(path.c_str());
  const int made = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (::bind(made, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
      ::listen(made, 16) != 0) {
    why = path + ": " + std::strerror(errno);
    ::close(made);
    return -1;
  }
  return made;
}

// What is possible between fork and exec: the number is written without the library.
void WriteNumber(char* to, pid_t number) {
  std::array<char, 16> digits = {};
  std::size_t count = 0;
  for (; number > 0; number /= 10) digits[count++] = static_cast<char>('0' + number % 10);
  while (count > 0) *to++ = digits[--count];
  *to = '\0';
}

}  // namespace

PrivatePcscd::PrivatePcscd(std::filesystem::path folder, std::string reader)
    : folder_(std::move(folder)), reader_(std::move(reader)) {}

PrivatePcscd::~PrivatePcscd() {
  Stop(SIGTERM);
}

bool PrivatePcscd::Installed() {
  return ::access(kDaemon, X_OK) == 0 && ::access(kDriver, R_OK) == 0;
}

bool PrivatePcscd::Configure(std::string& why) {
  port_ = FindPorts();
  std::error_code error;
  const std::filesystem::path readers = folder_ / "readers";
  std::filesystem::create_directories(readers, error);
  std::ofstream file(readers / "vpcd");
  file << "FRIENDLYNAME \"" << reader_ << "\"\nDEVICENAME /dev/null:" << port_ << "\nLIBPATH "
       << kDriver << "\nCHANNELID " << port_ << '\n';
  file.close();
  if (port_ == 0 || !file) {
    why = port_ == 0 ? "no two free ports" : readers.string() + ": cannot be written";
    return false;
  }
  return true;
}

bool PrivatePcscd::Start(std::string& why) {
  Stop(SIGTERM);
  if (!Configure(why)) return false;
  const int listening = ListenOn(Socket().string(), why);
  const int log = ::open(Log().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (listening < 0 || log < 0) return false;

  std::string readers = (folder_ / "readers").string();
  std::string daemon = kDaemon;
  std::array<char, 8> foreground = {"-f"};
  std::array<char, 8> configuration = {"-c"};
  std::array<char, 8> errorsOnly = {"-e"};
  const std::array<char*, 6> arguments = {daemon.data(),  foreground.data(), configuration.data(),
                                          readers.data(), errorsOnly.data(), nullptr};
  constexpr std::string_view kPidName = "LISTEN_PID=";
  std::array<char, 32> listenPid = {};
  kPidName.copy(listenPid.data(), kPidName.size());
  std::array<char, 16> listenFds = {"LISTEN_FDS=1"};
  std::vector<char*> environment;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    environment.push_back(*variable);
  }
  environment.insert(environment.end(), {listenPid.data(), listenFds.data(), nullptr});

  const pid_t parent = ::getpid();
  process_ = ::fork();
  if (process_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) ::_exit(1);
    ::sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::dup2(log, STDOUT_FILENO);
    ::dup2(log, STDERR_FILENO);
    if (listening != kHandedOver) ::dup2(listening, kHandedOver);
    ::fcntl(kHandedOver, F_SETFD, 0);
    WriteNumber(listenPid.data() + kPidName.size(), ::getpid());
    ::execve(kDaemon, arguments.data(), environment.data());
    ::_exit(127);
  }
  ::close(listening);
  ::close(log);
  if (process_ < 0) {
    why = std::string("fork: ") + std::strerror(errno);
    return false;
  }
  return true;
}

void PrivatePcscd::Stop(int signal) {
  if (process_ <= 0) return;
  ::kill(process_, signal);
  while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
}

}  // namespace kelpin::test
