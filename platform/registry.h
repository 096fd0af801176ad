#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kelpin::platform {

using RegistryHandle = std::uint32_t;  // 0 is no handle

enum class [[nodiscard]] RegistryResult : std::uint32_t{
    kOk = 0,           kNotFound = 2,    kAccessDenied = 5, kInvalidHandle = 6,
    kInvalidData = 13, kWriteFault = 29, kMoreData = 234,
};

enum class RegistryRoot : std::uint32_t {
  kCurrentUser = 0x80000001,
  kLocalMachine = 0x80000002,
};

enum class RegistryType : std::uint32_t {
  kNone = 0,
  kString = 1,  // UTF-16LE with its terminator
  kExpandString = 2,
  kBinary = 3,
  kDword = 4,  // 4 bytes, little-endian
  kMultiString = 7,
};

inline constexpr std::uint32_t kRegistryAllAccess = 0x2001F;

// Keys and values. Key paths are separated by '\'; a leading '\' changes nothing; names compare
// without regard to case. Any thread. A write reaches other programs and the disk with FlushKey.
class Registry {
 public:
  virtual ~Registry() = default;

  // On failure `key` becomes 0.
  virtual RegistryResult OpenKey(RegistryRoot root, std::u16string_view path, std::uint32_t access,
                                 RegistryHandle& key) = 0;
  // Opens the key, made first when it is missing.
  virtual RegistryResult CreateKey(RegistryRoot root, std::u16string_view path,
                                   std::uint32_t access, RegistryHandle& key) = 0;
  virtual RegistryResult CloseKey(RegistryHandle key) = 0;
  // The bytes as stored. A missing value answers kNotFound and leaves the outputs as they were.
  virtual RegistryResult QueryValue(RegistryHandle key, std::u16string_view name,
                                    RegistryType& type, std::vector<std::uint8_t>& data) = 0;
  virtual RegistryResult SetValue(RegistryHandle key, std::u16string_view name, RegistryType type,
                                  std::span<const std::uint8_t> data) = 0;
  // Writes what has changed to where it is kept. kWriteFault: nothing was lost, the change is
  // still held in memory and the next flush tries again.
  virtual RegistryResult FlushKey(RegistryHandle key) = 0;
};

}  // namespace kelpin::platform
