#include "editor/editor_commands.h"

#include <memory>

#include "app/commands.h"
#include "editor/entry_editor.h"
#include "editor/name_commands.h"
#include "editor/saved_rows.h"
#include "res/ids.h"

namespace kelpin::editor {
namespace {

NamePickers PickWith(const std::shared_ptr<Pickers>& pickers) {
  return {[pickers](int button, ui::WindowHandle owner) {
            return pickers->OpenNumberNamePicker(button, owner);
          },
          [pickers](int button, ui::WindowHandle owner, const GroupSelection& current) {
            return pickers->OpenGroupPicker(button, owner, current);
          }};
}

void RegisterEntryEditors(app::AppState& state, app::Commands& commands,
                          const NamePickers& pickers) {
  const auto rows = std::make_shared<SavedRows>(state, commands);
  const auto editors = std::make_shared<EntryEditors>(state, pickers, *rows);
  commands.Register(res::kCommandNew, [editors] { editors->OpenNew(); });
  commands.Register(res::kCommandEdit, [editors] { editors->OpenEdit(); });
  commands.Register(res::kCommandListSaved, [rows] { rows->Continue(); });
}

}  // namespace

void RegisterEditorCommands(app::AppState& state, app::Commands& commands,
                            app::ListLoader& /*loader*/) {
  RegisterEntryEditors(state, commands, PickWith(RegisterNameLists(state, commands)));
}

}  // namespace kelpin::editor
