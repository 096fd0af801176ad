// Picks a device from the command line and starts the program on it. The only file that names the
// adapters.

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QFile>
#include <QString>
#include <QtGlobal>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "app/app_state.h"
#include "app/start_up.h"
#include "device/card/card_channel.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "device/desktop/desktop_programs.h"
#include "device/desktop/desktop_telephone.h"
#include "device/desktop/run_folder.h"
#include "device/desktop/spdlog_log.h"
#include "device/desktop/steady_clock.h"
#include "device/desktop/utf8.h"
#include "device/desktop/xdg.h"
#include "device/kernel/kernel.h"
#include "device/qt/end_signals.h"
#include "device/qt/qt_screen.h"
#include "device/qt/qt_shell.h"
#include "device/registry/text_registry.h"
#include "device/softcard/soft_channel.h"
#include "program.h"
#include "res/ids.h"
#include "ui/list_view.h"

namespace {

namespace fs = std::filesystem;
using namespace kelpin;
using namespace kelpin::device;

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr std::uint32_t kStartPatience = 5000;  // milliseconds

struct Options {
  std::string sim;
  std::string registry;
  std::string platform = "pocketpc";
  std::string screenshot;
  bool demo = false;
};

// A card on the command line: "NAME" or "NAME:ARGUMENT".
struct SimAdapter {
  const char* name;
  bool needsArgument;
  const char* help;
  // Null when it cannot be opened; `why` says why and what to do.
  std::unique_ptr<card::CardChannel> (*open)(const std::string& argument, std::string& why);
};

std::unique_ptr<card::CardChannel> OpenSoftCard(const std::string& file, std::string& why) {
  return softcard::SoftChannel::Open(file, why);
}

constexpr SimAdapter kSimAdapters[] = {
    {"soft", true, "soft:FILE  a software card kept in FILE", OpenSoftCard},
};

std::string SimHelp() {
  std::string help = "The card, one of:";
  for (const SimAdapter& adapter : kSimAdapters) {
    help += "\n" + std::string(adapter.help);
  }
  return help + "\nWithout it: a software card in the data folder, made empty at the first start";
}

const SimAdapter* FindSimAdapter(const std::string& name) {
  for (const SimAdapter& adapter : kSimAdapters) {
    if (name == adapter.name) {
      return &adapter;
    }
  }
  return nullptr;
}

// Empty when the text names a card, else what is wrong with it.
std::string CheckSim(const std::string& text) {
  const std::size_t colon = text.find(':');
  const SimAdapter* adapter = FindSimAdapter(text.substr(0, colon));
  if (adapter == nullptr) {
    return "no such kind of card: \"" + text.substr(0, colon) + '"';
  }
  const bool argument = colon != std::string::npos && colon + 1 < text.size();
  return argument || !adapter->needsArgument ? "" : std::string("write ") + adapter->help;
}

std::string CheckNotEmpty(const std::string& text) {
  return text.empty() ? "the name of a file is wanted" : "";
}

// Copies a card image that is part of the program to `file`.
bool WriteSampleCard(const char* name, const fs::path& file, std::string& why) {
  QFile sample(QString(":/kelpin/cards/") + name);
  if (!sample.open(QIODevice::ReadOnly)) {
    why = std::string("the sample card ") + name + " is not part of this program";
    return false;
  }
  return desktop::MakeWholeFile(file, sample.readAll().toStdString(), why);
}

// A device without a contacts store.
class NoContacts final : public platform::ContactsStore {
 public:
  platform::ComResult CoInitializeEx(std::uint32_t /*flags*/) override {
    return platform::ComResult::kFail;
  }
  void CoUninitialize() override {}
  platform::ComResult CoCreateInstance(std::string_view /*classId*/, std::uint32_t /*context*/,
                                       std::string_view /*interfaceId*/,
                                       std::shared_ptr<platform::IPOutlookApp>& app) override {
    app = nullptr;
    return platform::ComResult::kFail;
  }
  platform::ComResult FindMatchingContact(platform::IPOutlookApp& /*app*/,
                                          std::u16string_view /*name*/, std::uint32_t /*flags*/,
                                          std::shared_ptr<platform::IItem>& item,
                                          std::int32_t& /*index*/) override {
    item = nullptr;
    return platform::ComResult::kFail;
  }
};

// What the program needs of the device, but for the screen.
struct Device {
  desktop::ScratchFolder scratch;
  std::unique_ptr<kernel::Kernel> kernel;
  std::unique_ptr<registry::TextRegistry> registry;
  std::unique_ptr<card::CardChannel> channel;
};

bool OpenRegistry(const Options& options, const desktop::Folders& folders, Device& device,
                  std::string& why) {
  fs::path file = options.registry;
  if (file.empty() && options.demo) {
    file = device.scratch.Path() / "registry.reg";
  } else if (file.empty()) {
    if (!desktop::MakePrivateFolder(folders.config, why)) {
      return false;
    }
    file = folders.config / "registry.reg";
  }
  device.registry =
      registry::TextRegistry::Open(file, desktop::FindSystemConfig("registry.reg"), why);
  return device.registry != nullptr;
}

bool OpenCard(const Options& options, const desktop::Folders& folders, Device& device,
              std::string& why) {
  std::string name = "soft";
  std::string argument;
  if (!options.sim.empty()) {
    const std::size_t colon = options.sim.find(':');
    name = options.sim.substr(0, colon);
    argument = colon == std::string::npos ? "" : options.sim.substr(colon + 1);
  } else if (options.demo) {
    const fs::path file = device.scratch.Path() / "card.json";
    if (!WriteSampleCard("usim.json", file, why)) {
      return false;
    }
    argument = file.string();
  } else {
    const fs::path file = folders.data / "card.json";
    std::error_code ignored;
    if (!desktop::MakePrivateFolder(folders.data, why) ||
        (!fs::exists(file, ignored) && !WriteSampleCard("usim-empty.json", file, why))) {
      return false;
    }
    argument = file.string();
  }
  device.channel = FindSimAdapter(name)->open(argument, why);
  return device.channel != nullptr;
}

bool OpenDevice(const Options& options, const desktop::Folders& folders, Device& device,
                std::string& why) {
  if (options.demo && !device.scratch.Make(folders.runtime, why)) {
    return false;
  }
  device.kernel = kernel::Kernel::Open(folders.runtime, why);
  return device.kernel != nullptr && OpenRegistry(options, folders, device, why) &&
         OpenCard(options, folders, device, why);
}

std::unique_ptr<desktop::SpdlogLog> OpenLog(const desktop::Folders& folders) {
  std::string why;
  const bool toStandardError = desktop::ProcessEnvironment("KELPIN_LOG") == "stderr";
  std::unique_ptr<desktop::SpdlogLog> log;
  if (desktop::MakePrivateFolder(folders.state, why)) {
    log = desktop::SpdlogLog::Open(folders.state, toStandardError, why);
  }
  if (log == nullptr) {
    std::cerr << "kelpin: no log file: " << why << '\n';
    log = desktop::SpdlogLog::ToStandardError();
  }
  return log;
}

bool HasDisplay() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    if (!desktop::ProcessEnvironment(name).empty()) {
      return true;
    }
  }
  return false;
}

