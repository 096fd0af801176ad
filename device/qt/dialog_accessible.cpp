#include "device/qt/dialog_accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "device/qt/dialog_window.h"
#include "device/qt/message_window.h"
#include "device/qt/popup_menu.h"

namespace kelpin::qt {
namespace {

// Qt leaves windows out of the children of a widget, and a pop-up menu is one.
class DialogAccessible : public QAccessibleWidget {
 public:
  explicit DialogAccessible(DialogWindow* window)
      : QAccessibleWidget(window, QAccessible::Dialog) {}

  int childCount() const override {
    return QAccessibleWidget::childCount() + (Popup() != nullptr ? 1 : 0);
  }
  QAccessibleInterface* child(int index) const override {
    return index >= 0 && index == QAccessibleWidget::childCount()
               ? QAccessible::queryAccessibleInterface(Popup())
               : QAccessibleWidget::child(index);
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return child != nullptr && child->object() != nullptr && child->object() == Popup()
               ? QAccessibleWidget::childCount()
               : QAccessibleWidget::indexOfChild(child);
  }

 private:
  // The one that is open; null when none is.
  QObject* Popup() const {
    const auto menus = object()->findChildren<PopupMenu*>(QString(), Qt::FindDirectChildrenOnly);
    for (PopupMenu* menu : menus) {
      if (menu->isVisible()) {
        return menu;
      }
    }
    return nullptr;
  }
};

QAccessibleInterface* MakeAccessible(const QString& /*key*/, QObject* object) {
  if (auto* window = qobject_cast<DialogWindow*>(object)) {
    return new DialogAccessible(window);
  }
  auto* widget = qobject_cast<QWidget*>(object);
  // Read out at once, whatever is being read.
  if (qobject_cast<MessageWindow*>(object) != nullptr) {
    return new QAccessibleWidget(widget, QAccessible::AlertMessage);
  }
  return widget != nullptr && widget->property(kIsText).toBool()
             ? new QAccessibleWidget(widget, QAccessible::StaticText)
             : nullptr;
}

}  // namespace

void InstallDialogAccessibility() {
  QAccessible::installFactory(MakeAccessible);
}

}  // namespace kelpin::qt
