#include "device/softcard/image_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "device/softcard/image_reader.h"
#include "device/softcard/image_writer.h"
#include "platform/system_trouble.h"

namespace kelpin::device::softcard {

using platform::Say;
using platform::SystemTrouble;
using platform::Words;

namespace {

constexpr std::string_view kCannotOpen = Words("%s: the card file cannot be opened: %s");
constexpr std::string_view kCannotRead = Words("%s: the card file cannot be read: %s");
constexpr std::string_view kCannotLock = Words("%s: the card file cannot be locked: %s");

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number_; }
  bool Good() const { return number_ >= 0; }
  bool Close() {
    const int number = std::exchange(number_, -1);
    return number < 0 || close(number) == 0;
  }
  int Release() { return std::exchange(number_, -1); }

 private:
  int number_;
};

bool ReadAll(int descriptor, std::size_t limit, std::string& text) {
  char block[65536];
  for (;;) {
    const ssize_t got = read(descriptor, block, sizeof block);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got <= 0) {
      return got == 0;
    }
    text.append(block, static_cast<std::size_t>(got));
    if (text.size() > limit) {
      return true;  // too large; the reader says so
    }
  }
}

bool WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t put = write(descriptor, text.data(), text.size());
    if (put < 0 && errno == EINTR) {
      continue;
    }
    if (put < 0) {
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(put));
  }
  return true;
}

std::string Folder(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

std::string LockPath(const std::string& path) {
  return path + ".lock";
}

// "kelpin (process 1234)", as the holder wrote it.
std::string Holder(int lock) {
  std::string text;
  if (!ReadAll(lock, 128, text) || text.find('\n') == std::string::npos) {
    return Say("another program");
  }
  return text.substr(0, text.find('\n'));
}

}  // namespace

ImageStore::ImageStore(std::string path, int lock) : path_(std::move(path)), lock_(lock) {}

ImageStore::~ImageStore() {
  if (lock_ >= 0) {
    // Removed while it is still held: who opened it meanwhile finds it gone and opens anew.
    unlink(LockPath(path_).c_str());
    close(lock_);
  }
}

bool ImageStore::TakeLock(const std::string& path, int& lock, std::string& error) {
  const std::string name = LockPath(path);
  for (;;) {
    Descriptor file(
        open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    if (!file.Good()) {
      if (errno == EACCES || errno == EROFS || errno == EPERM) {
        lock = -1;
        return true;
      }
      error = Say(kCannotLock, {name, SystemTrouble(errno)});
      return false;
    }
    if (flock(file.Number(), LOCK_EX | LOCK_NB) != 0) {
      error = errno == EWOULDBLOCK
                  ? Say("%s is in use by %s; close it there, or open a copy of the file",
                        {path, Holder(file.Number())})
                  : Say(kCannotLock, {name, SystemTrouble(errno)});
      return false;
    }
    struct stat held = {};
    struct stat named = {};
    if (fstat(file.Number(), &held) != 0 || stat(name.c_str(), &named) != 0 ||
        held.st_ino != named.st_ino || held.st_dev != named.st_dev) {
      continue;  // its last holder removed it between our open and our lock
    }
    const std::string holder = std::string(program_invocation_short_name) + " (process " +
                               std::to_string(getpid()) + ")\n";
    if (ftruncate(file.Number(), 0) != 0 || !WriteAll(file.Number(), holder)) {
      // The name is a courtesy to who comes second; the lock holds without it.
    }
    lock = file.Release();
    return true;
  }
}

std::unique_ptr<ImageStore> ImageStore::Open(const std::string& path, std::string& error) {
  // The file itself, not a link to it: a save puts a new file in its place.
  char* resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) {
    error = Say(kCannotOpen, {path, SystemTrouble(errno)});
    return nullptr;
  }
  const std::string real = resolved;
  std::free(resolved);
  struct stat status = {};
  if (stat(real.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    error = Say("%s: not a file, and a card file is wanted. Name one", {path});
    return nullptr;
  }
  int lock = -1;
  if (!TakeLock(real, lock, error)) {
    return nullptr;
  }
  return std::unique_ptr<ImageStore>(new ImageStore(real, lock));
}

ImageStore::Stamp ImageStore::StampOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
          status.st_mtim.tv_nsec};
}

bool ImageStore::ChangedOutside() const {
  struct stat status = {};
  return stat(path_.c_str(), &status) != 0 || StampOf(status) != stamp_;
}

bool ImageStore::Load(CardImage& image, std::string& error) {
  const Descriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status = {};
  std::string text;
  if (!file.Good() || fstat(file.Number(), &status) != 0 ||
      !ReadAll(file.Number(), kMaxImageText, text)) {
    error = Say(kCannotRead, {path_, SystemTrouble(errno)});
    return false;
  }
  std::string why;
  if (!ReadImage(text, image, why)) {
    error = Say(
        "%s: not a card file, or a damaged one; it was left as it is. Put a copy of it back in its "
        "place, or open another one (%s)",
        {path_, why});
    return false;
  }
  stamp_ = StampOf(status);
  return true;
}

bool ImageStore::Save(const CardImage& image, std::string& error) {
  const auto fail = [this, &error](int number) {
    error = Say("%s: the card file cannot be saved: %s", {path_, SystemTrouble(number)});
    return false;
  };
  if (lock_ < 0) {
    return fail(EROFS);
  }
  struct stat old = {};
  const mode_t mode = stat(path_.c_str(), &old) == 0 ? old.st_mode & 07777 : 0600;
  // One that a killed program left behind is nobody's: who saves has the lock.
  const std::string name = Folder(path_) + "." + path_.substr(Folder(path_).size()) + ".new";
  if (unlink(name.c_str()) != 0 && errno != ENOENT) {
    return fail(errno);
  }
  Descriptor file(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file.Good()) {
    return fail(errno);
  }
  struct stat status = {};
  const bool written = fchmod(file.Number(), mode) == 0 &&
                       WriteAll(file.Number(), WriteImage(image)) && fsync(file.Number()) == 0 &&
                       fstat(file.Number(), &status) == 0 && file.Close() &&
                       rename(name.c_str(), path_.c_str()) == 0;
  if (!written) {
    const int number = errno;
    unlink(name.c_str());
    return fail(number);
  }
  stamp_ = StampOf(status);
  // The new name reaches the disk with its folder; the file is whole either way.
  const Descriptor folder(open(Folder(path_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.Good()) {
    static_cast<void>(fsync(folder.Number()));
  }
  return true;
}

}  // namespace kelpin::device::softcard
