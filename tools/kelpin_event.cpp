// Pulses a named event: how another program tells the phone-book manager that something changed.

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "device/desktop/xdg.h"
#include "device/kernel/kernel.h"
#include "device/registry/reg_text.h"
#include "platform/wording.h"
#include "start/command_line.h"

namespace {

using namespace kelpin;
using namespace kelpin::device;

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

constexpr const char* kEventsHelp =
    "Events the program waits for:\n"
    "  OEM_MY_RIL_SIMPB_EVENT_OEM      read the whole phone book again\n"
    "  OEM_MY_RIL_MSISDNS_EVENT_OEM    read the own numbers again\n"
    "  OEM_MY_SIM_STORED_EVENT_OEM     look for entries that were stored\n"
    "  OEM_MY_SIM_DELETED_EVENT_OEM    look for entries that were deleted\n\n"
    "A pulse frees one program that waits at this moment; without one it is lost, which is told.\n"
    "Ends with 0 when the event was pulsed, 1 when it could not be, 2 for a wrong command line or "
    "a\n"
    "name that no event can have.";

int Tell(int code, std::string_view what) {
  std::cerr << "kelpin-event: " << platform::PrintableLines(what) << '\n';
  return code;
}

int Pulse(const std::string& name, bool quiet) {
  std::u16string eventName;
  if (!registry::Utf16FromUtf8(name, eventName)) {
    return Tell(kExitUsage, "the name is not text in UTF-8");
  }
  if (eventName.empty()) {
    return Tell(kExitUsage, "the name is empty; --help lists those that Kelpin waits for");
  }
  if (!kernel::Kernel::IsName(eventName)) {
    return Tell(kExitUsage,
                "the name is too long for an event; --help lists those that Kelpin waits for");
  }
  const desktop::Folders folders = desktop::FindFolders();
  std::string why;
  if (!desktop::MakePrivateFolder(folders.runtime, why)) {
    return Tell(kExitFailure, why);
  }
  const std::unique_ptr<kernel::Kernel> system = kernel::Kernel::Open(folders.runtime, why);
  if (system == nullptr) {
    return Tell(kExitFailure, why);
  }
  bool freed = false;
  if (!system->Pulse(eventName, freed)) {
    return Tell(kExitFailure,
                platform::Say("%s cannot be opened in %s. See that the folder can be written and "
                              "its disk is not full",
                              {name, folders.runtime.string()}));
  }
  if (!freed && !quiet) {
    return Tell(0, platform::Say("nobody waits for %s now, so the pulse is lost. See that Kelpin "
                                 "runs, and that the name is right (--help)",
                                 {name}));
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string name;
  CLI::App cli{"Pulses an event by its name", "kelpin-event"};
  cli.add_option("NAME", name, "The event")->required()->type_name("");
  bool quiet = false;
  cli.add_flag("-q,--quiet", quiet, "Say nothing when nobody waits");
  cli.footer(kEventsHelp);
  cli.set_version_flag("--version", "Kelpin 6.80");
  try {
    cli.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return start::EndOfCommandLine(cli, error, kExitUsage);
  }
  return Pulse(name, quiet);
}
