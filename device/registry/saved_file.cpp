#include "device/registry/saved_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <system_error>
#include <thread>

#include "platform/system_trouble.h"

namespace kelpin::device::registry {

using platform::Say;
using platform::Words;

namespace {

constexpr std::uint32_t kLockPollMilliseconds = 10;
constexpr std::string_view kCannotOpen = Words("%s: the settings file cannot be opened: %s");
constexpr std::string_view kCannotRead = Words("%s: the settings file cannot be read: %s");
constexpr std::string_view kCannotWrite = Words("%s: the settings file cannot be written: %s");
constexpr std::string_view kCannotLock = Words("%s: the settings file cannot be locked: %s");
constexpr std::string_view kCannotMakeFolder = Words("%s: the folder cannot be made: %s");

// Closes what it holds.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number_; }
  bool Close() {
    const int number = number_;
    number_ = -1;
    return number < 0 || ::close(number) == 0;
  }

 private:
  int number_;
};

// `english` takes the file's name and the reason, which is in errno.
std::string Problem(std::string_view english, const std::filesystem::path& path) {
  return Say(english, {path.string(), platform::SystemTrouble(errno)});
}

FileStamp StampOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size,
          std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ::ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool SyncFolder(const std::filesystem::path& folder) {
  const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return descriptor.Number() >= 0 && ::fsync(descriptor.Number()) == 0;
}

std::filesystem::path FolderOf(const std::filesystem::path& path) {
  return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

std::filesystem::path Beside(const std::filesystem::path& path, const char* ending) {
  std::filesystem::path beside = path;
  beside += ending;
  return beside;
}

bool MakeFolder(const std::filesystem::path& folder) {
  if (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) return true;
  if (errno != ENOENT || !folder.has_parent_path() || folder.parent_path() == folder) return false;
  return MakeFolder(folder.parent_path()) &&
         (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

}  // namespace

FileStamp StampOf(const std::filesystem::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? StampOf(status) : FileStamp();
}

ReadOutcome ReadWholeFile(const std::filesystem::path& path, std::size_t limit, std::string& bytes,
                          FileStamp& stamp, std::string& why) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.Number() < 0) {
    if (errno == ENOENT) {
      stamp = FileStamp();
      return ReadOutcome::kMissing;
    }
    why = Problem(kCannotOpen, path);
    return ReadOutcome::kFailed;
  }
  struct stat status {};
  if (::fstat(file.Number(), &status) != 0) {
    why = Problem(kCannotRead, path);
    return ReadOutcome::kFailed;
  }
  if (!S_ISREG(status.st_mode)) {
    why = Say("%s: not a file. Name a settings file with --registry FILE", {path.string()});
    return ReadOutcome::kFailed;
  }
  std::string content;
  char block[16384];
  while (content.size() <= limit) {
    const ::ssize_t count = ::read(file.Number(), block, sizeof block);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      why = Problem(kCannotRead, path);
      return ReadOutcome::kFailed;
    }
    if (count == 0) break;
    content.append(block, static_cast<std::size_t>(count));
  }
  if (content.size() > limit) {
    why =
        Say("%s: larger than %s bytes, and so no settings file. It was left as it is; name another "
            "one with --registry FILE",
            {path.string(), std::to_string(limit)});
    return ReadOutcome::kFailed;
  }
  bytes = std::move(content);
  stamp = StampOf(status);
  return ReadOutcome::kRead;
}

bool SaveAtomically(const std::filesystem::path& path, std::string_view bytes, FileStamp& stamp,
                    std::string& why) {
  const std::filesystem::path fresh = Beside(path, ".new");
  // One that a crash left behind is nobody's: writers hold the lock.
  if (::unlink(fresh.c_str()) != 0 && errno != ENOENT) {
    why = Problem(kCannotWrite, fresh);
    return false;
  }
  Descriptor file(
      ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (file.Number() < 0) {
    why = Problem(kCannotWrite, fresh);
    return false;
  }
  struct stat status {};
  if (!WriteAll(file.Number(), bytes) || ::fsync(file.Number()) != 0 ||
      ::fstat(file.Number(), &status) != 0 || !file.Close()) {
    why = Problem(kCannotWrite, fresh);
    ::unlink(fresh.c_str());
    return false;
  }
  if (::rename(fresh.c_str(), path.c_str()) != 0) {
    why = Problem(kCannotWrite, path);
    ::unlink(fresh.c_str());
    return false;
  }
  stamp = StampOf(status);
  if (!SyncFolder(FolderOf(path))) {
    why = Problem(kCannotWrite, path);
    return false;
  }
  return true;
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

bool FileLock::Acquire(const std::filesystem::path& guarded, std::uint32_t milliseconds,
                       std::string& why) {
  const std::filesystem::path folder = FolderOf(guarded);
  if (!MakeFolder(folder)) {
    why = Problem(kCannotMakeFolder, folder);
    return false;
  }
  const std::filesystem::path path = Beside(guarded, ".lock");
  descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
  if (descriptor_ < 0) {
    why = Problem(kCannotLock, path);
    return false;
  }
  for (std::uint32_t waited = 0;; waited += kLockPollMilliseconds) {
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return true;
    if (errno != EWOULDBLOCK && errno != EINTR) {
      why = Problem(kCannotLock, path);
      return false;
    }
    if (waited >= milliseconds) {
      why =
          Say("%s: another program keeps the settings file locked. End that program and try again",
              {path.string()});
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(kLockPollMilliseconds));
  }
}

}  // namespace kelpin::device::registry
