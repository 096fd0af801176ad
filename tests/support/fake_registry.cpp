#include "tests/support/fake_registry.h"

#include "tests/support/call_text.h"

namespace kelpin::test {
namespace {

using platform::RegistryHandle;
using platform::RegistryResult;
using platform::RegistryRoot;
using platform::RegistryType;

std::u16string Fold(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& c : folded) {
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + (u'a' - u'A'));
  }
  return folded;
}

const char* RootText(RegistryRoot root) {
  return root == RegistryRoot::kLocalMachine ? "HKLM" : "HKCU";
}

}  // namespace

FakeRegistry::KeyName FakeRegistry::Name(RegistryRoot root, std::u16string_view path) {
  if (path.starts_with(u'\\')) path.remove_prefix(1);
  return {static_cast<std::uint32_t>(root), Fold(path)};
}

RegistryResult FakeRegistry::Open(const char* call, RegistryRoot root, std::u16string_view path,
                                  std::uint32_t access, bool create, RegistryHandle& key) {
  journal_.Add(CallText(call, RootText(root), path, Hex(access)));
  key = 0;
  if (failures_.Fails(call)) return RegistryResult::kAccessDenied;
  MutexLock lock(lock_);
  const KeyName name = Name(root, path);
  for (OpenRule& rule : rules_) {
    if (rule.key != name) continue;
    if (rule.nth == 0) return rule.result;
    if (--rule.nth > 0) continue;
    const RegistryResult result = rule.result;
    rule.key = {};
    return result;
  }
  if (create) {
    keys_.try_emplace(name);
  } else if (!keys_.contains(name)) {
    return RegistryResult::kNotFound;
  }
  key = ++lastHandle_;
  open_.emplace(key, name);
  return RegistryResult::kOk;
}

RegistryResult FakeRegistry::OpenKey(RegistryRoot root, std::u16string_view path,
                                     std::uint32_t access, RegistryHandle& key) {
  return Open("OpenKey", root, path, access, false, key);
}

RegistryResult FakeRegistry::CreateKey(RegistryRoot root, std::u16string_view path,
                                       std::uint32_t access, RegistryHandle& key) {
  return Open("CreateKey", root, path, access, true, key);
}

RegistryResult FakeRegistry::CloseKey(RegistryHandle key) {
  journal_.Add(CallText("CloseKey", key));
  MutexLock lock(lock_);
  return open_.erase(key) == 1 ? RegistryResult::kOk : RegistryResult::kInvalidHandle;
}

FakeRegistry::Values* FakeRegistry::Find(RegistryHandle key) {
  const auto open = open_.find(key);
  return open == open_.end() ? nullptr : &keys_[open->second];
}

RegistryResult FakeRegistry::QueryValue(RegistryHandle key, std::u16string_view name,
                                        RegistryType& type, std::vector<std::uint8_t>& data) {
  journal_.Add(CallText("QueryValue", key, name));
  if (failures_.Fails("QueryValue")) return RegistryResult::kAccessDenied;
  MutexLock lock(lock_);
  const Values* values = Find(key);
  if (values == nullptr) return RegistryResult::kInvalidHandle;
  const auto found = values->find(Fold(name));
  if (found == values->end()) return RegistryResult::kNotFound;
  type = found->second.type;
  data = found->second.data;
  return RegistryResult::kOk;
}

RegistryResult FakeRegistry::SetValue(RegistryHandle key, std::u16string_view name,
                                      RegistryType type, std::span<const std::uint8_t> data) {
  journal_.Add(CallText("SetValue", key, name, static_cast<std::uint32_t>(type),
                        HexBytes(data.data(), data.size())));
  if (failures_.Fails("SetValue")) return RegistryResult::kAccessDenied;
  MutexLock lock(lock_);
  Values* values = Find(key);
  if (values == nullptr) return RegistryResult::kInvalidHandle;
  (*values)[Fold(name)] = {type, {data.begin(), data.end()}};
  return RegistryResult::kOk;
}

