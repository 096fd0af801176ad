#include "start/options.h"

#include <fcntl.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <system_error>

#include "start/adapters.h"
#include "start/command_line.h"
#include "start/exit_codes.h"
#include "start/report.h"

namespace kelpin::start {

namespace {

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

}  // namespace

std::optional<Options> ReadCommandLine(int argc, char** argv, int& code) {
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
  cli.add_flag("--list-readers", options.listReaders, "Print the card readers and end");
  cli.add_option("--pin-fd", options.pinDescriptor,
                 "The file descriptor from which the card's PIN is read, once, up to a line's end")
      ->check(CheckDescriptor)
      ->type_name("N");
  cli.set_version_flag("--version", "Kelpin 6.80");
  try {
    cli.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    code = EndOfCommandLine(cli, error, kExitUsage);
    code = code == 0 && !PrintedAll() ? kExitFailure : code;
    return std::nullopt;
  }
  options.named = argc > 1;
  return options;
}

}  // namespace kelpin::start
