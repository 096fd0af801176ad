#pragma once

#include <string>

#include "platform/shell.h"

namespace kelpin::qt {

// The desktop, or the phone's shell, that hosts the program's windows.
class QtShell : public platform::Shell {
 public:
  // "PocketPC" or "Smartphone".
  explicit QtShell(std::u16string platformType);

  std::u16string PlatformType() override;
  platform::ShellReadiness WaitForShell(std::uint32_t argument1, std::uint32_t argument2,
                                        std::uint32_t argument3, std::uint32_t argument4) override;
  void ShowInputPanel(bool up) override;
  int ImmGetConversionStatus(platform::InputMethodStatus& status) override;
  int ImmSetConversionStatus(const platform::InputMethodStatus& status) override;
  void SendBackKey() override;

 private:
  const std::u16string platformType_;
  platform::InputMethodStatus status_;
};

}  // namespace kelpin::qt
