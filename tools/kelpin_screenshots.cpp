// Takes a picture of every dialog of the program, as it is drawn on the sample card and contacts,
// and ends. No display is needed: QT_QPA_PLATFORM=offscreen.
//
//   kelpin-screenshots [--platform NAME] [--language FILE]
//                      SOURCE-FOLDER PICTURE-FOLDER dialogs|prompts|smartphone WIDTH HEIGHT
//
// KELPIN_THEME and KELPIN_TEXT_SCALE say how it looks.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "device/contacts/contact_list.h"
#include "device/contacts/sqlite/sqlite_store.h"
#include "device/desktop/desktop_programs.h"
#include "device/desktop/desktop_telephone.h"
#include "device/desktop/language_files.h"
#include "device/desktop/spdlog_log.h"
#include "device/desktop/steady_clock.h"
#include "device/kernel/kernel.h"
#include "device/qt/button_words.h"
#include "device/qt/qt_screen.h"
#include "device/qt/qt_shell.h"
#include "device/registry/text_registry.h"
#include "device/softcard/soft_channel.h"
#include "program.h"
#include "res/ids.h"
#include "res/language.h"
#include "res/strings.h"

namespace {

namespace fs = std::filesystem;
using namespace kelpin;
using namespace kelpin::device;

constexpr int kTick = 10;         // milliseconds between two looks
constexpr int kPatience = 15000;  // milliseconds for one step
constexpr int kCopied = 150;      // entries that show a copy under way
constexpr int kSettle = 20;       // ticks in which a dialog that opened gets its rows

// The settings of the pictures: every field and command there is.
constexpr const char* kSettings = R"(KELPIN REGISTRY 1

[HKEY_LOCAL_MACHINE\Software\OEM\KELPIN]
"Enable_SDN"=dword:00000001
"Enable_AAS"=dword:00000001
"Enable_GAS"=dword:00000001
"Enable_SNE"=dword:00000001
"Enable_Move_Func"=dword:00000001
"Show_ProgressBar"=dword:00000001
"Mobile_Tel_Flag"=dword:00000001
"Mobile_Tel_Mark"="/M"
"Work_Tel_Flag"=dword:00000001
"Work_Tel_Mark"="/W"
"Home_Tel_Mark"="/H"
)";

// A second session's: contacts go to the card one entry each, and ask.
constexpr const char* kPerContactSettings = R"("CToSim_Type"=dword:00000001
)";

// One thing to do when the dialog that it is for is in front.
struct Step {
  int dialog = 0;
  std::function<void(ui::Dialog&)> act;
  std::string picture;  // taken before acting; empty for none
  int settle = kSettle;
};

// Goes through its steps while the program runs.
class Script {
 public:
  Script(qt::QtScreen& screen, fs::path folder) : screen_(screen), folder_(std::move(folder)) {
    QObject::connect(&timer_, &QTimer::timeout, [this] { Tick(); });
  }

  void Add(Step step) { steps_.push_back(std::move(step)); }
  void Start() { timer_.start(kTick); }
  bool Done() const { return next_ == steps_.size(); }
  int Pictures() const { return pictures_; }

 private:
  void Tick() {
    if (Done()) {
      timer_.stop();
      return;
    }
    const Step& step = steps_[next_];
    const std::shared_ptr<ui::Dialog> front = screen_.FrontDialog();
    waited_ += kTick;
    if (waited_ > kPatience) {
      std::fprintf(stderr, "kelpin-screenshots: dialog %d did not come in front (%d is)\n",
                   step.dialog, front == nullptr ? 0 : front->Resource());
      std::_Exit(1);
    }
    if (front == nullptr || front->Resource() != step.dialog) {
      settled_ = 0;
      return;
    }
    if (++settled_ < step.settle) {
      return;
    }
    settled_ = 0;
    waited_ = 0;
    ++next_;
    if (!step.picture.empty()) {
      if (!screen_.GrabFront((folder_ / (step.picture + ".png")).string())) {
        std::fprintf(stderr, "kelpin-screenshots: %s cannot be written\n", step.picture.c_str());
        std::_Exit(1);
      }
      ++pictures_;
    }
    // From the event loop: what opens a modal dialog does not come back before that ends.
    QTimer::singleShot(0, [front, act = step.act] { act(*front); });
  }

