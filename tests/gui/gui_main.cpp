#include <gmock/gmock.h>

#include <QApplication>

#include "device/qt/dialog_accessible.h"
#include "device/qt/soft_key_bar.h"

namespace {

// Pinned, so that pictures and sizes are the same everywhere; a caller may choose others.
void SetUnlessThere(const char* name, const char* value) {
  if (qEnvironmentVariableIsEmpty(name)) {
    qputenv(name, value);
  }
}

}  // namespace

// Read by the leak check, where the program is built with one: Qt keeps a few bytes for every
// widget that can be flicked, also when it is gone.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:QScroller::grabGesture\n";
}

// Read where the program is built to find races: Qt and GLib were not, so what their own threads
// hand one another looks like one.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libQt6Core.so\n"
         "called_from_lib:libQt6Gui.so\n"
         "called_from_lib:libQt6Widgets.so\n"
         "called_from_lib:libQt6DBus.so\n"
         "called_from_lib:libglib-2.0.so\n"
         "race:QEvent::type\n";
}

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  SetUnlessThere("QT_QPA_PLATFORM", "offscreen");
  SetUnlessThere("KELPIN_FONT", "DejaVu Sans");
  SetUnlessThere("KELPIN_THEME", "light");
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");  // tests of the bus start one of their own
  const QApplication application(argc, argv);
  kelpin::qt::InstallDialogAccessibility();
  kelpin::qt::InstallSoftKeyAccessibility();
  return RUN_ALL_TESTS();
}