// What Qt cannot go on without, a display that cannot be reached above all, ends the program as any
// other failure does.
void TellQtMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
  std::cerr << text.toStdString() << '\n';
  if (type == QtFatalMsg) {
    std::cerr << "kelpin: the display cannot be used; start it in a graphical session, or with "
                 "xvfb-run\n";
    std::_Exit(kExitFailure);
  }
}

long ResidentKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stol(line.substr(6));
    }
  }
  return 0;
}

void PrintList(const app::AppState& state) {
  const ui::ListView& list = *state.dialog->List(res::kMainList);
  std::cout << desktop::Utf8(state.dialog->Text(res::kMainHeader)) << '\n';
  for (int row = 0; row < list.ItemCount(); ++row) {
    std::printf("%5s  %-30s  %s\n", desktop::Utf8(list.ItemText(row, 0)).c_str(),
                desktop::Utf8(list.ItemText(row, 1)).c_str(),
                desktop::Utf8(list.ItemText(row, 2)).c_str());
  }
  std::printf("%d entries\n", list.ItemCount());
}

// Whether all that was printed reached who reads it.
bool PrintedAll() {
  std::cout.flush();
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout) {
    return true;
  }
  std::cerr << "kelpin: standard output cannot be written; is the disk full?\n";
  return false;
}

using SteadyTime = std::chrono::steady_clock::time_point;

// Saves the picture, prints the list and ends the program. Screen thread, after the list was drawn.
void Report(qt::QtScreen& screen, app::AppState& state, const std::string& file, SteadyTime start,
            bool& saved) {
  saved = screen.GrabMainWindow(file);
  const auto spent = std::chrono::steady_clock::now() - start;
  PrintList(state);
  std::printf(
      "list shown after %lld ms, %ld kB resident\n",
      static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(spent).count()),
      ResidentKilobytes());
  if (saved) {
    std::cerr << "Picture saved as " << file << '\n';
  } else {
    std::cerr << "kelpin: " << file << ": the picture cannot be written\n";
  }
  if (!PrintedAll()) {
    saved = false;
  }
  state.dialog->PostClose();
}

// Brings the copy that runs forward. False when none does; the card, which only one copy can have,
// is this one's then.
bool RaiseRunningCopy(qt::QtScreen& screen) {
  const ui::WindowHandle running = screen.FindWindow(app::kAnchorClass, {});
  if (running != 0) {
    screen.SetForegroundWindow(running);
  }
  return running != 0;
}

