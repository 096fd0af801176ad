#include "contacts/contacts_commands.h"

#include <memory>
#include <utility>

#include "app/app_state.h"
#include "app/commands.h"
#include "contacts/contacts_to_sim.h"
#include "contacts/delete_contacts.h"
#include "contacts/move_to_contacts.h"
#include "contacts/overwrite_prompt.h"
#include "contacts/phone_type_options.h"
#include "contacts/save_to_contacts.h"
#include "res/ids.h"

namespace kelpin::contacts {
namespace {

// The copies from the card to Contacts, and what they share.
struct CopiesToContacts {
  CopiesToContacts(app::AppState& state, app::Commands& commands, const app::ListLoader& loader)
      : save(state, commands, loader, prompt), move(state, commands, loader, prompt) {}

  OverwritePrompt prompt;
  SaveToContacts save;
  MoveToContacts move;
};

void RegisterCopiesToContacts(app::AppState& state, app::Commands& commands,
                              const app::ListLoader& loader) {
  const auto copies = std::make_shared<CopiesToContacts>(state, commands, loader);
  commands.Register(res::kCommandSaveToContacts, [copies] { copies->save.Start(); });
  commands.Register(res::kCommandMoveToContacts, [copies] { copies->move.Start(); });
  commands.Register(res::kCommandMoveNext, [copies] { copies->move.Continue(); });
  state.mayClose = [copies, before = std::move(state.mayClose)] {
    return (!before || before()) && copies->save.MayClose() && copies->move.MayClose();
  };
}

}  // namespace

void RegisterContactsCommands(app::AppState& state, app::Commands& commands,
                              app::ListLoader& loader) {
  RegisterCopiesToContacts(state, commands, loader);
  commands.Register(res::kCommandContactsToSim, [&state, &commands, &loader] {
    ContactsToSim(state, commands, loader, false);
  });
  commands.Register(res::kCommandMoveContactsToSim,
                    [&state, &commands, &loader] { ContactsToSim(state, commands, loader, true); });
  commands.Register(res::kCommandDeleteContacts, [&state] { ShowDeleteContacts(state); });
  commands.Register(res::kCommandOptions, [&state] { ShowPhoneTypeOptions(state); });
}

}  // namespace kelpin::contacts
