#pragma once

#include <string>
#include <utility>

#include "platform/mutex.h"
#include "platform/shell.h"
#include "tests/support/call_text.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// A device's shell: a Pocket PC that is ready, until told otherwise.
class FakeShell : public platform::Shell {
 public:
  FakeShell(Journal& journal, FailPlan& failures) : journal_(journal), failures_(failures) {}

  std::u16string PlatformType() override {
    journal_.Add("PlatformType()");
    MutexLock lock(lock_);
    return platformType_;
  }

  platform::ShellReadiness WaitForShell(std::uint32_t argument1, std::uint32_t argument2,
                                        std::uint32_t argument3, std::uint32_t argument4) override {
    journal_.Add(CallText("WaitForShell", argument1, argument2, argument3, argument4));
    if (failures_.Fails("WaitForShell")) return platform::ShellReadiness::kNotReady;
    MutexLock lock(lock_);
    return readiness_;
  }

  void ShowInputPanel(bool up) override {
    journal_.Add(CallText("ShowInputPanel", up ? "up" : "down"));
    MutexLock lock(lock_);
    inputPanelUp_ = up;
  }

  int ImmGetConversionStatus(platform::InputMethodStatus& status) override {
    journal_.Add("ImmGetConversionStatus()");
    if (failures_.Fails("ImmGetConversionStatus")) return 0;
    MutexLock lock(lock_);
    status = inputMethod_;
    return 1;
  }

  int ImmSetConversionStatus(const platform::InputMethodStatus& status) override {
    journal_.Add(CallText("ImmSetConversionStatus", Hex(status.conversion), Hex(status.sentence)));
    if (failures_.Fails("ImmSetConversionStatus")) return 0;
    MutexLock lock(lock_);
    inputMethod_ = status;
    return 1;
  }

  void SendBackKey() override { journal_.Add("SendBackKey()"); }

  void SetPlatformType(std::u16string type) {
    MutexLock lock(lock_);
    platformType_ = std::move(type);
  }

  void SetReadiness(platform::ShellReadiness readiness) {
    MutexLock lock(lock_);
    readiness_ = readiness;
  }

  void SetInputMethod(const platform::InputMethodStatus& status) {
    MutexLock lock(lock_);
    inputMethod_ = status;
  }

  platform::InputMethodStatus InputMethod() const {
    MutexLock lock(lock_);
    return inputMethod_;
  }

  bool InputPanelUp() const {
    MutexLock lock(lock_);
    return inputPanelUp_;
  }

 private:
  Journal& journal_;
  FailPlan& failures_;
  mutable Mutex lock_;
  std::u16string platformType_ GUARDED_BY(lock_) = u"PocketPC";
  platform::ShellReadiness readiness_ GUARDED_BY(lock_) = platform::ShellReadiness::kReady;
  platform::InputMethodStatus inputMethod_ GUARDED_BY(lock_);
  bool inputPanelUp_ GUARDED_BY(lock_) = false;
};

}  // namespace kelpin::test
