#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::device::desktop {

// The value of an environment variable; empty when it is not set.
using Environment = std::function<std::string(const char* name)>;
std::string ProcessEnvironment(const char* name);

// Where this user's files are, as the XDG base directory specification has it. Nothing is made.
struct Folders {
  std::filesystem::path config;   // settings
  std::filesystem::path data;     // contacts, card files
  std::filesystem::path state;    // log, window size
  std::filesystem::path runtime;  // named objects and sockets of this session
};

// Variables that are not absolute paths count as not set. The runtime folder is one below
// $XDG_RUNTIME_DIR when that is the user's own, else one in /tmp that carries the user's number.
Folders FindFolders(const Environment& environment = ProcessEnvironment);

// Makes the folder, and what is missing above it, for this user alone (0700). False when it is a
// link or another user's, or cannot be made; `why` says which.
[[nodiscard]] bool MakePrivateFolder(const std::filesystem::path& folder, std::string& why);

// Where read-only files of the program may be, the user's own first. `programFolder`: see below.
std::vector<std::filesystem::path> DataFolders(const std::filesystem::path& programFolder,
                                               const Environment& environment = ProcessEnvironment);

// The first file of this name in the system's settings folders; empty when there is none.
std::filesystem::path FindSystemConfig(std::string_view name,
                                       const Environment& environment = ProcessEnvironment);

// The folder of the running program; empty when the system does not tell.
std::filesystem::path ProgramFolder();

}  // namespace kelpin::device::desktop
