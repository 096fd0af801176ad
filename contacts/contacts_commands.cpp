#include "contacts/contacts_commands.h"

namespace kelpin::contacts {

void RegisterContactsCommands(app::AppState& /*state*/, app::Commands& /*commands*/,
                              app::ListLoader& /*loader*/) {}

}  // namespace kelpin::contacts
