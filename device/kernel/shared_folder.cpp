#include "device/kernel/shared_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

#include "platform/system_trouble.h"

namespace kelpin::device::kernel {

using platform::Say;

namespace {

constexpr std::size_t kMaxFileName = 200;
constexpr std::string_view kEvent = "event-";
constexpr std::string_view kMutex = "mutex-";
constexpr int kLockTries = 500;
constexpr std::chrono::milliseconds kLockPause(10);

// "event-" or "mutex-" and the name, what is no letter, digit or '.', '-', '_' as %XXXX.
std::string FileName(std::string_view kind, std::u16string_view name) {
  std::string file(kind);
  for (const char16_t unit : name) {
    const bool plain = (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
                       (unit >= u'0' && unit <= u'9') || unit == u'.' || unit == u'-' ||
                       unit == u'_';
    if (plain) {
      file.push_back(static_cast<char>(unit));
    } else {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "%%%04X", static_cast<unsigned>(unit));
      file += escaped;
    }
  }
  return file;
}

EventBlock* Map(int descriptor) {
  const int flags = descriptor < 0 ? MAP_SHARED | MAP_ANONYMOUS : MAP_SHARED;
  void* memory = ::mmap(nullptr, sizeof(EventBlock), PROT_READ | PROT_WRITE, flags, descriptor, 0);
  return memory == MAP_FAILED ? nullptr : static_cast<EventBlock*>(memory);
}

// Room for the block on the disk or in memory now, so that no later store finds none.
bool MakeRoom(int descriptor) {
  return ::ftruncate(descriptor, 0) == 0 &&
         ::posix_fallocate(descriptor, 0, sizeof(EventBlock)) == 0;
}

bool HasRoom(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 &&
         status.st_size >= static_cast<::off_t>(sizeof(EventBlock));
}

}  // namespace

File::~File() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

File::File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

File& File::operator=(File&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

EventMemory::~EventMemory() {
  ::munmap(block_, sizeof(EventBlock));
}

std::shared_ptr<EventMemory> EventMemory::MakeOwn() {
  EventBlock* block = Map(-1);
  if (block == nullptr) return nullptr;
  auto memory = std::make_shared<EventMemory>(File(), block);
  return block->Initialise() ? memory : nullptr;
}

std::unique_ptr<SharedFolder> SharedFolder::Open(const std::filesystem::path& path,
                                                 std::string& why) {
  File folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (!folder.IsOpen() || ::fstat(folder.Descriptor(), &status) != 0) {
    why =
        Say("%s: the folder cannot be opened: %s", {path.string(), platform::SystemTrouble(errno)});
    return nullptr;
  }
  if (status.st_uid != ::geteuid()) {
    why =
        Say("%s: the folder belongs to another user. Have it removed, or have it given to you with "
            "\"sudo chown\"",
            {path.string()});
    return nullptr;
  }
  if ((status.st_mode & 077) != 0) {
    why =
        Say("%s: the folder is open to other users. Close it with \"chmod 700\"", {path.string()});
    return nullptr;
  }
  return std::unique_ptr<SharedFolder>(new SharedFolder(std::move(folder)));
}

bool SharedFolder::IsName(std::u16string_view name) {
  return FileName(kEvent, name).size() <= kMaxFileName;
}

File SharedFolder::OpenFile(std::string_view kind, std::u16string_view name) const {
  const std::string fileName = FileName(kind, name);
  if (fileName.size() > kMaxFileName) return File();
  return File(::openat(folder_.Descriptor(), fileName.c_str(),
                       O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
}

// Everybody who has the event open holds a shared lock on its file, and an exclusive one while it
// is made. So an exclusive lock can be had only when nobody has the event open: then it is made
// anew. Turning the one lock into the other lets others in between; they do the same.
std::shared_ptr<EventMemory> SharedFolder::OpenEvent(std::u16string_view name) const {
  File file = OpenFile(kEvent, name);
  if (!file.IsOpen()) return nullptr;
  const int descriptor = file.Descriptor();
  for (int tries = 0; tries < kLockTries; ++tries) {
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
      EventBlock* block = MakeRoom(descriptor) ? Map(descriptor) : nullptr;
      if (block == nullptr) return nullptr;
      const bool made = block->Initialise();
      ::munmap(block, sizeof(EventBlock));
      if (!made) return nullptr;
    }
    if (::flock(descriptor, LOCK_SH | LOCK_NB) == 0 && HasRoom(descriptor)) {
      EventBlock* block = Map(descriptor);
      if (block == nullptr) return nullptr;
      if (block->IsInitialised()) return std::make_shared<EventMemory>(std::move(file), block);
      ::munmap(block, sizeof(EventBlock));
    }
    // Somebody makes it at this moment, or was killed while making it.
    ::flock(descriptor, LOCK_UN);
    std::this_thread::sleep_for(kLockPause);
  }
  return nullptr;
}

File SharedFolder::OpenMutex(std::u16string_view name, bool& lockedByAnother) const {
  File file = OpenFile(kMutex, name);
  lockedByAnother = false;
  if (!file.IsOpen()) return file;
  if (::flock(file.Descriptor(), LOCK_EX | LOCK_NB) == 0) return file;
  lockedByAnother = errno == EWOULDBLOCK;
  return lockedByAnother ? std::move(file) : File();
}

}  // namespace kelpin::device::kernel
