#include "tests/support/headless_screen.h"

#include <gtest/gtest-spi.h>

#include <atomic>
#include <thread>

#include "tests/ui/dialog_fixture.h"

namespace kelpin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(DialogTest, AScriptRunsAfterInitialisingSizingAndPostedWork) {
  handler_.onInit = [](ui::Dialog& dialog) { dialog.PostMessage(0x46B); };
  screen_.ScriptDialog(kResource, [&](ui::Dialog& dialog) {
    EXPECT_THAT(handler_.calls, ElementsAre("init", "size 360x560", "active", "message 1131 0 0"));
    dialog.Close();
  });
  EXPECT_EQ(screen_.DialogBox(kTemplate, 0, handler_), ui::kDialogDone);
}

TEST_F(DialogTest, ScriptsOfATemplateQueueUpBeforeTheStandingOne) {
  std::vector<int> ran;
  const auto script = [&](int number) {
    return [&ran, number](ui::Dialog& dialog) {
      ran.push_back(number);
      dialog.End(number);
    };
  };
  screen_.ScriptEveryDialog(kResource, script(3));
  screen_.ScriptDialog(kResource, script(1));
  screen_.ScriptDialog(kResource, script(2));
  for (int i = 0; i < 4; ++i) {
    screen_.DialogBox(kTemplate, 0, handler_);
  }
  EXPECT_THAT(ran, ElementsAre(1, 2, 3, 3));
}

TEST_F(DialogTest, ADialogThatItsScriptLeavesOpenFailsTheTestAndIsClosed) {
  EXPECT_NONFATAL_FAILURE(
      {
        HeadlessScreen screen;
        HandlerRecorder handler;
        screen.ScriptDialog(kResource, [](ui::Dialog&) {});
        EXPECT_EQ(screen.DialogBox(kTemplate, 0, handler), ui::kDialogDone);
        EXPECT_EQ(handler.calls.back(), "destroy");
      },
      "left open");
}

TEST_F(DialogTest, ADialogThatNoScriptWaitsForFailsTheTest) {
  EXPECT_NONFATAL_FAILURE(screen_.DialogBox(kTemplate, 0, handler_), "no script waits");
}

TEST_F(DialogTest, AnAnswerThatTheBoxDoesNotHaveFailsTheTest) {
  screen_.ScriptBox(ui::BoxAnswer::kYes);
  EXPECT_NONFATAL_FAILURE(screen_.MessageBox(0, u"Done.", u"Info", ui::kBoxNotice),
                          "no such button");
}

TEST_F(DialogTest, ADialogMayBeServedUntilAWorkerEndsIt) {
  std::thread worker;
  handler_.onInit = [&](ui::Dialog& dialog) {
    worker = std::thread([kept = dialog.shared_from_this()] {
      kept->StepProgress(kBar);
      kept->PostClose();
    });
  };
  screen_.ScriptWaitForEnd(kResource);
  EXPECT_EQ(screen_.DialogBox(kTemplate, 0, handler_), ui::kDialogDone);
  worker.join();
}

TEST_F(DialogTest, AModalDialogIsInFrontAndGivesTheActivationBack) {
  const auto behind = Open();
  HandlerRecorder inFront;
  screen_.ScriptDialog(kResource, [&](ui::Dialog& dialog) {
    EXPECT_EQ(screen_.Front().get(), &dialog);
    EXPECT_EQ(screen_.Find(kResource).get(), &dialog);
    EXPECT_FALSE(behind->Active());
    dialog.Close();
  });
  screen_.DialogBox(kTemplate, behind->Handle(), inFront);
  EXPECT_EQ(screen_.Front(), behind);
  EXPECT_THAT(handler_.calls, ElementsAre("inactive", "active"));
}

