#include "device/qt/button_words.h"

#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

class Words : public GuiTest {
 protected:
  Words() { qt::SetButtonWords({.yes = u"Ja", .no = u"Nein", .ok = u"Gut", .done = u"Fertig"}); }
  ~Words() override { qt::SetButtonWords({}); }

  // The answer to a question when `key` is pressed; its buttons' words in `words`.
  ui::BoxAnswer Ask(Qt::Key key, QStringList& words) {
    QTimer::singleShot(20, [key, &words] {
      qt::MessageWindow* box = OpenBox();
      ASSERT_NE(box, nullptr);
      for (const QPushButton* button : box->findChildren<QPushButton*>()) {
        words << button->text();
      }
      QTest::keyClick(box, key);
    });
    return screen_->MessageBox(0, u"Wirklich?", u"Frage", ui::kBoxQuestion);
  }
};

TEST_F(Words, OfTheUsersLanguageStandOnAQuestionAndTheirLettersAnswerIt) {
  QStringList words;
  EXPECT_EQ(Ask(Qt::Key_J, words), ui::BoxAnswer::kYes);
  EXPECT_EQ(words, (QStringList{"Ja", "Nein"}));
  EXPECT_EQ(Ask(Qt::Key_N, words), ui::BoxAnswer::kNo);
}

TEST_F(Words, ThatBeginWithOneLetterHaveNoLetterThatAnswers) {
  qt::SetButtonWords({.yes = u"Nai", .no = u"Nein"});
  QTimer::singleShot(200, [] {
    ASSERT_NE(OpenBox(), nullptr);  // N has answered nothing
    OpenBox()->reject();
  });
  QStringList words;
  EXPECT_EQ(Ask(Qt::Key_N, words), ui::BoxAnswer::kNo);
}

}  // namespace
}  // namespace kelpin::test
