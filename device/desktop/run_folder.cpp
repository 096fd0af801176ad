#include "device/desktop/run_folder.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/system_trouble.h"

namespace kelpin::device::desktop {

using platform::Say;
using platform::SystemTrouble;

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kPollMilliseconds = 10;
constexpr int kScratchTries = 20;
constexpr std::string_view kScratchPrefix = "demo-";
constexpr std::string_view kCannotMake = platform::Words("%s: the file cannot be made: %s");

int OpenLockFile(const fs::path& file) {
  return ::open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
}

void CloseAndForget(int& descriptor) {
  if (descriptor >= 0) ::close(std::exchange(descriptor, -1));
}

// Whether the name still stands for the file that is open: who held the lock before may have
// removed it with its folder.
bool IsNamed(int descriptor, const fs::path& file) {
  struct stat held {};
  struct stat named {};
  return ::fstat(descriptor, &held) == 0 && ::lstat(file.c_str(), &named) == 0 &&
         held.st_ino == named.st_ino && held.st_dev == named.st_dev;
}

// The lock of a scratch folder, -1 when another run has it or the folder is gone.
int LockScratch(const fs::path& folder) {
  const fs::path file = folder / "lock";
  int lock = OpenLockFile(file);
  if (lock >= 0 && (::flock(lock, LOCK_EX | LOCK_NB) != 0 || !IsNamed(lock, file))) {
    CloseAndForget(lock);
  }
  return lock;
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

}  // namespace

StartTurn::~StartTurn() {
  Release();
}

bool StartTurn::Wait(const fs::path& runtimeFolder, std::uint32_t milliseconds) {
  Release();
  lock_ = OpenLockFile(runtimeFolder / "start.lock");
  for (std::uint32_t waited = 0; lock_ >= 0; waited += kPollMilliseconds) {
    if (::flock(lock_, LOCK_EX | LOCK_NB) == 0) return true;
    if ((errno != EWOULDBLOCK && errno != EINTR) || waited >= milliseconds) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(kPollMilliseconds));
  }
  Release();
  return false;
}

void StartTurn::Release() {
  CloseAndForget(lock_);
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  if (!path_.empty()) fs::remove_all(path_, ignored);
  CloseAndForget(lock_);
}

bool ScratchFolder::Make(const fs::path& parent, std::string& why) {
  RemoveAbandoned(parent);
  for (int tries = 0; tries < kScratchTries; ++tries) {
    std::string name = (parent / (std::string(kScratchPrefix) + "XXXXXX")).string();
    if (::mkdtemp(name.data()) == nullptr) {
      why = Say("%s: no folder for the demonstration can be made in it: %s",
                {parent.string(), SystemTrouble(errno)});
      return false;
    }
    lock_ = LockScratch(name);
    if (lock_ >= 0) {
      path_ = std::move(name);
      return true;
    }
    // Another run that starts took it for one that was left behind, before it had its lock.
    why = Say("%s: the folder cannot be locked: %s", {name, SystemTrouble(errno)});
    std::error_code ignored;
    fs::remove_all(name, ignored);
  }
  return false;
}

void ScratchFolder::RemoveAbandoned(const fs::path& parent) {
  std::error_code error;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
       entry.increment(error)) {
    if (!entry->path().filename().string().starts_with(kScratchPrefix)) continue;
    if (int lock = LockScratch(entry->path()); lock >= 0) {
      std::error_code ignored;
      fs::remove_all(entry->path(), ignored);
      CloseAndForget(lock);
    }
  }
}

bool MakeWholeFile(const fs::path& file, std::string_view bytes, std::string& why) {
  std::string name = file.string() + ".XXXXXX";
  int fresh = ::mkostemp(name.data(), O_CLOEXEC);
  if (fresh < 0) {
    why = Say(kCannotMake, {file.string(), SystemTrouble(errno)});
    return false;
  }
  bool made = WriteAll(fresh, bytes) && ::fsync(fresh) == 0;
  int reason = errno;
  CloseAndForget(fresh);
  // A link, not a rename: a file that another copy made meanwhile keeps its name. Some file
  // systems have no links.
  if (made && ::link(name.c_str(), file.c_str()) != 0 && errno != EEXIST &&
      ((errno != EPERM && errno != EOPNOTSUPP) || ::rename(name.c_str(), file.c_str()) != 0)) {
    made = false;
    reason = errno;
  }
  ::unlink(name.c_str());
  if (!made) why = Say(kCannotMake, {file.string(), SystemTrouble(reason)});
  return made;
}

}  // namespace kelpin::device::desktop
