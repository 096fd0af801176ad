#pragma once

#include <cstdint>
#include <string>

namespace kelpin::platform {

enum class ShellReadiness {
  kMissing,   // there is no shell to ask
  kNotReady,  // it was asked and did not become ready
  kReady,
};

// Conversion status of the input method: the high half names the field's script mode.
struct InputMethodStatus {
  std::uint32_t conversion = 0;
  std::uint32_t sentence = 0;
};

// What the program asks of the device's shell. Screen thread only.
class Shell {
 public:
  virtual ~Shell() = default;

  // "PocketPC" or "Smartphone" (letter case is not to be relied on), at most 260 characters.
  virtual std::u16string PlatformType() = 0;
  // Blocks until the shell can host windows.
  virtual ShellReadiness WaitForShell(std::uint32_t argument1, std::uint32_t argument2,
                                      std::uint32_t argument3, std::uint32_t argument4) = 0;
  // Raises (true) or lowers the on-screen keyboard, where the device has one.
  virtual void ShowInputPanel(bool up) = 0;
  // 1 on success.
  virtual int ImmGetConversionStatus(InputMethodStatus& status) = 0;
  virtual int ImmSetConversionStatus(const InputMethodStatus& status) = 0;
  // The hardware Back key was pressed in an edit field: the shell deletes a character or goes back.
  virtual void SendBackKey() = 0;
};

}  // namespace kelpin::platform