  qt::QtScreen& screen_;
  const fs::path folder_;
  QTimer timer_;
  std::vector<Step> steps_;
  std::size_t next_ = 0;
  int waited_ = 0;
  int settled_ = 0;
  int pictures_ = 0;
};

std::function<void(ui::Dialog&)> Give(int command) {
  return [command](ui::Dialog& dialog) { dialog.Command(command); };
}

void Close(ui::Dialog& dialog) {
  dialog.Close();
}

// Opens a dialog by a command of the main list, takes its picture and closes it.
void Show(Script& script, int command, int dialog, const char* picture) {
  script.Add({res::kDialogMain, Give(command), {}});
  script.Add({dialog, Close, picture});
}

// The same for a dialog that another one opens.
void ShowInner(Script& script, int command, int outer, const char* picture,
               const std::function<void(ui::Dialog&)>& open, int inner, const char* innerPicture) {
  script.Add({res::kDialogMain, Give(command), {}});
  script.Add({outer, open, picture});
  script.Add({inner, Close, innerPicture});
  script.Add({outer, Close, {}});
}

// Rows `first` and on, `count` of them.
void SelectRows(ui::Dialog& dialog, int first, int count) {
  ui::ListView& list = *dialog.List(res::kMainList);
  list.SetItemState(-1, 0, ui::kItemSelected);
  for (int row = first; row < first + count; ++row) {
    list.SetItemState(row, ui::kItemSelected | ui::kItemFocused,
                      ui::kItemSelected | ui::kItemFocused);
  }
  list.SetSelectionMark(first);
}

// An entry of the sample card with second number, e-mail, nickname and groups.
void SelectFullEntry(ui::Dialog& dialog) {
  const ui::ListView& list = *dialog.List(res::kMainList);
  for (int row = 0; row < list.ItemCount(); ++row) {
    if (list.ItemText(row, 0) == u"41") {
      SelectRows(dialog, row, 1);
    }
  }
}

void AddDialogSteps(Script& script, bool smartphone) {
  script.Add({res::kDialogMain, SelectFullEntry, "main-list"});
  script.Add({res::kDialogMain, Give(res::kCommandNew), {}});
  script.Add({res::kDialogNewEntry,
              [](ui::Dialog& dialog) { dialog.PressButton(res::kNewNumber2Button); }, "new-entry"});
  script.Add({res::kDialogNumberNamePicker, Close, "number-name-picker"});
  script.Add({res::kDialogNewEntry,
              [](ui::Dialog& dialog) { dialog.PressButton(res::kNewGroupButton); },
              {}});
  script.Add({res::kDialogGroupPicker, Close, "group-picker"});
  script.Add({res::kDialogNewEntry, Close, {}});
  Show(script, res::kCommandEdit, res::kDialogEditEntry, "edit-entry");
  Show(script, res::kCommandCall, res::kDialogCallChooser, "call-chooser");
  Show(script, res::kCommandSend, res::kDialogSendChooser, "send-chooser");
  ShowInner(script, res::kCommandNumberNames, res::kDialogNumberNames, "number-names",
            Give(res::kNumberNamesEdit), res::kDialogEditNumberName, "edit-number-name");
  ShowInner(script, res::kCommandGroupNames, res::kDialogGroupNames, "group-names",
            Give(res::kGroupNamesEdit), res::kDialogEditGroupName, "edit-group-name");
  ShowInner(script, res::kCommandOwnNumbers, res::kDialogOwnNumbers, "own-numbers",
            Give(res::kOwnNumbersEdit), res::kDialogEditOwnNumber, "edit-own-number");
  Show(script, res::kCommandServiceNumbers, res::kDialogServiceNumbers, "service-numbers");
  if (smartphone) {
    Show(script, res::kCommandSimInformation, res::kDialogSimInformationPage,
         "sim-information-page");
  } else {
    Show(script, res::kCommandSimInformation, res::kDialogSimInformationList, "sim-information");
  }
  Show(script, res::kCommandAbout, res::kDialogAbout, "about");
  Show(script, res::kCommandContactsToSim, res::kDialogContactPicker, "contacts-to-sim");
  ShowInner(
      script, res::kCommandOptions, res::kDialogOptions, "options",
      [](ui::Dialog& dialog) {
        dialog.List(res::kOptionsList)
            ->SetItemState(0, ui::kItemSelected | ui::kItemFocused,
                           ui::kItemSelected | ui::kItemFocused);
        dialog.Command(res::kOptionsEdit);
      },
      res::kDialogMarkEditor, "mark-editor");
  Show(script, res::kCommandDeleteContacts, res::kDialogDeleteContacts, "delete-contacts");
}