// Nobody is there to answer a box while a picture is taken.
qt::QtScreen::BoxListener PrintBoxes(std::atomic<bool>& failed) {
  return [&failed](std::u16string_view text, std::u16string_view /*caption*/, ui::BoxStyle style) {
    std::cerr << "kelpin: " << desktop::Utf8(text) << '\n';
    if (style.icon == ui::BoxIcon::kStop) {
      failed = true;
    }
  };
}

int Start(const Options& options, char* programName, SteadyTime start) {
  // The options are ours alone: some of them mean something else to the toolkit.
  int argc = 1;
  char* argv[] = {programName, nullptr};
  const desktop::Folders folders = desktop::FindFolders();
  const bool picture = !options.screenshot.empty();
  desktop::StartTurn turn;
  std::atomic<bool> failed = false;
  qt::EndSignals endSignals;
  qInstallMessageHandler(TellQtMessage);
  qt::QtScreen screen(argc, argv,
                      {folders.state, folders.runtime, std::nullopt,
                       picture ? PrintBoxes(failed) : qt::QtScreen::BoxListener()});
  qInstallMessageHandler(nullptr);
  endSignals.Listen();
  const auto fail = [&](const std::string& reason) {
    turn.Release();
    std::cerr << "kelpin: " << reason << '\n';
    if (!picture) {
      screen.MessageBox(0, QString::fromStdString(reason).toStdU16String(), u"Kelpin",
                        ui::kBoxError);
    }
    return kExitFailure;
  };
  const std::unique_ptr<desktop::SpdlogLog> log = OpenLog(folders);

  std::string why;
  if (!desktop::MakePrivateFolder(folders.runtime, why)) {
    return fail(why);
  }
  turn.Wait(folders.runtime, kStartPatience);
  if (RaiseRunningCopy(screen)) {
    return picture ? fail("Kelpin runs already; close it, then take the picture") : 0;
  }
  Device device;
  if (!OpenDevice(options, folders, device, why)) {
    return fail(why);
  }
  card::SimService card(*device.channel);
  card::CardDevices devices;
  qt::QtShell shell(options.platform == "smartphone" ? u"Smartphone" : u"PocketPC");
  desktop::DesktopPrograms programs(desktop::DataFolders(desktop::ProgramFolder()));
  desktop::DesktopTelephone telephone;
  NoContacts contacts;
  desktop::SteadyClock clock;

  bool saved = !picture;
  ProgramHooks hooks;
  if (picture) {
    hooks.listLoaded = [&](app::AppState& state) {
      screen.PostToScreen([&] { Report(screen, state, options.screenshot, start, saved); });
    };
  }
  const app::Ports ports{card,           card,  devices,  *device.registry,
                         *device.kernel, shell, programs, telephone,
                         contacts,       clock, *log,     screen};
  // Served when the program's window can be found.
  screen.PostToScreen([&turn] { turn.Release(); });
  const int code = RunProgram(ports, hooks);
  return saved && !failed ? code : kExitFailure;
}

// A standard stream that is closed would be the next file that is opened, the card perhaps, and all
// that is printed would go there. What is put in its place refuses what a stream is for.
bool HoldStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest number that is free is the one that is given.
    if (fcntl(stream, F_GETFD) < 0 &&
        open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream) {
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const SteadyTime start = std::chrono::steady_clock::now();
  if (!HoldStandardStreams()) {
    return kExitFailure;
  }
  Options options;
  CLI::App cli{"Kelpin, the phone-book manager for SIM and USIM cards", "kelpin"};
  cli.add_option("--sim", options.sim, SimHelp())->check(CheckSim)->type_name("CARD");
  cli.add_option("--registry", options.registry,
                 "The settings file, else registry.reg in the config folder")
      ->check(CheckNotEmpty)
      ->type_name("FILE");
  cli.add_option("--platform", options.platform, "pocketpc (default) or smartphone")
      ->check(CLI::IsMember({"pocketpc", "smartphone"}, CLI::ignore_case))
      ->transform(CLI::Transformer({{"Smartphone", "smartphone"}}, CLI::ignore_case))
      ->type_name("NAME");
  cli.add_flag("--demo", options.demo, "A sample card and settings, thrown away at the end");
  cli.add_option("--screenshot", options.screenshot,
                 "Wait for the list, save a picture (PNG), print the list, end")
      ->check(CheckNotEmpty)
      ->type_name("FILE");
  cli.set_version_flag("--version", "Kelpin 6.80");
  try {
    cli.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int code = cli.exit(error);
    if (code == 0) {
      return PrintedAll() ? 0 : kExitFailure;
    }
    return kExitUsage;
  }
  if (!HasDisplay()) {
    std::cerr << "kelpin: no display; start it in a graphical session, or with xvfb-run\n";
    return kExitFailure;
  }
  return Start(options, argv[0], start);
}
