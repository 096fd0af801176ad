#pragma once

#include <cstdint>
#include <string_view>

namespace kelpin::platform {

// What the composer library's one routine is given. Texts live until the call returns.
struct ComposeMessageRequest {
  std::uint32_t size = 32;
  std::u16string_view recipient;
  std::uint32_t reserved[5] = {};
  std::u16string_view messageClass;  // "IPM.SMStext", "IPM.MMS"
};

// Other programs. Screen thread only; returns at once.
class Programs {
 public:
  virtual ~Programs() = default;

  // Starts `program` with a command line. 1 when it was started, else 0. "peghelp" with
  // "Kelpin.htm" (and an optional "#section") is the help viewer.
  virtual int StartProgram(std::u16string_view program, std::u16string_view commandLine) = 0;
  // Loads `library`, calls its routine `routine` with the request, unloads it. 1 when it was
  // called; 0 when there is no such library or routine.
  virtual int CallComposer(std::u16string_view library, std::u16string_view routine,
                           const ComposeMessageRequest& request) = 0;
};

}  // namespace kelpin::platform
