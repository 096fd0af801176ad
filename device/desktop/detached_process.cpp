#include "device/desktop/detached_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <thread>

extern char** environ;

namespace kelpin::device::desktop {
namespace {

// What posix_spawn is told: a session of its own, every signal as at the start of a program, and
// nothing to read.
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

void Reap(::pid_t process) {
  while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace

bool StartDetached(const std::vector<std::string>& arguments, int output) {
  if (arguments.empty()) return false;
  std::vector<char*> pointers;
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  const SpawnSettings settings(output);
  ::pid_t process = 0;
  if (::posix_spawnp(&process, pointers.front(), settings.Actions(), settings.Attributes(),
                     pointers.data(), environ) != 0) {
    return false;
  }
  try {
    std::thread(Reap, process).detach();
  } catch (const std::system_error&) {
    // No thread to wait on: the process is reaped by the system when this one ends.
  }
  return true;
}

}  // namespace kelpin::device::desktop
