#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/registry.h"

namespace kelpin::app {

// One open key, opened for all access and closed when this goes or opens another.
class RegistryKey {
 public:
  explicit RegistryKey(platform::Registry& registry) : registry_(registry) {}
  ~RegistryKey() { Close(); }
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;

  platform::RegistryResult Open(platform::RegistryRoot root, std::u16string_view path);
  // Makes the key when it is missing.
  platform::RegistryResult CreateOrOpen(platform::RegistryRoot root, std::u16string_view path);
  void Close();
  bool IsOpen() const { return key_ != 0; }

  // A value of another type, or of another size, is kInvalidData. On failure `value` stays.
  platform::RegistryResult ReadDword(std::u16string_view name, std::uint32_t& value) const;
  // `text` is the room there is, terminator included, in UTF-16 units. A value that needs more is
  // kMoreData; one that is no text, has half a unit or no terminator at its end is kInvalidData. On
  // failure `text` stays.
  platform::RegistryResult ReadString(std::u16string_view name, std::span<char16_t> text) const;
  platform::RegistryResult WriteDword(std::u16string_view name, std::uint32_t value);
  // Written with its terminator.
  platform::RegistryResult WriteString(std::u16string_view name, std::u16string_view text);
  platform::RegistryResult Flush();

 private:
  platform::Registry& registry_;
  platform::RegistryHandle key_ = 0;
};

}  // namespace kelpin::app
