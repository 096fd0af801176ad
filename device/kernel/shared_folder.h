#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "device/kernel/event_block.h"

namespace kelpin::device::kernel {

// An open file, closed with it.
class File {
 public:
  explicit File(int descriptor = -1) : descriptor_(descriptor) {}
  ~File();
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool IsOpen() const { return descriptor_ >= 0; }
  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

// An event in memory that other processes share, or in this process's own.
class EventMemory {
 public:
  EventMemory(File file, EventBlock* block) : file_(std::move(file)), block_(block) {}
  ~EventMemory();
  EventMemory(const EventMemory&) = delete;
  EventMemory& operator=(const EventMemory&) = delete;

  EventBlock& Block() { return *block_; }

  static std::shared_ptr<EventMemory> MakeOwn();  // null when there is no memory

 private:
  File file_;  // its shared lock tells the next opener that somebody uses the event
  EventBlock* block_;
};

// The user's folder whose files stand for named objects. Nobody else may write there.
class SharedFolder {
 public:
  // Null when the folder is missing, not this user's, or open to others; `why` says which.
  static std::unique_ptr<SharedFolder> Open(const std::filesystem::path& path, std::string& why);

  // Names are told apart by every character. A name too long for a file has no object; whether it
  // is no longer than that:
  static bool IsName(std::u16string_view name);
  // The memory of the event of this name, made (not signalled) when nobody has it open.
  std::shared_ptr<EventMemory> OpenEvent(std::u16string_view name) const;
  // The file of the mutex of this name, locked here unless somebody else has it locked.
  File OpenMutex(std::u16string_view name, bool& lockedByAnother) const;

 private:
  explicit SharedFolder(File folder) : folder_(std::move(folder)) {}

  File OpenFile(std::string_view kind, std::u16string_view name) const;

  File folder_;
};

}  // namespace kelpin::device::kernel
