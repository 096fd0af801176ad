#include "ui/list_view.h"

#include <numeric>

#include "ui/list_view_state.h"

namespace kelpin::ui {
namespace {

std::size_t Index(int value) {
  return static_cast<std::size_t>(value);
}

}  // namespace

ListView::ListView(bool singleSelection) : singleSelection_(singleSelection) {}

void ListView::SetSink(Sink sink) {
  auto shared = std::make_shared<const Sink>(std::move(sink));
  const MutexLock guard(lock_);
  sink_ = std::move(shared);
}

ListView::Pending ListView::Begin() {
  Pending pending;
  pending.sink = sink_;
  pending.notifying = notifying_;
  return pending;
}

void ListView::Raise(const Pending& pending) {
  if (!pending.sink) {
    return;
  }
  if (pending.changed && pending.sink->changed) {
    pending.sink->changed();
  }
  if (pending.sink->notify) {
    for (const Notification& notification : pending.notifications) {
      pending.sink->notify(notification);
    }
  }
}

// What stands where. The caller holds the lock.

bool ListView::Has(int row) const {
  return row >= 0 && Index(row) < rows_.Size();
}

int ListView::PositionOf(bool has, RowKey key) const {
  return has ? static_cast<int>(rows_.PositionOf(key)) : -1;
}

std::uint32_t ListView::StateOf(int row) const {
  const RowKey key = rows_.KeyAt(Index(row));
  std::uint32_t state = rows_.At(Index(row))->stateImage;
  if (hasFocused_ && focused_ == key) {
    state |= kItemFocused;
  }
  if (selected_.contains(key)) {
    state |= kItemSelected;
  }
  return state;
}

std::vector<int> ListView::SelectedRows() const {
  std::vector<int> rows;
  rows.reserve(selected_.size());
  for (const RowKey key : selected_) {
    rows.push_back(static_cast<int>(rows_.PositionOf(key)));
  }
  return rows;
}

void ListView::Select(int row, bool selected) {
  const RowKey key = rows_.KeyAt(Index(row));
  if (!selected) {
    selected_.erase(key);
  } else {
    if (singleSelection_) {
      selected_.clear();
    }
    selected_.insert(selected_.end(), key);
  }
}

void ListView::FocusOn(int row) {
  focused_ = rows_.KeyAt(Index(row));
  hasFocused_ = true;
  if (!hasMark_) {
    MarkRow(row);
  }
}

void ListView::MarkRow(int row) {
  mark_ = rows_.KeyAt(Index(row));
  hasMark_ = true;
}

void ListView::ScrollTo(int row) {
  ensureVisible_ = rows_.KeyAt(Index(row));
  hasEnsureVisible_ = true;
}

void ListView::ShiftKeys(const KeyShift& shift) {
  if (shift.first > shift.last) {
    return;
  }
  for (RowKey* key : {&focused_, &mark_, &ensureVisible_}) {
    if (*key >= shift.first && *key <= shift.last) {
      *key += shift.delta;
    }
  }
  const auto first = selected_.lower_bound(shift.first);
  const auto last = selected_.upper_bound(shift.last);
  std::vector<RowKey> moved(first, last);
  auto hint = selected_.erase(first, last);
  for (const RowKey key : moved) {
    hint = std::next(selected_.insert(hint, key + shift.delta));
  }
}

// Columns.

void ListView::InsertColumn(int position, std::u16string_view text, int width) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    const int count = static_cast<int>(columns_.size());
    const int at = position < 0 || position > count ? count : position;
    columns_.insert(columns_.begin() + at, Column{std::u16string(text), width});
    pending.changed = true;
  }
  Raise(pending);
}

void ListView::SetColumnWidth(int column, int width) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    if (column >= 0 && Index(column) < columns_.size() && columns_[Index(column)].width != width) {
      columns_[Index(column)].width = width;
      pending.changed = true;
    }
  }
  Raise(pending);
}

std::vector<Column> ListView::Columns() const {
  const MutexLock guard(lock_);
  return columns_;
}

void ListView::SetSortArrow(int column, SortArrow arrow) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    arrowColumn_ = arrow == SortArrow::kNone ? -1 : column;
    arrow_ = column < 0 ? SortArrow::kNone : arrow;
    pending.changed = true;
  }
  Raise(pending);
}

