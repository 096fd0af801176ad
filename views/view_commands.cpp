#include "views/view_commands.h"

#include "app/app_state.h"
#include "app/commands.h"
#include "res/ids.h"
#include "views/about.h"
#include "views/sim_information.h"

namespace kelpin::views {

void RegisterViewCommands(app::AppState& state, app::Commands& commands,
                          app::ListLoader& /*loader*/) {
  commands.Register(res::kCommandAbout, [&state] { ShowAbout(state); });
  commands.Register(res::kCommandSimInformation, [&state] { ShowSimInformation(state); });
}

}  // namespace kelpin::views
