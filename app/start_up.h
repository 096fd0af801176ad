#pragma once

#include <string_view>

#include "app/app_state.h"
#include "app/main_dialog.h"
#include "app/ports.h"
#include "app/wiring.h"

namespace kelpin::app {

inline constexpr std::u16string_view kAnchorClass = u"OEM_KELPIN_OEM";
inline constexpr std::u16string_view kInstanceMutexName =
    u"KELPIN_{3259ED9D-01DC-49f9-A630-7197A5DA6006}";
inline constexpr std::u16string_view kVersion = u"6.80";

// What the system hands a program that it starts.
struct EntryArguments {
  ModuleHandle instance = 0;
  ModuleHandle previousInstance = 0;
  std::u16string_view commandLine;
  int showCommand = 0;
};

// 1 when this is the first copy of the program; its mutex is kept in `state`. 0 when another runs,
// which was brought forward where it could be found.
int CheckSingleInstance(AppState& state, std::u16string_view className);

// Everything until the main dialog is there; where the platform is a Smartphone, until it has
// ended. 1 when the message loop is to be entered, 0 when the program is to end.
int InitInstance(AppState& state, MainDialog& mainDialog, ModuleHandle instance, int showCommand);

// The program, from its start to its end; returns its exit code. All threads it made have ended.
int Run(const Ports& ports, const Wiring& wiring, const EntryArguments& arguments = {});

}  // namespace kelpin::app
