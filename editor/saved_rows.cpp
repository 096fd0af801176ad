#include "editor/saved_rows.h"

#include <utility>

#include "app/app_state.h"
#include "app/commands.h"
#include "app/list_turn.h"
#include "app/main_list.h"
#include "res/ids.h"

namespace kelpin::editor {
namespace {

constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

}  // namespace

void SavedRows::Add(std::uint32_t location, std::u16string name, std::u16string number) {
  waiting_.push_back({location, std::move(name), std::move(number)});
  Continue();
}

void SavedRows::Continue() {
  if (waiting_.empty() || !app::TakeListOrAsk(state_, res::kCommandListSaved)) {
    return;
  }
  for (const Entry& entry : waiting_) {
    List(entry);
  }
  app::SortMainList(state_);
  Select(waiting_.back().location);
  waiting_.clear();
  app::GiveListBack(state_);
  commands_.FollowSelection();
}

// Without memory for it the row stays as it is.
void SavedRows::List(const Entry& entry) {
  const int row = app::FindListRow(state_, entry.location);
  if (row >= 0) {
    app::ReplaceListRow(state_, row, entry.location, entry.name.c_str(), entry.number.c_str());
  } else {
    app::InsertListRow(state_, entry.location, entry.number.c_str(), entry.name.c_str());
  }
}

void SavedRows::Select(std::uint32_t location) {
  ui::ListView* const list = state_.dialog->List(res::kMainList);
  const int row = app::FindListRow(state_, location);
  // To the list, row -1 is every row.
  if (list == nullptr || row < 0) {
    return;
  }
  list->SetItemState(-1, 0, ui::kItemSelected);
  list->SetItemState(row, kSelectedFocused, kSelectedFocused);
  list->SetSelectionMark(row);
  list->EnsureVisible(row);
}

}  // namespace kelpin::editor
