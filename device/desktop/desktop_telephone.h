#pragma once

#include <string>
#include <utility>

#include "device/desktop/address_opener.h"
#include "platform/telephone.h"

namespace kelpin::device::desktop {

// The desktop's handler of tel: addresses. It shows the number and dials when its user says so.
class DesktopTelephone final : public platform::Telephone {
 public:
  // `failed` is told when nobody takes a call after all; it may be empty.
  explicit DesktopTelephone(std::string opener = "xdg-open", AddressOpener::Failed failed = nullptr)
      : opener_(std::move(opener), std::move(failed)) {}

  int PhoneMakeCall(const platform::PhoneCallRequest& request) override;

 private:
  const AddressOpener opener_;
};

}  // namespace kelpin::device::desktop
