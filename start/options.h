#pragma once

#include <optional>
#include <string>

namespace kelpin::start {

// What the command line says.
struct Options {
  std::string sim;
  std::string contacts;
  std::string registry;
  std::string calls = "desktop";
  std::string platform = "pocketpc";
  std::string screenshot;
  bool named = false;  // the command line has an option at all
  bool demo = false;
  bool listReaders = false;
  int pinDescriptor = -1;  // where a script gives the card's PIN; -1: nowhere
};

// Reads the command line. Without a value the program ends with `code`: the help or the version was
// printed, or what is wrong.
std::optional<Options> ReadCommandLine(int argc, char** argv, int& code);

}  // namespace kelpin::start
