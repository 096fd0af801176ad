#pragma once

#include <cstdint>
#include <string_view>

namespace kelpin::platform {

inline constexpr std::uint32_t kCallRequestSize = 24;
inline constexpr std::uint32_t kCallFlags = 0x41;

// A call to make. Texts live until PhoneMakeCall returns; empty is none.
struct PhoneCallRequest {
  std::uint32_t size = kCallRequestSize;
  std::uint32_t flags = kCallFlags;
  std::u16string_view destinationAddress;  // the number, as it is dialled
  std::u16string_view applicationName;
  std::u16string_view calledParty;  // who is called, to be shown
  std::u16string_view comment;
};

// The device's telephone. Screen thread; returns before anybody answers the call.
class Telephone {
 public:
  virtual ~Telephone() = default;

  // 1 when the call was handed over, else 0.
  virtual int PhoneMakeCall(const PhoneCallRequest& request) = 0;
};

}  // namespace kelpin::platform
