#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "ui/list_view.h"

namespace kelpin::contacts {

// What was selected when a command was given, taken in hand from the top of the list one by one. It
// stays what it is, whatever is selected meanwhile; rows that others take away are left out.
class ChosenRows {
 public:
  // What is selected now.
  explicit ChosenRows(const ui::ListView& list);

  std::size_t Count() const { return count_; }

  // Where the rows are now. Before the first Next, when the list is the caller's.
  void Place(const ui::ListView& list);
  // The number of the next row, -1 when none is left.
  int Next(const ui::ListView& list);
  // The caller deleted the row that Next gave last.
  void Deleted() { ++deleted_; }

 private:
  struct Placed {
    int row = 0;
    std::shared_ptr<const ui::RowData> data;
  };

  std::vector<std::shared_ptr<const ui::RowData>> chosen_;
  std::size_t count_ = 0;
  std::vector<Placed> places_;  // by rising row
  std::size_t next_ = 0;
  int deleted_ = 0;
};

}  // namespace kelpin::contacts
