#include "contacts/marked_row.h"

#include "ui/list_view.h"

namespace kelpin::contacts {

void SelectMarkedRow(ui::ListView& list) {
  constexpr std::uint32_t kState = ui::kItemSelected | ui::kItemFocused;
  // To the list, row -1 is every row.
  if (const int mark = list.SelectionMark(); mark >= 0) {
    list.SetItemState(mark, kState, kState);
    list.EnsureVisible(mark);
  }
}

}  // namespace kelpin::contacts
