#pragma once

#include <string_view>

namespace kelpin::platform {

// Other programs. Screen thread only; returns at once.
class Programs {
 public:
  virtual ~Programs() = default;

  // Starts `program` with a command line. 1 when it was started, else 0. "peghelp" with
  // "Kelpin.htm" (and an optional "#section") is the help viewer.
  virtual int StartProgram(std::u16string_view program, std::u16string_view commandLine) = 0;
};

}  // namespace kelpin::platform
