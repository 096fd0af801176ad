#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <string>

#include "device/softcard/card_image.h"

namespace kelpin::device::softcard {

// The file a card image is kept in. One process holds an image at a time: a lock file stands beside
// it as long as this lives. Not thread-safe.
class ImageStore {
 public:
  // Takes the image for this process; null when another one has it, or when there is no such file:
  // `error` says which and what to do. A file in a folder that cannot be written to is opened all
  // the same; it can then not be saved.
  static std::unique_ptr<ImageStore> Open(const std::string& path, std::string& error);
  ~ImageStore();
  ImageStore(const ImageStore&) = delete;
  ImageStore& operator=(const ImageStore&) = delete;

  // On failure `image` is left as it was.
  bool Load(CardImage& image, std::string& error);
  // All or nothing: a new file beside the old one, on the disk before it takes the old one's name.
  // Keeps the file's mode; a new file is its owner's alone.
  bool Save(const CardImage& image, std::string& error);
  // Whether somebody else wrote, replaced or removed the file since it was loaded or saved here.
  bool ChangedOutside() const;

  const std::string& Path() const { return path_; }

 private:
  // What tells one state of the file from another.
  struct Stamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    bool operator==(const Stamp&) const = default;
  };

  ImageStore(std::string path, int lock);
  static bool TakeLock(const std::string& path, int& lock, std::string& error);
  static Stamp StampOf(const struct stat& status);

  const std::string path_;
  const int lock_;  // -1: the folder cannot be written to
  Stamp stamp_;
};

}  // namespace kelpin::device::softcard
