#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mutex.h"
#include "ui/keys.h"
#include "ui/notification.h"
#include "ui/row_store.h"

namespace kelpin::ui {

// State of a row, added up.
inline constexpr std::uint32_t kItemFocused = 0x0001;
inline constexpr std::uint32_t kItemSelected = 0x0002;
inline constexpr std::uint32_t kItemStateImageMask = 0xF000;
inline constexpr std::uint32_t kItemUnchecked = 0x1000;
inline constexpr std::uint32_t kItemChecked = 0x2000;

// Extended styles, added up.
inline constexpr std::uint32_t kListCheckBoxes = 0x04;
inline constexpr std::uint32_t kListHeaderDragDrop = 0x10;
inline constexpr std::uint32_t kListFullRowSelect = 0x20;
inline constexpr std::uint32_t kListNoHorizontalScroll = 0x10000000;

// Whatever a program hangs on a row; freed with the row.
struct RowData {
  virtual ~RowData() = default;
};

struct Column {
  std::u16string text;
  int width = 0;
  bool operator==(const Column&) const = default;
};

enum class SortArrow { kNone, kAscending, kDescending };

// What stands in the list's place while it is hidden, or under its header while it has no row.
struct ListMessage {
  std::u16string text;  // what is so
  std::u16string hint;  // what to do next; may be empty
  int done = 0;         // of `total`; drawn as a bar when total > 0
  int total = 0;
  bool operator==(const ListMessage&) const = default;
};

// A report list: rows, columns, selection, focus, selection mark, state images, sorting, and what
// keys and presses do to them. The program and the screen see this one state.
//
// Any thread; every call guards itself. Row numbers are 0-based and are those of the moment.
// Notifications are raised without the lock, at the change, through the sink; none while
// notifying is off at that moment. Rows at either end cost O(1) amortised; walking the selected
// rows costs what is selected.
//
// While the list is hidden keys and presses do nothing.
class ListView {
 public:
  struct Sink {
    std::function<void(const Notification&)> notify;  // control is filled in by the dialog
    std::function<void()> changed;                    // something to repaint
  };
  using Compare = std::function<int(const RowData* left, const RowData* right)>;

  explicit ListView(bool singleSelection = false);

  void SetSink(Sink sink);
  // Whether notifications are wanted. On at first.
  void SetNotifying(bool notifying) { notifying_ = notifying; }
  bool Notifying() const { return notifying_; }

  // Columns.
  void InsertColumn(int position, std::u16string_view text, int width);
  void SetColumnWidth(int column, int width);
  std::vector<Column> Columns() const;
  void SetSortArrow(int column, SortArrow arrow);  // column -1: no arrow
  int SortArrowColumn() const;
  SortArrow SortArrowDirection() const;
  void SetExtendedStyle(std::uint32_t style);
  std::uint32_t ExtendedStyle() const;

  // Rows. `position` beyond the end appends. The row's number is returned. Raises kItemInserted.
  int InsertItem(int position, std::u16string_view text, std::unique_ptr<RowData> data,
                 std::uint32_t state = 0);
  // The same with every column's text, before the row can be seen half filled. In both, a row of a
  // list with check boxes is unchecked unless `state` says otherwise; what `state` adds to that is
  // raised as kItemChanged after kItemInserted.
  int InsertRow(int position, std::vector<std::u16string> texts, std::unique_ptr<RowData> data,
                std::uint32_t state = 0);
  void SetItemText(int row, int column, std::u16string_view text);
  std::u16string ItemText(int row, int column) const;  // empty when there is none
  void SetItemData(int row, std::unique_ptr<RowData> data);
  // Null when the row has none. Stays alive while held, also after the row is gone.
  std::shared_ptr<const RowData> ItemData(int row) const;
  // The focus and the mark go to the row that takes the place, or to the last one. A selected row
  // raises kItemChanged with no state left.
  void DeleteItem(int row);
  // When any row was selected: one kItemChanged of row -1.
  void DeleteAllItems();
  int ItemCount() const;
  // Stable. Row data is compared; selection, focus and mark stay with their rows. `compare` sees
  // nothing but row data and must not call the list.
  void Sort(const Compare& compare);
  void RedrawItem(int row);
  // Grows whenever a row came, went, moved or got other texts; states do not count.
  std::uint64_t RowsVersion() const;

  // States. `mask` tells which bits of `state` count; row -1 is every row. Focusing a row takes
  // the focus from the one that had it, and the mark when there was none. Raises kItemChanged for
  // each row that changed. Every row cannot be focused, nor selected in a single-selection list.
  void SetItemState(int row, std::uint32_t state, std::uint32_t mask);
  std::uint32_t ItemState(int row) const;
  void SetCheck(int row, bool checked);  // row -1 is every row
  bool Checked(int row) const;
  // The next row after `start` (-1: from the top) that has all of `state` (selected, focused or
  // both); -1 when there is none.
  int NextItem(int start, std::uint32_t state) const;
  int SelectedCount() const;
  int FocusedItem() const;
  // The row a range is extended from; follows presses and key moves, not SetItemState. -1 when
  // none.
  int SelectionMark() const;
  void SetSelectionMark(int row);
  void EnsureVisible(int row);
  // For the screen: the row to scroll into view since it last asked, -1 when none.
  int TakeEnsureVisible();

  // Shown, or a message in its place. A list is shown at first.
  void SetVisible(bool visible);
  bool Visible() const;
  void SetMessage(ListMessage message);
  ListMessage Message() const;
  // How many full rows the screen shows now; for page keys.
  void SetPageRows(int rows);

