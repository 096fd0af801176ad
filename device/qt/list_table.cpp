#include "device/qt/list_table.h"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QScroller>
#include <QSignalBlocker>
#include <QStyleHints>
#include <algorithm>
#include <utility>

#include "device/qt/key_map.h"
#include "device/qt/style.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

constexpr int kNoPress = -2;

void SetUpScroller(QWidget* viewport) {
  QScroller::grabGesture(viewport, QScroller::TouchGesture);
  QScrollerProperties properties = QScroller::scroller(viewport)->scrollerProperties();
  properties.setScrollMetric(QScrollerProperties::HorizontalOvershootPolicy,
                             QScrollerProperties::OvershootAlwaysOff);
  properties.setScrollMetric(QScrollerProperties::VerticalOvershootPolicy,
                             QScrollerProperties::OvershootAlwaysOff);
  properties.setScrollMetric(QScrollerProperties::AxisLockThreshold, 0.7);
  properties.setScrollMetric(QScrollerProperties::DragStartDistance, 0.003);
  QScroller::scroller(viewport)->setScrollerProperties(properties);
}

}  // namespace

ListTable::ListTable(ui::ListView& list, DialogEvents& events, QWidget* parent)
    : QTableView(parent),
      list_(list),
      events_(events),
      model_(new ListModel(list, this)),
      delegate_(new ListDelegate(list, *model_, this)),
      header_(new ListHeader(list, *model_, this)) {
  setHorizontalHeader(header_);
  setModel(model_);
  setItemDelegate(delegate_);
  setShowGrid(false);
  setFrameShape(QFrame::NoFrame);
  setCornerButtonEnabled(false);
  setWordWrap(false);
  setEditTriggers(NoEditTriggers);
  setSelectionBehavior(SelectRows);
  setSelectionMode(ExtendedSelection);
  setTabKeyNavigation(false);
  setVerticalScrollMode(ScrollPerPixel);
  setHorizontalScrollMode(ScrollPerPixel);
  setAutoScroll(false);
  setMouseTracking(true);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(RowHeight());
  header_->setStretchLastSection(false);
  SetUpScroller(viewport());
  heard_ = QAccessible::isActive();
  QAccessible::installActivationObserver(this);

  connect(header_, &QHeaderView::sectionClicked, this,
          [this](int section) { list_.ClickHeader(section); });
  connect(header_, &QHeaderView::sectionResized, this, [this](int section, int, int width) {
    if (!layingOut_) {
      list_.SetColumnWidth(section, width);
    }
  });
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &ListTable::TakeSelection);
  connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex& current) {
            if (!mirroring_ && current.isValid()) {
              list_.SetItemState(current.row(), ui::kItemFocused, ui::kItemFocused);
            }
          });
}

ListTable::~ListTable() {
  QAccessible::removeActivationObserver(this);
  QScroller::ungrabGesture(viewport());
}

void ListTable::Sync() {
  // Rows that go take their part of Qt's selection along, which is nobody's choice.
  mirroring_ = true;
  const bool changed = model_->Sync();
  mirroring_ = false;
  if (changed) {
    widest_ = 0;
    header_->setSectionsMovable((list_.ExtendedStyle() & ui::kListHeaderDragDrop) != 0);
    LayOutColumns();
    // Rows that have just come count in the scroll range at once.
    executeDelayedItemsLayout();
    updateGeometries();
  }
  header_->viewport()->update();
  MirrorSelection();
  if (isVisible() && viewport()->height() > 0) {
    const int row = list_.TakeEnsureVisible();
    if (row >= 0 && row < model_->rowCount()) {
      const int left = horizontalScrollBar()->value();
      scrollTo(model_->index(row, 0), EnsureVisible);
      horizontalScrollBar()->setValue(left);
    }
  }
  viewport()->update();
}