int ListView::SortArrowColumn() const {
  const MutexLock guard(lock_);
  return arrowColumn_;
}

SortArrow ListView::SortArrowDirection() const {
  const MutexLock guard(lock_);
  return arrow_;
}

void ListView::SetExtendedStyle(std::uint32_t style) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    const bool boxesCome =
        (style & kListCheckBoxes) != 0 && (extendedStyle_ & kListCheckBoxes) == 0;
    extendedStyle_ = style;
    for (std::size_t i = 0; boxesCome && i < rows_.Size(); ++i) {
      if (rows_.At(i)->stateImage == 0) {
        rows_.At(i)->stateImage = kItemUnchecked;
      }
    }
    pending.changed = true;
  }
  Raise(pending);
}

std::uint32_t ListView::ExtendedStyle() const {
  const MutexLock guard(lock_);
  return extendedStyle_;
}

// Rows.

int ListView::Insert(int position, std::unique_ptr<Row> row, std::uint32_t state,
                     Pending& pending) {
  const int count = static_cast<int>(rows_.Size());
  const int at = position < 0 || position > count ? count : position;
  if ((extendedStyle_ & kListCheckBoxes) != 0) {
    row->stateImage = kItemUnchecked;
  }
  ShiftKeys(rows_.Insert(Index(at), std::move(row)));
  ++version_;
  pending.changed = true;
  pending.Add(NotifyCode::kItemInserted, at);
  if (!pending.notifications.empty()) {
    pending.notifications.back().subItem = at;
  }
  if (state != 0) {
    const std::uint32_t image = (state & kItemStateImageMask) != 0 ? kItemStateImageMask : 0;
    ChangeState(at, state, state | image, pending);
  }
  return at;
}

int ListView::InsertItem(int position, std::u16string_view text, std::unique_ptr<RowData> data,
                         std::uint32_t state) {
  std::vector<std::u16string> texts;
  texts.emplace_back(text);
  return InsertRow(position, std::move(texts), std::move(data), state);
}

int ListView::InsertRow(int position, std::vector<std::u16string> texts,
                        std::unique_ptr<RowData> data, std::uint32_t state) {
  auto row = std::make_unique<Row>();
  row->texts = std::move(texts);
  row->data = std::move(data);
  Pending pending;
  int at = 0;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    at = Insert(position, std::move(row), state, pending);
  }
  Raise(pending);
  return at;
}

void ListView::SetItemText(int row, int column, std::u16string_view text) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    if (Has(row) && column >= 0) {
      std::vector<std::u16string>& texts = rows_.At(Index(row))->texts;
      if (texts.size() <= Index(column)) {
        texts.resize(Index(column) + 1);
      }
      texts[Index(column)] = text;
      ++version_;
      pending.changed = true;
    }
  }
  Raise(pending);
}

std::u16string ListView::ItemText(int row, int column) const {
  const MutexLock guard(lock_);
  if (!Has(row) || column < 0 || rows_.At(Index(row))->texts.size() <= Index(column)) {
    return {};
  }
  return rows_.At(Index(row))->texts[Index(column)];
}

void ListView::SetItemData(int row, std::unique_ptr<RowData> data) {
  std::shared_ptr<const RowData> held = std::move(data);  // the old one ends outside the lock
  const MutexLock guard(lock_);
  if (Has(row)) {
    rows_.At(Index(row))->data.swap(held);
    ++version_;
  }
}

std::shared_ptr<const RowData> ListView::ItemData(int row) const {
  const MutexLock guard(lock_);
  return Has(row) ? rows_.At(Index(row))->data : nullptr;
}

