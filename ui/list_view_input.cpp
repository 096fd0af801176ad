#include <chrono>

#include "ui/fold_case.h"
#include "ui/list_view_state.h"

// What keys and presses do to a list.
namespace kelpin::ui {
namespace {

constexpr std::uint64_t kTypeAheadPause = 1000;  // milliseconds that end a word

std::size_t Index(int value) {
  return static_cast<std::size_t>(value);
}

std::uint64_t SystemMilliseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

// The column that names a row: the first that does not number it.
std::size_t NameColumn(const std::vector<Column>& columns) {
  return columns.size() > 1 && columns[0].text == u"#" ? 1 : 0;
}

}  // namespace

// The caller holds the lock.

void ListView::SelectOnly(int row, Pending& pending) {
  std::vector<int> rows = SelectedRows();
  rows.push_back(PositionOf(hasFocused_, focused_));
  rows.push_back(row);
  Track(std::move(rows), pending, [&]() REQUIRES(lock_) {
    selected_.clear();
    Select(row, true);
    MarkRow(row);
    FocusOn(row);
    ScrollTo(row);
    pending.changed = true;
  });
}

void ListView::SelectRange(int row, Extend extend, Pending& pending) {
  if (!hasMark_) {
    MarkRow(hasFocused_ ? PositionOf(true, focused_) : row);
  }
  const int mark = PositionOf(true, mark_);
  const int first = std::min(mark, row);
  const int last = std::max(mark, row);
  std::vector<int> rows = SelectedRows();
  rows.push_back(PositionOf(hasFocused_, focused_));
  for (int i = first; i <= last; ++i) {
    rows.push_back(i);
  }
  Track(std::move(rows), pending, [&]() REQUIRES(lock_) {
    if (extend == Extend::kReplace) {
      selected_.clear();
    }
    for (int i = first; i <= last; ++i) {
      selected_.insert(rows_.KeyAt(Index(i)));
    }
    FocusOn(row);
    ScrollTo(row);
    pending.changed = true;
  });
}

void ListView::Toggle(int row, Pending& pending) {
  Track({row, PositionOf(hasFocused_, focused_)}, pending, [&]() REQUIRES(lock_) {
    Select(row, !selected_.contains(rows_.KeyAt(Index(row))));
    MarkRow(row);
    FocusOn(row);
  });
}

void ListView::ToggleCheck(int row, Pending& pending) {
  const bool checked = rows_.At(Index(row))->stateImage == kItemChecked;
  ChangeState(row, checked ? kItemUnchecked : kItemChecked, kItemStateImageMask, pending);
}

bool ListView::MoveTo(int row, unsigned modifiers, Pending& pending) {
  if (singleSelection_ || (modifiers & (kShift | kControl)) == 0) {
    SelectOnly(row, pending);
  } else if ((modifiers & kShift) != 0) {
    SelectRange(row, (modifiers & kControl) != 0 ? Extend::kAdd : Extend::kReplace, pending);
  } else {
    Track({row, PositionOf(hasFocused_, focused_)}, pending,
          [&]() REQUIRES(lock_) { FocusOn(row); });
    ScrollTo(row);
    pending.changed = true;
  }
  return true;
}

bool ListView::Navigate(const KeyPress& press, Pending& pending) {
  const int count = static_cast<int>(rows_.Size());
  if (count == 0 || (press.modifiers & kAlt) != 0) {
    return false;
  }
  const int focused = PositionOf(hasFocused_, focused_);
  int target = 0;
  switch (press.key) {
    case Key::kUp:
      target = focused - 1;
      break;
    case Key::kDown:
      target = focused + 1;
      break;
    case Key::kPageUp:
      target = focused - pageRows_;
      break;
    case Key::kPageDown:
      target = focused + pageRows_;
      break;
    case Key::kHome:
      target = 0;
      break;
    case Key::kEnd:
      target = count - 1;
      break;
    default:
      return false;
  }
  typed_.clear();
  return MoveTo(std::clamp(target, 0, count - 1), press.modifiers, pending);
}

bool ListView::TypeAhead(char16_t character, std::uint64_t now, Pending& pending) {
  const int count = static_cast<int>(rows_.Size());
  if (count == 0 || character < u' ') {
    return false;
  }
  if (now - typedAt_ >= kTypeAheadPause) {
    typed_.clear();
  }
  if (character == u' ' && typed_.empty()) {
    return false;
  }
  typedAt_ = now;
  typed_.push_back(FoldCase(character));
  // The same letter again goes on to the next row with it; a longer word may stay where it is.
  const bool repeated = typed_.find_first_not_of(typed_[0]) == std::u16string::npos;
  const std::u16string_view wanted = std::u16string_view(typed_).substr(0, repeated ? 1 : 1000);
  const std::size_t column = NameColumn(columns_);
  const int focused = PositionOf(hasFocused_, focused_);
  const int first = repeated ? focused + 1 : std::max(focused, 0);
  for (int step = 0; step < count; ++step) {
    const int row = (first + step) % count;
    const std::vector<std::u16string>& texts = rows_.At(Index(row))->texts;
    if (column < texts.size() &&
        FoldCase(std::u16string_view(texts[column]).substr(0, wanted.size())) == wanted) {
      SelectOnly(row, pending);
      break;
    }
  }
  return true;
}

// What the user does.

void ListView::SetKeyFilter(std::function<bool(const KeyPress&)> filter,
                            std::function<bool(const KeyPress&)> wants) {
  const MutexLock guard(lock_);
  keyFilter_ = std::move(filter);
  wantsKey_ = std::move(wants);
}

bool ListView::WantsKey(const KeyPress& press) const {
  std::function<bool(const KeyPress&)> wants;
  {
    const MutexLock guard(lock_);
    if (visible_) {
      wants = wantsKey_;
    }
  }
  return wants && wants(press);
}

void ListView::SetClock(std::function<std::uint64_t()> milliseconds) {
  const MutexLock guard(lock_);
  clock_ = std::move(milliseconds);
}

bool ListView::KeyDown(const KeyPress& press) {
  return FilterKey(press) || DefaultKey(press);
}

bool ListView::FilterKey(const KeyPress& press) {
  std::function<bool(const KeyPress&)> filter;
  {
    const MutexLock guard(lock_);
    if (visible_) {
      filter = keyFilter_;
    }
  }
  return filter && filter(press);
}

bool ListView::DefaultKey(const KeyPress& press) {
  Pending pending;
  bool used = false;
  std::function<std::uint64_t()> clock;
  {
    const MutexLock guard(lock_);
    clock = clock_;
  }
  const std::uint64_t now = clock ? clock() : SystemMilliseconds();
  {
    const MutexLock guard(lock_);
    if (!visible_) {
      return false;
    }
    pending = Begin();
    used = PressKey(press, now, pending);
  }
  Raise(pending);
  return used;
}

bool ListView::PressKey(const KeyPress& press, std::uint64_t now, Pending& pending) {
  const int focused = PositionOf(hasFocused_, focused_);
  const bool plain = (press.modifiers & (kControl | kAlt)) == 0;
  const bool boxes = (extendedStyle_ & kListCheckBoxes) != 0;
  switch (press.key) {
    case Key::kEnter:
      if (focused < 0 || press.modifiers != kNoModifier || boxes) {
        return false;
      }
      pending.Add(NotifyCode::kItemActivated, focused);
      return true;
    case Key::kMenu:
      pending.Add(NotifyCode::kContextMenu, focused);
      if (!pending.notifications.empty()) {
        pending.notifications.back().point = Point{-1, -1};
      }
      return true;
    case Key::kSpace:
      if (focused < 0 || (press.modifiers & kAlt) != 0) {
        return false;
      }
      if ((press.modifiers & kControl) != 0) {
        Toggle(focused, pending);
      } else if (boxes) {
        ToggleCheck(focused, pending);
      } else if (!TypeAhead(u' ', now, pending)) {
        SelectOnly(focused, pending);
      }
      return true;
    case Key::kCharacter:
      if (press.modifiers == kControl && FoldCase(press.character) == u'a') {
        if (!singleSelection_) {
          ChangeState(-1, kItemSelected, kItemSelected, pending);
        }
        return !singleSelection_;
      }
      return plain && TypeAhead(press.character, now, pending);
    default:
      return Navigate(press, pending);
  }
}

void ListView::Click(int row, int column, unsigned modifiers) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    if (!visible_) {
      return;
    }
    pending = Begin();
    typed_.clear();
    const bool modified = (modifiers & (kControl | kShift)) != 0;
    if (!Has(row)) {
      row = -1;
      if (!modified) {
        ChangeState(-1, 0, kItemSelected, pending);
      }
    } else if (singleSelection_ || !modified) {
      SelectOnly(row, pending);
    } else if ((modifiers & kShift) != 0) {
      SelectRange(row, (modifiers & kControl) != 0 ? Extend::kAdd : Extend::kReplace, pending);
    } else {
      Toggle(row, pending);
    }
    pending.Add(NotifyCode::kClick, row);
    if (!pending.notifications.empty()) {
      pending.notifications.back().column = column;
    }
  }
  Raise(pending);
}

