#include "app/registry_key.h"

#include <array>
#include <vector>

namespace kelpin::app {

using platform::RegistryResult;
using platform::RegistryType;

RegistryResult RegistryKey::Open(platform::RegistryRoot root, std::u16string_view path) {
  Close();
  return registry_.OpenKey(root, path, platform::kRegistryAllAccess, key_);
}

RegistryResult RegistryKey::CreateOrOpen(platform::RegistryRoot root, std::u16string_view path) {
  Close();
  return registry_.CreateKey(root, path, platform::kRegistryAllAccess, key_);
}

void RegistryKey::Close() {
  if (key_ == 0) {
    return;
  }
  // There is nothing to be done about a handle that does not close.
  static_cast<void>(registry_.CloseKey(key_));
  key_ = 0;
}

RegistryResult RegistryKey::ReadDword(std::u16string_view name, std::uint32_t& value) const {
  RegistryType type = RegistryType::kNone;
  std::vector<std::uint8_t> data;
  const RegistryResult result = registry_.QueryValue(key_, name, type, data);
  if (result != RegistryResult::kOk) {
    return result;
  }
  if (type != RegistryType::kDword || data.size() != 4) {
    return RegistryResult::kInvalidData;
  }
  value = static_cast<std::uint32_t>(data[0]) | static_cast<std::uint32_t>(data[1]) << 8 |
          static_cast<std::uint32_t>(data[2]) << 16 | static_cast<std::uint32_t>(data[3]) << 24;
  return RegistryResult::kOk;
}

RegistryResult RegistryKey::ReadString(std::u16string_view name, std::span<char16_t> text) const {
  RegistryType type = RegistryType::kNone;
  std::vector<std::uint8_t> data;
  const RegistryResult result = registry_.QueryValue(key_, name, type, data);
  if (result != RegistryResult::kOk) {
    return result;
  }
  if (type != RegistryType::kString && type != RegistryType::kExpandString) {
    return RegistryResult::kInvalidData;
  }
  if (data.size() > text.size() * 2) {
    return RegistryResult::kMoreData;
  }
  if (data.size() < 2 || data.size() % 2 != 0 || data[data.size() - 1] != 0 ||
      data[data.size() - 2] != 0) {
    return RegistryResult::kInvalidData;
  }
  for (std::size_t unit = 0; unit < data.size() / 2; ++unit) {
    text[unit] = static_cast<char16_t>(data[unit * 2] | data[unit * 2 + 1] << 8);
  }
  return RegistryResult::kOk;
}

RegistryResult RegistryKey::WriteDword(std::u16string_view name, std::uint32_t value) {
  const std::array<std::uint8_t, 4> data = {
      static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
      static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
  return registry_.SetValue(key_, name, RegistryType::kDword, data);
}

RegistryResult RegistryKey::WriteString(std::u16string_view name, std::u16string_view text) {
  std::vector<std::uint8_t> data;
  data.reserve((text.size() + 1) * 2);
  for (const char16_t unit : text) {
    data.push_back(static_cast<std::uint8_t>(unit));
    data.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  data.push_back(0);
  data.push_back(0);
  return registry_.SetValue(key_, name, RegistryType::kString, data);
}

RegistryResult RegistryKey::Flush() {
  return registry_.FlushKey(key_);
}

}  // namespace kelpin::app
