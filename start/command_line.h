#pragma once

#include <CLI/CLI.hpp>
#include <iostream>

#include "platform/printable.h"

namespace kelpin::start {

// What a command line that CLI11 does not take ends the program with: help and version are printed
// and end it with 0, what is wrong is told and ends it with `usage`.
inline int EndOfCommandLine(const CLI::App& cli, const CLI::ParseError& error, int usage) {
  if (error.get_exit_code() == 0) {
    return cli.exit(error);
  }
  std::cerr << platform::Printable(error.what()) << "\nRun with --help for more information.\n";
  return usage;
}

}  // namespace kelpin::start
