#pragma once

namespace kelpin::app {
struct AppState;
class Commands;
class ListLoader;
}  // namespace kelpin::app

namespace kelpin::contacts {

// The commands that copy, move and delete between the card and Contacts.
void RegisterContactsCommands(app::AppState& state, app::Commands& commands,
                              app::ListLoader& loader);

}  // namespace kelpin::contacts
