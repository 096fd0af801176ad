#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace kelpin::bench {

inline constexpr int kCopied = 250;  // entries of a card

// How long the work takes; -1 when it fails, which is shown as it is: the figure is none.
double Milliseconds(const std::function<bool()>& work);

// What the file of contacts costs without any of our own code. False when the file cannot be used.

// Every text of every contact; counts their characters.
bool BareLoop(const std::string& path, std::size_t& characters);

// kCopied contacts, each looked up by name, then inserted in a transaction of its own that waits
// for the disk.
bool BareCopy(const std::string& path);

}  // namespace kelpin::bench
