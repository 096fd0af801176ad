#include "device/qt/window_state.h"

#include <QByteArray>
#include <QFile>
#include <QFileDevice>
#include <QList>
#include <QSaveFile>
#include <cstdlib>
#include <system_error>

namespace kelpin::qt {
namespace {

constexpr qint64 kMostBytes = 64;
constexpr int kLeast = 200;
constexpr int kMost = 20000;

QString FileName(const std::filesystem::path& folder) {
  return QString::fromStdString((folder / "window").string());
}

}  // namespace

std::optional<WindowState> LoadWindowState(const std::filesystem::path& folder) {
  QFile file(FileName(folder));
  if (folder.empty() || !file.open(QIODevice::ReadOnly)) {
    return std::nullopt;
  }
  const QList<QByteArray> parts = file.read(kMostBytes).simplified().split(' ');
  if (parts.size() != 3) {
    return std::nullopt;
  }
  bool widthOk = false;
  bool heightOk = false;
  const WindowState state{{parts[0].toInt(&widthOk), parts[1].toInt(&heightOk)},
                          parts[2] == "maximized"};
  const auto sane = [](int side) { return side >= kLeast && side <= kMost; };
  if (!widthOk || !heightOk || !sane(state.size.width) || !sane(state.size.height)) {
    return std::nullopt;
  }
  return state;
}

bool SaveWindowState(const std::filesystem::path& folder, const WindowState& state) {
  if (folder.empty()) {
    return false;
  }
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  QSaveFile file(FileName(folder));
  if (error || !file.open(QIODevice::WriteOnly)) {
    return false;
  }
  file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  file.write(QByteArray::number(state.size.width) + ' ' + QByteArray::number(state.size.height) +
             (state.maximized ? " maximized\n" : " normal\n"));
  return file.commit();
}

std::filesystem::path DefaultStateFolder() {
  const auto variable = [](const char* name) {
    const char* value = std::getenv(name);
    return std::filesystem::path(value == nullptr ? "" : value);
  };
  if (const std::filesystem::path state = variable("XDG_STATE_HOME"); state.is_absolute()) {
    return state / "kelpin";
  }
  const std::filesystem::path home = variable("HOME");
  return home.is_absolute() ? home / ".local/state/kelpin" : std::filesystem::path();
}

}  // namespace kelpin::qt
