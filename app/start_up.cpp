#include "app/start_up.h"

#include <string>

#include "app/registry_key.h"
#include "app/settings.h"
#include "app/sim_error.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "res/templates.h"
#include "sim/sim_phonebook.h"
#include "ui/fold_case.h"
#include "ui/screen.h"

namespace kelpin::app {
namespace {

using platform::RegistryResult;
using platform::RegistryRoot;
using platform::SimResult;

constexpr std::u16string_view kStateKey = u"System\\OEM_State";
constexpr std::u16string_view kAnchorValue = u"KELPIN_HW";
constexpr std::u16string_view kSmartphone = u"Smartphone";
constexpr std::size_t kPlatformTypeLimit = 260;
constexpr std::uint32_t kNoSimPhoneType = 2;
constexpr std::uint32_t kShellRetryDelay = 3000;  // milliseconds
constexpr int kHighResolution = 320;              // pixels; both sides must be above it

// A window handle with its lowest bit set stands for the window with all it owns.
constexpr ui::WindowHandle WithOwned(ui::WindowHandle window) {
  return window | 1;
}

// The anchor window that the copy of the program that ran last told of.
ui::WindowHandle StoredAnchor(platform::Registry& registry) {
  RegistryKey key(registry);
  std::uint32_t window = 0;
  if (key.Open(RegistryRoot::kLocalMachine, kStateKey) == RegistryResult::kOk) {
    // A value that is not there leaves 0.
    static_cast<void>(key.ReadDword(kAnchorValue, window));
  }
  return window;
}

void StoreAnchor(platform::Registry& registry, ui::WindowHandle window) {
  RegistryKey key(registry);
  if (key.CreateOrOpen(RegistryRoot::kLocalMachine, kStateKey) != RegistryResult::kOk) {
    return;
  }
  // A second copy finds the window by its class first; this is its last resort.
  static_cast<void>(key.WriteDword(kAnchorValue, window));
  static_cast<void>(key.Flush());
}

bool RegisterAnchorClass(ui::Screen& screen) {
  ui::WindowClass windowClass;
  windowClass.name = kAnchorClass;
  windowClass.horizontalRedraw = true;
  windowClass.verticalRedraw = true;
  windowClass.whiteBackground = true;
  windowClass.icon = res::kIconApplication;
  return screen.RegisterWindowClass(windowClass);
}

// Why no card can be used, kOk when one may be there. Where the phone has no card at all, it is not
// asked.
SimResult CardState(const Ports& ports) {
  if (ReadPhoneType(ports.registry) == kNoSimPhoneType && ReadSimType(ports.registry) == 0) {
    return SimResult::kNotInserted;
  }
  const SimResult result = sim::SimPhonebook::ProbeSim(ports.sim);
  const bool unusable = result == SimResult::kRadioOff || result == SimResult::kNotInserted;
  return unusable ? result : SimResult::kOk;
}

bool MakeAnchor(AppState& state, ui::AnchorStyle style) {
  state.mainWindow = state.ports.screen.CreateAnchorWindow(kAnchorClass, state.appTitle, style);
  return state.mainWindow != 0;
}

bool ShellIsReady(const Ports& ports) {
  switch (ports.shell.WaitForShell(0, 0, 1, 1)) {
    case platform::ShellReadiness::kReady:
      return true;
    case platform::ShellReadiness::kNotReady:
      ports.clock.Sleep(kShellRetryDelay);
      return false;
    case platform::ShellReadiness::kMissing:
      return false;
  }
  return false;
}

void ReadDisplay(AppState& state) {
  const ui::Size screen = state.ports.screen.GetMetrics().screen;
  state.isHighRes = screen.width > kHighResolution && screen.height > kHighResolution ? 1 : 0;
  state.sipAutoDeployOff = ReadSipAutoDeployOff(state.ports.registry);
}

int OpenMainDialog(AppState& state, MainDialog& mainDialog) {
  const ui::DialogTemplate* const resource = res::FindDialog(res::kDialogMain);
  if (resource == nullptr) {
    return 0;
  }
  ui::Screen& screen = state.ports.screen;
  if (state.isSmartphone != 0) {
    screen.DialogBox(*resource, state.mainWindow, mainDialog);
    return 1;
  }
  const std::shared_ptr<ui::Dialog> dialog =
      screen.CreateDialog(*resource, state.mainWindow, mainDialog);
  if (dialog == nullptr) {
    return 0;
  }
  screen.ShowDialog(*dialog);
  return 1;
}

void ReleaseMutex(AppState& state) {
  if (state.instanceMutex != nullptr) {
    state.instanceMutex->Release();
    state.instanceMutex.reset();
  }
}

}  // namespace

int CheckSingleInstance(AppState& state, std::u16string_view className) {
  const Ports& ports = state.ports;
  bool alreadyExists = false;
  state.instanceMutex = ports.kernel.CreateMutex(kInstanceMutexName, false, alreadyExists);
  if (!alreadyExists) {
    return 1;
  }
  ui::WindowHandle window = ports.screen.FindWindow(className, {});
  if (window == 0) {
    window = StoredAnchor(ports.registry);
  }
  if (window != 0) {
    ports.screen.SetForegroundWindow(WithOwned(window));
  }
  ReleaseMutex(state);
  return 0;
}

int InitInstance(AppState& state, MainDialog& mainDialog, ModuleHandle instance,
                 int /*showCommand*/) {
  state.hInstance = instance;
  LoadTitle(state);
  const Ports& ports = state.ports;

  // Whether another copy runs is decided by its window below: the mutex, or a stored window, may be
  // what a copy that no longer answers has left.
  CheckSingleInstance(state, kAnchorClass);
  const ui::WindowHandle running = ports.screen.FindWindow(kAnchorClass, state.appTitle);
  if (running != 0) {
    ports.screen.SetForegroundWindow(WithOwned(running));
    return 0;
  }
  if (!RegisterAnchorClass(ports.screen)) {
    return 0;
  }
  const std::u16string platformType = ports.shell.PlatformType().substr(0, kPlatformTypeLimit);
  state.isSmartphone = ui::CompareIgnoringCase(platformType, kSmartphone) == 0 ? 1 : 0;

  const SimResult card = CardState(ports);
  if (!Succeeded(card)) {
    if (MakeAnchor(state, ui::AnchorStyle::kDisabled)) {
      ShowSimError(ports.screen, state.mainWindow, card);
    }
    return 0;
  }
  if (!ShellIsReady(ports) || !MakeAnchor(state, ui::AnchorStyle::kVisible)) {
    return 0;
  }
  StoreAnchor(ports.registry, state.mainWindow);
  ReadDisplay(state);
  return OpenMainDialog(state, mainDialog);
}

int Run(const Ports& ports, const Wiring& wiring, const EntryArguments& arguments) {
  AppState state(ports);
  MainDialog mainDialog(state, wiring);
  int exitCode = 0;
  if (InitInstance(state, mainDialog, arguments.instance, arguments.showCommand) != 0) {
    ports.log.DebugOutput(res::Format(u"[KELPIN]:VER=[%s].\r\n", {kVersion}));
    exitCode = ports.screen.RunMessageLoop();
    ReleaseMutex(state);
  }
  // A load may still be under way. The sessions it uses are closed, which ends its waits; what it
  // works on goes only after it has ended.
  ports.kernel.EndThreads();
  return exitCode;
}

}  // namespace kelpin::app
