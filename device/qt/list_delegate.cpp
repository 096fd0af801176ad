#include "device/qt/list_delegate.h"

#include <QFontMetrics>
#include <QPainter>

#include "device/qt/style.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {

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

  QRect words = rect.adjusted(column == 0 ? kListMargin : kCellPadding, 0, -kCellPadding, -1);
  if (column == 0 && model_.HasCheckBoxes()) {
    const int side = CheckBoxSize();
    const QRect box(rect.left() + kListMargin, rect.top() + (rect.height() - side) / 2, side, side);
    DrawCheckBox(*painter, box, palette, (state & ui::kItemStateImageMask) == ui::kItemChecked,
                 true);
    words.setLeft(rect.left() + CheckBoxRoom());
  }
  painter->setPen(
      palette.color(selected || column == model_.NameColumn() ? QPalette::Text : kMutedRole));
  PaintText(*painter, words, ToQt(list_.ItemText(row, column)), column);
}

// Left is left, whatever the text's direction: a right-to-left name is drawn right to left at the
// place where all names begin. What is looked up (numbers) runs left to right.
void ListDelegate::PaintText(QPainter& painter, QRect rect, const QString& text, int column) const {
  const bool isName = column == model_.NameColumn();
  const QFont font = FontOf(column);
  painter.setFont(font);
  const QString shown = QFontMetrics(font).elidedText(text, Qt::ElideRight, rect.width());
  const int flags =
      static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine | Qt::AlignAbsolute |
                       (model_.IsIndexColumn(column) ? Qt::AlignRight : Qt::AlignLeft));
  painter.setLayoutDirection(isName ? Qt::LayoutDirectionAuto : Qt::LeftToRight);
  painter.drawText(rect, isName ? flags : flags | Qt::TextForceLeftToRight, shown);
}

QSize ListDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                             const QModelIndex& index) const {
  return {WidthFor(index.data().toString(), index.column()), RowHeight()};
}

}  // namespace kelpin::qt
