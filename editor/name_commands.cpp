#include "editor/name_commands.h"

#include "app/commands.h"
#include "editor/name_list_editor.h"
#include "editor/name_list_state.h"

namespace kelpin::editor {
namespace {

struct NameLists {
  explicit NameLists(app::AppState& state) : pickers(state, numberNames, groupNames) {}

  NameListState numberNames;
  NameListState groupNames;
  Pickers pickers;
};

}  // namespace

std::shared_ptr<Pickers> RegisterNameLists(app::AppState& state, app::Commands& commands) {
  const auto lists = std::make_shared<NameLists>(state);
  commands.Register(res::kCommandNumberNames,
                    [&state, lists] { OpenNameList(state, lists->numberNames, kNumberNames); });
  commands.Register(res::kCommandGroupNames,
                    [&state, lists] { OpenNameList(state, lists->groupNames, kGroupNames); });
  return {lists, &lists->pickers};
}

}  // namespace kelpin::editor
