#include "device/qt/instance.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace kelpin::qt {
namespace {

constexpr std::string_view kPrefix = "window-";
constexpr std::string_view kAsk = "info";
constexpr std::string_view kRaise = "raise";
constexpr std::size_t kMostBytes = 4096;

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) {
      close(fd_);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return fd_; }
  int Release() { return std::exchange(fd_, -1); }

 private:
  int fd_;
};

std::string SocketName(std::uint32_t handle) {
  std::array<char, 16> digits{};
  std::snprintf(digits.data(), digits.size(), "%08x", handle);
  return std::string(kPrefix) + digits.data();
}

// Socket addresses are short; a path through the open folder always is.
bool AddressIn(int folder, const std::string& name, sockaddr_un& address) {
  address = {};
  address.sun_family = AF_UNIX;
  const std::string path = "/proc/self/fd/" + std::to_string(folder) + "/" + name;
  if (path.size() >= sizeof(address.sun_path)) {
    return false;
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return true;
}

int OpenFolder(const std::filesystem::path& folder) {
  return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
}

void LimitWaiting(int socket) {
  const timeval second{1, 0};
  setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &second, sizeof(second));
  setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &second, sizeof(second));
}

bool IsOwnUser(int socket) {
  ucred peer{};
  socklen_t size = sizeof(peer);
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

bool Send(int socket, std::string_view message) {
  return send(socket, message.data(), message.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(message.size());
}

std::optional<std::string> Receive(int socket) {
  std::array<char, kMostBytes> buffer{};
  const ssize_t size = recv(socket, buffer.data(), buffer.size(), 0);
  if (size <= 0) {
    return std::nullopt;
  }
  return std::string(buffer.data(), static_cast<std::size_t>(size));
}

std::string Line(std::string text) {
  for (char& c : text) {
    c = c == '\n' ? ' ' : c;
  }
  return text;
}

// Handle, bus name, class, title; a line each.
std::string Write(const AnchorInfo& info) {
  return std::to_string(info.handle) + "\n" + Line(info.busName) + "\n" + Line(info.className) +
         "\n" + Line(info.title);
}

std::optional<AnchorInfo> Parse(const std::string& answer) {
  std::array<std::string, 4> lines;
  std::size_t start = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::size_t end = i + 1 < lines.size() ? answer.find('\n', start) : answer.size();
    if (end == std::string::npos) {
      return std::nullopt;
    }
    lines[i] = answer.substr(start, end - start);
    start = end + 1;
  }
  AnchorInfo info;
  const char* last = lines[0].data() + lines[0].size();
  const auto [stop, error] = std::from_chars(lines[0].data(), last, info.handle);
  if (error != std::errc() || stop != last || info.handle == 0) {
    return std::nullopt;
  }
  info.busName = lines[1];
  info.className = lines[2];
  info.title = lines[3];
  return info;
}

// One question to the socket `name`; nothing when nobody answers. What a dead copy left is removed.
std::optional<std::string> Exchange(int folder, const std::string& name,
                                    std::string_view question) {
  sockaddr_un address{};
  if (!AddressIn(folder, name, address)) {
    return std::nullopt;
  }
  const Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  if (socket.Get() < 0) {
    return std::nullopt;
  }
  LimitWaiting(socket.Get());
  if (connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    if (errno == ECONNREFUSED) {
      unlinkat(folder, name.c_str(), 0);
    }
    return std::nullopt;
  }
  if (!IsOwnUser(socket.Get()) || !Send(socket.Get(), question)) {
    return std::nullopt;
  }
  return Receive(socket.Get());
}

std::vector<std::string> SocketNames(int folder) {
  std::vector<std::string> names;
  // The directory stream owns what it reads from; the caller keeps `folder`.
  DIR* stream = fdopendir(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (stream == nullptr) {
    return names;
  }
  while (const dirent* entry = readdir(stream)) {
    if (std::string_view(entry->d_name).starts_with(kPrefix)) {
      names.emplace_back(entry->d_name);
    }
  }
  closedir(stream);
  return names;
}

}  // namespace

std::filesystem::path DefaultRuntimeFolder() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && std::filesystem::path(runtime).is_absolute()) {
    return std::filesystem::path(runtime) / "kelpin";
  }
  std::error_code error;
  std::filesystem::path temporary = std::filesystem::temp_directory_path(error);
  if (error) {
    temporary = "/tmp";
  }
  return temporary / ("kelpin-" + std::to_string(geteuid()));
}

