#include <pthread.h>

#include <QApplication>
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
