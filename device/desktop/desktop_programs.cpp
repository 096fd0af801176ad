#include "device/desktop/desktop_programs.h"

#include <algorithm>
#include <system_error>

#include "device/desktop/detached_process.h"
#include "device/desktop/percent_encoding.h"
#include "device/desktop/utf8.h"

namespace kelpin::device::desktop {
namespace {

constexpr std::u16string_view kHelpViewer = u"peghelp";

// A file in the help folder itself.
bool IsHelpFileName(std::string_view name) {
  return !name.empty() && name.front() != '.' && name.ends_with(".htm") &&
         std::all_of(name.begin(), name.end(), IsUnreserved);
}

}  // namespace

int DesktopPrograms::StartProgram(std::u16string_view program, std::u16string_view commandLine) {
  if (program != kHelpViewer) return 0;
  const std::string address = HelpAddress(commandLine);
  return !address.empty() && StartDetached({opener_, address}) ? 1 : 0;
}

int DesktopPrograms::CallComposer(std::u16string_view /*library*/, std::u16string_view /*routine*/,
                                  const platform::ComposeMessageRequest& /*request*/) {
  return 0;  // a desktop has no such library
}

std::string DesktopPrograms::HelpAddress(std::u16string_view topic) const {
  const std::string text = Utf8(topic);
  const std::size_t end = text.find('#');
  const std::string name = text.substr(0, end);
  if (!IsHelpFileName(name)) return {};
  for (const std::filesystem::path& folder : dataFolders_) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::absolute(folder / "help" / name, error);
    if (error || !std::filesystem::is_regular_file(file, error)) continue;
    std::string address = "file://" + PercentEncoded(file.lexically_normal().string());
    if (end != std::string::npos)
      address += "#" + PercentEncoded(std::string_view(text).substr(end + 1));
    return address;
  }
  return {};
}

}  // namespace kelpin::device::desktop
