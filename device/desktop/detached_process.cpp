#include "device/desktop/detached_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

extern char** environ;

namespace kelpin::device::desktop {
namespace {

// What posix_spawn is told: a session of its own, every signal as at the start of a program,
// nothing to read, and of all that is open here the standard streams alone: neither what this
// program was given itself nor what a library may have opened without close-on-exec.
class SpawnSettings {
 public:
  explicit SpawnSettings(int output) {
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawn_file_actions_init(&actions_);
    ::sigset_t none;
    ::sigset_t all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
    ::posix_spawnattr_setflags(
        &attributes_,
        static_cast<short>(POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (output >= 0) ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  const ::posix_spawnattr_t* Attributes() const { return &attributes_; }
  const ::posix_spawn_file_actions_t* Actions() const { return &actions_; }

 private:
  ::posix_spawnattr_t attributes_;
  ::posix_spawn_file_actions_t actions_;
};

void Reap(::pid_t process, const ProcessEnded& ended) {
  int status = 0;
  ::pid_t reaped = -1;
  while ((reaped = ::waitpid(process, &status, 0)) < 0 && errno == EINTR) {
  }
  if (ended && reaped == process) ended(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

bool IsExecutableFile(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::optional<::pid_t> StartProcess(const std::vector<std::string>& arguments, int output) {
  // An argument would end at its first NUL.
  const auto whole = [](const std::string& text) { return text.find('\0') == std::string::npos; };
  if (arguments.empty() || !std::all_of(arguments.begin(), arguments.end(), whole)) {
    return std::nullopt;
  }
  std::vector<char*> pointers;
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  const SpawnSettings settings(output);
  ::pid_t process = 0;
  if (::posix_spawnp(&process, pointers.front(), settings.Actions(), settings.Attributes(),
                     pointers.data(), environ) != 0) {
    return std::nullopt;
  }
  return process;
}

void ReapDetached(::pid_t process, ProcessEnded ended) {
  try {
    std::thread(Reap, process, std::move(ended)).detach();
  } catch (const std::system_error&) {
    // No thread to wait on: the process is reaped by the system when this one ends.
  }
}

bool StartDetached(const std::vector<std::string>& arguments, ProcessEnded ended) {
  const std::optional<::pid_t> process = StartProcess(arguments);
  if (process) ReapDetached(*process, std::move(ended));
  return process.has_value();
}

bool IsStartable(const std::string& program) {
  if (program.find('/') != std::string::npos) return IsExecutableFile(program);
  const char* const path = std::getenv("PATH");
  std::string_view folders = path == nullptr ? "/bin:/usr/bin" : path;
  while (!program.empty()) {
    const std::size_t end = folders.find(':');
    const std::string folder(folders.substr(0, end));
    if (IsExecutableFile((folder.empty() ? "." : folder) + "/" + program)) return true;
    if (end == std::string_view::npos) break;
    folders.remove_prefix(end + 1);
  }
  return false;
}

}  // namespace kelpin::device::desktop
