#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <string>
#include <thread>
#include <vector>

#include "app/card_unlock.h"
#include "res/card_dialogs.h"
#include "tests/gui/gui_support.h"
#include "tests/support/fake_card_lock.h"

namespace kelpin::test {
namespace {

// The real dialog, typed into while a worker waits for it.
class CardCode : public GuiTest {
 protected:
  void Ask(int tries) {
    FakeCardLock::Card card;
    card.tries = tries;
    lock_.PutIn(card);
    worker_ = std::thread([this] {
      const bool open = app::UnlockCard(lock_, *screen_, 0);
      screen_->PostToScreen([this, open] { answer_ = open ? 1 : 0; });
    });
  }
  void TearDown() override {
    if (worker_.joinable()) worker_.join();
    GuiTest::TearDown();
  }
  qt::DialogWindow* Wait(int resource) {
    EXPECT_TRUE(ServeUntil([resource] { return OpenWindow(resource) != nullptr; }));
    Settle();
    return OpenWindow(resource);
  }
  static QLineEdit* Field(qt::DialogWindow* window, int control) {
    return window->findChild<QLineEdit*>(QStringLiteral("c%1").arg(control));
  }
  static QLabel* Label(qt::DialogWindow* window, int control) {
    return window->findChild<QLabel*>(QStringLiteral("c%1").arg(control));
  }
  bool Answered(int answer) {
    return ServeUntil([&] { return answer_ >= 0; }) && answer_ == answer;
  }

  FakeCardLock lock_;
  std::thread worker_;
  int answer_ = -1;
};

TEST_F(CardCode, DigitsAreTypedHiddenAndSentByEnter) {
  Ask(3);
  qt::DialogWindow* window = Wait(res::kDialogCardPin);
  ASSERT_NE(window, nullptr);
  QLineEdit* pin = Field(window, res::kCardPin);
  EXPECT_TRUE(pin->hasFocus());
  QTest::keyClicks(pin, QStringLiteral("12x 34"));
  EXPECT_EQ(pin->text(), QStringLiteral("1234"));
  EXPECT_EQ(pin->displayText(), QString(4, pin->displayText().at(0)));
  EXPECT_NE(pin->displayText().at(0), QLatin1Char('1'));
  EXPECT_EQ(pin->accessibleName(), QStringLiteral("PIN"));
  QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(pin);
  EXPECT_TRUE(spoken->state().passwordEdit);
  EXPECT_FALSE(spoken->text(QAccessible::Value).contains(QLatin1Char('1')));
  QApplication::clipboard()->clear();
  pin->selectAll();
  pin->copy();
  EXPECT_TRUE(QApplication::clipboard()->text().isEmpty());
  KeepPictures();
  QTest::keyClick(pin, Qt::Key_Return);
  EXPECT_TRUE(Answered(1));
  EXPECT_EQ(lock_.Sent(), std::vector<std::string>{"1234"});
}

TEST_F(CardCode, AWrongPinIsToldWhereItIsTypedAgain) {
  Ask(3);
  qt::DialogWindow* window = Wait(res::kDialogCardPin);
  ASSERT_NE(window, nullptr);
  QTest::keyClicks(Field(window, res::kCardPin), QStringLiteral("4321"));
  QTest::keyClick(Field(window, res::kCardPin), Qt::Key_Return);
  ASSERT_TRUE(ServeUntil([] {
    qt::DialogWindow* again = OpenWindow(res::kDialogCardPin);
    return again != nullptr && Label(again, res::kCardCodeProblem)->isVisible();
  }));
  Settle();
  window = OpenWindow(res::kDialogCardPin);
  QLabel* problem = Label(window, res::kCardCodeProblem);
  EXPECT_EQ(problem->text(), QStringLiteral("Wrong PIN."));
  EXPECT_EQ(Field(window, res::kCardPin)->text(), QString());
  KeepPictures();
  QTest::keyClick(Field(window, res::kCardPin), Qt::Key_Escape);
  EXPECT_TRUE(Answered(0));
}

TEST_F(CardCode, ABlockedCardTakesItsPukAndANewPin) {
  Ask(0);
  qt::DialogWindow* window = Wait(res::kDialogCardPuk);
  ASSERT_NE(window, nullptr);
  QTest::keyClicks(Field(window, res::kCardPuk), QStringLiteral("12345678"));
  QTest::keyClick(Field(window, res::kCardPuk), Qt::Key_Tab);
  EXPECT_TRUE(Field(window, res::kNewPin)->hasFocus());
  QTest::keyClicks(Field(window, res::kNewPin), QStringLiteral("2468"));
  QTest::keyClicks(Field(window, res::kNewPinAgain), QStringLiteral("2469"));
  QTest::keyClick(Field(window, res::kNewPinAgain), Qt::Key_Return);
  Settle();
  EXPECT_TRUE(Label(window, res::kCardCodeProblem)->isVisible());
  // All of it is on a phone's screen.
  EXPECT_LE(Field(window, res::kNewPinAgain)->geometry().bottom(), window->ClientSize().height);
  KeepPictures();
  QTest::keyClicks(Field(window, res::kNewPinAgain), QStringLiteral("2468"));
  QTest::keyClick(Field(window, res::kNewPinAgain), Qt::Key_Return);
  EXPECT_TRUE(Answered(1));
  EXPECT_EQ(lock_.Now().pin, "2468");
}

TEST_F(CardCode, TheClosedWindowIsNoCode) {
  Ask(3);
  qt::DialogWindow* window = Wait(res::kDialogCardPin);
  ASSERT_NE(window, nullptr);
  QTest::keyClicks(Field(window, res::kCardPin), QStringLiteral("1234"));
  window->close();
  EXPECT_TRUE(Answered(0));
  EXPECT_TRUE(lock_.Sent().empty());
}

}  // namespace
}  // namespace kelpin::test
