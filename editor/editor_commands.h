#pragma once

namespace kelpin::app {
struct AppState;
class Commands;
class ListLoader;
}  // namespace kelpin::app

namespace kelpin::editor {

// The commands that open the entry editors and the card's name lists.
void RegisterEditorCommands(app::AppState& state, app::Commands& commands, app::ListLoader& loader);

}  // namespace kelpin::editor
