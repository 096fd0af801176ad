#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "platform/log.h"

namespace spdlog {
class logger;
}

namespace kelpin::device::desktop {

// The program's log: kelpin.log in the state folder (0600, three old ones of 1 MiB kept), and the
// standard error output where it is wanted. Each text stands behind its time; control characters
// are shown as \xNN, but for the line end.
class SpdlogLog final : public platform::Log {
 public:
  // Null when the file cannot be written; `why` says what is wrong. The folder must exist.
  static std::unique_ptr<SpdlogLog> Open(const std::filesystem::path& stateFolder,
                                         bool toStandardError, std::string& why);
  // Without a file.
  static std::unique_ptr<SpdlogLog> ToStandardError();

  void DebugOutput(std::u16string_view text) override;

 private:
  explicit SpdlogLog(std::shared_ptr<spdlog::logger> logger) : logger_(std::move(logger)) {}

  const std::shared_ptr<spdlog::logger> logger_;
};

}  // namespace kelpin::device::desktop
