#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "ui/geometry.h"
#include "ui/list_view.h"

namespace kelpin::app {

struct AppState;

inline constexpr std::size_t kTextRoom = 256;  // UTF-16 units of a name or number, with its end

inline constexpr int kColumnIndex = 0;
inline constexpr int kColumnName = 1;
inline constexpr int kColumnNumber = 2;

// What the list's columns are measured by.
struct MainListLayout {
  int indexWidth = 38;
  int nameReduction = 10;
  int numberAddition = 180;
  bool operator==(const MainListLayout&) const = default;
};

MainListLayout MainListLayoutFor(bool isSmartphone, bool isHighRes);

// One entry of the card, as its row holds it. An international number has its '+'.
struct ListItemData : ui::RowData {
  std::uint32_t index = 0;  // 1-based location
  std::u16string name;
  std::u16string number;
};

// The main list's header and rows. Any thread; nothing while the main dialog is not there.

// Texts, styles and columns, once.
void SetUpMainList(AppState& state, ui::Size client);
// Places header and list in the client area and sets the columns' widths.
void PlaceMainList(AppState& state, ui::Size client);

// A row on top of the others. Texts end in a zero unit and are cut to kTextRoom. 1, or 0 when a
// text is missing or there is no memory; then there is no row.
int InsertListRow(AppState& state, std::uint32_t index, const char16_t* number,
                  const char16_t* name);
// The same for a row that is there; 0 also when it is not.
int ReplaceListRow(AppState& state, int row, std::uint32_t index, const char16_t* name,
                   const char16_t* number);
// Outputs may be null. 0 when the row holds no entry; the outputs stay as they were.
int GetListRow(const AppState& state, int row, std::uint32_t* index, std::u16string* name,
               std::u16string* number);
// The row of the entry at this location, -1 when it is not listed.
int FindListRow(const AppState& state, std::uint32_t index);

// Below, at or above 0 as `left` comes before, with or after `right` by `column`; in descending
// order the other way round. By any column that there is not they are equal.
int CompareListRows(const ListItemData& left, const ListItemData& right, int column,
                    bool ascending);
// By the sort column and direction of `state`; the column's header shows it.
void SortMainList(AppState& state);

// While somebody works on the rows the list's notifications are not acted on.
bool IsListLoading(const AppState& state);

}  // namespace kelpin::app
