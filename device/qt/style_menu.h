#pragma once

#include <QSize>

QT_BEGIN_NAMESPACE
class QPainter;
class QStyle;
class QStyleOptionMenuItem;
class QWidget;
QT_END_NAMESPACE

// Items of menus: an icon, the text, the shortcut, fit for a finger.
namespace kelpin::qt {

void DrawMenuItem(QPainter& painter, const QStyleOptionMenuItem& item, const QStyle& style,
                  const QWidget* widget);
QSize MenuItemSize(const QStyleOptionMenuItem& item);

}  // namespace kelpin::qt
