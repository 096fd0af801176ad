// Picks a device from the command line and starts the program on it. The only file that names the
// adapters.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QApplication>
#include <QFile>
#include <QString>
#include <QTimer>
#include <QtGlobal>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "app/card_opening.h"
#include "app/secret_code.h"
#include "app/start_up.h"
#include "device/calls/modem_manager_telephone.h"
#include "device/card/card_channel.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "device/contacts/contact_list.h"
#include "device/contacts/sqlite/sqlite_store.h"
#include "device/contacts/trouble.h"
#include "device/desktop/desktop_programs.h"
#include "device/desktop/desktop_telephone.h"
#include "device/desktop/language_files.h"
#include "device/desktop/run_folder.h"
#include "device/desktop/secrets.h"
#include "device/desktop/spdlog_log.h"
#include "device/desktop/steady_clock.h"
#include "device/desktop/utf8.h"
#include "device/desktop/xdg.h"
#include "device/kernel/kernel.h"
#include "device/modem/modem_channel.h"
#if KELPIN_HAS_EDS
#include "device/contacts/eds/eds_store.h"
#endif
#if KELPIN_HAS_PCSC
#include "device/pcsc/pcsc_channel.h"
#endif
#include "device/qt/button_words.h"
#include "device/qt/end_signals.h"
#include "device/qt/message_window.h"
#include "device/qt/qt_screen.h"
#include "device/qt/qt_shell.h"
#include "device/registry/text_registry.h"
#include "device/softcard/soft_channel.h"
#include "platform/contacts_store.h"
#include "platform/telephone.h"
#include "program.h"
#include "res/ids.h"
#include "res/language.h"
#include "res/strings.h"
#include "ui/list_view.h"