void ListView::DoubleClick(int row) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    if (!visible_ || !Has(row)) {
      return;
    }
    pending = Begin();
    if ((StateOf(row) & kItemSelected) == 0) {
      SelectOnly(row, pending);
    }
    pending.Add(NotifyCode::kItemActivated, row);
  }
  Raise(pending);
}

void ListView::LongPress(int row, Point point) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    if (!visible_) {
      return;
    }
    pending = Begin();
    row = Has(row) ? row : -1;
    if (row >= 0 && (StateOf(row) & kItemSelected) == 0) {
      SelectOnly(row, pending);
    }
    pending.Add(NotifyCode::kContextMenu, row);
    if (!pending.notifications.empty()) {
      pending.notifications.back().point = point;
    }
  }
  Raise(pending);
}

void ListView::ClickCheckBox(int row) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    if (!visible_ || !Has(row) || (extendedStyle_ & kListCheckBoxes) == 0) {
      return;
    }
    pending = Begin();
    ToggleCheck(row, pending);
  }
  Raise(pending);
}

void ListView::ClickHeader(int column) {
  Pending pending;
  {
    const MutexLock guard(lock_);
    if (!visible_ || column < 0 || Index(column) >= columns_.size()) {
      return;
    }
    pending = Begin();
    pending.Add(NotifyCode::kColumnClick, -1);
    if (!pending.notifications.empty()) {
      pending.notifications.back().column = column;
    }
  }
  Raise(pending);
}

}  // namespace kelpin::ui
