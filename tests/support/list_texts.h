#pragma once

#include <string>
#include <vector>

#include "ui/list_view.h"

namespace kelpin::test {

// "3|Name|Number": the texts of a row, from this column on.
inline std::u16string RowText(const ui::ListView& list, int row, int firstColumn = 0) {
  std::u16string text = list.ItemText(row, firstColumn);
  const int columns = static_cast<int>(list.Columns().size());
  for (int column = firstColumn + 1; column < columns; ++column) {
    text += u"|" + list.ItemText(row, column);
  }
  return text;
}

inline std::vector<std::u16string> RowsOf(const ui::ListView& list, int firstColumn = 0) {
  std::vector<std::u16string> rows;
  for (int row = 0; row < list.ItemCount(); ++row) rows.push_back(RowText(list, row, firstColumn));
  return rows;
}

}  // namespace kelpin::test
