#include "device/qt/qt_shell.h"

#include <QApplication>
#include <QInputMethod>
#include <QKeyEvent>
#include <QLineEdit>
#include <utility>

namespace kelpin::qt {

QtShell::QtShell(std::u16string platformType) : platformType_(std::move(platformType)) {}

std::u16string QtShell::PlatformType() {
  return platformType_;
}

// The screen is made before the program starts, so there is nothing to wait for.
platform::ShellReadiness QtShell::WaitForShell(std::uint32_t /*argument1*/,
                                               std::uint32_t /*argument2*/,
                                               std::uint32_t /*argument3*/,
                                               std::uint32_t /*argument4*/) {
  return qApp == nullptr ? platform::ShellReadiness::kMissing : platform::ShellReadiness::kReady;
}

void QtShell::ShowInputPanel(bool up) {
  if (QInputMethod* panel = QGuiApplication::inputMethod()) {
    panel->setVisible(up);
  }
}

int QtShell::ImmGetConversionStatus(platform::InputMethodStatus& status) {
  status = status_;
  return 1;
}

int QtShell::ImmSetConversionStatus(const platform::InputMethodStatus& status) {
  status_ = status;
  return 1;
}

void QtShell::SendBackKey() {
  if (auto* edit = qobject_cast<QLineEdit*>(QApplication::focusWidget())) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QCoreApplication::postEvent(edit, new QKeyEvent(type, Qt::Key_Backspace, Qt::NoModifier));
    }
  }
}

}  // namespace kelpin::qt
