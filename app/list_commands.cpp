#include "app/list_commands.h"

#include <string>

#include "app/app_state.h"
#include "res/ids.h"
#include "ui/list_view.h"

namespace kelpin::app {

void SelectAllRows(AppState& state) {
  if (ui::ListView* const list = state.dialog->List(res::kMainList)) {
    list->SetItemState(-1, ui::kItemSelected, ui::kItemSelected);
  }
}

void CopyNumbers(AppState& state) {
  const ui::ListView* const list = state.dialog->List(res::kMainList);
  if (list == nullptr) {
    return;
  }
  std::u16string lines;
  for (int row = list->NextItem(-1, ui::kItemSelected); row >= 0;
       row = list->NextItem(row, ui::kItemSelected)) {
    std::u16string number;
    if (GetListRow(state, row, nullptr, nullptr, &number) != 0) {
      lines += lines.empty() ? u"" : u"\n";
      lines += number;
    }
  }
  if (!lines.empty()) {
    state.ports.screen.SetClipboardText(lines);
  }
}

}  // namespace kelpin::app
