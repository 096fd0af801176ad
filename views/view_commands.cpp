#include "views/view_commands.h"

#include <memory>

#include "app/app_state.h"
#include "app/commands.h"
#include "res/ids.h"
#include "views/about.h"
#include "views/call_and_send.h"
#include "views/own_numbers.h"
#include "views/service_numbers.h"
#include "views/sim_information.h"

namespace kelpin::views {

void RegisterViewCommands(app::AppState& state, app::Commands& commands,
                          app::ListLoader& /*loader*/) {
  commands.Register(res::kCommandAbout, [&state] { ShowAbout(state); });
  const auto watcher = std::make_shared<OwnNumberWatcher>(state);
  commands.Register(res::kCommandOwnNumbers,
                    [&state, watcher] { ShowOwnNumbers(state, state.mainDialog, watcher); });
  commands.Register(res::kCommandCall, [&state] { CallSelectedEntry(state); });
  commands.Register(res::kCommandSend, [&state] { SendToSelectedEntry(state); });
  commands.Register(res::kCommandServiceNumbers, [&state] { ShowServiceNumbers(state); });
  commands.Register(res::kCommandSimInformation, [&state] { ShowSimInformation(state); });
}

}  // namespace kelpin::views