namespace {

namespace fs = std::filesystem;
using namespace kelpin;
using namespace kelpin::device;

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr std::uint32_t kStartPatience = 5000;  // milliseconds
// How long the end waits for a card that is read, and for one that is written to.
constexpr std::chrono::milliseconds kReadPatience(500);
constexpr std::chrono::milliseconds kUpdatePatience(5000);
// What is told of contacts lets a message of the program's own go first.
constexpr std::chrono::milliseconds kTroublePause(300);

struct Options {
  std::string sim;
  std::string contacts;
  std::string registry;
  std::string calls = "desktop";
  std::string platform = "pocketpc";
  std::string screenshot;
  bool demo = false;
  int pinDescriptor = -1;  // where a script gives the card's PIN; -1: nowhere
};

// A way to what the program needs, on the command line "NAME" or "NAME:ARGUMENT".
template <class Needed>
struct Adapter {
  const char* name;
  bool needsArgument;
  const char* help;
  // Null when it cannot be opened; `why` says why and what to do.
  std::unique_ptr<Needed> (*open)(const std::string& argument, std::string& why);
};

std::unique_ptr<card::CardChannel> OpenSoftCard(const std::string& file, std::string& why) {
  return softcard::SoftChannel::Open(file, why);
}

#if KELPIN_HAS_PCSC
std::unique_ptr<card::CardChannel> OpenCardReader(const std::string& name, std::string& why) {
  std::unique_ptr<pcsc::PcscChannel> channel = pcsc::PcscChannel::Open(name, why);
  if (channel != nullptr && !channel->HadCard()) {
    std::cerr << "kelpin: no card in the reader " << channel->ReaderName()
              << "; put one in and start again\n";
  }
  return channel;
}

bool ListReaders(std::string& list, std::string& why) {
  std::vector<pcsc::Reader> readers;
  if (!pcsc::ListReaders(readers, why)) {
    return false;
  }
  for (const pcsc::Reader& reader : readers) {
    list += reader.name + (reader.hasCard ? "  (card)\n" : "  (empty)\n");
  }
  return true;
}
#else
constexpr const char* kNoReaders =
    "this copy of Kelpin was built without card readers; install libpcsclite-dev and build again";

std::unique_ptr<card::CardChannel> OpenCardReader(const std::string& /*name*/, std::string& why) {
  why = kNoReaders;
  return nullptr;
}

bool ListReaders(std::string& /*list*/, std::string& why) {
  why = kNoReaders;
  return false;
}
#endif

std::unique_ptr<card::CardChannel> OpenModem(const std::string& port, std::string& why) {
  std::unique_ptr<modem::ModemChannel> channel = modem::ModemChannel::Open(port, why);
  if (channel != nullptr && !channel->HadCard()) {
    std::cerr << "kelpin: no card in the modem on " << port << "; put one in and start again\n";
  }
  return channel;
}

constexpr Adapter<card::CardChannel> kSimAdapters[] = {
    {"soft", true, "soft:FILE  a software card kept in FILE", OpenSoftCard},
    {"pcsc", false, "pcsc[:NAME]  the card in a PC/SC reader, the first one or NAME",
     OpenCardReader},
    {"modem", true, "modem:PORT  the card in the modem on PORT (/dev/ttyUSB2, say)", OpenModem},
};

using ContactsTrouble = device::contacts::TroubleListener;

std::unique_ptr<platform::ContactsStore> OpenSqlite(const std::string& file,
                                                    ContactsTrouble trouble, std::string& why) {
  return device::contacts::SqliteStore::Open(file, why, std::move(trouble));
}

std::unique_ptr<platform::ContactsStore> OpenEds(const std::string& book,
                                                 [[maybe_unused]] ContactsTrouble trouble,
                                                 std::string& why) {
#if KELPIN_HAS_EDS
  return device::contacts::EdsStore::Open(book, why, std::move(trouble));
#else
  why = "this Kelpin was built without the desktop's contacts" +
        (book.empty() ? std::string() : " (eds:" + book + ")") +
        "; install libebook1.2-dev and build it again";
  return nullptr;
#endif
}

struct ContactsAdapter {
  const char* name;
  bool needsArgument;
  const char* help;
  // As above. `trouble` is told, on any thread, what goes wrong later.
  std::unique_ptr<platform::ContactsStore> (*open)(const std::string& argument,
                                                   ContactsTrouble trouble, std::string& why);
};

constexpr ContactsAdapter kContactsAdapters[] = {
    {"sqlite", true, "sqlite:FILE  contacts kept in FILE", OpenSqlite},
    {"eds", false, "eds[:BOOK]  the desktop's contacts (Evolution Data Server)", OpenEds},
};

// Who is told why a call is not made.
struct CallsListeners {
  std::function<void(const std::string& why)> failed;  // on the screen thread; may show it
  desktop::AddressOpener::Failed notOpened;            // on any thread
};

std::unique_ptr<platform::Telephone> OpenDesktopCalls(CallsListeners listeners,
                                                      std::string& /*why*/) {
  return std::make_unique<desktop::DesktopTelephone>("xdg-open", std::move(listeners.notOpened));
}

std::unique_ptr<platform::Telephone> OpenModemCalls(CallsListeners listeners, std::string& why) {
  return calls::ModemManagerTelephone::Open({.failed = std::move(listeners.failed)}, why);
}

struct CallsAdapter {
  const char* name;
  const char* help;
  // As above.
  std::unique_ptr<platform::Telephone> (*open)(CallsListeners listeners, std::string& why);
};

constexpr CallsAdapter kCallsAdapters[] = {
    {"desktop", "desktop  the desktop's telephone program (the default)", OpenDesktopCalls},
    {"modem", "modem  a modem, through ModemManager", OpenModemCalls},
};

template <class Row, std::size_t kCount>
std::string HelpLines(const Row (&adapters)[kCount]) {
  std::string help;
  for (const Row& adapter : adapters) {
    help += "\n" + std::string(adapter.help);
  }
  return help;
}

std::string SimHelp() {
  return "The card, one of:" + HelpLines(kSimAdapters) +
         "\nWithout it: a software card in the data folder, made empty at the first start";
}

std::string ContactsHelp() {
  return "The contacts, one of:" + HelpLines(kContactsAdapters) +
         "\nWithout it: contacts.db in the data folder";
}

std::string CallsHelp() {
  return "Who makes calls, one of:" + HelpLines(kCallsAdapters);
}

// What stands before and after the first colon.
struct AdapterText {
  explicit AdapterText(const std::string& text) : name(text.substr(0, text.find(':'))) {
    argument = text.size() > name.size() ? text.substr(name.size() + 1) : "";
  }

