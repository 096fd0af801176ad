#include "device/desktop/xdg.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "platform/system_trouble.h"

namespace kelpin::device::desktop {

using platform::Say;
using platform::SystemTrouble;

namespace {

constexpr std::string_view kName = "kelpin";

// Empty unless the variable holds an absolute path.
std::filesystem::path Absolute(const Environment& environment, const char* name) {
  std::filesystem::path path = environment(name);
  return path.is_absolute() ? path : std::filesystem::path();
}

std::filesystem::path Home(const Environment& environment) {
  std::filesystem::path home = Absolute(environment, "HOME");
  if (!home.empty()) return home;
  struct passwd entry {};
  struct passwd* found = nullptr;
  char buffer[4096];
  if (::getpwuid_r(::geteuid(), &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr &&
      entry.pw_dir != nullptr && entry.pw_dir[0] == '/') {
    return entry.pw_dir;
  }
  return "/";
}

std::filesystem::path Under(const Environment& environment, const char* variable,
                            std::string_view belowHome) {
  const std::filesystem::path set = Absolute(environment, variable);
  return (set.empty() ? Home(environment) / belowHome : set) / kName;
}

// The absolute paths of a list parted by colons.
std::vector<std::filesystem::path> PathList(const Environment& environment, const char* variable,
                                            std::string_view usual) {
  const std::string set = environment(variable);
  std::string_view list = set.empty() ? usual : std::string_view(set);
  std::vector<std::filesystem::path> paths;
  while (!list.empty()) {
    const std::size_t end = list.find(':');
    const std::filesystem::path path = list.substr(0, end);
    if (path.is_absolute()) paths.push_back(path);
    list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
  }
  return paths;
}

// Of this user's, and nobody else may put anything there.
bool IsOwnFolder(const std::filesystem::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == ::geteuid() && (status.st_mode & 022) == 0;
}

bool MakeFolder(const std::filesystem::path& folder) {
  if (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) return true;
  if (errno != ENOENT || !folder.has_parent_path() || folder.parent_path() == folder) return false;
  return MakeFolder(folder.parent_path()) &&
         (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

}  // namespace

std::string ProcessEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

Folders FindFolders(const Environment& environment) {
  Folders folders;
  folders.config = Under(environment, "XDG_CONFIG_HOME", ".config");
  folders.data = Under(environment, "XDG_DATA_HOME", ".local/share");
  folders.state = Under(environment, "XDG_STATE_HOME", ".local/state");
  const std::filesystem::path runtime = Absolute(environment, "XDG_RUNTIME_DIR");
  if (!runtime.empty() && IsOwnFolder(runtime)) {
    folders.runtime = runtime / kName;
  } else {
    folders.runtime = "/tmp/" + std::string(kName) + "-" + std::to_string(::geteuid());
  }
  return folders;
}

bool MakePrivateFolder(const std::filesystem::path& folder, std::string& why) {
  const auto fail = [&why](std::string reason) {
    why = std::move(reason);
    return false;
  };
  const std::string name = folder.string();
  struct stat status {};
  if (!MakeFolder(folder) || ::lstat(folder.c_str(), &status) != 0) {
    return fail(Say("%s: the folder cannot be made: %s", {name, SystemTrouble(errno)}));
  }
  if (S_ISLNK(status.st_mode)) {
    return fail(
        Say("%s: this is a link, which is not followed here. Put the folder itself in its place, "
            "or set the XDG variable that names the folder around it",
            {name}));
  }
  if (!S_ISDIR(status.st_mode)) {
    return fail(Say("%s: not a folder, and one is needed here. Move it away", {name}));
  }
  if (status.st_uid != ::geteuid()) {
    return fail(
        Say("%s: the folder belongs to another user. Have it removed, or have it given to "
            "you with \"sudo chown\"",
            {name}));
  }
  if ((status.st_mode & 0777) != 0700 && ::chmod(folder.c_str(), 0700) != 0) {
    return fail(
        Say("%s: the folder cannot be closed to other users: %s", {name, SystemTrouble(errno)}));
  }
  return true;
}

std::vector<std::filesystem::path> DataFolders(const std::filesystem::path& programFolder,
                                               const Environment& environment) {
  std::vector<std::filesystem::path> folders = {FindFolders(environment).data};
  if (!programFolder.empty()) {
    folders.push_back(programFolder.parent_path() / "share" / kName);
    folders.push_back(programFolder.parent_path() / "res");  // started from a build folder
  }
  for (const std::filesystem::path& path :
       PathList(environment, "XDG_DATA_DIRS", "/usr/local/share:/usr/share")) {
    folders.push_back(path / kName);
  }
  return folders;
}

std::filesystem::path FindSystemConfig(std::string_view name, const Environment& environment) {
  for (const std::filesystem::path& path : PathList(environment, "XDG_CONFIG_DIRS", "/etc/xdg")) {
    const std::filesystem::path file = path / kName / name;
    std::error_code error;
    if (std::filesystem::exists(file, error)) return file;
  }
  return {};
}

std::filesystem::path ProgramFolder() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::filesystem::path() : program.parent_path();
}

}  // namespace kelpin::device::desktop
