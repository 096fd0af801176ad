#pragma once

#include <cstdint>
#include <string_view>

namespace kelpin::platform {

using DeviceHandle = std::uint32_t;  // 0 is no handle

inline constexpr std::uint32_t kGenericReadWrite = 0xC0000000;
inline constexpr std::uint32_t kShareReadWrite = 3;
inline constexpr std::uint32_t kOpenExisting = 3;

// Drivers that are opened by name and take control codes. Any thread; calls do not block long.
class Devices {
 public:
  virtual ~Devices() = default;

  // 0 when there is no such device. "RIL1:" is the radio driver.
  virtual DeviceHandle OpenDevice(std::u16string_view name, std::uint32_t access,
                                  std::uint32_t share, std::uint32_t disposition,
                                  std::uint32_t flags) = 0;
  // A control code without buffers. 1 when the driver took it, else 0.
  virtual int DeviceControl(DeviceHandle device, std::uint32_t code) = 0;
  virtual void CloseDevice(DeviceHandle device) = 0;
};

}  // namespace kelpin::platform
