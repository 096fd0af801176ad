#include "device/qt/list_header.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <array>

#include "device/qt/list_delegate.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

constexpr int kArrowRoom = 18;  // times the text size

void DrawArrow(QPainter& painter, QPointF center, bool up, double unit) {
  const double point = up ? -4 * unit : 4 * unit;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.drawLine(center + QPointF(0, -point), center + QPointF(0, point));
  painter.drawPolyline(std::array{center + QPointF(-3.2 * unit, point + (up ? 3.2 : -3.2) * unit),
                                  center + QPointF(0, point),
                                  center + QPointF(3.2 * unit, point + (up ? 3.2 : -3.2) * unit)}
                           .data(),
                       3);
}

}  // namespace

ListHeader::ListHeader(ui::ListView& list, ListModel& model, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), list_(list), model_(model) {
  setSectionsClickable(true);
  setHighlightSections(false);
  setSectionResizeMode(QHeaderView::Interactive);
  setMinimumSectionSize(kMinimumTouch - kCellPadding);
  setFrameShape(QFrame::NoFrame);
}

QSize ListHeader::sizeHint() const {
  return {0, std::max(kMinimumTouch, QFontMetrics(FontFor(TextRole::kCaption)).height() + 18)};
}

void ListHeader::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  painter.fillRect(viewport()->rect(), palette().color(QPalette::Window));
  painter.fillRect(0, 0, viewport()->width(), 1, palette().color(kHairlineRole));
  painter.fillRect(0, viewport()->height() - 1, viewport()->width(), 1,
                   palette().color(kHairlineRole));
  painter.end();
  QHeaderView::paintEvent(event);
}

void ListHeader::paintSection(QPainter* painter, const QRect& rect, int section) const {
  const QFont font = FontFor(TextRole::kCaption);
  const QFontMetrics metrics(font);
  const bool sorts =
      list_.SortArrowColumn() == section && list_.SortArrowDirection() != ui::SortArrow::kNone;
  const bool right = model_.IsIndexColumn(section);
  int left = section == 0 ? kListMargin : kCellPadding;
  if (section == 0 && model_.HasCheckBoxes()) {
    left = CheckBoxRoom();
  }
  const QRect room = rect.adjusted(left, 0, -kCellPadding, 0);
  const int arrow = sorts ? Scaled(kArrowRoom) : 0;
  const QString text =
      metrics.elidedText(ToQt(model_.Columns()[static_cast<std::size_t>(section)].text),
                         Qt::ElideRight, std::max(0, room.width() - arrow));
  const int width = metrics.horizontalAdvance(text);
  const int start = right ? std::max(room.left(), room.right() - width - arrow) : room.left();
  painter->save();
  painter->setFont(font);
  painter->setPen(palette().color(sorts ? QPalette::WindowText : kMutedRole));
  painter->drawText(QRect(start, room.top(), room.right() - start + 1, room.height()),
                    static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine), text);
  if (sorts) {
    painter->setPen(QPen(palette().color(QPalette::WindowText), 1.4, Qt::SolidLine, Qt::RoundCap,
                         Qt::RoundJoin));
    DrawArrow(*painter, QPointF(start + width + arrow / 2.0 + 2, rect.center().y() + 0.5),
              list_.SortArrowDirection() == ui::SortArrow::kAscending, Scaled(100) / 100.0);
  }
  painter->restore();
}

}  // namespace kelpin::qt
