#pragma once

#include <vector>

#include "app/start_up.h"
#include "tests/app/app_fixture.h"

namespace kelpin::app {

inline constexpr std::u16string_view kStateKey = u"System\\OEM_State";
inline constexpr std::u16string_view kMutex = u"KELPIN_{3259ED9D-01DC-49f9-A630-7197A5DA6006}";

// The program's way from its start to its end.
class StartUpTest : public AppTest {
 protected:
  void RunAsSecondCopy() { device.kernel.SetMutexExists(kMutex, true); }
  void PutStoredWindow(std::uint32_t window) {
    device.registry.PutDword(platform::RegistryRoot::kLocalMachine, kStateKey, u"KELPIN_HW",
                             window);
  }
  void PutPhoneWithoutSim(std::uint32_t phoneType, std::uint32_t simType) {
    SetSwitch(u"PhoneType", phoneType);
    device.registry.PutDword(platform::RegistryRoot::kLocalMachine, u"Software\\OEM\\RIL",
                             u"SIMTYPE", simType);
  }
  int Check() { return CheckSingleInstance(*state, u"OEM_KELPIN_OEM"); }
  std::vector<ui::WindowHandle> Raised() { return device.screen.Raised(); }
  // The whole program on this device.
  int RunProgram(const EntryArguments& arguments = {}) {
    return app::Run(device.ports, wiring, arguments);
  }
  // Has the main dialog closed as soon as the message loop serves it.
  void CloseWhenServed() {
    wiring.startWatchers = [](AppState& app, Commands&, ListLoader&) { app.dialog->PostClose(); };
  }
};

}  // namespace kelpin::app
