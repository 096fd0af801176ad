// The tests run in a session of their own: a new bus, and folders that nobody else has. The first
// process makes them, runs itself again inside, and takes them away.

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/contract/contacts/eds/eds_move.h"
#include "tests/device/scratch_folder.h"

namespace {

constexpr const char* kInside = "KELPIN_TEST_SESSION";

[[noreturn]] void RunInside(const std::filesystem::path& home, char** argv) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  const char* const path = std::getenv("PATH");
  std::vector<std::string> environment = {
      "PATH=" + std::string(path == nullptr ? "/usr/bin:/bin" : path),
      "HOME=" + home.string(),
      "XDG_RUNTIME_DIR=" + (home / "run").string(),
      "LANG=C.UTF-8",
      "GSETTINGS_BACKEND=memory",
      "GIO_USE_VFS=local",
      std::string(kInside) + "=1",
  };
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS"}) {
    if (const char* const value = std::getenv(name)) {
      environment.push_back(std::string(name) + "=" + value);
    }
  }
  std::vector<char*> variables;
  for (std::string& variable : environment) variables.push_back(variable.data());
  variables.push_back(nullptr);
  std::string runner = "dbus-run-session";
  std::string end = "--";
  std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  std::vector<char*> arguments = {runner.data(), end.data(), self.data()};
  for (char** argument = argv + 1; *argument != nullptr; ++argument) {
    arguments.push_back(*argument);
  }
  arguments.push_back(nullptr);
  execvpe(runner.c_str(), arguments.data(), variables.data());
  std::perror("dbus-run-session");
  _exit(1);
}

int RunInOwnSession(char** argv) {
  const kelpin::test::ScratchFolder home;
  std::filesystem::create_directory(home / "run");
  std::filesystem::permissions(home / "run", std::filesystem::perms::owner_all);
  const pid_t child = fork();
  if (child == 0) RunInside(home.Path(), argv);
  int status = 0;
  while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return child > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (std::getenv(kInside) == nullptr) return RunInOwnSession(argv);
  if (argc == 5 && std::string_view(argv[1]) == kelpin::contract::kMoveProcess) {
    return kelpin::contract::RunMoveProcess(argv + 2);
  }
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
