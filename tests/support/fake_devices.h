#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "platform/devices.h"
#include "platform/mutex.h"
#include "tests/support/call_text.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// A system whose one device is the radio driver "RIL1:".
class FakeDevices : public platform::Devices {
 public:
  FakeDevices(Journal& journal, FailPlan& failures) : journal_(journal), failures_(failures) {}

  platform::DeviceHandle OpenDevice(std::u16string_view name, std::uint32_t access,
                                    std::uint32_t share, std::uint32_t disposition,
                                    std::uint32_t flags) override {
    journal_.Add(CallText("OpenDevice", name, Hex(access), share, disposition, flags));
    if (failures_.Fails("OpenDevice")) return 0;
    MutexLock lock(lock_);
    if (!present_ || name != u"RIL1:") return 0;
    open_.insert(++lastHandle_);
    return lastHandle_;
  }

  int DeviceControl(platform::DeviceHandle device, std::uint32_t code) override {
    journal_.Add(CallText("DeviceControl", device, Hex(code)));
    if (failures_.Fails("DeviceControl")) return 0;
    MutexLock lock(lock_);
    return open_.contains(device) ? 1 : 0;
  }

  void CloseDevice(platform::DeviceHandle device) override {
    journal_.Add(CallText("CloseDevice", device));
    MutexLock lock(lock_);
    open_.erase(device);
  }

  void SetPresent(bool present) {
    MutexLock lock(lock_);
    present_ = present;
  }

  std::size_t OpenHandles() const {
    MutexLock lock(lock_);
    return open_.size();
  }

 private:
  Journal& journal_;
  FailPlan& failures_;
  mutable Mutex lock_;
  bool present_ GUARDED_BY(lock_) = true;
  platform::DeviceHandle lastHandle_ GUARDED_BY(lock_) = 0;
  std::set<platform::DeviceHandle> open_ GUARDED_BY(lock_);
};

}  // namespace kelpin::test
