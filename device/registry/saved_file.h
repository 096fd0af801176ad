#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace kelpin::device::registry {

// What tells one content of a file from the next, cheaply.
struct FileStamp {
  ::dev_t device = 0;
  ::ino_t inode = 0;
  ::off_t size = -1;  // -1: there is no file
  std::int64_t modifiedNanoseconds = 0;

  bool operator==(const FileStamp&) const = default;
};

FileStamp StampOf(const std::filesystem::path& path);

enum class ReadOutcome { kRead, kMissing, kFailed };

// Reads a regular file of at most `limit` bytes; never waits on a pipe or a device. On kFailed
// `why` names the file and the reason.
ReadOutcome ReadWholeFile(const std::filesystem::path& path, std::size_t limit, std::string& bytes,
                          FileStamp& stamp, std::string& why);

// The file holds either its old bytes or the new ones, whatever happens meanwhile; mode 0600.
// `stamp` is the new content's. Callers hold the file's FileLock.
[[nodiscard]] bool SaveAtomically(const std::filesystem::path& path, std::string_view bytes,
                                  FileStamp& stamp, std::string& why);

// Keeps other processes out while it lives. The lock is on a file beside the one it guards, for
// that one is replaced by each save.
class FileLock {
 public:
  FileLock() = default;
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  // Makes the folder (0700) when it is missing. Gives up after `milliseconds`.
  [[nodiscard]] bool Acquire(const std::filesystem::path& guarded, std::uint32_t milliseconds,
                             std::string& why);

 private:
  int descriptor_ = -1;
};

}  // namespace kelpin::device::registry
