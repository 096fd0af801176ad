#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/mutex.h"
#include "platform/programs.h"
#include "tests/support/call_text.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"

namespace kelpin::test {

class FakePrograms : public platform::Programs {
 public:
  struct Start {
    std::u16string program;
    std::u16string commandLine;
    bool operator==(const Start&) const = default;
  };

  struct Composed {
    std::u16string recipient;
    std::u16string messageClass;
    bool operator==(const Composed&) const = default;
  };

  FakePrograms(Journal& journal, FailPlan& failures) : journal_(journal), failures_(failures) {}

  int StartProgram(std::u16string_view program, std::u16string_view commandLine) override {
    journal_.Add(CallText("StartProgram", program, commandLine));
    if (failures_.Fails("StartProgram")) return 0;
    MutexLock lock(lock_);
    if (!startable_) return 0;
    started_.push_back({std::u16string(program), std::u16string(commandLine)});
    return 1;
  }

  int CallComposer(std::u16string_view library, std::u16string_view routine,
                   const platform::ComposeMessageRequest& request) override {
    journal_.Add(
        CallText("CallComposer", library, routine, request.recipient, request.messageClass));
    if (failures_.Fails("CallComposer")) return 0;
    MutexLock lock(lock_);
    if (!startable_ || request.size != 32) return 0;
    composed_.push_back({std::u16string(request.recipient), std::u16string(request.messageClass)});
    return 1;
  }

  // Whether programs can be started at all.
  void SetStartable(bool startable) {
    MutexLock lock(lock_);
    startable_ = startable;
  }

  // The programs that were started, in order.
  std::vector<Start> Started() const {
    MutexLock lock(lock_);
    return started_;
  }

  // The messages that were handed to the composer library, in order.
  std::vector<Composed> ComposedMessages() const {
    MutexLock lock(lock_);
    return composed_;
  }

 private:
  Journal& journal_;
  FailPlan& failures_;
  mutable Mutex lock_;
  bool startable_ GUARDED_BY(lock_) = true;
  std::vector<Start> started_ GUARDED_BY(lock_);
  std::vector<Composed> composed_ GUARDED_BY(lock_);
};

}  // namespace kelpin::test
