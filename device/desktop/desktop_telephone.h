#pragma once

#include <string>

#include "platform/telephone.h"

namespace kelpin::device::desktop {

// The desktop's handler of tel: addresses. It shows the number and dials when its user says so.
class DesktopTelephone final : public platform::Telephone {
 public:
  explicit DesktopTelephone(std::string opener = "xdg-open") : opener_(std::move(opener)) {}

  int PhoneMakeCall(const platform::PhoneCallRequest& request) override;

 private:
  const std::string opener_;
};

}  // namespace kelpin::device::desktop
