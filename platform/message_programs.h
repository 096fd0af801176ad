#pragma once

#include <string_view>

namespace kelpin::platform {

// The device's messaging programs, as Programs::StartProgram names them.
inline constexpr std::u16string_view kMailProgram = u"\\Windows\\tmail.exe";
inline constexpr std::u16string_view kMmsProgram = u"\\Windows\\MMSC.exe";

// The message classes of a ComposeMessageRequest.
inline constexpr std::u16string_view kSmsClass = u"IPM.SMStext";
inline constexpr std::u16string_view kMmsClass = u"IPM.MMS";

}  // namespace kelpin::platform
