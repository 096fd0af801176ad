#pragma once

namespace kelpin::app {
struct AppState;
class Commands;
class ListLoader;
}  // namespace kelpin::app

namespace kelpin::views {

// The commands that open the views, call and write.
void RegisterViewCommands(app::AppState& state, app::Commands& commands, app::ListLoader& loader);

}  // namespace kelpin::views
