#include "device/qt/popup_menu.h"

#include <QAction>
#include <QEvent>

#include "device/qt/icons.h"
#include "device/qt/text.h"
#include "device/qt/theme.h"

namespace kelpin::qt {

PopupMenu::PopupMenu(std::function<void(int)> choose, QWidget* parent)
    : QMenu(parent), choose_(std::move(choose)) {
  setToolTipsVisible(false);
}

void PopupMenu::SetItems(const std::vector<ui::MenuItem>& items) {
  if (items == items_) {
    return;
  }
  items_ = items;
  filling_ = true;
  Fill(*this, items_);
  filling_ = false;
}

void PopupMenu::Fill(QMenu& menu, const std::vector<ui::MenuItem>& items) {
  const auto subMenus = menu.findChildren<QMenu*>(Qt::FindDirectChildrenOnly);
  menu.clear();
  for (QMenu* subMenu : subMenus) {
    subMenu->deleteLater();
  }
  for (const ui::MenuItem& item : items) {
    if (item.IsSeparator()) {
      menu.addSeparator();
      continue;
    }
    const QString text = ToQt(item.text).replace(QLatin1Char('&'), QStringLiteral("&&"));
    const QIcon icon = AccentIcon(QString::fromStdString(item.icon), palette(), Scaled(20));
    if (!item.items.empty()) {
      QMenu* subMenu = menu.addMenu(icon, text);
      subMenu->setFont(font());
      subMenu->setEnabled(item.enabled);
      Fill(*subMenu, item.items);
      continue;
    }
    QAction* action = menu.addAction(icon, text);
    // Shown and read out; a menu in no menu bar never acts on it, the dialog's accelerators do.
    action->setShortcut(QKeySequence::fromString(ToQt(item.keys), QKeySequence::PortableText));
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setObjectName(QStringLiteral("command%1").arg(item.command));
    action->setEnabled(item.enabled);
    connect(
        action, &QAction::triggered, this, [this, command = item.command] { choose_(command); },
        Qt::QueuedConnection);
  }
}

// Icons are drawn in the palette's colours.
void PopupMenu::changeEvent(QEvent* event) {
  QMenu::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && !filling_ && !items_.empty()) {
    filling_ = true;
    Fill(*this, items_);
    filling_ = false;
  }
}

}  // namespace kelpin::qt
