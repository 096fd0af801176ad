#include "device/qt/modality.h"

#include <QApplication>
#include <QWidget>

namespace kelpin::qt {
namespace {

// `window` is `other`, or is owned by it.
bool BelongsTo(const QWidget& window, const QWidget& other) {
  const QWidget* at = &window;
  while (at != nullptr && at != &other) {
    at = at->parentWidget() == nullptr ? nullptr : at->parentWidget()->window();
  }
  return at != nullptr;
}

}  // namespace

bool IsBlocked(const QWidget& widget) {
  const QWidget& window = *widget.window();
  for (const QWidget* other : QApplication::topLevelWidgets()) {
    if (!other->isVisible() || !other->isModal() || BelongsTo(window, *other)) {
      continue;
    }
    if (other->windowModality() == Qt::ApplicationModal || BelongsTo(*other, window)) {
      return true;
    }
  }
  return false;
}

}  // namespace kelpin::qt