RegistryResult FakeRegistry::FlushKey(RegistryHandle key) {
  journal_.Add(CallText("FlushKey", key));
  if (failures_.Fails("FlushKey")) return RegistryResult::kWriteFault;
  MutexLock lock(lock_);
  if (!open_.contains(key)) return RegistryResult::kInvalidHandle;
  flushed_ = keys_;
  return RegistryResult::kOk;
}

void FakeRegistry::Put(RegistryRoot root, std::u16string_view path, std::u16string_view name,
                       Value value) {
  MutexLock lock(lock_);
  flushed_[Name(root, path)][Fold(name)] = value;
  keys_[Name(root, path)][Fold(name)] = std::move(value);
}

void FakeRegistry::PutDword(RegistryRoot root, std::u16string_view path, std::u16string_view name,
                            std::uint32_t value) {
  std::vector<std::uint8_t> data;
  for (int shift = 0; shift < 32; shift += 8) {
    data.push_back(static_cast<std::uint8_t>(value >> shift));
  }
  Put(root, path, name, {RegistryType::kDword, std::move(data)});
}

void FakeRegistry::PutString(RegistryRoot root, std::u16string_view path, std::u16string_view name,
                             std::u16string_view text) {
  std::vector<std::uint8_t> data;
  for (const char16_t c : text) {
    data.push_back(static_cast<std::uint8_t>(c & 0xFF));
    data.push_back(static_cast<std::uint8_t>(c >> 8));
  }
  data.insert(data.end(), 2, std::uint8_t{0});
  Put(root, path, name, {RegistryType::kString, std::move(data)});
}

void FakeRegistry::PutKey(RegistryRoot root, std::u16string_view path) {
  MutexLock lock(lock_);
  keys_.try_emplace(Name(root, path));
  flushed_.try_emplace(Name(root, path));
}

void FakeRegistry::SetOpenResult(RegistryRoot root, std::u16string_view path, std::uint32_t nth,
                                 RegistryResult result) {
  MutexLock lock(lock_);
  rules_.push_back({Name(root, path), nth, result});
}

std::optional<FakeRegistry::Value> FakeRegistry::Look(const std::map<KeyName, Values>& keys,
                                                      const KeyName& key,
                                                      std::u16string_view name) {
  const auto values = keys.find(key);
  if (values == keys.end()) return std::nullopt;
  const auto found = values->second.find(Fold(name));
  if (found == values->second.end()) return std::nullopt;
  return found->second;
}

std::optional<FakeRegistry::Value> FakeRegistry::Get(RegistryRoot root, std::u16string_view path,
                                                     std::u16string_view name) const {
  MutexLock lock(lock_);
  return Look(keys_, Name(root, path), name);
}

std::optional<std::uint32_t> FakeRegistry::Dword(RegistryRoot root, std::u16string_view path,
                                                 std::u16string_view name) const {
  const std::optional<Value> value = Get(root, path, name);
  if (!value || value->type != RegistryType::kDword || value->data.size() != 4) return {};
  std::uint32_t dword = 0;
  for (std::size_t i = 4; i-- > 0;) dword = (dword << 8) | value->data[i];
  return dword;
}

std::optional<std::u16string> FakeRegistry::String(RegistryRoot root, std::u16string_view path,
                                                   std::u16string_view name) const {
  const std::optional<Value> value = Get(root, path, name);
  if (!value || value->type != RegistryType::kString || value->data.size() < 2) return {};
  std::u16string text;
  for (std::size_t i = 0; i + 3 < value->data.size(); i += 2) {
    text += static_cast<char16_t>(value->data[i] | (value->data[i + 1] << 8));
  }
  return text;
}

std::optional<FakeRegistry::Value> FakeRegistry::Flushed(RegistryRoot root,
                                                         std::u16string_view path,
                                                         std::u16string_view name) const {
  MutexLock lock(lock_);
  return Look(flushed_, Name(root, path), name);
}

std::size_t FakeRegistry::ValueCount(RegistryRoot root, std::u16string_view path) const {
  MutexLock lock(lock_);
  const auto values = keys_.find(Name(root, path));
  return values == keys_.end() ? 0 : values->second.size();
}

std::size_t FakeRegistry::OpenHandles() const {
  MutexLock lock(lock_);
  return open_.size();
}

}  // namespace kelpin::test
