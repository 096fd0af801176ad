#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/programs.h"

namespace kelpin::device::desktop {

// Other programs by way of the desktop's opener. The help viewer "peghelp" becomes the user's
// browser on the help file; other programs of a phone are not known here.
class DesktopPrograms final : public platform::Programs {
 public:
  // Help files are looked for in "help" below each of the folders, in order.
  explicit DesktopPrograms(std::vector<std::filesystem::path> dataFolders,
                           std::string opener = "xdg-open")
      : dataFolders_(std::move(dataFolders)), opener_(std::move(opener)) {}

  int StartProgram(std::u16string_view program, std::u16string_view commandLine) override;
  int CallComposer(std::u16string_view library, std::u16string_view routine,
                   const platform::ComposeMessageRequest& request) override;

 private:
  // "Name.htm" or "Name.htm#section" as a file: address; empty when there is no such file.
  std::string HelpAddress(std::u16string_view topic) const;

  const std::vector<std::filesystem::path> dataFolders_;
  const std::string opener_;
};

}  // namespace kelpin::device::desktop
