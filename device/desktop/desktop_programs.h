#pragma once

#include <filesystem>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/desktop/address_opener.h"
#include "device/desktop/message_address.h"
#include "platform/programs.h"

namespace kelpin::device::desktop {

// Other programs by way of the desktop's opener. The help viewer "peghelp" becomes the user's
// browser on the help file, the messaging programs and the composer library become what opens sms:,
// mailto: and mmsto: addresses; other programs of a phone are not known here. No shell is involved.
class DesktopPrograms final : public platform::Programs {
 public:
  struct Options {
    // The help is in "help" below the first that has it.
    std::vector<std::filesystem::path> dataFolders = {};
    // What it is wanted in, the best first: "Kelpin.de.htm" for "de". Without any of them English.
    std::vector<std::string> languages = {};
    std::string opener = "xdg-open";
    std::string mimeTool = "xdg-mime";  // knows whether a scheme has an opener
    // Where in the help the user is; empty is its start. May be empty itself.
    std::function<std::u16string()> helpSection = nullptr;
    // Told, as UTF-8, why the help cannot be shown; at once, or from a thread of its own. May be
    // empty.
    std::function<void(const std::string& why)> helpFailed = nullptr;
    // Told when nobody opens a message after all. May be empty.
    AddressOpener::Failed messageFailed = nullptr;
  };

  explicit DesktopPrograms(Options options);

  int StartProgram(std::u16string_view program, std::u16string_view commandLine) override;
  int CallComposer(std::u16string_view library, std::u16string_view routine,
                   const platform::ComposeMessageRequest& request) override;

 private:
  int ShowHelp(std::u16string_view topic);
  // "Name.htm" or "Name.htm#section" as a file: address; empty when there is no such file.
  std::string HelpAddress(std::u16string_view topic) const;
  // The file of this name in the help folder; empty when there is none.
  std::filesystem::path HelpFile(const std::string& name) const;
  int Compose(const std::optional<MessageAddress>& message);

  const Options options_;
  const AddressOpener help_;
  const AddressOpener messages_;
  // Each asks who opens a scheme, then opens the message. The last member: they use the others.
  std::vector<std::future<void>> asking_;
};

}  // namespace kelpin::device::desktop
