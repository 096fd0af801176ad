#include "app/main_list.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/dialog.h"
#include "ui/fold_case.h"
#include "ui/screen.h"

namespace kelpin::app {
namespace {

ui::ListView* List(const AppState& state) {
  return state.dialog == nullptr ? nullptr : state.dialog->List(res::kMainList);
}

std::u16string Bounded(const char16_t* text) {
  return std::u16string(std::u16string_view(text).substr(0, kTextRoom - 1));
}

std::u16string IndexText(std::uint32_t index) {
  return res::Format(u"%d", {static_cast<std::int32_t>(index)});
}

// Null when there is no memory.
std::unique_ptr<ListItemData> MakeBlock(std::uint32_t index, const char16_t* number,
                                        const char16_t* name) {
  auto block = std::make_unique<ListItemData>();
  block->index = index;
  block->number = Bounded(number);
  block->name = Bounded(name);
  return block;
}

int NameWidth(const MainListLayout& layout, int clientWidth) {
  return std::max(0, clientWidth / 2 - layout.nameReduction);
}

int NumberWidth(const MainListLayout& layout, int clientWidth) {
  return clientWidth / 2 + layout.numberAddition;
}

}  // namespace

MainListLayout MainListLayoutFor(bool isSmartphone, bool isHighRes) {
  if (isSmartphone) {
    return {38, 10, 230};
  }
  return isHighRes ? MainListLayout{76, 20, 360} : MainListLayout{38, 10, 180};
}

void SetUpMainList(AppState& state, ui::Size client) {
  ui::ListView* const list = List(state);
  if (list == nullptr) {
    return;
  }
  state.dialog->SetText(res::kMainHeader, res::LoadString(res::kStringMyNo));
  list->SetExtendedStyle(ui::kListFullRowSelect);
  list->InsertColumn(kColumnIndex, res::LoadString(res::kStringNumberSign),
                     state.layout.indexWidth);
  list->InsertColumn(kColumnName, res::LoadString(res::kStringName),
                     NameWidth(state.layout, client.width));
  list->InsertColumn(kColumnNumber, res::LoadString(res::kStringPhone),
                     NumberWidth(state.layout, client.width));
  PlaceMainList(state, client);
}

void PlaceMainList(AppState& state, ui::Size client) {
  ui::ListView* const list = List(state);
  if (list == nullptr) {
    return;
  }
  const int header = std::min(state.ports.screen.GetMetrics().headerHeight, client.height);
  state.dialog->SetBounds(res::kMainHeader, {0, 0, client.width, header});
  state.dialog->SetBounds(res::kMainList, {0, header, client.width, client.height - header});
  list->SetColumnWidth(kColumnIndex, state.layout.indexWidth);
  list->SetColumnWidth(kColumnName, NameWidth(state.layout, client.width));
  // Wider than what is left, so that a long number can be scrolled into view.
  list->SetColumnWidth(kColumnNumber, NumberWidth(state.layout, client.width));
}

int InsertListRow(AppState& state, std::uint32_t index, const char16_t* number,
                  const char16_t* name) {
  ui::ListView* const list = List(state);
  if (list == nullptr || number == nullptr || name == nullptr) {
    return 0;
  }
  try {
    auto block = MakeBlock(index, number, name);
    std::vector<std::u16string> texts = {IndexText(index), block->name, block->number};
    list->InsertRow(0, std::move(texts), std::move(block));
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

int ReplaceListRow(AppState& state, int row, std::uint32_t index, const char16_t* name,
                   const char16_t* number) {
  ui::ListView* const list = List(state);
  if (list == nullptr || number == nullptr || name == nullptr || row < 0 ||
      row >= list->ItemCount()) {
    return 0;
  }
  try {
    auto block = MakeBlock(index, number, name);
    const std::u16string nameText = block->name;
    const std::u16string numberText = block->number;
    list->SetItemData(row, std::move(block));
    list->SetItemText(row, kColumnName, nameText);
    list->SetItemText(row, kColumnNumber, numberText);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  list->RedrawItem(row);
  return 1;
}

int GetListRow(const AppState& state, int row, std::uint32_t* index, std::u16string* name,
               std::u16string* number) {
  const ui::ListView* const list = List(state);
  const std::shared_ptr<const ui::RowData> data = list == nullptr ? nullptr : list->ItemData(row);
  if (data == nullptr) {
    return 0;
  }
  // This list's rows hold nothing else.
  const auto& block = static_cast<const ListItemData&>(*data);
  if (index != nullptr) {
    *index = block.index;
  }
  if (name != nullptr) {
    *name = block.name;
  }
  if (number != nullptr) {
    *number = block.number;
  }
  return 1;
}

int FindListRow(const AppState& state, std::uint32_t index) {
  const ui::ListView* const list = List(state);
  const int rows = list == nullptr ? 0 : list->ItemCount();
  for (int row = 0; row < rows; ++row) {
    std::uint32_t at = 0;
    if (GetListRow(state, row, &at, nullptr, nullptr) != 0 && at == index) {
      return row;
    }
  }
  return -1;
}

int CompareListRows(const ListItemData& left, const ListItemData& right, int column,
                    bool ascending) {
  const ListItemData& first = ascending ? left : right;
  const ListItemData& second = ascending ? right : left;
  switch (column) {
    case kColumnIndex:
      return first.index == second.index ? 0 : (first.index < second.index ? -1 : 1);
    case kColumnName:
      return ui::CompareIgnoringCase(first.name, second.name);
    case kColumnNumber:
      return ui::CompareIgnoringCase(first.number, second.number);
    default:
      return 0;
  }
}

void SortMainList(AppState& state) {
  ui::ListView* const list = List(state);
  if (list == nullptr) {
    return;
  }
  const int column = state.sortColumn;
  const bool ascending = state.sortAscending != 0;
  list->Sort([column, ascending](const ui::RowData* left, const ui::RowData* right) {
    if (left == nullptr || right == nullptr) {
      return 0;
    }
    return CompareListRows(static_cast<const ListItemData&>(*left),
                           static_cast<const ListItemData&>(*right), column, ascending);
  });
  list->SetSortArrow(column, ascending ? ui::SortArrow::kAscending : ui::SortArrow::kDescending);
}

bool IsListLoading(const AppState& state) {
  return state.loading;
}

}  // namespace kelpin::app