// The last column is as wide as what there is to see in it, whatever more the program gives it:
// long numbers scroll into view, emptiness does not.
void ListTable::LayOutColumns() {
  const std::vector<ui::Column>& columns = model_->Columns();
  if (columns.empty() || layingOut_) {
    return;
  }
  layingOut_ = true;
  const int last = static_cast<int>(columns.size()) - 1;
  int used = 0;
  for (int column = 0; column < last; ++column) {
    const int width = ColumnWidth(column);
    header_->resizeSection(column, width);
    used += width;
  }
  widest_ = model_->rowCount() == 0 ? 0 : std::max(widest_, WidestInSight(last));
  const int room = std::max(header_->minimumSectionSize(), viewport()->width() - used);
  const bool scrolls = (list_.ExtendedStyle() & ui::kListNoHorizontalScroll) == 0;
  header_->resizeSection(last, scrolls ? std::max(room, widest_) : room);
  setHorizontalScrollBarPolicy(scrolls ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  layingOut_ = false;
}

// Numbers in sequence are shown whole, also in large text.
int ListTable::ColumnWidth(int column) const {
  const int wish = std::max(header_->minimumSectionSize(),
                            model_->Columns()[static_cast<std::size_t>(column)].width);
  return model_->IsIndexColumn(column) ? std::max(wish, WidestInSight(column)) : wish;
}

int ListTable::WidestInSight(int column) const {
  int widest =
      delegate_->WidthFor(ToQt(model_->Columns()[static_cast<std::size_t>(column)].text), column);
  const int rowHeight = verticalHeader()->defaultSectionSize();
  const int first = verticalOffset() / rowHeight;
  const int count = viewport()->height() / rowHeight + 2;
  for (int row = first; row < std::min(first + count, model_->rowCount()); ++row) {
    widest = std::max(widest, delegate_->WidthFor(ToQt(list_.ItemText(row, column)), column));
  }
  return widest;
}

void ListTable::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  const int focused = list_.FocusedItem();
  if (!keyboard_ || !hasFocus() || focused < 0 || focused >= model_->rowCount()) {
    return;
  }
  const QRect row(0, rowViewportPosition(focused), viewport()->width(), rowHeight(focused));
  QPainter painter(viewport());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(palette().color(kAccentRole), kFocusRing));
  painter.drawRoundedRect(QRectF(row).adjusted(3, 2, -3, -3), 6, 6);
}

void ListTable::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  list_.SetPageRows(std::max(1, viewport()->height() / verticalHeader()->defaultSectionSize()));
  LayOutColumns();
}

void ListTable::scrollContentsBy(int dx, int dy) {
  QTableView::scrollContentsBy(dx, dy);
  if (dy != 0 && !model_->Columns().empty()) {
    LayOutColumns();  // wider texts may have come into sight
  }
}

void ListTable::keyPressEvent(QKeyEvent* event) {
  keyboard_ = true;
  event->accept();
  if (events_.OfferKey(*event)) {
    viewport()->update();
    return;
  }
  if (event->key() == Qt::Key_Left) {
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - Scaled(48));
  } else if (event->key() == Qt::Key_Right) {
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + Scaled(48));
  } else {
    event->ignore();
  }
}

void ListTable::Press(int row) {
  UpdateRow(pressedRow_);
  pressedRow_ = row;
  delegate_->SetPressedRow(row);
  UpdateRow(row);
}

void ListTable::Hover(int row) {
  if (row != hoveredRow_) {
    UpdateRow(hoveredRow_);
    hoveredRow_ = row;
    delegate_->SetHoveredRow(row);
    UpdateRow(row);
  }
}

void ListTable::UpdateRow(int row) {
  if (row >= 0 && row < model_->rowCount()) {
    viewport()->update(0, rowViewportPosition(row), viewport()->width(), rowHeight(row));
  }
}

void ListTable::mousePressEvent(QMouseEvent* event) {
  keyboard_ = false;
  event->accept();
  if (event->button() != Qt::LeftButton) {
    return;
  }
  pressedAt_ = event->position().toPoint();
  Press(rowAt(pressedAt_.y()));
  hold_.start(QGuiApplication::styleHints()->mousePressAndHoldInterval(), this);
}

void ListTable::mouseMoveEvent(QMouseEvent* event) {
  event->accept();
  const QPoint at = event->position().toPoint();
  if (pressedRow_ == kNoPress) {
    Hover(event->source() == Qt::MouseEventNotSynthesized ? rowAt(at.y()) : -1);
  } else if ((at - pressedAt_).manhattanLength() >=
             QGuiApplication::styleHints()->startDragDistance()) {
    hold_.stop();
    Press(kNoPress);
  }
}

