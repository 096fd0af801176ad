#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/mutex.h"

namespace kelpin::device::contacts {

// Numbers for contacts that an address book knows by texts: each text gets the next number when it
// is first seen and keeps it as long as the table lives. Any thread.
class NumberTable {
 public:
  std::int32_t NumberOf(const std::string& uid) {
    MutexLock lock(lock_);
    const auto [entry, isNew] =
        numbers_.try_emplace(uid, static_cast<std::int32_t>(uids_.size()) + 1);
    if (isNew) uids_.push_back(&entry->first);
    return entry->second;
  }

  // Empty for a number that was never given.
  std::string UidOf(std::int32_t number) const {
    MutexLock lock(lock_);
    const bool given = number >= 1 && static_cast<std::size_t>(number) <= uids_.size();
    return given ? *uids_[static_cast<std::size_t>(number) - 1] : std::string();
  }

 private:
  mutable Mutex lock_;
  std::unordered_map<std::string, std::int32_t> numbers_ GUARDED_BY(lock_);
  std::vector<const std::string*> uids_ GUARDED_BY(lock_);  // keys of numbers_, by number
};

}  // namespace kelpin::device::contacts
