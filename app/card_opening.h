#pragma once

#include <chrono>
#include <functional>

#include "app/ports.h"
#include "app/secret_code.h"

namespace kelpin::app {

struct CardOpening {
  SecretCode* code = nullptr;  // a PIN that was given beforehand; cleared
  // Ends what waits for the card: the user will not.
  std::function<void()> giveUp = {};
  // A card that is as quick as most never has a window of its own come and go.
  std::chrono::milliseconds patience{300};
};

// Has the card answer for the first time and, where it wants its PIN, unlocked, before the program
// starts on it: what the program asks first is known then. While that takes long a window says so
// and lets the user give up. True when the program may start, whatever the card said; false when
// the user gave up. Screen thread.
bool OpenCard(const Ports& ports, const CardOpening& opening);

}  // namespace kelpin::app
