#include "device/desktop/desktop_telephone.h"

#include "device/desktop/percent_encoding.h"
#include "device/desktop/utf8.h"
#include "platform/dial_number.h"

namespace kelpin::device::desktop {

int DesktopTelephone::PhoneMakeCall(const platform::PhoneCallRequest& request) {
  if (request.size != platform::kCallRequestSize ||
      !platform::IsDialNumber(request.destinationAddress)) {
    return 0;
  }
  const std::string number = Utf8(request.destinationAddress);
  return opener_.Open("tel:" + PercentEncoded(number, "+")) ? 1 : 0;
}

}  // namespace kelpin::device::desktop
