#pragma once

#include <QKeyEvent>

#include "ui/keys.h"

namespace kelpin::qt {

unsigned ModifiersFromQt(Qt::KeyboardModifiers modifiers);
// Key::kNone for a key that means nothing to a dialog (a modifier on its own, a dead key).
ui::KeyPress KeyFromQt(const QKeyEvent& event);

}  // namespace kelpin::qt
