#include "tests/gui/real_keys.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTest>
#include <QWindow>
#include <map>

namespace kelpin::test {

bool PressKey(const std::string& name) {
  if (QGuiApplication::platformName() == QLatin1String("xcb")) {
    return QProcess::execute(QStringLiteral("xdotool"),
                             {QStringLiteral("key"), QString::fromStdString(name)}) == 0;
  }
  static const std::map<std::string, Qt::Key> kKeys = {
      {"y", Qt::Key_Y}, {"n", Qt::Key_N}, {"Return", Qt::Key_Return}, {"Escape", Qt::Key_Escape}};
  QWindow* const window = QGuiApplication::focusWindow();
  if (window == nullptr) {
    return false;
  }
  QTest::keyClick(window, kKeys.at(name));
  return true;
}

}  // namespace kelpin::test