  std::string name;
  std::string argument;
};

template <class Row, std::size_t kCount>
const Row* FindAdapter(const Row (&adapters)[kCount], const std::string& name) {
  for (const Row& adapter : adapters) {
    if (name == adapter.name) {
      return &adapter;
    }
  }
  return nullptr;
}

// Empty when the text names one, else what is wrong with it.
template <class Row, std::size_t kCount>
std::string CheckAdapter(const Row (&adapters)[kCount], const char* kind, const std::string& text) {
  const AdapterText parts(text);
  const Row* const adapter = FindAdapter(adapters, parts.name);
  if (adapter == nullptr) {
    return std::string("no such kind of ") + kind + ": \"" + parts.name + '"';
  }
  return parts.argument.empty() && adapter->needsArgument ? std::string("write ") + adapter->help
                                                          : "";
}

std::string CheckSim(const std::string& text) {
  return CheckAdapter(kSimAdapters, "card", text);
}

std::string CheckContacts(const std::string& text) {
  return CheckAdapter(kContactsAdapters, "contacts", text);
}

std::string CheckCalls(const std::string& text) {
  return FindAdapter(kCallsAdapters, text) == nullptr ? "no such kind of calls: \"" + text + '"'
                                                      : "";
}

std::string CheckNotEmpty(const std::string& text) {
  return text.empty() ? "the name of a file is wanted" : "";
}

// Empty when the text names an open file descriptor.
std::string CheckDescriptor(const std::string& text) {
  int descriptor = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), descriptor);
  const bool number = error == std::errc() && end == text.data() + text.size();
  return number && descriptor >= 0 && fcntl(descriptor, F_GETFD) >= 0
             ? ""
             : text + " is no open file descriptor";
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

// What the program needs of the device, but for the screen.
struct Device {
  desktop::ScratchFolder scratch;
  std::unique_ptr<kernel::Kernel> kernel;
  std::unique_ptr<registry::TextRegistry> registry;
  std::unique_ptr<card::CardChannel> channel;
  std::unique_ptr<platform::ContactsStore> contacts;
};

// The settings that count where the user's say nothing: the system's, else those that come with the
// program.
fs::path FindSystemSettings() {
  fs::path file = desktop::FindSystemConfig("registry.reg");
  if (!file.empty()) {
    return file;
  }
  for (const fs::path& folder : desktop::DataFolders(desktop::ProgramFolder())) {
    std::error_code ignored;
    if (file = folder / "registry-default.reg"; fs::exists(file, ignored)) {
      return file;
    }
  }
  return {};
}

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
  device.registry = registry::TextRegistry::Open(file, FindSystemSettings(), why);
  return device.registry != nullptr;
}