void ListView::DeleteItem(int row) {
  Pending pending;
  std::unique_ptr<Row> gone;
  {
    const MutexLock guard(lock_);
    if (!Has(row)) {
      return;
    }
    pending = Begin();
    const RowKey key = rows_.KeyAt(Index(row));
    const std::uint32_t state = StateOf(row);
    const bool marked = hasMark_ && mark_ == key;
    if (hasEnsureVisible_ && ensureVisible_ == key) {
      hasEnsureVisible_ = false;
    }
    selected_.erase(key);
    gone = std::move(rows_.At(Index(row)));
    ShiftKeys(rows_.Erase(Index(row)));
    ++version_;
    pending.changed = true;
    if ((state & kItemSelected) != 0) {
      pending.Add(NotifyCode::kItemChanged, row, state, 0);
    }
    const int heir = std::min(row, static_cast<int>(rows_.Size()) - 1);
    if (marked) {
      hasMark_ = false;
      if (heir >= 0) {
        MarkRow(heir);
      }
    }
    if ((state & kItemFocused) != 0) {
      hasFocused_ = false;
      if (heir >= 0) {
        Track({heir}, pending, [&]() REQUIRES(lock_) { FocusOn(heir); });
      }
    }
  }
  Raise(pending);
}

void ListView::DeleteAllItems() {
  Pending pending;
  RowStore<std::unique_ptr<Row>> gone;  // ends outside the lock
  {
    const MutexLock guard(lock_);
    pending = Begin();
    if (rows_.Size() == 0) {
      return;
    }
    if (!selected_.empty()) {
      pending.Add(NotifyCode::kItemChanged, -1, kItemSelected, 0);
    }
    std::swap(gone, rows_);
    selected_.clear();
    hasFocused_ = false;
    hasMark_ = false;
    hasEnsureVisible_ = false;
    typed_.clear();
    ++version_;
    pending.changed = true;
  }
  Raise(pending);
}

int ListView::ItemCount() const {
  const MutexLock guard(lock_);
  return static_cast<int>(rows_.Size());
}

std::uint64_t ListView::RowsVersion() const {
  const MutexLock guard(lock_);
  return version_;
}

void ListView::Sort(const Compare& compare) {
  // Rows are compared outside the lock, so that the screen need not wait for a long list; should
  // rows have changed meanwhile, the order is made anew, at last under the lock.
  constexpr int kTriesOutsideTheLock = 3;
  std::vector<std::shared_ptr<const RowData>> data;
  std::vector<std::size_t> order;
  const auto snapshot = [&]() REQUIRES(lock_) {
    data.clear();
    for (std::size_t i = 0; i < rows_.Size(); ++i) {
      data.push_back(rows_.At(i)->data);
    }
    order.resize(data.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
  };
  const auto arrange = [&] {
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
      return compare(data[left].get(), data[right].get()) < 0;
    });
  };
  Pending pending;
  for (int attempt = 0; !pending.changed; ++attempt) {
    std::uint64_t version = 0;
    {
      const MutexLock guard(lock_);
      snapshot();
      version = version_;
    }
    if (attempt < kTriesOutsideTheLock) {
      arrange();
    }
    const MutexLock guard(lock_);
    if (attempt >= kTriesOutsideTheLock) {
      snapshot();
      arrange();
    } else if (version != version_) {
      continue;
    }
    pending = Begin();
    pending.changed = true;
    Reorder(order);
  }
  Raise(pending);
}

void ListView::Reorder(const std::vector<std::size_t>& order) {
  std::vector<RowKey> newKeys(order.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    newKeys[order[i]] = static_cast<RowKey>(i);
  }
  const auto moved = [&](RowKey key) REQUIRES(lock_) { return newKeys[rows_.PositionOf(key)]; };
  std::vector<RowKey> selected;
  selected.reserve(selected_.size());
  for (const RowKey key : selected_) {
    selected.push_back(moved(key));
  }
  std::sort(selected.begin(), selected.end());
  selected_ = std::set<RowKey>(selected.begin(), selected.end());
  if (hasFocused_) {
    focused_ = moved(focused_);
  }
  if (hasMark_) {
    mark_ = moved(mark_);
  }
  if (hasEnsureVisible_) {
    ensureVisible_ = moved(ensureVisible_);
  }
  std::deque<std::unique_ptr<Row>> old = rows_.Take();
  std::deque<std::unique_ptr<Row>> sorted;
  for (const std::size_t from : order) {
    sorted.push_back(std::move(old[from]));
  }
  rows_.Assign(std::move(sorted));
  ++version_;
}

void ListView::RedrawItem(int row) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    pending.changed = Has(row);
  }
  Raise(pending);
}

}  // namespace kelpin::ui
