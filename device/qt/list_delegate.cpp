#include "device/qt/list_delegate.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QPainter>
#include <QTextDocument>
#include <QToolTip>

#include "device/qt/fitting_font.h"
#include "device/qt/style.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

constexpr int kLeastInOneLine = 80;  // percent of the text size

}  // namespace

int CheckBoxRoom() {
  return kListMargin + CheckBoxSize() + 14;
}

ListDelegate::ListDelegate(ui::ListView& list, ListModel& model, QObject* parent)
    : QStyledItemDelegate(parent), list_(list), model_(model) {}

QFont ListDelegate::FontOf(int column) const {
  return FontFor(column == model_.NameColumn() ? TextRole::kName : TextRole::kBase);
}

int ListDelegate::WidthFor(const QString& text, int column) const {
  return QFontMetrics(FontOf(column)).horizontalAdvance(text) + 2 * kCellPadding + kListMargin;
}

void ListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
  const int row = index.row();
  const int column = index.column();
  const std::uint32_t state = list_.ItemState(row);
  const bool selected = (state & ui::kItemSelected) != 0;
  const QPalette& palette = option.palette;
  const QRect rect = option.rect;

  if (selected || row == pressed_) {
    painter->fillRect(rect, palette.color(kSelectionRole));
  } else if (row == hovered_) {
    painter->fillRect(rect, palette.color(kHoverRole));
  }
  painter->fillRect(rect.left(), rect.bottom(), rect.width(), 1, palette.color(kHairlineRole));

  if (column == 0 && model_.HasCheckBoxes()) {
    const int side = CheckBoxSize();
    const QRect box(rect.left() + kListMargin, rect.top() + (rect.height() - side) / 2, side, side);
    DrawCheckBox(*painter, box, palette, (state & ui::kItemStateImageMask) == ui::kItemChecked,
                 true);
  }
  painter->setPen(
      palette.color(selected || column == model_.NameColumn() ? QPalette::Text : kMutedRole));
  PaintText(*painter, WordsOf(rect, column), ToQt(list_.ItemText(row, column)), column);
}

QRect ListDelegate::WordsOf(const QRect& cell, int column) const {
  int left = column == 0 ? kListMargin : kCellPadding;
  if (column == 0 && model_.HasCheckBoxes()) {
    left = CheckBoxRoom();
  }
  return cell.adjusted(left, 0, -kCellPadding, -1);
}

// A text too long for its place is made a little smaller, or broken into smaller lines where it
// has words to break between, before it is cut.
// Left is left, whatever the text's direction: a right-to-left name is drawn right to left at the
// place where all names begin. What is looked up (numbers) runs left to right.
void ListDelegate::PaintText(QPainter& painter, QRect rect, const QString& text, int column) const {
  const bool isName = column == model_.NameColumn();
  QFont font = FontOf(column);
  QString shown = text;
  int flags = static_cast<int>(Qt::AlignVCenter | Qt::AlignAbsolute |
                               (model_.IsIndexColumn(column) ? Qt::AlignRight : Qt::AlignLeft));
  if (const auto whole = FittingFont(font, text, rect.size(), flags, kLeastInOneLine)) {
    font = *whole;
    flags |= Qt::TextSingleLine;
  } else if (const auto broken = FittingFont(font, text, rect.size(), flags | Qt::TextWordWrap)) {
    font = *broken;
    flags |= Qt::TextWordWrap;
  } else {
    shown = QFontMetrics(font).elidedText(text, Qt::ElideRight, rect.width());
    flags |= Qt::TextSingleLine;
  }
  painter.setFont(font);
  painter.setLayoutDirection(isName ? Qt::LayoutDirectionAuto : Qt::LeftToRight);
  painter.drawText(rect, isName ? flags : flags | Qt::TextForceLeftToRight, shown);
}

bool ListDelegate::Fits(const QString& text, int column, int width) const {
  return QFontMetrics(FontOf(column)).horizontalAdvance(text) <= width;
}

// What is not shown at its full size can be read by pointing at it. It is text of the card's, not
// markup, whatever it looks like.
bool ListDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                             const QStyleOptionViewItem& option, const QModelIndex& index) {
  if (event->type() != QEvent::ToolTip || !index.isValid()) {
    return QStyledItemDelegate::helpEvent(event, view, option, index);
  }
  const QString text = index.data().toString();
  const int column = index.column();
  const QRect place = view->visualRect(index) & view->viewport()->rect();
  const bool fits = Fits(text, column, WordsOf(place, column).width());
  QToolTip::showText(event->globalPos(), fits ? QString() : Qt::convertFromPlainText(text), view,
                     place);
  return true;
}

QSize ListDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                             const QModelIndex& index) const {
  return {WidthFor(index.data().toString(), index.column()), RowHeight()};
}

}  // namespace kelpin::qt
