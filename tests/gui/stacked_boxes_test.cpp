#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <algorithm>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "device/qt/text.h"
#include "tests/gui/gui_support.h"
#include "tests/gui/real_keys.h"

// Boxes that open at the same time: the one in front has the keys, and none is lost.
namespace kelpin::test {
namespace {

// Who asks: 's' the screen thread, 'w' a worker; and which of the boxes that are left goes next: 0
// the one in front, by a key, else one behind it, closed by the program.
struct Case {
  std::string askers;
  std::vector<std::size_t> order;
};

std::vector<Case> Cases() {
  std::vector<Case> cases;
  for (const char* askers : {"s", "w"}) {
    cases.push_back({askers, {0}});
  }
  for (const char* askers : {"ss", "sw", "ws", "ww"}) {
    for (const std::size_t first : {0U, 1U}) {
      cases.push_back({askers, {first, 0}});
    }
  }
  for (const char* askers : {"sss", "ssw", "sws", "wss", "sww", "wsw", "wws", "www"}) {
    for (const std::size_t first : {0U, 1U, 2U}) {
      for (const std::size_t second : {0U, 1U}) {
        cases.push_back({askers, {first, second, 0}});
      }
    }
  }
  return cases;
}

std::string NameOf(const ::testing::TestParamInfo<Case>& info) {
  std::string name = info.param.askers + "_";
  for (const std::size_t next : info.param.order) {
    name += std::to_string(next);
  }
  return name;
}

std::vector<qt::MessageWindow*> Boxes() {
  std::vector<qt::MessageWindow*> boxes;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (auto* box = qobject_cast<qt::MessageWindow*>(window); box && box->isVisible()) {
      boxes.push_back(box);
    }
  }
  return boxes;
}

std::u16string TextOf(const qt::MessageWindow& box) {
  return qt::FromQt(box.accessibleDescription());
}

// What a user does with the boxes, a step at a time: who asks on the screen thread has it wait.
class User : public QObject {
 public:
  User(std::size_t boxes, std::vector<std::size_t> order)
      : boxes_(boxes), order_(std::move(order)) {
    since_.start();
    startTimer(kStep);
  }

  // The answers that were given, by the boxes' texts.
  const std::map<std::u16string, ui::BoxAnswer>& Given() const { return given_; }
  const std::string& Trouble() const { return trouble_; }

 protected:
  void timerEvent(QTimerEvent* /*event*/) override {
    if (done_ == order_.size()) {
      return;
    }
    if (since_.elapsed() > kPatience) {
      trouble_ = !shown_     ? "they are not all shown"
                 : !pressed_ ? "the keys do not come to the box in front"
                             : "the key closed no box";
      trouble_ += ", " + std::to_string(done_) + " being closed";
      GiveUp();
    } else if (!shown_) {
      shown_ = Boxes().size() == boxes_;
    } else if (!pressed_) {
      Close();
    } else if (Boxes().size() < boxes_ - done_) {
      Look();
    }
  }

 private:
  static constexpr int kStep = 2;              // milliseconds
  static constexpr qint64 kPatience = 20'000;  // milliseconds

  void Close() {
    std::vector<qt::MessageWindow*> boxes = Boxes();
    auto* const front = qobject_cast<qt::MessageWindow*>(QApplication::activeModalWidget());
    if (front == nullptr || !front->isActiveWindow()) {
      return;
    }
    std::erase(boxes, front);
    const std::size_t which = order_[done_];
    qt::MessageWindow* const box = which == 0 ? front : boxes.at(which - 1);
    closing_ = TextOf(*box);
    given_[closing_] = which == 0 ? ui::BoxAnswer::kYes : ui::BoxAnswer::kNo;
    pressed_ = true;
    if (which != 0) {
      box->close();
    } else if (!PressKey("y")) {
      trouble_ = "no window has the keyboard";
      GiveUp();
    }
  }

  void Look() {
    const std::vector<qt::MessageWindow*> boxes = Boxes();
    if (std::any_of(boxes.begin(), boxes.end(),
                    [this](const auto* box) { return TextOf(*box) == closing_; })) {
      trouble_ = "the key came to another box";
      GiveUp();
      return;
    }
    ++done_;
    pressed_ = false;
    since_.start();
  }

  void GiveUp() {
    done_ = order_.size();
    for (qt::MessageWindow* box : Boxes()) {
      box->close();
    }
  }

  const std::size_t boxes_;
  const std::vector<std::size_t> order_;
  QElapsedTimer since_;
  bool shown_ = false;
  bool pressed_ = false;
  std::size_t done_ = 0;
  std::u16string closing_;
  std::map<std::u16string, ui::BoxAnswer> given_;
  std::string trouble_;
};

class StackedBoxes : public GuiTest, public ::testing::WithParamInterface<Case> {
 protected:
  struct Asked {
    std::u16string text;
    std::optional<ui::BoxAnswer> answer;
  };

  void TearDown() override {
    GuiTest::TearDown();
    for (std::thread& worker : workers_) {
      worker.join();
    }
  }

  void Ask(char asker, ui::WindowHandle owner) {
    const auto number = static_cast<char16_t>(u'1' + asked_.size());
    Asked& asked = asked_.emplace_back();
    asked.text = std::u16string(u"Question ") + number;
    const auto ask = [this, owner, text = asked.text] {
      return screen_->MessageBox(owner, text, u"Kelpin", ui::kBoxQuestion);
    };
    if (asker == 's') {
      screen_->PostToScreen([&asked, ask] { asked.answer = ask(); });
    } else {
      workers_.emplace_back([this, &asked, ask] {
        const ui::BoxAnswer answer = ask();
        screen_->PostToScreen([&asked, answer] { asked.answer = answer; });
      });
    }
  }

  bool AllAnswered() {
    return ServeUntil([this] {
      return std::all_of(asked_.begin(), asked_.end(),
                         [](const Asked& asked) { return asked.answer.has_value(); });
    });
  }

  std::list<Asked> asked_;
  std::vector<std::thread> workers_;
};

TEST_P(StackedBoxes, EachIsAnsweredByItsOwnKeysAndThenTheWindowHasThem) {
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  const User user(GetParam().askers.size(), GetParam().order);
  for (const char asker : GetParam().askers) {
    Ask(asker, dialog->Handle());
  }
  ASSERT_TRUE(AllAnswered());
  ASSERT_EQ(user.Trouble(), "");
  for (const Asked& asked : asked_) {
    EXPECT_EQ(asked.answer, user.Given().at(asked.text));
  }
  ASSERT_TRUE(ServeUntil([&] { return WindowOf(*dialog)->isActiveWindow(); }));
  handler.commands.clear();
  ASSERT_TRUE(PressKey("Escape"));
  EXPECT_TRUE(ServeUntil([&] { return !handler.commands.empty(); }));
  EXPECT_EQ(handler.commands, std::vector{ui::kCommandCancel});
}

INSTANTIATE_TEST_SUITE_P(Every, StackedBoxes, ::testing::ValuesIn(Cases()), NameOf);

}  // namespace
}  // namespace kelpin::test
