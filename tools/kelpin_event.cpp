// Pulses a named event: how another program tells the phone-book manager that something changed.

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "device/desktop/xdg.h"
#include "device/kernel/kernel.h"
#include "device/registry/reg_text.h"

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
    "A pulse frees one program that waits at this moment; without one it is lost.\n"
    "Ends with 0 when the event was pulsed, 1 when it could not be, 2 for a wrong command line.";

int Pulse(const std::string& name) {
  std::u16string eventName;
  if (!registry::Utf16FromUtf8(name, eventName) || eventName.empty()) {
    std::cerr << "kelpin-event: the name is not text in UTF-8\n";
    return kExitUsage;
  }
  const desktop::Folders folders = desktop::FindFolders();
  std::string why;
  if (!desktop::MakePrivateFolder(folders.runtime, why)) {
    std::cerr << "kelpin-event: " << why << '\n';
    return kExitFailure;
  }
  const std::unique_ptr<kernel::Kernel> system = kernel::Kernel::Open(folders.runtime, why);
  if (system == nullptr) {
    std::cerr << "kelpin-event: " << why << '\n';
    return kExitFailure;
  }
  const std::unique_ptr<platform::Event> event = system->CreateEvent(eventName);
  if (event == nullptr || !event->EventModify(platform::EventAction::kPulse)) {
    std::cerr << "kelpin-event: " << name << " cannot be opened in " << folders.runtime.string()
              << "; is the name too long?\n";
    return kExitFailure;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string name;
  CLI::App cli{"Pulses an event by its name", "kelpin-event"};
  cli.add_option("NAME", name, "The event")->required()->type_name("");
  cli.footer(kEventsHelp);
  cli.set_version_flag("--version", "Kelpin 6.80");
  try {
    cli.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int code = cli.exit(error);
    return code == 0 ? 0 : kExitUsage;
  }
  return Pulse(name);
}
