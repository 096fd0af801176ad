#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <iterator>
#include <utility>

namespace kelpin::ui {

// Keys from `first` to `last`, both included, become `delta` higher. None when first > last.
struct KeyShift {
  std::int64_t first = 0;
  std::int64_t last = -1;
  std::int64_t delta = 0;
};

// Rows by position, each with a key that grows with the position. Rows at either end come and go
// at O(1) amortised and change no other row's key; one in the middle costs the shorter side.
template <typename Row>
class RowStore {
 public:
  std::size_t Size() const { return rows_.size(); }
  Row& At(std::size_t position) { return rows_[position]; }
  const Row& At(std::size_t position) const { return rows_[position]; }

  std::int64_t KeyAt(std::size_t position) const {
    return firstKey_ + static_cast<std::int64_t>(position);
  }
  std::size_t PositionOf(std::int64_t key) const {
    return static_cast<std::size_t>(key - firstKey_);
  }

  // Tells which keys the insertion moved, as they were before it.
  KeyShift Insert(std::size_t position, Row row) {
    const bool front = position < rows_.size() - position;
    const KeyShift shift = front ? KeyShift{firstKey_, KeyAt(position) - 1, -1}
                                 : KeyShift{KeyAt(position), KeyAt(rows_.size()) - 1, 1};
    rows_.insert(Iterator(position), std::move(row));
    if (front) {
      --firstKey_;
    }
    return shift;
  }

  // The same; the erased row's own key is not among them.
  KeyShift Erase(std::size_t position) {
    const bool front = position < rows_.size() - 1 - position;
    const KeyShift shift = front ? KeyShift{firstKey_, KeyAt(position) - 1, 1}
                                 : KeyShift{KeyAt(position) + 1, KeyAt(rows_.size()) - 1, -1};
    rows_.erase(Iterator(position));
    if (front) {
      ++firstKey_;
    }
    return shift;
  }

  void Clear() {
    rows_.clear();
    firstKey_ = 0;
  }

  // New order, new rows: keys start again at 0.
  void Assign(std::deque<Row> rows) {
    rows_ = std::move(rows);
    firstKey_ = 0;
  }
  std::deque<Row> Take() { return std::exchange(rows_, {}); }

 private:
  auto Iterator(std::size_t position) {
    return std::next(rows_.begin(), static_cast<std::ptrdiff_t>(position));
  }

  std::deque<Row> rows_;
  std::int64_t firstKey_ = 0;
};

}  // namespace kelpin::ui
