#include "contacts/contacts_commands.h"

#include "app/commands.h"
#include "contacts/contacts_to_sim.h"
#include "contacts/delete_contacts.h"
#include "contacts/phone_type_options.h"
#include "res/ids.h"

namespace kelpin::contacts {

void RegisterContactsCommands(app::AppState& state, app::Commands& commands,
                              app::ListLoader& loader) {
  commands.Register(res::kCommandContactsToSim, [&state, &commands, &loader] {
    ContactsToSim(state, commands, loader, false);
  });
  commands.Register(res::kCommandMoveContactsToSim,
                    [&state, &commands, &loader] { ContactsToSim(state, commands, loader, true); });
  commands.Register(res::kCommandDeleteContacts, [&state] { ShowDeleteContacts(state); });
  commands.Register(res::kCommandOptions, [&state] { ShowPhoneTypeOptions(state); });
}

}  // namespace kelpin::contacts
