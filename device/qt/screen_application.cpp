#include "device/qt/screen_application.h"

#include <QApplication>
#include <QCursor>
#include <QScreen>

#include "device/qt/dialog_accessible.h"
#include "device/qt/icons.h"
#include "device/qt/soft_key_bar.h"
#include "device/qt/style.h"
#include "device/qt/theme.h"

namespace kelpin::qt {

ScreenApplication::ScreenApplication(int& argc, char** argv) {
  if (qApp == nullptr) {
    owned_ = std::make_unique<QApplication>(argc, argv);
    InstallDialogAccessibility();
    InstallSoftKeyAccessibility();
  }
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QCoreApplication::setApplicationName(QStringLiteral("kelpin"));
  QGuiApplication::setDesktopFileName(QStringLiteral("org.kelpin.Kelpin"));
  look_ = std::make_unique<DesktopLook>(QGuiApplication::font());
  queue_ = std::make_unique<PostQueue>();
  Restyle();
  QApplication::setWindowIcon(ProgramIcon());
  connect(look_.get(), &DesktopLook::Changed, this, [this] {
    Restyle();
    Q_EMIT LookChanged();
  });
  if (QScreen* screen = QGuiApplication::primaryScreen()) {
    connect(screen, &QScreen::geometryChanged, this, [this] {
      Measure();
      Q_EMIT LookChanged();
    });
  }
  look_->Ask();
}

ScreenApplication::~ScreenApplication() {
  queue_->Close();
  if (waiting_) {
    QGuiApplication::restoreOverrideCursor();
  }
}

// A new style makes Qt ask for the palette again, the desktop's own included.
void ScreenApplication::Restyle() {
  QApplication::setFont(look_->Font());
  QApplication::setStyle(
      new Style([this](const QPalette& desktop) { return look_->For(desktop); }));
  Measure();
}

void ScreenApplication::Measure() {
  ui::Size size = {360, 640};
  if (const QScreen* screen = QGuiApplication::primaryScreen()) {
    size = {screen->size().width(), screen->size().height()};
  }
  const ui::Metrics metrics = MakeMetrics(size);
  const MutexLock guard(lock_);
  metrics_ = metrics;
}

ui::Metrics ScreenApplication::Metrics() const {
  const MutexLock guard(lock_);
  return metrics_;
}

void ScreenApplication::SetWaitCursor(bool wait) {
  queue_->Post([this, wait] {
    if (wait == waiting_) {
      return;
    }
    waiting_ = wait;
    if (wait) {
      QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    } else {
      QGuiApplication::restoreOverrideCursor();
    }
  });
}

}  // namespace kelpin::qt
