#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/mutex.h"

namespace kelpin::test {

// What was called, in order, one line a call: "SimDeletePhonebookEntry(1, 16, 5)". One journal is
// shared by all the fakes of a test, so that the order across ports can be asserted. Any thread.
class Journal {
 public:
  void Add(std::string entry) {
    MutexLock lock(lock_);
    entries_.push_back(std::move(entry));
  }

  std::vector<std::string> Entries() const {
    MutexLock lock(lock_);
    return entries_;
  }

  // The entries that start with `prefix`, in order.
  std::vector<std::string> Entries(std::string_view prefix) const {
    MutexLock lock(lock_);
    std::vector<std::string> found;
    for (const std::string& entry : entries_) {
      if (entry.starts_with(prefix)) found.push_back(entry);
    }
    return found;
  }

  std::size_t Count(std::string_view prefix) const { return Entries(prefix).size(); }

  void Clear() {
    MutexLock lock(lock_);
    entries_.clear();
  }

 private:
  mutable Mutex lock_;
  std::vector<std::string> entries_ GUARDED_BY(lock_);
};

}  // namespace kelpin::test
