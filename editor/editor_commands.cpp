#include "editor/editor_commands.h"

#include <memory>
#include <optional>

#include "app/commands.h"
#include "editor/entry_editor.h"
#include "editor/saved_rows.h"
#include "res/ids.h"

namespace kelpin::editor {
namespace {

void RegisterEntryEditors(app::AppState& state, app::Commands& commands) {
  const auto rows = std::make_shared<SavedRows>(state, commands);
  const NamePickers pickers = {
      [](int, ui::WindowHandle) { return std::nullopt; },
      [](int, ui::WindowHandle, const GroupSelection&) { return std::nullopt; }};
  const auto editors = std::make_shared<EntryEditors>(state, pickers, *rows);
  commands.Register(res::kCommandNew, [editors] { editors->OpenNew(); });
  commands.Register(res::kCommandEdit, [editors] { editors->OpenEdit(); });
  commands.Register(res::kCommandListSaved, [rows] { rows->Continue(); });
}

}  // namespace

void RegisterEditorCommands(app::AppState& state, app::Commands& commands,
                            app::ListLoader& /*loader*/) {
  RegisterEntryEditors(state, commands);
}

}  // namespace kelpin::editor
