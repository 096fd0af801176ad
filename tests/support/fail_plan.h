#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/mutex.h"

namespace kelpin::test {

// Which platform call is to fail. One plan is shared by all the fakes of a test: it counts every
// call that can fail, of any kind, and says which one does. Any thread.
//
//   for (std::uint32_t call = 1;; ++call) {
//     FailPlan plan;
//     plan.FailCall(call);
//     … run with fakes over `plan`, check the state …
//     if (!plan.Failed()) break;  // the run made fewer calls: every one of them has failed once
//   }
class FailPlan {
 public:
  // Fails the call numbered `call`, 1 being the next one; 0 fails none. Starts counting anew.
  void FailCall(std::uint32_t call) { FailCallOf("", call); }

  // The same, counting only the calls of one name ("SimReadPhonebookEntry").
  void FailCallOf(std::string_view kind, std::uint32_t call) {
    MutexLock lock(lock_);
    kind_ = kind;
    failingCall_ = call;
    calls_ = 0;
    failedKind_.clear();
  }

  // Asked by the fakes, once a call: whether this one fails.
  bool Fails(std::string_view kind) {
    MutexLock lock(lock_);
    if (!kind_.empty() && kind_ != kind) return false;
    ++calls_;
    if (calls_ != failingCall_) return false;
    failedKind_ = kind;
    return true;
  }

  // Calls counted since the plan was made.
  std::uint32_t Calls() const {
    MutexLock lock(lock_);
    return calls_;
  }

  // Whether the planned call came.
  bool Failed() const {
    MutexLock lock(lock_);
    return !failedKind_.empty();
  }

  // The name of the call that failed, for messages; empty when none did.
  std::string FailedKind() const {
    MutexLock lock(lock_);
    return failedKind_;
  }

 private:
  mutable Mutex lock_;
  std::string kind_ GUARDED_BY(lock_);
  std::uint32_t failingCall_ GUARDED_BY(lock_) = 0;
  std::uint32_t calls_ GUARDED_BY(lock_) = 0;
  std::string failedKind_ GUARDED_BY(lock_);
};

}  // namespace kelpin::test
