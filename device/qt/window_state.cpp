#include "device/qt/window_state.h"

#include <QByteArray>
#include <QFile>
#include <QFileDevice>
#include <QList>
#include <QSaveFile>
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <system_error>
#include <vector>

namespace kelpin::qt {
namespace {

constexpr qint64 kMostBytes = 1024;
constexpr std::size_t kMostScreens = 8;
constexpr int kLeast = 200;
constexpr int kMost = 20000;

struct Line {
  ui::Size screen;
  WindowState state;
};

QString FileName(const std::filesystem::path& folder) {
  return QString::fromStdString((folder / "window").string());
}

// "SCREENWIDTH SCREENHEIGHT WIDTH HEIGHT normal|maximized"
std::optional<Line> ReadLine(const QByteArray& text) {
  const QList<QByteArray> parts = text.simplified().split(' ');
  if (parts.size() != 5) {
    return std::nullopt;
  }
  std::array<int, 4> sides = {};
  for (std::size_t i = 0; i < sides.size(); ++i) {
    bool number = false;
    sides[i] = parts[static_cast<qsizetype>(i)].toInt(&number);
    if (!number || sides[i] < kLeast || sides[i] > kMost) {
      return std::nullopt;
    }
  }
  return Line{{sides[0], sides[1]}, {{sides[2], sides[3]}, parts[4] == "maximized"}};
}

// A pipe without a writer would be waited for, and a device that a link leads to be replaced.
bool IsSomethingElse(const std::filesystem::path& folder) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(folder / "window", error);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

// The screen used last comes first.
std::vector<Line> ReadLines(const std::filesystem::path& folder) {
  std::vector<Line> lines;
  QFile file(FileName(folder));
  if (folder.empty() || IsSomethingElse(folder) || !file.open(QIODevice::ReadOnly)) {
    return lines;
  }
  for (const QByteArray& text : file.read(kMostBytes).split('\n')) {
    if (const std::optional<Line> line = ReadLine(text)) {
      lines.push_back(*line);
    }
  }
  return lines;
}

QByteArray TextOf(const Line& line) {
  QByteArray text;
  for (const int side :
       {line.screen.width, line.screen.height, line.state.size.width, line.state.size.height}) {
    text += QByteArray::number(side) + ' ';
  }
  return text + (line.state.maximized ? "maximized\n" : "normal\n");
}

}  // namespace

std::optional<WindowState> LoadWindowState(const std::filesystem::path& folder, ui::Size screen) {
  for (const Line& line : ReadLines(folder)) {
    if (line.screen == screen) {
      return line.state;
    }
  }
  return std::nullopt;
}

bool SaveWindowState(const std::filesystem::path& folder, ui::Size screen,
                     const WindowState& state) {
  if (folder.empty() || IsSomethingElse(folder)) {
    return false;
  }
  std::vector<Line> lines = ReadLines(folder);
  std::erase_if(lines, [screen](const Line& line) { return line.screen == screen; });
  lines.insert(lines.begin(), Line{screen, state});
  lines.resize(std::min(lines.size(), kMostScreens));
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  QSaveFile file(FileName(folder));
  if (error || !file.open(QIODevice::WriteOnly)) {
    return false;
  }
  file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  for (const Line& line : lines) {
    file.write(TextOf(line));
  }
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
