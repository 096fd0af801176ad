#include "contacts/main_list_names.h"

#include "app/app_state.h"
#include "app/main_list.h"
#include "res/ids.h"

namespace kelpin::contacts {
namespace {

const ui::ListView& List(const app::AppState& state) {
  return *state.dialog->List(res::kMainList);
}

}  // namespace

int MainListNames::Find(const std::u16string& name, std::uint32_t& index) {
  const ui::ListView& list = List(state_);
  if (!read_ || list.RowsVersion() != version_) {
    Read();
  }
  const auto found = below_.find(name);
  if (found == below_.end()) {
    return -1;
  }
  const int row = list.ItemCount() - 1 - found->second;
  return app::GetListRow(state_, row, &index, nullptr, nullptr) != 0 ? row : -1;
}

void MainListNames::Read() {
  const ui::ListView& list = List(state_);
  below_.clear();
  read_ = true;
  version_ = list.RowsVersion();
  const int count = list.ItemCount();
  // From the foot, so that of equal names the first row stays.
  for (int row = count - 1; row >= 0; --row) {
    below_[list.ItemText(row, app::kColumnName)] = count - 1 - row;
  }
}

void MainListNames::Inserted(const std::u16string& name) {
  if (!read_) {
    return;
  }
  const ui::ListView& list = List(state_);
  below_[name] = list.ItemCount() - 1;
  version_ = list.RowsVersion();
}

void MainListNames::Replaced() {
  version_ = List(state_).RowsVersion();
}

}  // namespace kelpin::contacts
