#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/mutex.h"
#include "platform/registry.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// A registry in memory, empty at first. What was flushed is kept apart from what was written.
class FakeRegistry : public platform::Registry {
 public:
  struct Value {
    platform::RegistryType type = platform::RegistryType::kNone;
    std::vector<std::uint8_t> data;
    bool operator==(const Value&) const = default;
  };

  FakeRegistry(Journal& journal, FailPlan& failures) : journal_(journal), failures_(failures) {}

  platform::RegistryResult OpenKey(platform::RegistryRoot root, std::u16string_view path,
                                   std::uint32_t access, platform::RegistryHandle& key) override;
  platform::RegistryResult CreateKey(platform::RegistryRoot root, std::u16string_view path,
                                     std::uint32_t access, platform::RegistryHandle& key) override;
  platform::RegistryResult CloseKey(platform::RegistryHandle key) override;
  platform::RegistryResult QueryValue(platform::RegistryHandle key, std::u16string_view name,
                                      platform::RegistryType& type,
                                      std::vector<std::uint8_t>& data) override;
  platform::RegistryResult SetValue(platform::RegistryHandle key, std::u16string_view name,
                                    platform::RegistryType type,
                                    std::span<const std::uint8_t> data) override;
  platform::RegistryResult FlushKey(platform::RegistryHandle key) override;

  // What is stored, put there by somebody else: no journal line, flushed already.
  void Put(platform::RegistryRoot root, std::u16string_view path, std::u16string_view name,
           Value value);
  void PutDword(platform::RegistryRoot root, std::u16string_view path, std::u16string_view name,
                std::uint32_t value);
  // With its terminator.
  void PutString(platform::RegistryRoot root, std::u16string_view path, std::u16string_view name,
                 std::u16string_view text);
  // An empty key.
  void PutKey(platform::RegistryRoot root, std::u16string_view path);

  // The `nth` open or create of the key from now on (1 = the next one, 0 = every one) answers
  // `result`.
  void SetOpenResult(platform::RegistryRoot root, std::u16string_view path, std::uint32_t nth,
                     platform::RegistryResult result);

  std::optional<Value> Get(platform::RegistryRoot root, std::u16string_view path,
                           std::u16string_view name) const;
  std::optional<std::uint32_t> Dword(platform::RegistryRoot root, std::u16string_view path,
                                     std::u16string_view name) const;
  // Without its terminator.
  std::optional<std::u16string> String(platform::RegistryRoot root, std::u16string_view path,
                                       std::u16string_view name) const;
  // The value as of the last flush: what another program, or the next start, sees.
  std::optional<Value> Flushed(platform::RegistryRoot root, std::u16string_view path,
                               std::u16string_view name) const;
  std::size_t ValueCount(platform::RegistryRoot root, std::u16string_view path) const;
  std::size_t OpenHandles() const;

 private:
  using KeyName = std::pair<std::uint32_t, std::u16string>;
  using Values = std::map<std::u16string, Value>;
  struct OpenRule {
    KeyName key;
    std::uint32_t nth = 0;
    platform::RegistryResult result = platform::RegistryResult::kOk;
  };

  static KeyName Name(platform::RegistryRoot root, std::u16string_view path);
  platform::RegistryResult Open(const char* call, platform::RegistryRoot root,
                                std::u16string_view path, std::uint32_t access, bool create,
                                platform::RegistryHandle& key);
  Values* Find(platform::RegistryHandle key) REQUIRES(lock_);
  static std::optional<Value> Look(const std::map<KeyName, Values>& keys, const KeyName& key,
                                   std::u16string_view name);

  Journal& journal_;
  FailPlan& failures_;
  mutable Mutex lock_;
  std::map<KeyName, Values> keys_ GUARDED_BY(lock_);
  std::map<KeyName, Values> flushed_ GUARDED_BY(lock_);
  std::map<platform::RegistryHandle, KeyName> open_ GUARDED_BY(lock_);
  std::vector<OpenRule> rules_ GUARDED_BY(lock_);
  platform::RegistryHandle lastHandle_ GUARDED_BY(lock_) = 0;
};

}  // namespace kelpin::test