// Some of the names are in Contacts already, or on the card twice: the copy asks.
void AddCopySteps(Script& script) {
  script.Add({res::kDialogMain,
              [](ui::Dialog& dialog) {
                SelectRows(dialog, 0, kCopied);
                dialog.Command(res::kCommandSaveToContacts);
              },
              {}});
  script.Add({res::kDialogCopyProgress, [](ui::Dialog&) {}, "copy-progress", 2});
  script.Add({res::kDialogOverwritePrompt,
              [](ui::Dialog& dialog) {
                dialog.SetChecked(res::kOverwriteApplyToAll, true);
                dialog.Command(res::kOverwriteNo);
              },
              "overwrite-prompt"});
}

void AddPromptSteps(Script& script) {
  script.Add({res::kDialogMain, Give(res::kCommandContactsToSim), {}});
  script.Add({res::kDialogContactPicker, Give(res::kCopyPickerDone), {}});
  script.Add({res::kDialogNotAllPrompt,
              [](ui::Dialog& dialog) {
                dialog.SetChecked(res::kNotAllApplyToAll, true);
                dialog.Command(res::kNotAllNo);
              },
              "not-all-prompt"});
}

enum class Session { kDialogs, kPrompts, kSmartphone };

struct Wish {
  std::string source;
  std::string pictures;
  Session session = Session::kDialogs;
  ui::Size size;
  std::string platform = "pocketpc";
  std::string language;  // a file; empty for English
};

// A card slow enough for a copy to be seen.
std::string SlowCard(std::string image) {
  const std::string_view fast = "\"delayMs\": 0";
  if (const std::size_t at = image.find(fast); at != std::string::npos) {
    image.replace(at, fast.size(), "\"delayMs\": 2");
  }
  return image;
}

