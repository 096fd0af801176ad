#include "device/desktop/run_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/device/scratch_folder.h"

namespace kelpin::device::desktop {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

std::ptrdiff_t FilesIn(const fs::path& folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

TEST(StartTurn, OneCopyHasItUntilItGivesItBack) {
  const test::ScratchFolder folder;
  StartTurn first;
  StartTurn second;
  EXPECT_TRUE(first.Wait(folder.Path(), 0));
  EXPECT_FALSE(second.Wait(folder.Path(), 30));
  first.Release();
  EXPECT_TRUE(second.Wait(folder.Path(), 0));
}

TEST(StartTurn, WhoWaitsGetsItWhenItIsGivenBack) {
  const test::ScratchFolder folder;
  auto first = std::make_unique<StartTurn>();
  ASSERT_TRUE(first->Wait(folder.Path(), 0));
  bool got = false;
  std::thread waiter([&] {
    StartTurn second;
    got = second.Wait(folder.Path(), 60'000);
  });
  first.reset();
  waiter.join();
  EXPECT_TRUE(got);
}

TEST(StartTurn, AKilledCopyDoesNotKeepIt) {
  const test::ScratchFolder folder;
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const ::pid_t child = ::fork();
  if (child == 0) {
    StartTurn turn;
    const char had = turn.Wait(folder.Path(), 0) ? 'y' : 'n';
    if (::write(ready[1], &had, 1) == 1) ::pause();
    ::_exit(0);
  }
  ASSERT_GT(child, 0);
  char had = 0;
  EXPECT_EQ(::read(ready[0], &had, 1), 1);
  EXPECT_EQ(had, 'y');
  StartTurn turn;
  EXPECT_FALSE(turn.Wait(folder.Path(), 0));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_TRUE(turn.Wait(folder.Path(), 0));
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST(StartTurn, NobodyHasItInAFolderThatIsNotThere) {
  const test::ScratchFolder folder;
  StartTurn turn;
  EXPECT_FALSE(turn.Wait(folder / "missing", 1000));
}

TEST(ScratchFolder, IsGoneWithItsRun) {
  const test::ScratchFolder parent;
  std::string why;
  {
    ScratchFolder scratch;
    ASSERT_TRUE(scratch.Make(parent.Path(), why)) << why;
    test::WriteText(scratch.Path() / "card.json", "x");
    EXPECT_EQ(scratch.Path().parent_path(), parent.Path());
  }
  EXPECT_EQ(FilesIn(parent.Path()), 0);
}

TEST(ScratchFolder, WhatAKilledRunLeftIsTakenAwayAndNothingElse) {
  const test::ScratchFolder parent;
  fs::create_directory(parent / "demo-killed");
  test::WriteText(parent / "demo-killed/card.json", "x");
  fs::create_directory(parent / "other");
  std::string why;
  ScratchFolder first;
  ASSERT_TRUE(first.Make(parent.Path(), why)) << why;
  ScratchFolder second;
  ASSERT_TRUE(second.Make(parent.Path(), why)) << why;
  EXPECT_FALSE(fs::exists(parent / "demo-killed"));
  EXPECT_TRUE(fs::exists(parent / "other"));
  EXPECT_TRUE(fs::exists(first.Path()));
}

TEST(ScratchFolder, RunsThatStartAtOnceDoNotTakeEachOthers) {
  const test::ScratchFolder parent;
  std::atomic<int> whole = 0;
  std::vector<std::thread> runs;
  for (int run = 0; run < 8; ++run) {
    runs.emplace_back([&] {
      for (int round = 0; round < 20; ++round) {
        ScratchFolder scratch;
        std::string why;
        if (!scratch.Make(parent.Path(), why)) continue;
        test::WriteText(scratch.Path() / "card.json", "x");
        whole += test::ReadText(scratch.Path() / "card.json") == "x" ? 1 : 0;
      }
    });
  }
  for (std::thread& run : runs) run.join();
  EXPECT_EQ(whole, 8 * 20);
  EXPECT_EQ(FilesIn(parent.Path()), 0);
}

TEST(ScratchFolder, AFolderThatCannotBeMadeSaysWhere) {
  const test::ScratchFolder parent;
  ScratchFolder scratch;
  std::string why;
  EXPECT_FALSE(scratch.Make(parent / "missing", why));
  EXPECT_THAT(
      why,
      HasSubstr("missing: no folder for the demonstration can be made in it: it is not there"));
}

TEST(MakeWholeFile, ItIsTheUsersAloneAndNothingStandsBesideIt) {
  const test::ScratchFolder folder;
  std::string why;
  ASSERT_TRUE(MakeWholeFile(folder / "card.json", "abc", why)) << why;
  EXPECT_EQ(test::ReadText(folder / "card.json"), "abc");
  struct stat status {};
  ASSERT_EQ(::stat((folder / "card.json").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
  EXPECT_EQ(FilesIn(folder.Path()), 1);
}

TEST(MakeWholeFile, AFileThatIsThereStaysAsItIs) {
  const test::ScratchFolder folder;
  test::WriteText(folder / "card.json", "mine");
  std::string why;
  EXPECT_TRUE(MakeWholeFile(folder / "card.json", "other", why)) << why;
  EXPECT_EQ(test::ReadText(folder / "card.json"), "mine");
  EXPECT_EQ(FilesIn(folder.Path()), 1);
}

TEST(MakeWholeFile, WithoutAFolderItSaysSo) {
  const test::ScratchFolder folder;
  std::string why;
  EXPECT_FALSE(MakeWholeFile(folder / "missing/card.json", "abc", why));
  EXPECT_THAT(why, HasSubstr("missing/card.json: the file cannot be made: it is not there"));
}

}  // namespace
}  // namespace kelpin::device::desktop
