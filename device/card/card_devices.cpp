#include "device/card/card_devices.h"

namespace kelpin::device::card {

platform::DeviceHandle CardDevices::OpenDevice(std::u16string_view name, std::uint32_t /*access*/,
                                               std::uint32_t /*share*/, std::uint32_t disposition,
                                               std::uint32_t /*flags*/) {
  if (name != u"RIL1:" || disposition != platform::kOpenExisting) return 0;
  const MutexLock lock(lock_);
  const platform::DeviceHandle device = next_++;
  open_.insert(device);
  return device;
}

int CardDevices::DeviceControl(platform::DeviceHandle device, std::uint32_t code) {
  const MutexLock lock(lock_);
  return open_.count(device) != 0 && code == kRadioOwnNumbersWritten ? 1 : 0;
}

void CardDevices::CloseDevice(platform::DeviceHandle device) {
  const MutexLock lock(lock_);
  open_.erase(device);
}

}  // namespace kelpin::device::card
