#include "device/desktop/desktop_programs.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include "device/desktop/detached_process.h"
#include "device/desktop/percent_encoding.h"
#include "device/desktop/process_output.h"
#include "device/desktop/utf8.h"
#include "platform/wording.h"

namespace kelpin::device::desktop {
namespace {

constexpr std::u16string_view kHelpViewer = u"peghelp";
constexpr const char* kHelpEnding = ".htm";
constexpr std::u16string_view kComposerLibrary = u"MessageTool.DLL";
constexpr std::u16string_view kComposerRoutine = u"ComposeMMSMessage";
constexpr std::uint32_t kComposeRequestSize = 32;
constexpr int kMimeToolPatience = 2000;  // milliseconds

// A file in the help folder itself.
bool IsHelpFileName(std::string_view name) {
  return !name.empty() && name.front() != '.' && name.ends_with(kHelpEnding) &&
         std::all_of(name.begin(), name.end(), IsUnreserved);
}

bool IsOver(const std::future<void>& work) {
  return work.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

// The help's opener tells what became of it in the user's words.
AddressOpener::Failed HelpNotOpened(const std::function<void(const std::string& why)>& tell) {
  if (!tell) return nullptr;
  return [tell](const std::string& address, int /*code*/) {
    tell(platform::Say(
        "The help cannot be shown, because no program is set for web pages or it failed. Install "
        "a browser, or open %s in one.",
        {address}));
  };
}

}  // namespace

DesktopPrograms::DesktopPrograms(Options options)
    : options_(std::move(options)),
      help_(options_.opener, HelpNotOpened(options_.helpFailed)),
      messages_(options_.opener, options_.messageFailed) {}

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

int DesktopPrograms::Compose(const std::optional<MessageAddress>& message) {
  if (!message) return 0;
  if (message->fallback.empty()) return messages_.Open(message->Uri()) ? 1 : 0;
  if (!IsStartable(options_.opener)) return 0;
  const auto open = [this, address = *message] {
    const bool known = !ProcessOutput({options_.mimeTool, "query", "default",
                                       "x-scheme-handler/" + address.scheme},
                                      kMimeToolPatience)
                            .empty();
    return messages_.Open(known ? address.Uri() : address.FallbackUri());
  };
  std::erase_if(asking_, IsOver);
  try {
    // The tool may take its time; the window does not wait for it.
    asking_.push_back(std::async(std::launch::async, [open] { static_cast<void>(open()); }));
    return 1;
  } catch (const std::system_error&) {
    return open() ? 1 : 0;  // no thread to ask on
  }
}

int DesktopPrograms::ShowHelp(std::u16string_view topic) {
  std::u16string wanted(topic);
  if (topic.find(u'#') == std::u16string_view::npos && options_.helpSection) {
    if (const std::u16string section = options_.helpSection(); !section.empty()) {
      wanted += u'#' + section;
    }
  }
  const std::string address = HelpAddress(wanted);
  if (!address.empty() && help_.Open(address)) return 1;
  if (options_.helpFailed) {
    options_.helpFailed(
        address.empty() ? platform::Say("The help is not installed. Install Kelpin again.")
                        : platform::Say("The help cannot be shown, because %s cannot be started. "
                                        "Install xdg-utils, or open %s in a browser.",
                                        {options_.opener, address}));
  }
  return 0;
}

std::string DesktopPrograms::HelpAddress(std::u16string_view topic) const {
  const std::string text = Utf8(topic);
  const std::size_t end = text.find('#');
  const std::string name = text.substr(0, end);
  if (!IsHelpFileName(name)) return {};
  std::filesystem::path file;
  for (const std::string& language : options_.languages) {
    if (file.empty()) {
      file = HelpFile(name.substr(0, name.rfind('.')) + '.' + language + kHelpEnding);
    }
  }
  if (file.empty()) file = HelpFile(name);
  if (file.empty()) return {};
  std::string address = "file://" + PercentEncoded(file.string());
  if (end != std::string::npos) {
    address += "#" + PercentEncoded(std::string_view(text).substr(end + 1));
  }
  return address;
}

std::filesystem::path DesktopPrograms::HelpFile(const std::string& name) const {
  for (const std::filesystem::path& folder : options_.dataFolders) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::absolute(folder / "help" / name, error);
    if (!error && std::filesystem::is_regular_file(file, error)) return file.lexically_normal();
  }
  return {};
}

}  // namespace kelpin::device::desktop
