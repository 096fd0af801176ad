#include <atomic>
#include <thread>

#include "tests/ui/dialog_fixture.h"

// State is changed from any thread, handlers run on the screen thread alone.
namespace kelpin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ui::NotifyCode;

constexpr int kMany = 100000;

struct ThreadChecker : HandlerRecorder {
  std::thread::id screenThread = std::this_thread::get_id();
  std::atomic<int> elsewhere = 0;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override {
    elsewhere += std::this_thread::get_id() == screenThread ? 0 : 1;
    HandlerRecorder::OnNotify(dialog, notification);
  }
};

TEST_F(DialogTest, AWorkersChangesAreToldOnTheScreenThreadInOrder) {
  ThreadChecker checker;
  const auto dialog = screen_.CreateDialog(kTemplate, 0, checker);
  checker.notifications.clear();
  std::thread worker([&] {
    dialog->SetText(kName, u"Ana");
    dialog->List(kList)->InsertItem(0, u"row", nullptr);
    dialog->List(kList)->SetItemState(0, ui::kItemSelected, ui::kItemSelected);
  });
  worker.join();
  EXPECT_EQ(dialog->Text(kName), u"Ana") << "the state is there at once";
  EXPECT_THAT(checker.notifications, IsEmpty());
  screen_.RunPending();
  ASSERT_EQ(checker.notifications.size(), 3u);
  EXPECT_EQ(checker.notifications[0].code, NotifyCode::kEditUpdate);
  EXPECT_EQ(checker.notifications[1].code, NotifyCode::kItemInserted);
  EXPECT_EQ(checker.notifications[2].code, NotifyCode::kItemChanged);
  EXPECT_EQ(checker.elsewhere, 0);
}

TEST_F(DialogTest, WhatAWorkerDoesWhileNotifyingIsOffIsNotToldLaterEither) {
  const auto dialog = Open();
  ui::ListView* list = dialog->List(kList);
  std::thread worker([&] {
    list->SetNotifying(false);
    list->InsertItem(0, u"silent", nullptr);
    list->SetNotifying(true);
    list->InsertItem(0, u"told", nullptr);
    list->SetNotifying(false);
  });
  worker.join();
  screen_.RunPending();
  EXPECT_EQ(handler_.notifications.size(), 1u);
}

TEST_F(DialogTest, AWorkerMayEndTheDialog) {
  const auto dialog = Open();
  std::thread worker([&] { dialog->End(7); });
  worker.join();
  EXPECT_TRUE(dialog->Ended());
  EXPECT_THAT(handler_.calls, IsEmpty());
  screen_.RunPending();
  EXPECT_EQ(handler_.calls.back(), "destroy");
  EXPECT_EQ(dialog->Result(), 7);
}

TEST_F(DialogTest, AWorkersNotificationsAreDroppedOnceTheDialogHasEnded) {
  const auto dialog = Open();
  std::thread worker([&] {
    dialog->List(kList)->InsertItem(0, u"row", nullptr);
    dialog->PostMessage(0x464);
  });
  worker.join();
  dialog->End(16);
  screen_.RunPending();
  EXPECT_THAT(handler_.notifications, IsEmpty());
  EXPECT_THAT(handler_.calls, ElementsAre("inactive", "destroy"));
}

TEST_F(DialogTest, WorkersMayGoOnWhileTheDialogIsDestroyed) {
  auto dialog = Open();
  std::atomic<bool> started = false;
  std::atomic<bool> stop = false;
  std::thread worker([&, kept = dialog] {
    while (!stop) {
      kept->List(kList)->InsertItem(0, u"row", nullptr);
      kept->SetText(kName, u"text");
      kept->PostCommand(1);
      kept->List(kList)->DeleteItem(0);
      started = true;
    }
  });
  EXPECT_TRUE(screen_.RunUntil([&] { return started.load(); }));
  dialog->End(16);
  EXPECT_TRUE(screen_.RunUntil([&] { return screen_.OpenDialogs() == 0; }));
  handler_.calls.clear();
  handler_.notifications.clear();
  dialog.reset();
  stop = true;
  worker.join();
  screen_.RunPending();
  EXPECT_THAT(handler_.calls, IsEmpty());
  EXPECT_THAT(handler_.notifications, IsEmpty());
}