std::string Read(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool Write(const fs::path& file, const std::string& text) {
  std::ofstream out(file, std::ios::binary);
  out << text;
  out.close();
  return out.good();
}

std::string Settings(Session session) {
  return std::string(kSettings) + (session == Session::kPrompts ? kPerContactSettings : "");
}

int Fail(const std::string& why) {
  std::fprintf(stderr, "kelpin-screenshots: %s\n", why.c_str());
  return 1;
}

void AddSteps(Script& script, Session session, bool smartphone) {
  switch (session) {
    case Session::kDialogs:
      AddDialogSteps(script, smartphone);
      AddCopySteps(script);
      break;
    case Session::kPrompts:
      AddPromptSteps(script);
      break;
    case Session::kSmartphone:
      Show(script, res::kCommandSimInformation, res::kDialogSimInformationPage,
           "sim-information-page");
      break;
  }
  script.Add({res::kDialogMain, [](ui::Dialog& dialog) { dialog.PostClose(); }, {}});
}

// False when the file is none.
bool SpeakLanguageOf(const std::string& file) {
  std::string bytes;
  std::string why;
  std::vector<std::string> notes;
  if (!desktop::ReadDataFile(file, res::kLanguageFileLimit, bytes, why)) {
    return false;
  }
  std::optional<res::LanguageTexts> texts = res::ReadLanguage(bytes, notes);
  if (!texts.has_value()) {
    return false;
  }
  res::UseLanguage(std::move(*texts));
  const auto word = [](int id) { return std::u16string(res::LoadString(id)); };
  qt::SetButtonWords({word(res::kTextKeyYes), word(res::kTextKeyNo), word(res::kTextKeyOk),
                      word(res::kTextKeyDone)});
  return true;
}

int Run(const Wish& wish, const fs::path& scratch, char* programName) {
  const fs::path source = wish.source;
  const Session session = wish.session;
  const bool smartphone = session == Session::kSmartphone || wish.platform == "smartphone";
  std::string why;
  if (!wish.language.empty() && !SpeakLanguageOf(wish.language)) {
    return Fail(wish.language + " is no language file");
  }
  if (!Write(scratch / "card.json", SlowCard(Read(source / "res/cards/usim.json"))) ||
      !Write(scratch / "registry.reg", Settings(session))) {
    return Fail(scratch.string() + " cannot be written");
  }
  int argc = 1;
  char* argv[] = {programName, nullptr};
  qt::QtScreen screen(argc, argv, {scratch, scratch, wish.size, [](auto, auto, auto) {}});
  const auto kernel = kernel::Kernel::Open(scratch, why);
  const auto settings = registry::TextRegistry::Open(scratch / "registry.reg", {}, why);
  const auto channel = softcard::SoftChannel::Open((scratch / "card.json").string(), why);
  const auto contacts = contacts::SqliteStore::Open((scratch / "contacts.db").string(), why);
  std::vector<contacts::ContactRecord> people;
  if (kernel == nullptr || settings == nullptr || channel == nullptr || contacts == nullptr ||
      !contacts::ReadContactList(Read(source / "res/contacts/sample.json"), people, why) ||
      !contacts->AddAll(people, why)) {
    return Fail(why);
  }
  const auto log = desktop::SpdlogLog::ToStandardError();
  card::SimService card(*channel);
  card::CardDevices devices;
  qt::QtShell shell(smartphone ? u"Smartphone" : u"PocketPC");
  desktop::DesktopPrograms programs({.opener = "true"});
  desktop::DesktopTelephone telephone("true");
  desktop::SteadyClock clock;
  app::Ports ports{card,     card,      devices,   *settings, *kernel, shell,
                   programs, telephone, *contacts, clock,     *log,    screen};

  Script script(screen, wish.pictures);
  AddSteps(script, session, smartphone);
  ProgramHooks hooks;
  bool started = false;
  hooks.listLoaded = [&](app::AppState&) {
    screen.PostToScreen([&] {
      if (!std::exchange(started, true)) {
        script.Start();
      }
    });
  };
  RunProgram(ports, hooks);
  if (!script.Done()) {
    return Fail("the program ended early");
  }
  std::printf("%d pictures in %s\n", script.Pictures(), wish.pictures.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Wish wish;
  CLI::App cli{"Takes a picture of every dialog of Kelpin", "kelpin-screenshots"};
  cli.add_option("source", wish.source, "The source folder")->required();
  cli.add_option("pictures", wish.pictures, "Where the pictures go")->required();
  cli.add_option("session", wish.session, "dialogs, prompts or smartphone")
      ->required()
      ->transform(CLI::Transformer(std::map<std::string, Session>{
          {"dialogs", Session::kDialogs},
          {"prompts", Session::kPrompts},
          {"smartphone", Session::kSmartphone},
      }));
  cli.add_option("width", wish.size.width)->required()->check(CLI::Range(200, 8000));
  cli.add_option("height", wish.size.height)->required()->check(CLI::Range(200, 8000));
  cli.add_option("--platform", wish.platform, "pocketpc (default) or smartphone")
      ->check(CLI::IsMember({"pocketpc", "smartphone"}));
  cli.add_option("--language", wish.language, "A language file; else English");
  try {
    cli.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return cli.exit(error) == 0 ? 0 : 2;
  }
  std::error_code error;
  fs::create_directories(wish.pictures, error);
  const fs::path scratch =
      fs::temp_directory_path(error) / ("kelpin-screenshots-" + std::to_string(getpid()));
  if (!fs::create_directory(scratch, error)) {
    return Fail(scratch.string() + " cannot be made");
  }
  fs::permissions(scratch, fs::perms::owner_all, error);
  const int code = Run(wish, scratch, argv[0]);
  fs::remove_all(scratch, error);
  return code;
}
