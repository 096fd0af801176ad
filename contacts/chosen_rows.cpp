#include "contacts/chosen_rows.h"

#include <unordered_set>
#include <utility>

namespace kelpin::contacts {

ChosenRows::ChosenRows(const ui::ListView& list) {
  for (int row = list.NextItem(-1, ui::kItemSelected); row >= 0;
       row = list.NextItem(row, ui::kItemSelected)) {
    chosen_.push_back(list.ItemData(row));
  }
  count_ = chosen_.size();
}

void ChosenRows::Place(const ui::ListView& list) {
  const std::unordered_set<std::shared_ptr<const ui::RowData>> wanted(chosen_.begin(),
                                                                      chosen_.end());
  chosen_.clear();
  const int rows = list.ItemCount();
  for (int row = 0; row < rows; ++row) {
    std::shared_ptr<const ui::RowData> data = list.ItemData(row);
    // Rows without an entry are all alike: of those, what is selected was chosen.
    const bool selected = data != nullptr || (list.ItemState(row) & ui::kItemSelected) != 0;
    if (selected && wanted.contains(data)) {
      places_.push_back({row, std::move(data)});
    }
  }
}

int ChosenRows::Next(const ui::ListView& list) {
  while (next_ < places_.size()) {
    const Placed& place = places_[next_++];
    const int row = place.row - deleted_;
    if (row < list.ItemCount() && list.ItemData(row) == place.data) {
      return row;
    }
  }
  return -1;
}

}  // namespace kelpin::contacts
