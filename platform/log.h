#pragma once

#include <string_view>

namespace kelpin::platform {

// Debug output. Any thread. Names and numbers of entries never go here.
class Log {
 public:
  virtual ~Log() = default;
  // The text as it stands, its own line end included.
  virtual void DebugOutput(std::u16string_view text) = 0;
};

}  // namespace kelpin::platform