TEST_F(DialogTest, BoxesKeepWhatTheySaidAndTakeTheDefaultAnswers) {
  EXPECT_EQ(screen_.MessageBox(0x20, u"Continue?", u"Warning", ui::kBoxQuestion),
            ui::BoxAnswer::kNo);
  screen_.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  EXPECT_EQ(screen_.MessageBox(0x20, u"Continue?", u"Warning", ui::kBoxQuestion),
            ui::BoxAnswer::kYes);
  ASSERT_EQ(screen_.Boxes().size(), 2u);
  EXPECT_EQ(screen_.Boxes()[0].owner, 0x20u);
  EXPECT_EQ(screen_.Boxes()[0].caption, u"Warning");
  EXPECT_EQ(screen_.Boxes()[0].style, ui::kBoxQuestion);
}

TEST_F(DialogTest, ABoxMayBeLookedAtWhileItIsShown) {
  std::u16string seen;
  screen_.OnBox([&](const ShownBox& box) { seen = box.text; });
  screen_.MessageBox(0, u"SIM is busy.", u"Error", ui::kBoxError);
  EXPECT_EQ(seen, u"SIM is busy.");
}

TEST_F(DialogTest, WindowsOfOtherCopiesAreFoundAndRaisingIsRecorded) {
  screen_.AddForeignWindow(u"CLASS", u"Kelpin", 0x4242);
  EXPECT_EQ(screen_.FindWindow(u"CLASS", u"Kelpin"), 0x4242u);
  EXPECT_EQ(screen_.FindWindow(u"CLASS", u"Other"), 0u);
  screen_.SetForegroundWindow(0x4243);
  EXPECT_THAT(screen_.Raised(), ElementsAre(0x4243u));
}

TEST_F(DialogTest, PlannedFailuresReachTheCaller) {
  screen_.Failures().FailCallOf("RegisterWindowClass", 1);
  EXPECT_FALSE(screen_.RegisterWindowClass({.name = u"CLASS"}));
  EXPECT_TRUE(screen_.RegisterWindowClass({.name = u"CLASS"}));
  screen_.Failures().FailCallOf("CreateAnchorWindow", 1);
  EXPECT_EQ(screen_.CreateAnchorWindow(u"CLASS", u"", ui::AnchorStyle::kVisible), 0u);
  screen_.Failures().FailCallOf("CreateDialog", 1);
  EXPECT_EQ(screen_.CreateDialog(kTemplate, 0, handler_), nullptr);
  EXPECT_THAT(screen_.Anchors(), IsEmpty());
}

TEST_F(DialogTest, TheJournalHasTheCallsInOrder) {
  screen_.RegisterWindowClass({.name = u"CLASS"});
  screen_.SetWaitCursor(true);
  screen_.MessageBox(0, u"Done.", u"Info", ui::kBoxNotice);
  screen_.SetWaitCursor(false);
  EXPECT_THAT(screen_.Calls().Entries(),
              ElementsAre("RegisterWindowClass(CLASS)", "SetWaitCursor(on)",
                          "MessageBox(0x0, Done., Info)", "SetWaitCursor(off)"));
  EXPECT_FALSE(screen_.WaitCursor());
  EXPECT_THAT(screen_.WaitCursorLog(), ElementsAre(true, false));
}

TEST_F(DialogTest, AQuitMetInsideAModalDialogEndsItAndTheLoop) {
  screen_.ScriptDialog(kResource, [&](ui::Dialog&) { screen_.PostQuit(4); });
  int result = 0;
  screen_.PostToScreen([&] { result = screen_.DialogBox(kTemplate, 0, handler_); });
  EXPECT_EQ(screen_.RunMessageLoop(), 4);
  EXPECT_EQ(result, ui::kDialogDone);
  EXPECT_EQ(handler_.calls.back(), "destroy");
}

TEST_F(DialogTest, RunUntilSeesWhatAThreadDoesWithoutPosting) {
  std::atomic<bool> done = false;
  std::thread worker([&] { done = true; });
  EXPECT_TRUE(screen_.RunUntil([&] { return done.load(); }));
  EXPECT_FALSE(screen_.RunUntil([] { return false; }, 0));
  worker.join();
}

}  // namespace
}  // namespace kelpin::test
