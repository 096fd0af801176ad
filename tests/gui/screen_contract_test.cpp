#include "tests/contract/screen_contract.h"

#include <QTest>
#include <QTimer>
#include <deque>
#include <map>
#include <optional>

#include "device/qt/text.h"
#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

Qt::Key ToQt(ui::Key key) {
  switch (key) {
    case ui::Key::kEnter:
      return Qt::Key_Return;
    case ui::Key::kEscape:
      return Qt::Key_Escape;
    default:
      ADD_FAILURE() << "the driver has no such key";
      return Qt::Key_unknown;
  }
}

// Looks for windows a few times a frame, also in loops within loops, and does as it was told.
class QtDriver : public ScreenDriver {
 public:
  QtDriver() {
    static int argc = 1;
    static char name[] = "gui_tests";
    static char* argv[] = {name, nullptr};
    const std::filesystem::path folder = folder_.path().toStdString();
    screen_ = std::make_unique<qt::QtScreen>(
        argc, argv, qt::QtScreen::Options{folder / "state", folder / "run", ui::Size{360, 640}});
    Arm();
  }

  ui::Screen& Screen() override { return *screen_; }
  void AnswerNextBox(ui::BoxAnswer answer) override { answers_.emplace_back(answer); }
  void DismissNextBox() override { answers_.emplace_back(std::nullopt); }
  std::vector<std::u16string> BoxTexts() override { return texts_; }
  void WhenDialogOpens(int resource, std::function<void(ui::Dialog&)> script) override {
    scripts_[resource].push_back(std::move(script));
  }
  void Press(ui::Dialog& dialog, const ui::KeyPress& press) override {
    qt::DialogWindow* window = WindowOf(dialog);
    ASSERT_NE(window, nullptr);
    QWidget* target = window->focusWidget() != nullptr ? window->focusWidget() : window;
    QTest::keyClick(target, ToQt(press.key));
  }
  bool RunUntil(const std::function<bool()>& done) override { return ServeUntil(done); }

 private:
  void Arm() {
    QTimer::singleShot(2, &context_, [this] {
      Arm();
      Look();
    });
  }

  void Look() {
    if (qt::MessageWindow* box = OpenBox(); box != nullptr && !answers_.empty()) {
      const std::optional<ui::BoxAnswer> answer = answers_.front();
      answers_.pop_front();
      texts_.push_back(qt::FromQt(box->accessibleDescription()));
      if (answer) {
        auto* button =
            box->findChild<QWidget*>(QStringLiteral("answer%1").arg(static_cast<int>(*answer)));
        ASSERT_NE(button, nullptr);
        QTest::mouseClick(button, Qt::LeftButton);
      } else {
        QTest::keyClick(box, Qt::Key_Escape);
      }
      return;
    }
    for (auto& [resource, scripts] : scripts_) {
      qt::DialogWindow* window = OpenWindow(resource);
      if (window != nullptr && !scripts.empty()) {
        const auto script = std::move(scripts.front());
        scripts.pop_front();
        const std::shared_ptr<ui::Dialog> dialog = window->Dialog().shared_from_this();
        script(*dialog);
        return;
      }
    }
  }

  QTemporaryDir folder_;
  std::unique_ptr<qt::QtScreen> screen_;
  QObject context_;
  std::deque<std::optional<ui::BoxAnswer>> answers_;
  std::vector<std::u16string> texts_;
  std::map<int, std::deque<std::function<void(ui::Dialog&)>>> scripts_;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ScreenContract, QtDriver);

}  // namespace kelpin::test