bool PrepareRuntimeFolder(const std::filesystem::path& folder) {
  if (folder.empty()) {
    return false;
  }
  if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
    return false;
  }
  const Descriptor open(OpenFolder(folder));
  struct stat status {};
  return open.Get() >= 0 && fstat(open.Get(), &status) == 0 && status.st_uid == geteuid() &&
         (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

AnchorServer::AnchorServer(std::filesystem::path folder, AnchorInfo info,
                           std::function<void(const std::string&)> raise)
    : folder_(std::move(folder)), info_(std::move(info)), raise_(std::move(raise)) {
  if (!Open()) {
    return;
  }
  wake_ = eventfd(0, EFD_CLOEXEC);
  thread_ = std::thread([this] { Serve(); });
}

AnchorServer::~AnchorServer() {
  if (thread_.joinable()) {
    const std::uint64_t one = 1;
    while (write(wake_, &one, sizeof(one)) < 0 && errno == EINTR) {
    }
    thread_.join();
  }
  if (listen_ >= 0) {
    close(listen_);
    std::error_code error;
    std::filesystem::remove(folder_ / SocketName(info_.handle), error);
  }
  if (wake_ >= 0) {
    close(wake_);
  }
}

// Listens under another name first: who finds the socket can connect to it.
bool AnchorServer::Open() {
  if (!PrepareRuntimeFolder(folder_)) {
    return false;
  }
  const Descriptor folder(OpenFolder(folder_));
  Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const std::string name = SocketName(info_.handle);
  const std::string fresh = "new-" + name;
  sockaddr_un address{};
  if (folder.Get() < 0 || socket.Get() < 0 || !AddressIn(folder.Get(), fresh, address)) {
    return false;
  }
  unlinkat(folder.Get(), fresh.c_str(), 0);
  // What is bound takes over the descriptor's mode: never open to others, not for a moment.
  if (fchmod(socket.Get(), S_IRUSR | S_IWUSR) != 0 ||
      bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
      listen(socket.Get(), 8) != 0 ||
      renameat(folder.Get(), fresh.c_str(), folder.Get(), name.c_str()) != 0) {
    unlinkat(folder.Get(), fresh.c_str(), 0);
    return false;
  }
  listen_ = socket.Release();
  return true;
}

void AnchorServer::Serve() {
  std::array<pollfd, 2> wait = {pollfd{listen_, POLLIN, 0}, pollfd{wake_, POLLIN, 0}};
  while (true) {
    if (poll(wait.data(), wait.size(), -1) < 0 && errno != EINTR) {
      return;
    }
    if (wait[1].revents != 0) {
      return;
    }
    if ((wait[0].revents & POLLIN) != 0) {
      const Descriptor client(accept4(listen_, nullptr, nullptr, SOCK_CLOEXEC));
      if (client.Get() >= 0) {
        Answer(client.Get());
      }
    }
  }
}

void AnchorServer::Answer(int client) {
  LimitWaiting(client);
  if (!IsOwnUser(client)) {
    return;
  }
  const std::optional<std::string> question = Receive(client);
  if (!question) {
    return;
  }
  if (*question == kAsk) {
    Send(client, Write(info_));
  } else if (question->starts_with(kRaise)) {
    const std::size_t line = question->find('\n');
    raise_(line == std::string::npos ? std::string() : question->substr(line + 1));
    Send(client, "ok");
  }
}

std::optional<AnchorInfo> FindAnchor(const std::filesystem::path& folder,
                                     const std::string& className, const std::string& title) {
  if (!PrepareRuntimeFolder(folder)) {
    return std::nullopt;
  }
  const Descriptor open(OpenFolder(folder));
  if (open.Get() < 0) {
    return std::nullopt;
  }
  for (const std::string& name : SocketNames(open.Get())) {
    const std::optional<std::string> answer = Exchange(open.Get(), name, kAsk);
    std::optional<AnchorInfo> info = answer ? Parse(*answer) : std::nullopt;
    if (info && info->className == className && (title.empty() || info->title == title)) {
      return info;
    }
  }
  return std::nullopt;
}

std::optional<AnchorInfo> AskAnchor(const std::filesystem::path& folder, std::uint32_t handle) {
  const Descriptor open(OpenFolder(folder));
  if (open.Get() < 0) {
    return std::nullopt;
  }
  const std::optional<std::string> answer = Exchange(open.Get(), SocketName(handle), kAsk);
  return answer ? Parse(*answer) : std::nullopt;
}

bool RaiseAnchor(const std::filesystem::path& folder, std::uint32_t handle,
                 const std::string& token) {
  const Descriptor open(OpenFolder(folder));
  return open.Get() >= 0 &&
         Exchange(open.Get(), SocketName(handle), std::string(kRaise) + "\n" + token).has_value();
}

}  // namespace kelpin::qt
