#include "views/view_commands.h"

namespace kelpin::views {

void RegisterViewCommands(app::AppState& /*state*/, app::Commands& /*commands*/,
                          app::ListLoader& /*loader*/) {}

}  // namespace kelpin::views
