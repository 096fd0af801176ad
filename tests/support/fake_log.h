#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/log.h"
#include "platform/mutex.h"

namespace kelpin::test {

class FakeLog : public platform::Log {
 public:
  void DebugOutput(std::u16string_view text) override {
    MutexLock lock(lock_);
    lines_.emplace_back(text);
  }

  std::vector<std::u16string> Lines() const {
    MutexLock lock(lock_);
    return lines_;
  }

 private:
  mutable Mutex lock_;
  std::vector<std::u16string> lines_ GUARDED_BY(lock_);
};

}  // namespace kelpin::test
