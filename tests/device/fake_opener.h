#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/device/scratch_folder.h"

namespace kelpin::test {

// A program in the opener's place, that writes down its arguments.
class FakeOpener {
 public:
  explicit FakeOpener(const std::filesystem::path& folder)
      : program_(folder / "opener"), log_(folder / "opened") {
    // Into a file of its own first, so that nobody reads half a line.
    WriteText(program_, "#!/bin/sh\n{ printf '%s\\n' \"$#\" \"$@\"; } > '" + log_.string() +
                            ".part'\nmv '" + log_.string() + ".part' '" + log_.string() + "'\n");
    std::filesystem::permissions(program_, std::filesystem::perms::owner_all);
  }

  std::string Program() const { return program_.string(); }

  // Waits for the next start: how many arguments there were, then each, a line apiece.
  std::string Await() const {
    for (int tries = 0; tries < 2000; ++tries) {
      if (std::filesystem::exists(log_)) {
        std::string text = ReadText(log_);
        std::filesystem::remove(log_);
        return text;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return "nothing was opened";
  }

 private:
  const std::filesystem::path program_;
  const std::filesystem::path log_;
};

}  // namespace kelpin::test
