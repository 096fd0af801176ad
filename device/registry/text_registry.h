#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/registry/reg_file.h"
#include "device/registry/saved_file.h"
#include "platform/mutex.h"
#include "platform/registry.h"

namespace kelpin::device::registry {

// The registry kept in text files: the user's file over a system file that is only read. A value
// is looked for in the user's file first; every write goes there, with FlushKey. Several processes
// may share the user's file: what one has flushed the others see when they next open a key, and
// writing different values loses none.
class TextRegistry final : public platform::Registry {
 public:
  // A file that is missing is an empty one; `systemFile` may be an empty path. Null when a file is
  // there and cannot be read: `why` names it, with line and reason, and it is left as it is.
  static std::unique_ptr<TextRegistry> Open(const std::filesystem::path& userFile,
                                            const std::filesystem::path& systemFile,
                                            std::string& why);

  platform::RegistryResult OpenKey(platform::RegistryRoot root, std::u16string_view path,
                                   std::uint32_t access, platform::RegistryHandle& key) override;
  platform::RegistryResult CreateKey(platform::RegistryRoot root, std::u16string_view path,
                                     std::uint32_t access, platform::RegistryHandle& key) override;
  platform::RegistryResult CloseKey(platform::RegistryHandle key) override;
  platform::RegistryResult QueryValue(platform::RegistryHandle key, std::u16string_view name,
                                      platform::RegistryType& type,
                                      std::vector<std::uint8_t>& data) override;
  // kInvalidData for a name or value that no file can hold.
  platform::RegistryResult SetValue(platform::RegistryHandle key, std::u16string_view name,
                                    platform::RegistryType type,
                                    std::span<const std::uint8_t> data) override;
  platform::RegistryResult FlushKey(platform::RegistryHandle key) override;

  // Why the last flush failed or the user's file could not be read again; empty when neither did.
  std::string LastProblem() const;

 private:
  struct Key {
    platform::RegistryRoot root;
    std::u16string path;
  };
  struct Change {
    platform::RegistryRoot root;
    std::u16string path;
    bool keyOnly;
    std::u16string name;
    platform::RegistryType type;
    std::vector<std::uint8_t> data;
  };

  explicit TextRegistry(std::filesystem::path userFile) : userFile_(std::move(userFile)) {}

  const Key* FindKey(platform::RegistryHandle key) const REQUIRES(lock_);
  bool HasKey(platform::RegistryRoot root, std::u16string_view path) const REQUIRES(lock_);
  platform::RegistryHandle AddHandle(platform::RegistryRoot root, std::u16string_view path)
      REQUIRES(lock_);
  void Remember(Change change) REQUIRES(lock_);
  void Apply(const Change& change) REQUIRES(lock_);
  // Takes in what another process has saved, this one's unsaved changes on top.
  bool TakeIn() REQUIRES(lock_);
  bool Save() REQUIRES(lock_);

  const std::filesystem::path userFile_;
  mutable Mutex lock_;
  RegFile system_ GUARDED_BY(lock_);
  RegFile user_ GUARDED_BY(lock_);
  FileStamp stamp_ GUARDED_BY(lock_);              // of the file that user_ was read from
  std::vector<Change> pending_ GUARDED_BY(lock_);  // in user_, not yet in the file
  std::map<platform::RegistryHandle, Key> keys_ GUARDED_BY(lock_);
  platform::RegistryHandle lastHandle_ GUARDED_BY(lock_) = 0;
  std::string problem_ GUARDED_BY(lock_);
};

}  // namespace kelpin::device::registry
