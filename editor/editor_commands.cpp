#include "editor/editor_commands.h"

namespace kelpin::editor {

void RegisterEditorCommands(app::AppState& /*state*/, app::Commands& /*commands*/,
                            app::ListLoader& /*loader*/) {}

}  // namespace kelpin::editor
