#pragma once

namespace kelpin::app {
struct AppState;
class Commands;
class ListLoader;
}  // namespace kelpin::app

namespace kelpin::contacts {

// The commands "Contacts to SIM..." and, with `move`, "Move Contacts to SIM...": lets the user
// choose contacts, writes them to the card and tells what became of it. Screen thread.
void ContactsToSim(app::AppState& state, app::Commands& commands, const app::ListLoader& loader,
                   bool move);

}  // namespace kelpin::contacts
