#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelpin::device::desktop {

// What the desktop's openers are asked for.
struct MessageAddress {
  std::string scheme;    // "sms", "mailto", "mmsto"
  std::string address;   // percent-encoded; follows "scheme:"
  std::string fallback;  // the scheme to take where nobody opens the first; empty when none

  std::string Uri() const { return scheme + ":" + address; }
  std::string FallbackUri() const { return fallback + ":" + address; }
};

// The command lines of the messaging programs, as an address. None for what is not exactly one of
// them, or whose recipient is no number or e-mail address. A name never changes the recipient: that
// is what stands in the last pair of angle brackets. Any thread.
//
//   \Windows\tmail.exe  -service "SMS" -to "NAME<NUMBER>"   sms:NUMBER
//   \Windows\tmail.exe  mailto:NAME<ADDRESS>                mailto:ADDRESS
//   \Windows\MMSC.exe   "1" "NUMBER"                        mmsto:NUMBER, else sms:NUMBER
std::optional<MessageAddress> MessageOfCommand(std::u16string_view program,
                                               std::u16string_view commandLine);

// The same for the composer library: "IPM.SMStext" to a number, "IPM.MMS" to either.
std::optional<MessageAddress> MessageOfClass(std::u16string_view messageClass,
                                             std::u16string_view recipient);

}  // namespace kelpin::device::desktop
