#pragma once

#include <memory>

#include "editor/pickers.h"

namespace kelpin::app {
class Commands;
}

namespace kelpin::editor {

// Registers the commands that open the card's two lists of names. What the entry dialogs pick from
// them with is returned.
std::shared_ptr<Pickers> RegisterNameLists(app::AppState& state, app::Commands& commands);

}  // namespace kelpin::editor
