#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace kelpin::device::desktop {

// The turn to start. Of copies of the program that are started at once one at a time looks whether
// another runs already and, when none does, takes what only one can have. Given back when this
// goes, or when the process ends, however it ends.
class StartTurn {
 public:
  StartTurn() = default;
  ~StartTurn();
  StartTurn(const StartTurn&) = delete;
  StartTurn& operator=(const StartTurn&) = delete;

  // False when another copy has had the turn all the time, or nobody can have it in this folder;
  // nothing speaks against starting all the same.
  bool Wait(const std::filesystem::path& runtimeFolder, std::uint32_t milliseconds);
  void Release();

 private:
  int lock_ = -1;
};

// A folder of its own for one run, taken away again at the end, or by the next run when this one
// was killed. Its lock file tells whether somebody still has it.
class ScratchFolder {
 public:
  ScratchFolder() = default;
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  // `parent` is the user's own. Takes away what killed runs left there first.
  bool Make(const std::filesystem::path& parent, std::string& why);
  const std::filesystem::path& Path() const { return path_; }

 private:
  static void RemoveAbandoned(const std::filesystem::path& parent);

  std::filesystem::path path_;
  int lock_ = -1;
};

// Makes `file`, readable by the user alone, with `bytes` in it: whole or not at all, whenever the
// program is killed. A file that is there by now is left as it is, which is no failure.
[[nodiscard]] bool MakeWholeFile(const std::filesystem::path& file, std::string_view bytes,
                                 std::string& why);

}  // namespace kelpin::device::desktop