  // A key that the program wants first: true when it was used up. Called on the screen thread
  // without the lock. WantsKey tells a dialog manager that asks.
  void SetKeyFilter(std::function<bool(const KeyPress&)> filter,
                    std::function<bool(const KeyPress&)> wants = nullptr);
  bool WantsKey(const KeyPress& press) const;
  // Milliseconds that only grow, for typing ahead; the system's when not set.
  void SetClock(std::function<std::uint64_t()> milliseconds);

  // What the user does. Screen thread. True when the key or press was used up.
  bool KeyDown(const KeyPress& press);  // FilterKey, then DefaultKey
  bool FilterKey(const KeyPress& press);
  // Arrows, pages, Home and End move; with Shift they extend from the mark, with Ctrl they move the
  // focus alone. Space checks or selects, Ctrl+Space toggles, Ctrl+A selects all, Enter activates
  // (a list with check boxes leaves it to the dialog), the menu key asks for the context menu
  // (point -1, -1), letters go to the next row that starts with them.
  bool DefaultKey(const KeyPress& press);
  // Plain: that row alone, focus and mark. Ctrl toggles it, Shift extends from the mark. kClick
  // comes after the changes. A press below the rows selects none.
  void Click(int row, int column, unsigned modifiers);  // row -1: below the rows
  void DoubleClick(int row);                            // selects when it was not, activates
  void LongPress(int row, Point point);                 // selects the row when it was not
  void ClickCheckBox(int row);
  void ClickHeader(int column);

 private:
  using RowKey = std::int64_t;
  struct Row {
    std::vector<std::u16string> texts;
    std::shared_ptr<const RowData> data;
    std::uint32_t stateImage = 0;
  };
  struct Pending;  // notifications gathered under the lock, raised after it
  enum class Extend { kReplace, kAdd };

  static void Raise(const Pending& pending);

  Pending Begin() REQUIRES(lock_);
  bool Has(int row) const REQUIRES(lock_);
  std::uint32_t StateOf(int row) const REQUIRES(lock_);
  int PositionOf(bool has, RowKey key) const REQUIRES(lock_);
  std::vector<int> SelectedRows() const REQUIRES(lock_);
  // Runs `change` and notes every row of `rows` whose state is another afterwards.
  template <typename Change>
  void Track(std::vector<int> rows, Pending& pending, const Change& change) REQUIRES(lock_);
  void Select(int row, bool selected) REQUIRES(lock_);
  void FocusOn(int row) REQUIRES(lock_);
  void MarkRow(int row) REQUIRES(lock_);
  void Reorder(const std::vector<std::size_t>& order) REQUIRES(lock_);
  void ShiftKeys(const KeyShift& shift) REQUIRES(lock_);
  int Insert(int position, std::unique_ptr<Row> row, std::uint32_t state, Pending& pending)
      REQUIRES(lock_);
  void ChangeState(int row, std::uint32_t state, std::uint32_t mask, Pending& pending)
      REQUIRES(lock_);
  void SelectOnly(int row, Pending& pending) REQUIRES(lock_);  // focus, mark, into view
  void SelectRange(int row, Extend extend, Pending& pending) REQUIRES(lock_);
  void Toggle(int row, Pending& pending) REQUIRES(lock_);
  void ToggleCheck(int row, Pending& pending) REQUIRES(lock_);
  bool MoveTo(int row, unsigned modifiers, Pending& pending) REQUIRES(lock_);
  bool TypeAhead(char16_t character, std::uint64_t now, Pending& pending) REQUIRES(lock_);
  bool PressKey(const KeyPress& press, std::uint64_t now, Pending& pending) REQUIRES(lock_);
  bool Navigate(const KeyPress& press, Pending& pending) REQUIRES(lock_);
  void ScrollTo(int row) REQUIRES(lock_);

  std::atomic<bool> notifying_ = true;
  const bool singleSelection_;

  mutable Mutex lock_;
  std::shared_ptr<const Sink> sink_ GUARDED_BY(lock_);
  std::vector<Column> columns_ GUARDED_BY(lock_);
  RowStore<std::unique_ptr<Row>> rows_ GUARDED_BY(lock_);
  std::uint64_t version_ GUARDED_BY(lock_) = 0;
  std::set<RowKey> selected_ GUARDED_BY(lock_);  // keys, so in row order
  RowKey focused_ GUARDED_BY(lock_) = 0;
  bool hasFocused_ GUARDED_BY(lock_) = false;
  RowKey mark_ GUARDED_BY(lock_) = 0;
  bool hasMark_ GUARDED_BY(lock_) = false;
  RowKey ensureVisible_ GUARDED_BY(lock_) = 0;
  bool hasEnsureVisible_ GUARDED_BY(lock_) = false;
  std::uint32_t extendedStyle_ GUARDED_BY(lock_) = 0;
  int arrowColumn_ GUARDED_BY(lock_) = -1;
  SortArrow arrow_ GUARDED_BY(lock_) = SortArrow::kNone;
  bool visible_ GUARDED_BY(lock_) = true;
  ListMessage message_ GUARDED_BY(lock_);
  int pageRows_ GUARDED_BY(lock_) = 8;
  std::function<bool(const KeyPress&)> keyFilter_ GUARDED_BY(lock_);
  std::function<bool(const KeyPress&)> wantsKey_ GUARDED_BY(lock_);
  std::function<std::uint64_t()> clock_ GUARDED_BY(lock_);
  std::u16string typed_ GUARDED_BY(lock_);
  std::uint64_t typedAt_ GUARDED_BY(lock_) = 0;
};

}  // namespace kelpin::ui
