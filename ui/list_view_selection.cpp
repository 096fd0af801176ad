#include "ui/list_view_state.h"

// States of rows, and what the screen asks of a list.
namespace kelpin::ui {
namespace {

std::size_t Index(int value) {
  return static_cast<std::size_t>(value);
}

}  // namespace

void ListView::ChangeState(int row, std::uint32_t state, std::uint32_t mask, Pending& pending) {
  std::vector<int> rows;
  if ((mask & kItemSelected) != 0 && (row < 0 || (singleSelection_ && (state & kItemSelected)))) {
    rows = SelectedRows();
  }
  if ((mask & kItemFocused) != 0) {
    rows.push_back(PositionOf(hasFocused_, focused_));
  }
  const bool everyRow =
      row < 0 && ((mask & kItemStateImageMask) != 0 || (mask & state & kItemSelected) != 0);
  if (everyRow) {
    rows.resize(rows_.Size());
    std::iota(rows.begin(), rows.end(), 0);
  } else if (row >= 0) {
    rows.push_back(row);
  }
  const auto image = [&](int at) REQUIRES(lock_) {
    std::uint32_t& stored = rows_.At(Index(at))->stateImage;
    stored = (stored & ~mask) | (state & mask & kItemStateImageMask);
  };
  Track(std::move(rows), pending, [&]() REQUIRES(lock_) {
    if ((mask & kItemSelected) != 0) {
      const bool on = (state & kItemSelected) != 0;
      if (row >= 0) {
        Select(row, on);
      } else if (!on) {
        selected_.clear();
      } else if (!singleSelection_) {
        for (std::size_t i = 0; i < rows_.Size(); ++i) {
          selected_.insert(selected_.end(), rows_.KeyAt(i));
        }
      }
    }
    if ((mask & kItemFocused) != 0) {
      if ((state & kItemFocused) == 0) {
        hasFocused_ = hasFocused_ && row >= 0 && focused_ != rows_.KeyAt(Index(row));
      } else if (row >= 0) {
        FocusOn(row);
      }
    }
    if ((mask & kItemStateImageMask) != 0) {
      if (row >= 0) {
        image(row);
      } else {
        for (std::size_t i = 0; i < rows_.Size(); ++i) {
          image(static_cast<int>(i));
        }
      }
    }
  });
}

void ListView::SetItemState(int row, std::uint32_t state, std::uint32_t mask) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    if (row < -1 || (row >= 0 && !Has(row))) {
      return;
    }
    pending = Begin();
    ChangeState(row, state, mask, pending);
  }
  Raise(pending);
}

std::uint32_t ListView::ItemState(int row) const {
  const MutexLock guard(lock_);
  return Has(row) ? StateOf(row) : 0;
}

void ListView::SetCheck(int row, bool checked) {
  SetItemState(row, checked ? kItemChecked : kItemUnchecked, kItemStateImageMask);
}

bool ListView::Checked(int row) const {
  const MutexLock guard(lock_);
  return Has(row) && rows_.At(Index(row))->stateImage == kItemChecked;
}

int ListView::NextItem(int start, std::uint32_t state) const {
  const MutexLock guard(lock_);
  const int first = start < 0 ? 0 : start + 1;
  if (!Has(first)) {
    return -1;
  }
  if ((state & kItemFocused) != 0) {
    const int focused = PositionOf(hasFocused_, focused_);
    return focused >= first && (StateOf(focused) & state) == state ? focused : -1;
  }
  if ((state & kItemSelected) != 0) {
    const auto next = selected_.lower_bound(rows_.KeyAt(Index(first)));
    return next == selected_.end() ? -1 : static_cast<int>(rows_.PositionOf(*next));
  }
  return first;
}

int ListView::SelectedCount() const {
  const MutexLock guard(lock_);
  return static_cast<int>(selected_.size());
}

int ListView::FocusedItem() const {
  const MutexLock guard(lock_);
  return PositionOf(hasFocused_, focused_);
}

int ListView::SelectionMark() const {
  const MutexLock guard(lock_);
  return PositionOf(hasMark_, mark_);
}

void ListView::SetSelectionMark(int row) {
  const MutexLock guard(lock_);
  hasMark_ = Has(row);
  if (hasMark_) {
    MarkRow(row);
  }
}

void ListView::EnsureVisible(int row) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    if (Has(row)) {
      ScrollTo(row);
      pending.changed = true;
    }
  }
  Raise(pending);
}

int ListView::TakeEnsureVisible() {
  const MutexLock guard(lock_);
  const int row = PositionOf(hasEnsureVisible_, ensureVisible_);
  hasEnsureVisible_ = false;
  return row;
}

void ListView::SetVisible(bool visible) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    pending.changed = visible_ != visible;
    visible_ = visible;
  }
  Raise(pending);
}

bool ListView::Visible() const {
  const MutexLock guard(lock_);
  return visible_;
}

void ListView::SetMessage(ListMessage message) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    pending = Begin();
    pending.changed = message_ != message;
    message_ = std::move(message);
  }
  Raise(pending);
}

ListMessage ListView::Message() const {
  const MutexLock guard(lock_);
  return message_;
}

void ListView::SetPageRows(int rows) {
  const MutexLock guard(lock_);
  pageRows_ = std::max(rows, 1);
}

}  // namespace kelpin::ui
