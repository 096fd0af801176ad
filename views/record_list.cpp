#include "views/record_list.h"

#include "app/list_message.h"
#include "res/strings.h"

namespace kelpin::views {

void ShowRecordsRead(ui::ListView& list, bool cardFailed, int none) {
  constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;
  if (list.ItemCount() > 0) {
    list.SetItemState(0, kSelectedFocused, kSelectedFocused);
    list.EnsureVisible(0);
  } else if (cardFailed) {
    // Refresh follows the selection, of which a list without rows has none.
    list.SetMessage(app::MakeListMessage(res::kTextCardNotRead, res::kTextReopenListHint));
  } else {
    list.SetMessage(app::MakeListMessage(none));
  }
}

}  // namespace kelpin::views
