#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/device/scratch_folder.h"

namespace kelpin {

// Runs programs as a shell does, with folders of their own and no display.
class ProgramRun : public testing::Test {
 protected:
  // The exit code. What was written is in `written`.
  int Run(const std::string& program, const std::string& arguments,
          const std::string& environment = "LC_ALL=C.UTF-8") {
    const std::string home = "'" + scratch_.Path().string() + "'";
    const std::string file = (scratch_ / "output").string();
    const std::string command =
        "cd " + home +
        " && env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM LANGUAGE= XDG_RUNTIME_DIR=" +
        home + " XDG_STATE_HOME=" + home + " XDG_CONFIG_HOME=" + home + " XDG_DATA_HOME=" + home +
        " " + environment + " timeout 120 '" + program + "' " + arguments + " >'" + file + "' 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream in(file, std::ios::binary);
    written.assign(std::istreambuf_iterator<char>(in), {});
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string written;
  test::ScratchFolder scratch_;
};

}  // namespace kelpin
