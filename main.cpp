// Starts the program on the device that the command line picks.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QApplication>
#include <QString>
#include <QtGlobal>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "app/card_opening.h"
#include "app/secret_code.h"
#include "app/start_up.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "device/desktop/desktop_programs.h"
#include "device/desktop/language_files.h"
#include "device/desktop/run_folder.h"
#include "device/desktop/secrets.h"
#include "device/desktop/spdlog_log.h"
#include "device/desktop/steady_clock.h"
#include "device/desktop/utf8.h"
#include "device/desktop/xdg.h"
#include "device/qt/button_words.h"
#include "device/qt/end_signals.h"
#include "device/qt/qt_screen.h"
#include "device/qt/qt_shell.h"
#include "platform/wording.h"
#include "program.h"
#include "res/ids.h"
#include "res/language.h"
#include "res/strings.h"
#include "start/device.h"
#include "start/exit_codes.h"
#include "start/options.h"
#include "start/report.h"

namespace {

namespace fs = std::filesystem;
using namespace kelpin;
using namespace kelpin::device;

constexpr std::uint32_t kStartPatience = 5000;  // milliseconds
// How long the end waits for a card that is read, and for one that is written to.
constexpr std::chrono::milliseconds kReadPatience(500);
constexpr std::chrono::milliseconds kUpdatePatience(5000);

std::unique_ptr<desktop::SpdlogLog> OpenLog(const desktop::Folders& folders) {
  std::string why;
  const bool toStandardError = desktop::ProcessEnvironment("KELPIN_LOG") == "stderr";
  std::unique_ptr<desktop::SpdlogLog> log;
  if (desktop::MakePrivateFolder(folders.state, why)) {
    log = desktop::SpdlogLog::Open(folders.state, toStandardError, why);
  }
  if (log == nullptr) {
    std::cerr << "kelpin: " << platform::PrintableLines(why) << '\n';
    log = desktop::SpdlogLog::ToStandardError();
  }
  return log;
}

// The user's language, where there is a file of it, else English. What is wrong with the files is
// told in `notes`.
void ChooseLanguage(std::vector<std::string>& notes) {
  for (const fs::path& file : desktop::LanguageFiles(
           desktop::WantedLanguages(), desktop::DataFolders(desktop::ProgramFolder()))) {
    std::string bytes;
    std::string why;
    std::vector<std::string> faults;
    std::optional<res::LanguageTexts> texts;
    res::LanguageSayings sayings;
    if (desktop::ReadDataFile(file, res::kLanguageFileLimit, bytes, why)) {
      texts = res::ReadLanguage(bytes, faults, &sayings);
    } else {
      faults.push_back(why);
    }
    for (const std::string& fault : faults) {
      notes.push_back(file.string() + ": " + fault);
    }
    if (texts.has_value()) {
      res::UseLanguage(std::move(*texts));
      platform::UseWording(std::move(sayings));
      const auto word = [](int id) { return std::u16string(res::LoadString(id)); };
      qt::SetButtonWords({word(res::kTextKeyYes), word(res::kTextKeyNo), word(res::kTextKeyOk),
                          word(res::kTextKeyDone)});
      return;
    }
  }
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
  std::cerr << platform::PrintableLines(text.toStdString()) << '\n';
  if (type == QtFatalMsg) {
    std::cerr << "kelpin: the display cannot be used; start it in a graphical session, or with "
                 "xvfb-run\n";
    std::_Exit(start::kExitFailure);
  }
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

// The PIN that a script gives. False when what it gives is none.
bool ReadGivenPin(int descriptor, app::SecretCode& pin) {
  desktop::KeepMemoryPrivate();
  char line[app::SecretCode::kLongest + 1] = {};
  const std::size_t size = desktop::ReadSecretLine(descriptor, line);
  const bool fits = pin.Set(std::string_view(line, size), 4);
  explicit_bzero(line, sizeof line);
  return fits;
}

// The card at rest, so that the program may go. A card that does not answer is left behind: what it
// was doing is told, and nothing of this process is needed any more.
void LeaveCard(card::SimService& card, platform::Log& log, int code) {
  const auto start = std::chrono::steady_clock::now();
  do {
    if (card.WaitForRest(kReadPatience)) {
      return;
    }
  } while (card.Changing() && std::chrono::steady_clock::now() - start < kUpdatePatience);
  const bool changing = card.Changing();
  std::cerr << "kelpin: "
            << (changing ? platform::Say("the card has not answered; an entry was being written: "
                                         "look whether it is as it should be")
                         : platform::Say("the card has not answered"))
            << std::endl;
  log.DebugOutput(changing ? u"[KELPIN]:left a card that has not answered an update.\r\n"
                           : u"[KELPIN]:left a card that has not answered.\r\n");
  std::fflush(nullptr);
  std::_Exit(code);
}

int Start(const start::Options& options, char* programName, start::SteadyTime started) {
  // The options are ours alone: some of them mean something else to the toolkit.
  int argc = 1;
  char* argv[] = {programName, nullptr};
  const desktop::Folders folders = desktop::FindFolders();
  const bool picture = !options.screenshot.empty();
  desktop::StartTurn turn;
  std::atomic<bool> failed = false;
  std::vector<std::string> languageNotes;
  ChooseLanguage(languageNotes);
  qt::EndSignals endSignals;
  qInstallMessageHandler(TellQtMessage);
  qt::QtScreen screen(argc, argv,
                      {folders.state, folders.runtime, std::nullopt,
                       picture ? start::PrintBoxes(failed) : qt::QtScreen::BoxListener()});
  qInstallMessageHandler(nullptr);
  endSignals.Listen();
  const auto fail = [&](const std::string& reason) {
    turn.Release();
    std::cerr << "kelpin: " << platform::PrintableLines(reason) << '\n';
    if (!picture) {
      screen.MessageBox(0, QString::fromStdString(reason).toStdU16String(), u"Kelpin",
                        ui::kBoxError);
    }
    return start::kExitFailure;
  };
  const std::unique_ptr<desktop::SpdlogLog> log = OpenLog(folders);
  for (const std::string& note : languageNotes) {
    log->DebugOutput(u"[KELPIN]:" + QString::fromStdString(note).toStdU16String() + u"\r\n");
  }

  std::string why;
  if (!desktop::MakePrivateFolder(folders.runtime, why)) {
    return fail(why);
  }
  app::SecretCode pin;
  if (options.pinDescriptor >= 0 && !ReadGivenPin(options.pinDescriptor, pin)) {
    std::cerr << "kelpin: " << platform::Say("--pin-fd gives no PIN; one has 4 to 8 digits")
              << '\n';
  }
  turn.Wait(folders.runtime, kStartPatience);
  if (RaiseRunningCopy(screen)) {
    if (!picture && options.named) {
      std::cerr << "kelpin: Kelpin runs already, with what its own start named; its window was "
                   "brought forward. Close it, then start again\n";
    }
    return picture ? fail(platform::Say("Kelpin runs already; close it, then take the picture"))
                   : 0;
  }
  const auto tell = [&screen](const std::string& reason) {
    screen.PostToScreen([&screen, reason] {
      screen.MessageBox(0, QString::fromStdString(reason).toStdU16String(), u"Kelpin",
                        ui::kBoxNotice);
    });
  };
  // Which program is set for what is the desktop's matter. What was to be opened stays unsaid.
  const auto notOpened = [&log](const std::string& address, int code) {
    const std::string note = "[KELPIN]:nothing was opened for a " +
                             address.substr(0, address.find(':') + 1) +
                             " address; xdg-open ended with " + std::to_string(code) + ".\r\n";
    log->DebugOutput(QString::fromStdString(note).toStdU16String());
  };
  const std::unique_ptr<platform::Telephone> telephone =
      start::OpenCalls(options.calls, {tell, notOpened}, why);
  if (telephone == nullptr) {
    return fail("--calls " + options.calls + ": " + why);
  }
  start::Device device;
  if (!start::OpenDevice(options, folders, tell, device, why)) {
    return fail(why);
  }
  card::SimService card(*device.channel);
  card.SetCodeGuard(desktop::KeepMemoryPrivate);
  const auto abandonCard = [&card] { card.Abandon(); };
  endSignals.OnRequest([&screen, &card] {
    screen.StopAsking();
    card.Abandon();
  });
  card::CardDevices devices;
  qt::QtShell shell(options.platform == "smartphone" ? u"Smartphone" : u"PocketPC");
  desktop::DesktopPrograms programs({.dataFolders = desktop::DataFolders(desktop::ProgramFolder()),
                                     .languages = desktop::WantedLanguages(),
                                     .helpSection = [&screen] { return screen.HelpSection(); },
                                     .helpFailed = tell,
                                     .messageFailed = notOpened});
  desktop::SteadyClock clock;

  bool saved = !picture;
  ProgramHooks hooks;
  hooks.closing = abandonCard;
  if (picture) {
    hooks.listLoaded = [&](app::AppState& state) {
      screen.PostToScreen(
          [&] { start::Report(screen, state, options.screenshot, started, saved); });
    };
  }
  app::Ports ports{card,  card,     devices,    *device.registry, *device.kernel,
                   shell, programs, *telephone, *device.contacts, clock,
                   *log,  screen};
  ports.cardLock = &card;
  ports.attended = !picture;
  ports.cardUse = &card;
  const bool opened = app::OpenCard(ports, {.code = &pin, .giveUp = abandonCard});
  int code = 0;
  if (opened) {
    // Served when the program's window can be found.
    screen.PostToScreen([&turn] { turn.Release(); });
    code = RunProgram(ports, hooks);
  } else {
    turn.Release();
    device.kernel->EndThreads();
  }
  code = saved && !failed ? code : start::kExitFailure;
  LeaveCard(card, *log, code);
  endSignals.OnRequest(nullptr);
  return code;
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

// A file that may not grow further is told as a full disk is, and nobody has to read what is
// printed to the end; unasked, the system ends the program for either. Not ignored: what the
// program starts would inherit that.
void OutliveRefusedWrites() {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  sigaction(SIGXFSZ, &action, nullptr);
  sigaction(SIGPIPE, &action, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  const start::SteadyTime started = std::chrono::steady_clock::now();
  if (!HoldStandardStreams()) {
    return start::kExitFailure;
  }
  OutliveRefusedWrites();
  int code = 0;
  const std::optional<start::Options> options = start::ReadCommandLine(argc, argv, code);
  if (!options.has_value()) {
    return code;
  }
  if (options->listReaders) {
    return start::PrintReaders();
  }
  if (!HasDisplay()) {
    std::cerr << "kelpin: no display; start it in a graphical session, or with xvfb-run\n";
    return start::kExitFailure;
  }
  return Start(*options, argv[0], started);
}
