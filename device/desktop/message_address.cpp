#include "device/desktop/message_address.h"

#include <algorithm>

#include "device/desktop/percent_encoding.h"
#include "device/desktop/utf8.h"
#include "platform/dial_number.h"
#include "platform/message_programs.h"

namespace kelpin::device::desktop {
namespace {

constexpr std::u16string_view kSmsStart = u"-service \"SMS\" -to \"";
constexpr std::u16string_view kSmsEnd = u">\"";
constexpr std::u16string_view kMailStart = u"mailto:";
constexpr std::u16string_view kMailEnd = u">";
constexpr std::u16string_view kMmsStart = u"\"1\" \"";
constexpr std::u16string_view kMmsEnd = u"\"";
constexpr std::size_t kLongestAddress = 255;  // UTF-16 units

// What stands between the two, when the text begins and ends with them.
std::optional<std::u16string_view> Between(std::u16string_view text, std::u16string_view start,
                                           std::u16string_view end) {
  if (text.size() < start.size() + end.size() || !text.starts_with(start) || !text.ends_with(end)) {
    return std::nullopt;
  }
  return text.substr(start.size(), text.size() - start.size() - end.size());
}

// Of "NAME<RECIPIENT", the recipient. A name may hold anything.
std::optional<std::u16string_view> AfterBracket(std::u16string_view text) {
  const std::size_t bracket = text.rfind(u'<');
  if (bracket == std::u16string_view::npos) return std::nullopt;
  return text.substr(bracket + 1);
}

// What parts or quotes addresses, and what is not seen, or turns round what is seen.
bool IsOutsideEmails(char16_t unit) {
  const auto within = [unit](char16_t first, char16_t last) {
    return unit >= first && unit <= last;
  };
  return within(0, 0x20) || within(0x7F, 0xA0) ||
         std::u16string_view(u"<>\",;:\\").find(unit) != std::u16string_view::npos ||
         unit == 0xAD || unit == 0x61C || within(0x2000, 0x200F) || within(0x2028, 0x202F) ||
         within(0x205F, 0x206F) || unit == 0x3000 || unit == 0xFEFF ||
         within(0xD800, 0xDFFF);  // pairs too: no address needs one
}

// One address, not a list, and nothing that a mail program would read as more than an address.
bool IsEmail(std::u16string_view text) {
  const std::size_t at = text.find(u'@');
  return text.size() <= kLongestAddress &&
         std::none_of(text.begin(), text.end(), IsOutsideEmails) &&
         at != std::u16string_view::npos && at > 0 && at + 1 < text.size() &&
         text.find(u'@', at + 1) == std::u16string_view::npos;
}

std::optional<MessageAddress> ToNumber(const char* scheme, const char* fallback,
                                       std::optional<std::u16string_view> number) {
  if (!number || !platform::IsDialNumber(*number)) return std::nullopt;
  return MessageAddress{scheme, PercentEncoded(Utf8(*number), "+"), fallback};
}

std::optional<MessageAddress> ToEmail(const char* scheme, const char* fallback,
                                      std::optional<std::u16string_view> address) {
  if (!address || !IsEmail(*address)) return std::nullopt;
  return MessageAddress{scheme, PercentEncoded(Utf8(*address), "@"), fallback};
}

}  // namespace

std::optional<MessageAddress> MessageOfCommand(std::u16string_view program,
                                               std::u16string_view commandLine) {
  if (program == platform::kMmsProgram)
    return ToNumber("mmsto", "sms", Between(commandLine, kMmsStart, kMmsEnd));
  if (program != platform::kMailProgram) return std::nullopt;
  if (const auto sms = Between(commandLine, kSmsStart, kSmsEnd)) {
    return ToNumber("sms", "", AfterBracket(*sms));
  }
  if (const auto mail = Between(commandLine, kMailStart, kMailEnd)) {
    return ToEmail("mailto", "", AfterBracket(*mail));
  }
  return std::nullopt;
}

std::optional<MessageAddress> MessageOfClass(std::u16string_view messageClass,
                                             std::u16string_view recipient) {
  if (messageClass == platform::kSmsClass) return ToNumber("sms", "", recipient);
  if (messageClass != platform::kMmsClass) return std::nullopt;
  if (const auto number = ToNumber("mmsto", "sms", recipient)) return number;
  return ToEmail("mmsto", "mailto", recipient);
}

}  // namespace kelpin::device::desktop
