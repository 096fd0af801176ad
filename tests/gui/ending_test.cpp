#include <pthread.h>

#include <QApplication>
#include <QEvent>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "device/qt/end_signals.h"
#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

class Ending : public GuiTest {};

TEST_F(Ending, ASignalClosesBoxesThatComeUpOneAfterAnotherAndThenTheDialog) {
  qt::EndSignals signals;
  signals.Listen();
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  int answered = 0;
  std::thread worker([&] {
    for (int box = 0; box < 3; ++box) {
      answered += screen_->MessageBox(dialog->Handle(), u"Delete?", u"Kelpin", ui::kBoxQuestion) ==
                          ui::BoxAnswer::kNo
                      ? 1
                      : 0;
    }
    screen_->PostToScreen([&] { answered += 10; });
  });
  ASSERT_TRUE(ServeUntil([] { return OpenBox() != nullptr; }));
  // To this thread alone: others of this program do not hold the signal back.
  ASSERT_EQ(pthread_kill(pthread_self(), SIGTERM), 0);
  EXPECT_TRUE(ServeUntil([&] { return answered == 13; }));
  EXPECT_TRUE(ServeUntil([&] { return handler.closes > 0 && handler.destroyed == 1; }));
  worker.join();
}

// Notes every box that is shown, for however short a time.
class ShownBoxes : public QObject {
 public:
  ShownBoxes() { qApp->installEventFilter(this); }
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Show && qobject_cast<qt::MessageWindow*>(watched) != nullptr) {
      ++count;
    }
    return false;
  }
  int count = 0;
};

// Asks before it closes, and closes without an answer when there is nothing left to do.
class Busy : public SampleDialog {
 public:
  explicit Busy(ui::Screen& screen) : SampleDialog(screen), screen_(screen) {}
  void OnClose(ui::Dialog& dialog) override {
    ++asked;
    const bool yes = screen_.MessageBox(dialog.Handle(), u"Stop and close?", u"Kelpin",
                                        ui::kBoxQuestion) == ui::BoxAnswer::kYes;
    if (yes || asked == kTimes) {
      SampleDialog::OnClose(dialog);
    }
  }
  static constexpr int kTimes = 3;
  int asked = 0;

 private:
  ui::Screen& screen_;
};

TEST_F(Ending, WhoIsToldToEndByASignalClosesWithoutShowingAQuestion) {
  const ShownBoxes shown;
  qt::EndSignals signals;
  signals.OnRequest([this] { screen_->StopAsking(); });
  signals.Listen();
  Busy handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  ASSERT_EQ(pthread_kill(pthread_self(), SIGTERM), 0);
  EXPECT_TRUE(ServeUntil([&] { return handler.destroyed == 1; }));
  EXPECT_EQ(handler.asked, Busy::kTimes);
  EXPECT_EQ(shown.count, 0);
}

TEST_F(Ending, TheSessionsEndIsARequestToo) {
  const ShownBoxes shown;
  qt::EndSignals signals;
  int requests = 0;
  signals.OnRequest([&] {
    ++requests;
    screen_->StopAsking();
  });
  signals.Listen();
  Busy handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  QEvent quit(QEvent::Quit);  // as a session manager's word comes
  QCoreApplication::sendEvent(qApp, &quit);
  EXPECT_EQ(requests, 1);
  EXPECT_TRUE(ServeUntil([&] { return handler.destroyed == 1; }));
  EXPECT_EQ(shown.count, 0);
}

TEST_F(Ending, TheCloseBoxShowsTheQuestion) {
  const ShownBoxes shown;
  const qt::EndSignals signals;
  Busy handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  QTimer::singleShot(0, qApp, [] {
    ASSERT_NE(OpenBox(), nullptr);
    QTest::keyClick(OpenBox(), Qt::Key_Y);
  });
  WindowOf(*dialog)->close();
  EXPECT_TRUE(ServeUntil([&] { return handler.destroyed == 1; }));
  EXPECT_EQ(handler.asked, 1);
  EXPECT_EQ(shown.count, 1);
}

TEST_F(Ending, AWorkersQuestionIsAnsweredLikewise) {
  const ShownBoxes shown;
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  screen_->StopAsking();
  std::atomic<int> answer = 0;
  std::thread worker([&] {
    answer = static_cast<int>(
        screen_->MessageBox(dialog->Handle(), u"Delete?", u"Kelpin", ui::kBoxQuestion));
  });
  EXPECT_TRUE(ServeUntil([&] { return answer != 0; }));
  worker.join();
  EXPECT_EQ(answer, static_cast<int>(ui::BoxAnswer::kNo));
  EXPECT_EQ(shown.count, 0);
}

class Unattended : public GuiTest {};

TEST_F(Unattended, BoxesAreToldAndAnsweredWithWhatChangesNothing) {
  static int argc = 1;
  static char name[] = "gui_tests";
  static char* argv[] = {name, nullptr};
  screen_.reset();
  std::vector<std::u16string> told;
  qt::QtScreen screen(argc, argv,
                      {Folder("state"), Folder("run"), ui::Size{360, 640},
                       [&](std::u16string_view text, std::u16string_view caption, ui::BoxStyle) {
                         told.push_back(std::u16string(caption) + u": " + std::u16string(text));
                       }});
  EXPECT_EQ(screen.MessageBox(0, u"Delete?", u"Kelpin", ui::kBoxQuestion), ui::BoxAnswer::kNo);
  ui::BoxAnswer fromWorker = ui::BoxAnswer::kNo;
  std::thread([&] {
    fromWorker = screen.MessageBox(0, u"Failed.", u"Error", ui::kBoxError);
  }).join();
  EXPECT_EQ(fromWorker, ui::BoxAnswer::kOk);
  EXPECT_THAT(told, ::testing::ElementsAre(u"Kelpin: Delete?", u"Error: Failed."));
}

}  // namespace
}  // namespace kelpin::test
