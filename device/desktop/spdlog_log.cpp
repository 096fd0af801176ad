#include "device/desktop/spdlog_log.h"

#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "device/desktop/utf8.h"
#include "platform/printable.h"
#include "platform/system_trouble.h"

namespace kelpin::device::desktop {
namespace {

constexpr std::size_t kFileBytes = 1u << 20;
constexpr std::size_t kOldFiles = 3;
constexpr std::string_view kCannotWrite = platform::Words("%s: the log cannot be written: %s");

// The file is there with its mode before anything is written to it.
bool MakePrivateFile(const std::string& path) {
  const int file =
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
  if (file < 0) return false;
  struct stat status {};
  bool made = ::fstat(file, &status) == 0 && ::fchmod(file, 0600) == 0;
  if (made && !S_ISREG(status.st_mode)) {
    made = false;
    errno = EINVAL;
  }
  const int reason = errno;
  ::close(file);
  errno = reason;
  return made;
}

std::shared_ptr<spdlog::logger> MakeLogger(std::vector<spdlog::sink_ptr> sinks) {
  auto logger = std::make_shared<spdlog::logger>("kelpin", sinks.begin(), sinks.end());
  logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %v");
  logger->set_level(spdlog::level::debug);
  logger->flush_on(spdlog::level::debug);
  // A log that cannot be written stops nothing.
  logger->set_error_handler([](const std::string&) {});
  return logger;
}

// Without its line end, and such that one text cannot pass for two.
std::string OneLine(std::u16string_view text) {
  while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r')) text.remove_suffix(1);
  return platform::Printable(Utf8(text), "\t");
}

}  // namespace

std::unique_ptr<SpdlogLog> SpdlogLog::Open(const std::filesystem::path& stateFolder,
                                           bool toStandardError, std::string& why) {
  const std::string path = (stateFolder / "kelpin.log").string();
  if (!MakePrivateFile(path)) {
    why = platform::Say(kCannotWrite, {path, platform::SystemTrouble(errno)});
    return nullptr;
  }
  try {
    spdlog::file_event_handlers handlers;
    handlers.before_open = [](const spdlog::filename_t& name) { MakePrivateFile(name); };
    std::vector<spdlog::sink_ptr> sinks = {std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
        path, kFileBytes, kOldFiles, false, handlers)};
    if (toStandardError) sinks.push_back(std::make_shared<spdlog::sinks::stderr_sink_mt>());
    return std::unique_ptr<SpdlogLog>(new SpdlogLog(MakeLogger(std::move(sinks))));
  } catch (const spdlog::spdlog_ex& error) {
    why = platform::Say(kCannotWrite, {path, error.what()});
    return nullptr;
  }
}

std::unique_ptr<SpdlogLog> SpdlogLog::ToStandardError() {
  return std::unique_ptr<SpdlogLog>(
      new SpdlogLog(MakeLogger({std::make_shared<spdlog::sinks::stderr_sink_mt>()})));
}

void SpdlogLog::DebugOutput(std::u16string_view text) {
  logger_->log(spdlog::level::debug, spdlog::string_view_t(OneLine(text)));
}

}  // namespace kelpin::device::desktop
