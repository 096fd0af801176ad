#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

namespace kelpin::qt {

// A modal window stands before the one that `widget` is in. The toolkit keeps keys and presses away
// from it then; what comes by the accessible tree, or was chosen before, is to be dropped.
bool IsBlocked(const QWidget& widget);

}  // namespace kelpin::qt
