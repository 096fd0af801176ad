#include "device/desktop/desktop_programs.h"

#include <algorithm>
#include <system_error>

#include "device/desktop/detached_process.h"
#include "device/desktop/percent_encoding.h"
#include "device/desktop/process_output.h"
#include "device/desktop/utf8.h"

namespace kelpin::device::desktop {
namespace {

constexpr std::u16string_view kHelpViewer = u"peghelp";
constexpr std::u16string_view kComposerLibrary = u"MessageTool.DLL";
constexpr std::u16string_view kComposerRoutine = u"ComposeMMSMessage";
constexpr std::uint32_t kComposeRequestSize = 32;
constexpr int kMimeToolPatience = 2000;  // milliseconds

// A file in the help folder itself.
bool IsHelpFileName(std::string_view name) {
  return !name.empty() && name.front() != '.' && name.ends_with(".htm") &&
         std::all_of(name.begin(), name.end(), IsUnreserved);
}

}  // namespace

int DesktopPrograms::StartProgram(std::u16string_view program, std::u16string_view commandLine) {
  return program == kHelpViewer ? ShowHelp(commandLine)
                                : Compose(MessageOfCommand(program, commandLine));
}

int DesktopPrograms::CallComposer(std::u16string_view library, std::u16string_view routine,
                                  const platform::ComposeMessageRequest& request) {
  if (library != kComposerLibrary || routine != kComposerRoutine ||
      request.size != kComposeRequestSize) {
    return 0;
  }
  return Compose(MessageOfClass(request.messageClass, request.recipient));
}

int DesktopPrograms::Compose(const std::optional<MessageAddress>& message) const {
  if (!message) return 0;
  std::string uri = message->Uri();
  if (!message->fallback.empty() &&
      ProcessOutput({options_.mimeTool, "query", "default", "x-scheme-handler/" + message->scheme},
                    kMimeToolPatience)
          .empty()) {
    uri = message->FallbackUri();
  }
  return StartDetached({options_.opener, uri}) ? 1 : 0;
}

int DesktopPrograms::ShowHelp(std::u16string_view topic) {
  std::u16string wanted(topic);
  if (topic.find(u'#') == std::u16string_view::npos && options_.helpSection) {
    if (const std::u16string section = options_.helpSection(); !section.empty()) {
      wanted += u'#' + section;
    }
  }
  const std::string address = HelpAddress(wanted);
  if (!address.empty() && StartDetached({options_.opener, address})) return 1;
  if (options_.helpFailed) {
    options_.helpFailed(address.empty() ? "The help is not installed. Install Kelpin again."
                                        : "The help cannot be shown, because " + options_.opener +
                                              " cannot be started. Install xdg-utils, or open " +
                                              address + " in a browser.");
  }
  return 0;
}

std::string DesktopPrograms::HelpAddress(std::u16string_view topic) const {
  const std::string text = Utf8(topic);
  const std::size_t end = text.find('#');
  const std::string name = text.substr(0, end);
  if (!IsHelpFileName(name)) return {};
  for (const std::filesystem::path& folder : options_.dataFolders) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::absolute(folder / "help" / name, error);
    if (error || !std::filesystem::is_regular_file(file, error)) continue;
    std::string address = "file://" + PercentEncoded(file.lexically_normal().string());
    if (end != std::string::npos) {
      address += "#" + PercentEncoded(std::string_view(text).substr(end + 1));
    }
    return address;
  }
  return {};
}

}  // namespace kelpin::device::desktop