bool OpenCard(const Options& options, const desktop::Folders& folders, Device& device,
              std::string& why) {
  std::string name = "soft";
  std::string argument;
  if (!options.sim.empty()) {
    const AdapterText chosen(options.sim);
    name = chosen.name;
    argument = chosen.argument;
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
  device.channel = FindAdapter(kSimAdapters, name)->open(argument, why);
  return device.channel != nullptr;
}

// A store of the demonstration's own, with the sample contacts.
std::unique_ptr<platform::ContactsStore> OpenSampleContacts(const fs::path& file,
                                                            std::string& why) {
  QFile sample(":/kelpin/contacts/sample.json");
  std::vector<device::contacts::ContactRecord> people;
  if (!sample.open(QIODevice::ReadOnly) ||
      !device::contacts::ReadContactList(sample.readAll().toStdString(), people, why)) {
    why = "the sample contacts are not part of this program " + why;
    return nullptr;
  }
  std::unique_ptr<device::contacts::SqliteStore> store =
      device::contacts::SqliteStore::Open(file.string(), why);
  return store != nullptr && store->AddAll(people, why) ? std::move(store) : nullptr;
}

bool OpenContacts(const Options& options, const desktop::Folders& folders,
                  const ContactsTrouble& trouble, Device& device, std::string& why) {
  if (!options.contacts.empty()) {
    const AdapterText chosen(options.contacts);
    device.contacts =
        FindAdapter(kContactsAdapters, chosen.name)->open(chosen.argument, trouble, why);
  } else if (options.demo) {
    device.contacts = OpenSampleContacts(device.scratch.Path() / "contacts.db", why);
  } else if (desktop::MakePrivateFolder(folders.data, why)) {
    device.contacts = OpenSqlite((folders.data / "contacts.db").string(), trouble, why);
  }
  return device.contacts != nullptr;
}

bool OpenDevice(const Options& options, const desktop::Folders& folders,
                const ContactsTrouble& trouble, Device& device, std::string& why) {
  if (options.demo && !device.scratch.Make(folders.runtime, why)) {
    return false;
  }
  device.kernel = kernel::Kernel::Open(folders.runtime, why);
  return device.kernel != nullptr && OpenRegistry(options, folders, device, why) &&
         OpenCard(options, folders, device, why) &&
         OpenContacts(options, folders, trouble, device, why);
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

// The user's language, where there is a file of it, else English. What is wrong with the files is
// told in `notes`.
void ChooseLanguage(std::vector<std::string>& notes) {
  for (const fs::path& file : desktop::LanguageFiles(
           desktop::WantedLanguages(), desktop::DataFolders(desktop::ProgramFolder()))) {
    std::string bytes;
    std::string why;
    std::vector<std::string> faults;
    std::optional<res::LanguageTexts> texts;
    if (desktop::ReadDataFile(file, res::kLanguageFileLimit, bytes, why)) {
      texts = res::ReadLanguage(bytes, faults);
    } else {
      faults.push_back(why);
    }
    for (const std::string& fault : faults) {
      notes.push_back(file.string() + ": " + fault);
    }
    if (texts.has_value()) {
      res::UseLanguage(std::move(*texts));
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
  std::cout << desktop::Utf8Line(state.dialog->Text(res::kMainHeader)) << '\n';
  for (int row = 0; row < list.ItemCount(); ++row) {
    std::printf("%5s  %-30s  %s\n", desktop::Utf8Line(list.ItemText(row, 0)).c_str(),
                desktop::Utf8Line(list.ItemText(row, 1)).c_str(),
                desktop::Utf8Line(list.ItemText(row, 2)).c_str());
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

int PrintReaders() {
  std::string list;
  std::string why;
  if (!ListReaders(list, why)) {
    std::cerr << "kelpin: " << why << '\n';
    return kExitFailure;
  }
  std::cout << list;
  return PrintedAll() ? 0 : kExitFailure;
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
  std::cerr << "kelpin: the card has not answered"
            << (changing ? "; an entry was being written: look whether it is as it should be" : "")
            << std::endl;
  log.DebugOutput(changing ? u"[KELPIN]:left a card that has not answered an update.\r\n"
                           : u"[KELPIN]:left a card that has not answered.\r\n");
  std::fflush(nullptr);
  std::_Exit(code);
}

// Tells what went wrong with the contacts. That comes together with the summary of what was done,
// and the keys go astray between two boxes that open at once.
void TellAfterOthers(qt::QtScreen& screen, const std::string& trouble) {
  QTimer::singleShot(kTroublePause, qApp, [&screen, trouble] {
    if (qobject_cast<qt::MessageWindow*>(QApplication::activeModalWidget()) != nullptr) {
      TellAfterOthers(screen, trouble);
      return;
    }
    screen.MessageBox(0, QString::fromStdString(trouble).toStdU16String(), u"Kelpin",
                      ui::kBoxNotice);
  });
}

int Start(const Options& options, char* programName, SteadyTime start) {
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
  for (const std::string& note : languageNotes) {
    log->DebugOutput(u"[KELPIN]:" + QString::fromStdString(note).toStdU16String() + u"\r\n");
  }

  std::string why;
  if (!desktop::MakePrivateFolder(folders.runtime, why)) {
    return fail(why);
  }
  app::SecretCode pin;
  if (options.pinDescriptor >= 0 && !ReadGivenPin(options.pinDescriptor, pin)) {
    std::cerr << "kelpin: --pin-fd gives no PIN; one has 4 to 8 digits\n";
  }
  turn.Wait(folders.runtime, kStartPatience);
  if (RaiseRunningCopy(screen)) {
    return picture ? fail("Kelpin runs already; close it, then take the picture") : 0;
  }
  const auto tell = [&screen](const std::string& reason) {
    screen.PostToScreen([&screen, reason] {
      screen.MessageBox(0, QString::fromStdString(reason).toStdU16String(), u"Kelpin",
                        ui::kBoxNotice);
    });
  };
  const auto contactsTrouble = [&screen](const std::string& trouble) {
    screen.PostToScreen([&screen, trouble] { TellAfterOthers(screen, trouble); });
  };
  // Which program is set for what is the desktop's matter. What was to be opened stays unsaid.
  const auto notOpened = [&log](const std::string& address, int code) {
    const std::string note = "[KELPIN]:nothing was opened for a " +
                             address.substr(0, address.find(':') + 1) +
                             " address; xdg-open ended with " + std::to_string(code) + ".\r\n";
    log->DebugOutput(QString::fromStdString(note).toStdU16String());
  };
  const std::unique_ptr<platform::Telephone> telephone =
      FindAdapter(kCallsAdapters, options.calls)->open({tell, notOpened}, why);
  if (telephone == nullptr) {
    return fail("--calls " + options.calls + ": " + why);
  }
  Device device;
  if (!OpenDevice(options, folders, contactsTrouble, device, why)) {
    return fail(why);
  }
  card::SimService card(*device.channel);
  card.SetCodeGuard(desktop::KeepMemoryPrivate);
  const auto abandonCard = [&card] { card.Abandon(); };
  endSignals.OnRequest(abandonCard);
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
      screen.PostToScreen([&] { Report(screen, state, options.screenshot, start, saved); });
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
  code = saved && !failed ? code : kExitFailure;
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

// A file that may not grow further is told as a full disk is; unasked, the system ends the program
// instead. Not ignored: what the program starts would inherit that.
void OutliveFileSizeLimit() {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  sigaction(SIGXFSZ, &action, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  const SteadyTime start = std::chrono::steady_clock::now();
  if (!HoldStandardStreams()) {
    return kExitFailure;
  }
  OutliveFileSizeLimit();
  Options options;
  CLI::App cli{"Kelpin, the phone-book manager for SIM and USIM cards", "kelpin"};
  cli.add_option("--sim", options.sim, SimHelp())->check(CheckSim)->type_name("CARD");
  cli.add_option("--contacts", options.contacts, ContactsHelp())
      ->check(CheckContacts)
      ->type_name("STORE");
  cli.add_option("--registry", options.registry,
                 "The settings file, else registry.reg in the config folder")
      ->check(CheckNotEmpty)
      ->type_name("FILE");
  cli.add_option("--calls", options.calls, CallsHelp())->check(CheckCalls)->type_name("WAY");
  cli.add_option("--platform", options.platform, "pocketpc (default) or smartphone")
      ->check(CLI::IsMember({"pocketpc", "smartphone"}, CLI::ignore_case))
      ->transform(CLI::Transformer({{"Smartphone", "smartphone"}}, CLI::ignore_case))
      ->option_text("NAME");
  cli.add_flag("--demo", options.demo,
               "A sample card, contacts and settings, thrown away at the end");
  cli.add_option("--screenshot", options.screenshot,
                 "Wait for the list, save a picture (PNG), print the list, end")
      ->check(CheckNotEmpty)
      ->type_name("FILE");
  bool listReaders = false;
  cli.add_flag("--list-readers", listReaders, "Print the card readers and end");
  cli.add_option("--pin-fd", options.pinDescriptor,
                 "The file descriptor from which the card's PIN is read, once, up to a line's end")
      ->check(CheckDescriptor)
      ->type_name("N");
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
  if (listReaders) {
    return PrintReaders();
  }
  if (!HasDisplay()) {
    std::cerr << "kelpin: no display; start it in a graphical session, or with xvfb-run\n";
    return kExitFailure;
  }
  return Start(options, argv[0], start);
}
