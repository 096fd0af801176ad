#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ui/dialog.h"
#include "ui/screen.h"

// What every screen does. A test program includes this once, writes a ScreenDriver for its screen
// and instantiates the suite:
//
//   INSTANTIATE_TYPED_TEST_SUITE_P(Headless, ScreenContract, HeadlessDriver);
namespace kelpin::test {

// A hand at a screen. Made anew for each test, on the thread that is to be the screen thread.
class ScreenDriver {
 public:
  virtual ~ScreenDriver() = default;
  virtual ui::Screen& Screen() = 0;
  // Presses this button of the next message box, whichever thread opens it. Several queue up.
  virtual void AnswerNextBox(ui::BoxAnswer answer) = 0;
  // Closes the next message box with Escape or its close box.
  virtual void DismissNextBox() = 0;
  // The texts of the boxes that were shown, in order.
  virtual std::vector<std::u16string> BoxTexts() = 0;
  // Runs `script` on the screen thread when a modal dialog of this template is open and shown. It
  // ends the dialog, at the latest by what it posts.
  virtual void WhenDialogOpens(int resource, std::function<void(ui::Dialog&)> script) = 0;
  // A key typed into the window of a shown dialog.
  virtual void Press(ui::Dialog& dialog, const ui::KeyPress& press) = 0;
  // Serves the screen until `done`; false when that takes half a minute.
  virtual bool RunUntil(const std::function<bool()>& done) = 0;
};

inline constexpr int kContractEdit = 11;
inline constexpr int kContractCheck = 12;
inline constexpr std::array<ui::ControlTemplate, 3> kContractControls = {
    {{.id = 10, .text = u"Name:"},
     {.id = kContractEdit, .kind = ui::ControlKind::kEdit, .labelledBy = 10},
     {.id = kContractCheck, .kind = ui::ControlKind::kCheckBox, .text = u"Apply to all"}}};
inline constexpr int kOuter = 901;
inline constexpr int kInner = 902;
inline constexpr ui::DialogTemplate kOuterTemplate = {.id = kOuter, .controls = kContractControls};
inline constexpr ui::DialogTemplate kInnerTemplate = {.id = kInner, .controls = kContractControls};

struct ContractHandler : ui::DialogHandler {
  std::vector<std::string> calls;
  std::vector<std::thread::id> threads;
  std::function<void(ui::Dialog&, int)> onCommand;

  void OnInit(ui::Dialog& dialog) override {
    Add("init");
    dialog.SetTitle(u"Kelpin");
  }
  void OnSize(ui::Dialog& /*dialog*/, ui::Size client) override {
    Add(client.width > 0 && client.height > 0 ? "size" : "empty size");
  }
  void OnActivate(ui::Dialog& /*dialog*/, bool /*active*/) override {
    threads.push_back(std::this_thread::get_id());
  }
  void OnCommand(ui::Dialog& dialog, int command) override {
    Add("command " + std::to_string(command));
    if (onCommand) {
      onCommand(dialog, command);
    }
  }
  void OnMessage(ui::Dialog& /*dialog*/, std::uint32_t message, std::uint32_t /*first*/,
                 std::uint32_t /*second*/) override {
    Add("message " + std::to_string(message));
  }
  void OnDestroy(ui::Dialog& /*dialog*/) override { Add("destroy"); }

 private:
  void Add(std::string call) {
    calls.push_back(std::move(call));
    threads.push_back(std::this_thread::get_id());
  }
};

template <typename Driver>
class ScreenContract : public ::testing::Test {
 protected:
  ui::Screen& Screen() { return driver_.Screen(); }

  // Runs `work` on another thread while the screen serves.
  void OnWorker(const std::function<void()>& work) {
    std::atomic<bool> done = false;
    std::thread worker([&] {
      work();
      done = true;
    });
    EXPECT_TRUE(driver_.RunUntil([&] { return done.load(); }));
    worker.join();
  }

