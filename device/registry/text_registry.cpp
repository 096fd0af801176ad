#include "device/registry/text_registry.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "device/registry/reg_text.h"
#include "platform/wording.h"

namespace kelpin::device::registry {
namespace {

using platform::RegistryHandle;
using platform::RegistryResult;
using platform::RegistryRoot;
using platform::RegistryType;

constexpr std::uint32_t kLockMilliseconds = 5000;

// An absent file reads as an empty one.
bool ReadRegFile(const std::filesystem::path& path, RegFile& file, FileStamp& stamp,
                 std::string& why) {
  std::string bytes;
  FileStamp met;
  RegFile parsed;
  switch (ReadWholeFile(path, kMaxFileBytes, bytes, met, why)) {
    case ReadOutcome::kFailed:
      return false;
    case ReadOutcome::kMissing:
      break;
    case ReadOutcome::kRead: {
      RegError error;
      if (!RegFile::Parse(bytes, parsed, error)) {
        why = platform::Say(
            "%s:%s: %s. The settings file was left as it is: correct this line, or "
            "move the file away, and start again",
            {path.string(), std::to_string(error.line), error.reason});
        return false;
      }
    }
  }
  file = std::move(parsed);
  stamp = met;
  return true;
}

// Where the file really is: a save must not put a file in the place of the user's link.
std::filesystem::path Resolve(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
  return error ? path : resolved;
}

}  // namespace

std::unique_ptr<TextRegistry> TextRegistry::Open(const std::filesystem::path& userFile,
                                                 const std::filesystem::path& systemFile,
                                                 std::string& why) {
  if (userFile.empty()) {
    why = platform::Say("The settings file has no name. Name one with --registry FILE");
    return nullptr;
  }
  std::unique_ptr<TextRegistry> registry(new TextRegistry(Resolve(userFile)));
  MutexLock lock(registry->lock_);
  FileStamp ignored;
  if (!systemFile.empty() && !ReadRegFile(systemFile, registry->system_, ignored, why)) {
    return nullptr;
  }
  if (!ReadRegFile(registry->userFile_, registry->user_, registry->stamp_, why)) return nullptr;
  return registry;
}

RegistryResult TextRegistry::OpenKey(RegistryRoot root, std::u16string_view path, std::uint32_t,
                                     RegistryHandle& key) {
  MutexLock lock(lock_);
  key = 0;
  TakeIn();
  if (!HasKey(root, path)) return RegistryResult::kNotFound;
  key = AddHandle(root, path);
  return RegistryResult::kOk;
}

RegistryResult TextRegistry::CreateKey(RegistryRoot root, std::u16string_view path, std::uint32_t,
                                       RegistryHandle& key) {
  MutexLock lock(lock_);
  key = 0;
  if (!IsStorablePath(TrimPath(path))) return RegistryResult::kInvalidData;
  TakeIn();
  if (!HasKey(root, path)) {
    Remember({root, std::u16string(TrimPath(path)), true, {}, RegistryType::kNone, {}});
  }
  key = AddHandle(root, path);
  return RegistryResult::kOk;
}

RegistryResult TextRegistry::CloseKey(RegistryHandle key) {
  MutexLock lock(lock_);
  return keys_.erase(key) != 0 ? RegistryResult::kOk : RegistryResult::kInvalidHandle;
}

RegistryResult TextRegistry::QueryValue(RegistryHandle key, std::u16string_view name,
                                        RegistryType& type, std::vector<std::uint8_t>& data) {
  MutexLock lock(lock_);
  const Key* opened = FindKey(key);
  if (opened == nullptr) return RegistryResult::kInvalidHandle;
  const RegValue* value = user_.Find(opened->root, opened->path, name);
  if (value == nullptr) value = system_.Find(opened->root, opened->path, name);
  if (value == nullptr) return RegistryResult::kNotFound;
  type = value->type;
  data = value->data;
  return RegistryResult::kOk;
}

RegistryResult TextRegistry::SetValue(RegistryHandle key, std::u16string_view name,
                                      RegistryType type, std::span<const std::uint8_t> data) {
  MutexLock lock(lock_);
  const Key* opened = FindKey(key);
  if (opened == nullptr) return RegistryResult::kInvalidHandle;
  if (!IsStorableName(name) || data.size() > kMaxValueBytes) return RegistryResult::kInvalidData;
  Remember(
      {opened->root, opened->path, false, std::u16string(name), type, {data.begin(), data.end()}});
  return RegistryResult::kOk;
}

RegistryResult TextRegistry::FlushKey(RegistryHandle key) {
  MutexLock lock(lock_);
  if (FindKey(key) == nullptr) return RegistryResult::kInvalidHandle;
  if (pending_.empty()) return RegistryResult::kOk;
  return Save() ? RegistryResult::kOk : RegistryResult::kWriteFault;
}

std::string TextRegistry::LastProblem() const {
  MutexLock lock(lock_);
  return problem_;
}

const TextRegistry::Key* TextRegistry::FindKey(RegistryHandle key) const {
  const auto found = keys_.find(key);
  return found == keys_.end() ? nullptr : &found->second;
}

bool TextRegistry::HasKey(RegistryRoot root, std::u16string_view path) const {
  const bool known = root == RegistryRoot::kCurrentUser || root == RegistryRoot::kLocalMachine;
  if (!known) return false;
  return TrimPath(path).empty() || user_.HasKey(root, path) || system_.HasKey(root, path);
}

RegistryHandle TextRegistry::AddHandle(RegistryRoot root, std::u16string_view path) {
  do {
    ++lastHandle_;
  } while (lastHandle_ == 0 || keys_.count(lastHandle_) != 0);
  keys_.emplace(lastHandle_, Key{root, std::u16string(TrimPath(path))});
  return lastHandle_;
}

void TextRegistry::Remember(Change change) {
  Apply(change);
  const auto same = std::find_if(pending_.begin(), pending_.end(), [&](const Change& held) {
    return held.root == change.root && held.keyOnly == change.keyOnly &&
           FoldCase(held.path) == FoldCase(change.path) &&
           FoldCase(held.name) == FoldCase(change.name);
  });
  if (same != pending_.end()) {
    *same = std::move(change);
  } else {
    pending_.push_back(std::move(change));
  }
}

void TextRegistry::Apply(const Change& change) {
  if (change.keyOnly) {
    user_.AddKey(change.root, change.path);
  } else {
    user_.Set(change.root, change.path, change.name, change.type, change.data);
  }
}

bool TextRegistry::TakeIn() {
  if (StampOf(userFile_) == stamp_) return true;
  if (!ReadRegFile(userFile_, user_, stamp_, problem_)) return false;
  for (const Change& change : pending_) Apply(change);
  return true;
}

bool TextRegistry::Save() {
  FileLock fileLock;
  if (!fileLock.Acquire(userFile_, kLockMilliseconds, problem_) || !TakeIn()) return false;
  const std::string text = user_.Text();
  // What could not be read again at the next start must not replace what can.
  RegFile readBack;
  RegError error;
  if (!RegFile::Parse(text, readBack, error)) {
    problem_ = platform::Say(
        "%s: the settings file would not be readable, and was not written: line %s: %s",
        {userFile_.string(), std::to_string(error.line), error.reason});
    return false;
  }
  if (!SaveAtomically(userFile_, text, stamp_, problem_)) return false;
  pending_.clear();
  problem_.clear();
  return true;
}

}  // namespace kelpin::device::registry
