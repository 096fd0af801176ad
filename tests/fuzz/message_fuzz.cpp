// Links: kelpin_desktop
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "device/desktop/message_address.h"

using kelpin::device::desktop::MessageAddress;
using kelpin::device::desktop::MessageOfClass;
using kelpin::device::desktop::MessageOfCommand;

namespace {

// An address is one argument of plain characters that opens what its scheme says.
void Check(const std::optional<MessageAddress>& message) {
  if (!message) return;
  const std::string uri = message->Uri();
  const bool known =
      message->scheme == "sms" || message->scheme == "mailto" || message->scheme == "mmsto";
  if (!known || message->address.empty()) std::abort();
  for (const char c : uri) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       std::strchr("-._~%:@+", c) != nullptr;
    if (!plain || c == '\0') std::abort();
  }
}

}  // namespace

// The first byte chooses the program; the rest is its command line, two bytes a unit.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::u16string text;
  for (std::size_t at = 1; at + 1 < size; at += 2) {
    text.push_back(static_cast<char16_t>(data[at] | data[at + 1] << 8));
  }
  switch (data[0] % 4) {
    case 0:
      Check(MessageOfCommand(u"\\Windows\\tmail.exe", text));
      break;
    case 1:
      Check(MessageOfCommand(u"\\Windows\\MMSC.exe", text));
      break;
    case 2:
      Check(MessageOfClass(u"IPM.SMStext", text));
      break;
    default:
      Check(MessageOfClass(u"IPM.MMS", text));
      break;
  }
  return 0;
}