void ListTable::mouseReleaseEvent(QMouseEvent* event) {
  event->accept();
  hold_.stop();
  if (event->button() != Qt::LeftButton || pressedRow_ == kNoPress) {
    return;
  }
  const QPoint at = event->position().toPoint();
  const int row = rowAt(at.y());
  const bool same = row == pressedRow_;
  Press(kNoPress);
  if (!same || QScroller::scroller(viewport())->state() == QScroller::Dragging) {
    return;
  }
  if (row >= 0 && model_->HasCheckBoxes() && at.x() + horizontalOffset() < CheckBoxRoom()) {
    list_.ClickCheckBox(row);
  } else {
    list_.Click(row, row < 0 ? -1 : columnAt(at.x()), ModifiersFromQt(event->modifiers()));
  }
}

void ListTable::mouseDoubleClickEvent(QMouseEvent* event) {
  event->accept();
  const QPoint at = event->position().toPoint();
  const int row = rowAt(at.y());
  if (event->button() != Qt::LeftButton || row < 0) {
    return;
  }
  if (model_->HasCheckBoxes() && at.x() + horizontalOffset() < CheckBoxRoom()) {
    mousePressEvent(event);  // two quick presses of a box are two presses
    return;
  }
  list_.DoubleClick(row);
}

void ListTable::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
  if (event->reason() == QContextMenuEvent::Keyboard) {
    return;  // the menu key itself has been offered to the dialog
  }
  hold_.stop();
  Press(kNoPress);
  const int row = rowAt(event->pos().y());
  list_.LongPress(row, events_.ToDialog(event->globalPos()));
}

void ListTable::HoldPress() {
  const int row = pressedRow_;
  Press(kNoPress);
  list_.LongPress(row, events_.ToDialog(viewport()->mapToGlobal(pressedAt_)));
}

void ListTable::timerEvent(QTimerEvent* event) {
  if (event->timerId() != hold_.timerId()) {
    QTableView::timerEvent(event);
    return;
  }
  hold_.stop();
  if (QScroller::scroller(viewport())->state() != QScroller::Dragging && pressedRow_ != kNoPress) {
    HoldPress();
  }
}

bool ListTable::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::Leave) {
    Hover(-1);
  }
  return QTableView::viewportEvent(event);
}

void ListTable::changeEvent(QEvent* event) {
  QTableView::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    verticalHeader()->setDefaultSectionSize(RowHeight());
    widest_ = 0;
    LayOutColumns();
  }
}

// Qt's first row becomes its current one where none is yet; the list's own focus stays.
void ListTable::focusInEvent(QFocusEvent* event) {
  const bool mirroring = std::exchange(mirroring_, true);
  QTableView::focusInEvent(event);
  mirroring_ = mirroring;
}

// Screen readers ask Qt's selection model; nobody else does.
void ListTable::MirrorSelection() {
  if (!heard_) {
    return;
  }
  mirroring_ = true;
  QItemSelection selection;
  const int last = std::max(0, model_->columnCount() - 1);
  const int rows = model_->rowCount();
  int row = list_.NextItem(-1, ui::kItemSelected);
  while (row >= 0 && row < rows) {
    int end = row;
    int next = list_.NextItem(end, ui::kItemSelected);
    while (next == end + 1 && next < rows) {
      end = next;
      next = list_.NextItem(end, ui::kItemSelected);
    }
    selection.select(model_->index(row, 0), model_->index(end, last));
    row = next;
  }
  selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  const int focused = list_.FocusedItem();
  if (focused >= 0 && focused < rows) {
    selectionModel()->setCurrentIndex(model_->index(focused, std::max(0, model_->NameColumn())),
                                      QItemSelectionModel::NoUpdate);
  }
  mirroring_ = false;
}

// A screen reader may come when the list has been there for long.
void ListTable::accessibilityActiveChanged(bool active) {
  heard_ = active;
  MirrorSelection();
}

void ListTable::TakeSelection() {
  if (mirroring_) {
    return;
  }
  const QItemSelection chosen = selectionModel()->selection();
  list_.SetItemState(-1, 0, ui::kItemSelected);
  for (const QItemSelectionRange& range : chosen) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      list_.SetItemState(row, ui::kItemSelected, ui::kItemSelected);
    }
  }
}

}  // namespace kelpin::qt
