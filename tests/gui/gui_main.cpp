#include <gmock/gmock.h>

#include <QApplication>

#include "device/qt/soft_key_bar.h"

namespace {

// Pinned, so that pictures and sizes are the same everywhere; a caller may choose others.
void SetUnlessThere(const char* name, const char* value) {
  if (qEnvironmentVariableIsEmpty(name)) {
    qputenv(name, value);
  }
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  SetUnlessThere("QT_QPA_PLATFORM", "offscreen");
  SetUnlessThere("KELPIN_FONT", "DejaVu Sans");
  SetUnlessThere("KELPIN_THEME", "light");
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");  // tests of the bus start one of their own
  const QApplication application(argc, argv);
  kelpin::qt::InstallSoftKeyAccessibility();
  return RUN_ALL_TESTS();
}
