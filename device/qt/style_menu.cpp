#include "device/qt/style_menu.h"

#include <QFontMetrics>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionMenuItem>

#include "device/qt/theme.h"

namespace kelpin::qt {
namespace {

constexpr int kSide = 16;
constexpr int kIconGap = 16;
constexpr int kKeysGap = 32;
constexpr int kArrowWidth = 16;
constexpr int kSeparatorHeight = 9;

struct Texts {
  QString label;
  QString keys;
};

Texts Split(const QString& text) {
  const qsizetype tab = text.indexOf(QLatin1Char('\t'));
  return tab < 0 ? Texts{text, {}} : Texts{text.left(tab), text.mid(tab + 1)};
}

// Items with a drawing leave the same room in those without.
int IconRoom(const QStyleOptionMenuItem& item) {
  return item.maxIconWidth > 0 ? Scaled(20) + kIconGap : 0;
}

}  // namespace

void DrawMenuItem(QPainter& painter, const QStyleOptionMenuItem& item, const QStyle& style,
                  const QWidget* widget) {
  const QPalette& palette = item.palette;
  const QRect rect = item.rect;
  if (item.menuItemType == QStyleOptionMenuItem::Separator) {
    painter.fillRect(rect.left() + kSide, rect.center().y(), rect.width() - 2 * kSide, 1,
                     palette.color(kHairlineRole));
    return;
  }
  const bool enabled = item.state.testFlag(QStyle::State_Enabled);
  const auto group = enabled ? QPalette::Active : QPalette::Disabled;
  if (enabled && item.state.testFlag(QStyle::State_Selected)) {
    painter.fillRect(rect, palette.color(kSelectionRole));
  }
  const auto place = [&](const QRect& part) {
    return QStyle::visualRect(item.direction, rect, part);
  };
  const int icon = Scaled(20);
  if (!item.icon.isNull()) {
    const QRect box(rect.left() + kSide, rect.top() + (rect.height() - icon) / 2, icon, icon);
    item.icon.paint(&painter, place(box), Qt::AlignCenter,
                    enabled ? QIcon::Normal : QIcon::Disabled);
  }
  const auto [label, keys] = Split(item.text);
  const int left = kSide + IconRoom(item);
  const bool subMenu = item.menuItemType == QStyleOptionMenuItem::SubMenu;
  const int right = kSide + (subMenu ? kArrowWidth : 0);
  const QRect words = rect.adjusted(left, 0, -right, 0);
  painter.save();
  painter.setFont(item.font);
  painter.setPen(palette.color(group, QPalette::Text));
  painter.drawText(place(words),
                   static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic |
                                    QStyle::visualAlignment(item.direction, Qt::AlignLeft)),
                   label);
  if (!keys.isEmpty()) {
    painter.setPen(palette.color(group, kMutedRole));
    painter.drawText(place(words),
                     static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine |
                                      QStyle::visualAlignment(item.direction, Qt::AlignRight)),
                     keys);
  }
  painter.restore();
  if (subMenu) {
    QStyleOptionMenuItem arrow = item;
    arrow.rect = place(
        QRect(rect.right() - kSide - kArrowWidth + 4, rect.top(), kArrowWidth, rect.height()));
    style.drawPrimitive(QStyle::PE_IndicatorArrowRight, &arrow, &painter, widget);
  }
}

QSize MenuItemSize(const QStyleOptionMenuItem& item) {
  if (item.menuItemType == QStyleOptionMenuItem::Separator) {
    return {2 * kSide, kSeparatorHeight};
  }
  const auto [label, keys] = Split(item.text);
  const QFontMetrics metrics(item.font);
  const int words = metrics.size(Qt::TextHideMnemonic | Qt::TextSingleLine, label).width();
  // The menu itself adds the width of the widest shortcut.
  const int shortcut = keys.isEmpty() ? 0 : kKeysGap;
  const int arrow = item.menuItemType == QStyleOptionMenuItem::SubMenu ? kKeysGap + kArrowWidth : 0;
  return {2 * kSide + IconRoom(item) + words + shortcut + arrow, MenuItemHeight()};
}

}  // namespace kelpin::qt