TEST(ListViewThreads, RowsComeAndGoFromSeveralThreadsWhileTheyAreReadAndSorted) {
  constexpr int kRows = 400;
  ui::ListView list;
  std::atomic<int> told = 0;
  ui::ListView::Sink sink;
  sink.notify = [&](const ui::Notification&) { ++told; };
  list.SetSink(sink);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 2; ++thread) {
    threads.emplace_back([&list, thread] {
      for (int i = 0; i < kRows; ++i) {
        list.InsertItem(i % 3 == 0 ? 0 : i / 2, u"row", std::make_unique<Number>(thread + 2 * i));
        list.SetItemState(i / 3, ui::kItemSelected, ui::kItemSelected);
      }
    });
  }
  threads.emplace_back([&list] {
    for (int i = 0; i < 40; ++i) {
      list.Sort(CompareNumbers);
    }
  });
  threads.emplace_back([&list] {
    for (int i = 0; i < kRows; ++i) {
      for (int row = list.NextItem(-1, ui::kItemSelected); row >= 0;
           row = list.NextItem(row, ui::kItemSelected)) {
        list.ItemText(row, 0);
      }
    }
  });
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(list.ItemCount(), 2 * kRows);
  EXPECT_GE(told.load(), 2 * kRows);
  list.Sort(CompareNumbers);
  std::vector<int> expected(2 * kRows);
  for (int i = 0; i < 2 * kRows; ++i) {
    expected[static_cast<std::size_t>(i)] = i;
  }
  EXPECT_EQ(Order(list), expected);
}

// What the main list does for every row that comes: clear the selection, select the new row.
TEST(ListViewScale, SelectingEachNewRowTellsAFewChangesARow) {
  ui::ListView list;
  std::int64_t told = 0;
  ui::ListView::Sink sink;
  sink.notify = [&](const ui::Notification& one) {
    ++told;
    if (one.code == NotifyCode::kItemInserted) {
      list.SetItemState(-1, 0, ui::kItemSelected);
      constexpr std::uint32_t kBoth = ui::kItemSelected | ui::kItemFocused;
      list.SetItemState(one.subItem, kBoth, kBoth);
    }
  };
  list.SetSink(sink);
  for (int i = 0; i < kMany; ++i) {
    list.InsertItem(0, u"row", nullptr);
  }
  EXPECT_LE(told, 4 * kMany);
  EXPECT_EQ(list.SelectedCount(), 1);
  EXPECT_EQ(list.FocusedItem(), 0);
}

TEST(ListViewScale, SortingComparesNoMoreThanAMergeDoes) {
  ui::ListView list;
  for (int i = 0; i < kMany; ++i) {
    list.InsertItem(0, u"", std::make_unique<Number>((i * 7919) % kMany));
  }
  std::int64_t compared = 0;
  list.Sort([&](const ui::RowData* left, const ui::RowData* right) {
    ++compared;
    return CompareNumbers(left, right);
  });
  EXPECT_LE(compared, std::int64_t{kMany} * 17);  // 2^17 > 100,000
  for (int i = 0; i + 1 < kMany; ++i) {
    ASSERT_LE(CompareNumbers(list.ItemData(i).get(), list.ItemData(i + 1).get()), 0);
  }
}

TEST(ListViewScale, TakingTheFirstSelectedRowUntilNoneIsLeftTellsOneChangeARow) {
  ui::ListView list;
  Fill(list, kMany);
  ListRecorder told;
  told.Attach(list);
  list.SetItemState(-1, ui::kItemSelected, ui::kItemSelected);
  ASSERT_EQ(told.notifications.size(), static_cast<std::size_t>(kMany));
  told.notifications.clear();
  int taken = 0;
  for (int row = list.NextItem(-1, ui::kItemSelected); row >= 0;
       row = list.NextItem(-1, ui::kItemSelected)) {
    list.SetItemState(row, 0, ui::kItemSelected);
    ++taken;
  }
  EXPECT_EQ(taken, kMany);
  EXPECT_EQ(told.notifications.size(), static_cast<std::size_t>(kMany));
}

}  // namespace
}  // namespace kelpin::test
