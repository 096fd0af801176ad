#pragma once

namespace kelpin::contract {

// Moves what is on a card file to an address book: the work of a process of its own, which is
// killed before the nth thing it does to either. The arguments: card file, address book, n. What
// the process ends with that was not killed.
int RunMoveProcess(char** arguments);

// The first argument of such a process.
inline constexpr const char* kMoveProcess = "--move";
inline constexpr int kMovedAll = 3;

}  // namespace kelpin::contract
