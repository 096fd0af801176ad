#pragma once

#include <cstdint>
#include <set>

#include "platform/devices.h"
#include "platform/mutex.h"

namespace kelpin::device::card {

// The radio driver as a device, "RIL1:". It takes one control code, by which a program says that it
// has written the card's own numbers; the service knows that already.
inline constexpr std::uint32_t kRadioOwnNumbersWritten = 0x03000338;

class CardDevices final : public platform::Devices {
 public:
  platform::DeviceHandle OpenDevice(std::u16string_view name, std::uint32_t access,
                                    std::uint32_t share, std::uint32_t disposition,
                                    std::uint32_t flags) override;
  int DeviceControl(platform::DeviceHandle device, std::uint32_t code) override;
  void CloseDevice(platform::DeviceHandle device) override;

 private:
  Mutex lock_;
  std::set<platform::DeviceHandle> open_ GUARDED_BY(lock_);
  platform::DeviceHandle next_ GUARDED_BY(lock_) = 1;
};

}  // namespace kelpin::device::card
