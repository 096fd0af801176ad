#include "tests/gui/gui_support.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

namespace kelpin::test {

bool ServeUntil(const std::function<bool()>& done) {
  constexpr int kPatience = 30'000;  // milliseconds
  return QTest::qWaitFor(done, kPatience);
}

void Settle() {
  constexpr int kFrame = 20;  // milliseconds
  // What was posted is done and the drawing is due after the first, and drawn after the second,
  // also when the machine stood still meanwhile.
  for (int frame = 0; frame < 2; ++frame) {
    QEventLoop loop;
    QTimer::singleShot(kFrame, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    if (loop.exec() < 0) {
      QTest::qWait(kFrame);  // once the program was told to end no loop runs any more
    }
  }
  QTest::qWait(1);
}

void KeepPictures() {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  const QDir folder(QStringLiteral(KELPIN_PICTURE_DIR));
  folder.mkpath(QStringLiteral("."));
  int number = 0;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible()) {
      QString name = QStringLiteral("%1.%2-%3.png")
                         .arg(QString::fromLatin1(test->test_suite_name()))
                         .arg(QString::fromLatin1(test->name()))
                         .arg(number++);
      window->grab().save(folder.filePath(name.replace(QLatin1Char('/'), QLatin1Char('_'))));
    }
  }
}

qt::DialogWindow* WindowOf(const ui::Dialog& dialog) {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    auto* found = qobject_cast<qt::DialogWindow*>(window);
    if (found != nullptr && &found->Dialog() == &dialog) {
      return found;
    }
  }
  return nullptr;
}

qt::DialogWindow* OpenWindow(int resource) {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    auto* found = qobject_cast<qt::DialogWindow*>(window);
    if (found != nullptr && found->isVisible() && found->Dialog().Resource() == resource) {
      return found;
    }
  }
  return nullptr;
}

qt::MessageWindow* OpenBox() {
  if (auto* active = qobject_cast<qt::MessageWindow*>(QApplication::activeModalWidget())) {
    return active;
  }
  for (QWidget* window : QApplication::topLevelWidgets()) {
    auto* box = qobject_cast<qt::MessageWindow*>(window);
    if (box != nullptr && box->isVisible()) {
      return box;
    }
  }
  return nullptr;
}

GuiTest::GuiTest() {
  static int argc = 1;
  static char name[] = "gui_tests";
  static char* argv[] = {name, nullptr};
  qt::QtScreen::Options options;
  options.stateFolder = Folder("state");
  options.runtimeFolder = Folder("run");
  options.size = ui::Size{360, 640};
  screen_ = std::make_unique<qt::QtScreen>(argc, argv, options);
}

void GuiTest::TearDown() {
  if (HasFailure()) {
    KeepPictures();
  }
}

std::filesystem::path GuiTest::Folder(const char* name) const {
  return std::filesystem::path(folder_.path().toStdString()) / name;
}

std::shared_ptr<ui::Dialog> GuiTest::Show(const ui::DialogTemplate& resource,
                                          ui::DialogHandler& handler) {
  std::shared_ptr<ui::Dialog> dialog = screen_->CreateDialog(resource, 0, handler);
  screen_->ShowDialog(*dialog);
  EXPECT_TRUE(QTest::qWaitForWindowActive(WindowOf(*dialog)));
  Settle();
  return dialog;
}

qt::ListTable* GuiTest::Table(const ui::Dialog& dialog, int control) {
  return Find<qt::ListTable>(dialog, "c" + std::to_string(control));
}

QPoint GuiTest::Cell(const qt::ListTable& table, int row, int column) {
  return {table.columnViewportPosition(column) + table.columnWidth(column) / 2,
          table.rowViewportPosition(row) + table.rowHeight(row) / 2};
}

}  // namespace kelpin::test