  Driver driver_;
};

TYPED_TEST_SUITE_P(ScreenContract);

TYPED_TEST_P(ScreenContract, AModalDialogReturnsWhatItWasEndedWith) {
  ContractHandler handler;
  this->driver_.WhenDialogOpens(kOuter, [](ui::Dialog& dialog) { dialog.End(42); });
  EXPECT_EQ(this->Screen().DialogBox(kOuterTemplate, 0, handler), 42);
}

TYPED_TEST_P(ScreenContract, ADialogIsInitialisedThenSizedAndDestroyedOnceAtTheEnd) {
  ContractHandler handler;
  this->driver_.WhenDialogOpens(kOuter, [](ui::Dialog& dialog) { dialog.End(16); });
  this->Screen().DialogBox(kOuterTemplate, 0, handler);
  ASSERT_GE(handler.calls.size(), 3u);
  EXPECT_EQ(handler.calls[0], "init");
  EXPECT_EQ(handler.calls[1], "size");
  EXPECT_EQ(handler.calls.back(), "destroy");
  EXPECT_EQ(std::count(handler.calls.begin(), handler.calls.end(), "destroy"), 1);
}

TYPED_TEST_P(ScreenContract, ADialogThatEndsWhileItInitialisesReturnsAtOnce) {
  struct Ending : ui::DialogHandler {
    void OnInit(ui::Dialog& dialog) override { dialog.End(5); }
  } handler;
  EXPECT_EQ(this->Screen().DialogBox(kOuterTemplate, 0, handler), 5);
}

TYPED_TEST_P(ScreenContract, ADialogInADialogReturnsFirst) {
  ContractHandler outer;
  ContractHandler inner;
  std::vector<int> results;
  this->driver_.WhenDialogOpens(kInner, [](ui::Dialog& dialog) { dialog.End(2); });
  this->driver_.WhenDialogOpens(kOuter, [&](ui::Dialog& dialog) {
    results.push_back(this->Screen().DialogBox(kInnerTemplate, dialog.Handle(), inner));
    EXPECT_FALSE(dialog.Ended());
    dialog.End(1);
  });
  results.push_back(this->Screen().DialogBox(kOuterTemplate, 0, outer));
  EXPECT_EQ(results, (std::vector<int>{2, 1}));
}

TYPED_TEST_P(ScreenContract, AnotherThreadMayEndAModalDialog) {
  ContractHandler handler;
  std::thread worker;
  this->driver_.WhenDialogOpens(kOuter, [&](ui::Dialog& dialog) {
    worker = std::thread([&dialog] { dialog.End(9); });
    EXPECT_TRUE(this->driver_.RunUntil([&] { return dialog.Ended(); }));
  });
  EXPECT_EQ(this->Screen().DialogBox(kOuterTemplate, 0, handler), 9);
  worker.join();
}

TYPED_TEST_P(ScreenContract, WhatADialogPostsToItselfComesInOrder) {
  ContractHandler handler;
  this->driver_.WhenDialogOpens(kOuter, [](ui::Dialog& dialog) {
    dialog.PostMessage(0x464);
    dialog.PostCommand(319);
    dialog.PostMessage(0x465);
    dialog.PostClose();
  });
  EXPECT_EQ(this->Screen().DialogBox(kOuterTemplate, 0, handler), ui::kDialogDone);
  EXPECT_THAT(handler.calls, ::testing::ElementsAre("init", "size", "message 1124", "command 319",
                                                    "message 1125", "destroy"));
}

TYPED_TEST_P(ScreenContract, EnterIsOkAndEscapeIsCancel) {
  ContractHandler handler;
  handler.onCommand = [](ui::Dialog& dialog, int command) {
    if (command == ui::kCommandCancel) {
      dialog.End(16);
    }
  };
  this->driver_.WhenDialogOpens(kOuter, [&](ui::Dialog& dialog) {
    this->driver_.Press(dialog, {ui::Key::kEnter, ui::kNoModifier, 0});
    this->driver_.Press(dialog, {ui::Key::kEscape, ui::kNoModifier, 0});
    EXPECT_TRUE(this->driver_.RunUntil([&] { return dialog.Ended(); }));
  });
  EXPECT_EQ(this->Screen().DialogBox(kOuterTemplate, 0, handler), 16);
  EXPECT_THAT(handler.calls, ::testing::IsSupersetOf({"command 1", "command 2"}));
}

TYPED_TEST_P(ScreenContract, AModelessDialogIsReadyBeforeItIsShownAndGoesWhenItEnds) {
  ContractHandler handler;
  const std::shared_ptr<ui::Dialog> dialog =
      this->Screen().CreateDialog(kOuterTemplate, 0, handler);
  ASSERT_NE(dialog, nullptr);
  EXPECT_THAT(handler.calls, ::testing::ElementsAre("init", "size"));
  EXPECT_NE(dialog->Handle(), 0u);
  EXPECT_EQ(dialog->Handle() & 1u, 0u) << "the lowest bit has a meaning of its own";
  this->Screen().ShowDialog(*dialog);
  this->OnWorker([&] { dialog->End(16); });
  EXPECT_TRUE(this->driver_.RunUntil([&] { return handler.calls.back() == "destroy"; }));
}

TYPED_TEST_P(ScreenContract, AQuestionAnswersYesOrNo) {
  this->driver_.AnswerNextBox(ui::BoxAnswer::kYes);
  this->driver_.AnswerNextBox(ui::BoxAnswer::kNo);
  EXPECT_EQ(this->Screen().MessageBox(0, u"Continue?", u"Warning", ui::kBoxQuestion),
            ui::BoxAnswer::kYes);
  EXPECT_EQ(this->Screen().MessageBox(0, u"Really?", u"Warning", ui::kBoxQuestion),
            ui::BoxAnswer::kNo);
  EXPECT_THAT(this->driver_.BoxTexts(),
              ::testing::ElementsAre(std::u16string(u"Continue?"), std::u16string(u"Really?")));
}

TYPED_TEST_P(ScreenContract, ABoxWithOkAnswersOk) {
  this->driver_.AnswerNextBox(ui::BoxAnswer::kOk);
  EXPECT_EQ(this->Screen().MessageBox(0, u"SIM is busy.", u"Error", ui::kBoxError),
            ui::BoxAnswer::kOk);
}

TYPED_TEST_P(ScreenContract, EscapeIsNoOfAQuestionAndOkOfABoxWithOk) {
  this->driver_.DismissNextBox();
  this->driver_.DismissNextBox();
  EXPECT_EQ(this->Screen().MessageBox(0, u"Continue?", u"Warning", ui::kBoxQuestion),
            ui::BoxAnswer::kNo);
  EXPECT_EQ(this->Screen().MessageBox(0, u"Done.", u"Info", ui::kBoxNotice), ui::BoxAnswer::kOk);
}

TYPED_TEST_P(ScreenContract, AWorkersBoxIsAnsweredOnTheScreenThreadWhileTheWorkerWaits) {
  this->driver_.AnswerNextBox(ui::BoxAnswer::kYes);
  ui::BoxAnswer answer = ui::BoxAnswer::kCancel;
  this->OnWorker(
      [&] { answer = this->Screen().MessageBox(0, u"Continue?", u"W", ui::kBoxQuestion); });
  EXPECT_EQ(answer, ui::BoxAnswer::kYes);
  EXPECT_THAT(this->driver_.BoxTexts(), ::testing::ElementsAre(std::u16string(u"Continue?")));
}

TYPED_TEST_P(ScreenContract, AWorkersDialogRunsItsHandlerOnTheScreenThread) {
  ContractHandler handler;
  int result = 0;
  this->driver_.WhenDialogOpens(kOuter, [](ui::Dialog& dialog) {
    dialog.PostMessage(7);
    dialog.PostClose();
  });
  this->OnWorker([&] { result = this->Screen().DialogBox(kOuterTemplate, 0, handler); });
  EXPECT_EQ(result, ui::kDialogDone);
  EXPECT_THAT(handler.threads, ::testing::Each(std::this_thread::get_id()));
  EXPECT_EQ(handler.calls.back(), "destroy");
}

TYPED_TEST_P(ScreenContract, TheThreadThatMadeItIsTheScreenThread) {
  EXPECT_TRUE(this->Screen().IsScreenThread());
  bool onWorker = true;
  this->OnWorker([&] { onWorker = this->Screen().IsScreenThread(); });
  EXPECT_FALSE(onWorker);
}

TYPED_TEST_P(ScreenContract, PostedWorkRunsLaterOnTheScreenThreadInOrder) {
  std::vector<int> order;
  std::vector<std::thread::id> threads;
  const auto post = [&](int number) {
    this->Screen().PostToScreen([&, number] {
      order.push_back(number);
      threads.push_back(std::this_thread::get_id());
    });
  };
  post(1);
  EXPECT_TRUE(order.empty());
  std::thread worker([&] {
    post(2);
    post(3);
  });
  worker.join();
  EXPECT_TRUE(this->driver_.RunUntil([&] { return order.size() == 3; }));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
  EXPECT_THAT(threads, ::testing::Each(std::this_thread::get_id()));
}

TYPED_TEST_P(ScreenContract, TheLoopReturnsTheQuitCodeAfterWhatWasPostedBefore) {
  bool ran = false;
  this->Screen().PostToScreen([&] { ran = true; });
  this->Screen().PostQuit(7);
  EXPECT_EQ(this->Screen().RunMessageLoop(), 7);
  EXPECT_TRUE(ran);
}

TYPED_TEST_P(ScreenContract, AWorkerMayEndTheLoop) {
  std::thread worker([&] { this->Screen().PostQuit(3); });
  EXPECT_EQ(this->Screen().RunMessageLoop(), 3);
  worker.join();
}

TYPED_TEST_P(ScreenContract, WhenTheLoopIsOverBoxesAndDialogsOfWorkersReturnAtOnce) {
  this->Screen().PostQuit(0);
  this->Screen().RunMessageLoop();
  ContractHandler handler;
  ui::BoxAnswer question = ui::BoxAnswer::kCancel;
  ui::BoxAnswer notice = ui::BoxAnswer::kCancel;
  int result = 0;
  std::thread worker([&] {  // nobody serves the screen any more
    question = this->Screen().MessageBox(0, u"Continue?", u"W", ui::kBoxQuestion);
    notice = this->Screen().MessageBox(0, u"Done.", u"I", ui::kBoxNotice);
    result = this->Screen().DialogBox(kOuterTemplate, 0, handler);
  });
  worker.join();
  EXPECT_EQ(question, ui::BoxAnswer::kNo);
  EXPECT_EQ(notice, ui::BoxAnswer::kOk);
  EXPECT_EQ(result, ui::kDialogDone);
  EXPECT_THAT(handler.calls, ::testing::IsEmpty());
  EXPECT_THAT(this->driver_.BoxTexts(), ::testing::IsEmpty());
}

TYPED_TEST_P(ScreenContract, AWorkerThatWaitsWhenTheLoopEndsIsLetGo) {
  std::atomic<bool> asked = false;
  std::thread worker;
  this->Screen().PostToScreen([&] {
    // The quit is met before the box can be shown: both are posted while this runs.
    this->Screen().PostQuit(0);
    worker = std::thread([&] {
      asked = true;
      EXPECT_EQ(this->Screen().MessageBox(0, u"Late?", u"W", ui::kBoxQuestion), ui::BoxAnswer::kNo);
    });
    while (!asked) {
      std::this_thread::yield();
    }
  });
  EXPECT_EQ(this->Screen().RunMessageLoop(), 0);
  worker.join();
}

TYPED_TEST_P(ScreenContract, AnAnchorWindowIsFoundByClassAndTitle) {
  ui::Screen& screen = this->Screen();
  ASSERT_TRUE(screen.RegisterWindowClass({.name = u"CONTRACT_CLASS"}));
  EXPECT_EQ(screen.FindWindow(u"CONTRACT_CLASS", u""), 0u);
  const ui::WindowHandle made =
      screen.CreateAnchorWindow(u"CONTRACT_CLASS", u"Contract", ui::AnchorStyle::kVisible);
  ASSERT_NE(made, 0u);
  EXPECT_EQ(made & 1u, 0u) << "the lowest bit has a meaning of its own";
  EXPECT_EQ(screen.FindWindow(u"CONTRACT_CLASS", u"Contract"), made);
  EXPECT_EQ(screen.FindWindow(u"CONTRACT_CLASS", u""), made);
  EXPECT_EQ(screen.FindWindow(u"CONTRACT_CLASS", u"Another"), 0u);
  EXPECT_EQ(screen.FindWindow(u"ANOTHER_CLASS", u"Contract"), 0u);
}

TYPED_TEST_P(ScreenContract, AnAnchorWindowOfAnUnknownClassCannotBeMade) {
  EXPECT_EQ(
      this->Screen().CreateAnchorWindow(u"NO_SUCH_CLASS", u"Title", ui::AnchorStyle::kDisabled),
      0u);
}

TYPED_TEST_P(ScreenContract, RaisingAStaleWindowChangesNothing) {
  this->Screen().SetForegroundWindow(0x7FFFFFF1);
  this->Screen().SetForegroundWindow(0);
  EXPECT_EQ(this->Screen().FindWindow(u"CONTRACT_CLASS", u""), 0u);
}

TYPED_TEST_P(ScreenContract, TheClipboardGivesBackItsText) {
  this->Screen().SetClipboardText(u"+4420 \u00E9\u4E2D");
  EXPECT_TRUE(this->Screen().HasClipboardText());
  EXPECT_EQ(this->Screen().ClipboardText(), u"+4420 \u00E9\u4E2D");
}

TYPED_TEST_P(ScreenContract, MetricsAndTheWaitCursorServeAnyThread) {
  ui::Metrics metrics;
  metrics.fieldHeight = 0;
  this->OnWorker([&] {
    metrics = this->Screen().GetMetrics();
    this->Screen().SetWaitCursor(true);
    this->Screen().SetWaitCursor(false);
  });
  EXPECT_GT(metrics.screen.width, 0);
  EXPECT_GT(metrics.fieldHeight, 0);
  EXPECT_GT(metrics.textLineHeight, 0);
}

REGISTER_TYPED_TEST_SUITE_P(
    ScreenContract, AModalDialogReturnsWhatItWasEndedWith,
    ADialogIsInitialisedThenSizedAndDestroyedOnceAtTheEnd,
    ADialogThatEndsWhileItInitialisesReturnsAtOnce, ADialogInADialogReturnsFirst,
    AnotherThreadMayEndAModalDialog, WhatADialogPostsToItselfComesInOrder,
    EnterIsOkAndEscapeIsCancel, AModelessDialogIsReadyBeforeItIsShownAndGoesWhenItEnds,
    AQuestionAnswersYesOrNo, ABoxWithOkAnswersOk, EscapeIsNoOfAQuestionAndOkOfABoxWithOk,
    AWorkersBoxIsAnsweredOnTheScreenThreadWhileTheWorkerWaits,
    AWorkersDialogRunsItsHandlerOnTheScreenThread, TheThreadThatMadeItIsTheScreenThread,
    PostedWorkRunsLaterOnTheScreenThreadInOrder, TheLoopReturnsTheQuitCodeAfterWhatWasPostedBefore,
    AWorkerMayEndTheLoop, WhenTheLoopIsOverBoxesAndDialogsOfWorkersReturnAtOnce,
    AWorkerThatWaitsWhenTheLoopEndsIsLetGo, AnAnchorWindowIsFoundByClassAndTitle,
    AnAnchorWindowOfAnUnknownClassCannotBeMade, RaisingAStaleWindowChangesNothing,
    TheClipboardGivesBackItsText, MetricsAndTheWaitCursorServeAnyThread);

}  // namespace kelpin::test
