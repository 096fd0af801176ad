#pragma once

#include "app/secret_code.h"
#include "platform/card_lock.h"
#include "ui/screen.h"

namespace kelpin::app {

struct AppState;

// Has the card opened by its PIN, or by its PUK and a new PIN, until it wants nothing more or the
// user gives up; then false. A card that does not say what it wants is left to who reads it: true.
// Nothing that the card refused is sent again, and the last try is a question of its own. Any
// thread; the questions come up on the screen thread.
bool UnlockCard(platform::CardLock& lock, ui::Screen& screen, ui::WindowHandle owner);

// Opens the card with a code that nobody has to be asked for. It is sent once, and not when one try
// is left; gone in any case.
void UnlockCardWith(platform::CardLock& lock, SecretCode& code);

// The same as UnlockCard, for the main list: before it is read again. `byUser`: the user asked for
// it. When it was the card that changed, who has given up already is not asked about it again.
void UnlockForReading(AppState& state, bool byUser);

// The user may yet open the card, and nothing on it can be read until then.
bool CardIsLocked(AppState& state);

}  // namespace kelpin::app
