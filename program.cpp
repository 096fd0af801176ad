#include "program.h"

#include <cstdint>

#include "app/commands.h"
#include "app/delete_entries.h"
#include "app/extended_fields.h"
#include "app/list_commands.h"
#include "app/list_loader.h"
#include "app/watchers.h"
#include "app/wiring.h"
#include "contacts/contacts_commands.h"
#include "editor/editor_commands.h"
#include "res/ids.h"
#include "views/view_commands.h"

namespace kelpin {
namespace {

// Which flow or dialog each command runs. A command that is not here stays greyed.
void FillCommands(app::AppState& state, app::Commands& commands, app::ListLoader& loader) {
  commands.Register(res::kCommandSelectAll, [&state] { app::SelectAllRows(state); });
  commands.Register(res::kCommandRefresh, [&loader] { loader.Refresh(); });
  app::RegisterDelete(state, commands, loader,
                      [&state](std::uint32_t index, app::ExtendedField field) {
                        app::ClearExtendedField(state, index, field);
                      });
  commands.Register(res::kCommandCopyNumber, [&state] { app::CopyNumbers(state); });
  editor::RegisterEditorCommands(state, commands, loader);
  views::RegisterViewCommands(state, commands, loader);
  contacts::RegisterContactsCommands(state, commands, loader);
}

}  // namespace

app::Wiring ProgramWiring(const ProgramHooks& hooks) {
  app::Wiring wiring;
  wiring.listLoaded = hooks.listLoaded;
  wiring.closing = hooks.closing;
  wiring.fillCommands = FillCommands;
  wiring.loadLayout = app::LoadExtendedLayout;
  wiring.startWatchers = [](app::AppState& state, app::Commands& commands, app::ListLoader&) {
    app::StartWatchers(state, commands);
  };
  return wiring;
}

int RunProgram(const app::Ports& ports, const ProgramHooks& hooks,
               const app::EntryArguments& arguments) {
  return app::Run(ports, ProgramWiring(hooks), arguments);
}

}  // namespace kelpin
