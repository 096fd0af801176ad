#include "device/softcard/image_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/softcard/card_fixture.h"
#include "tests/softcard/temporary_folder.h"

namespace kelpin::device::softcard {
namespace {

class ImageStoreTest : public ::testing::Test {
 protected:
  ImageStoreTest() : path_(folder_.Write("card.json", SmallCard())) {}

  // Runs `body` in a process of its own; its exit code.
  template <typename Body>
  static int InAnotherProcess(const Body& body) {
    const pid_t child = fork();
    if (child == 0) {
      _exit(body());
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  TemporaryFolder folder_;
  const std::string path_;
  std::string error_;
  CardImage image_;
};

TEST_F(ImageStoreTest, WhatWasSavedIsThereAndNothingElse) {
  auto store = ImageStore::Open(path_, error_);
  ASSERT_TRUE(store) << error_;
  ASSERT_TRUE(store->Load(image_, error_)) << error_;
  image_.note = "changed";
  ASSERT_TRUE(store->Save(image_, error_)) << error_;
  EXPECT_FALSE(store->ChangedOutside());
  CardImage again;
  ASSERT_TRUE(store->Load(again, error_));
  EXPECT_EQ(again.note, "changed");
  store.reset();
  EXPECT_EQ(folder_.Count(), 1);  // no lock and no half-written file is left
}

TEST_F(ImageStoreTest, WhatAKilledProgramLeftHalfWrittenGoesWithTheNextSave) {
  folder_.Write("." + std::filesystem::path(path_).filename().string() + ".new", "{ \"form");
  auto store = ImageStore::Open(path_, error_);
  ASSERT_TRUE(store) << error_;
  ASSERT_TRUE(store->Load(image_, error_)) << error_;
  image_.note = "changed";
  ASSERT_TRUE(store->Save(image_, error_)) << error_;
  CardImage again;
  ASSERT_TRUE(store->Load(again, error_)) << error_;
  EXPECT_EQ(again.note, "changed");
  store.reset();
  EXPECT_EQ(folder_.Count(), 1);
}

TEST_F(ImageStoreTest, TheModeOfTheFileStays) {
  auto store = ImageStore::Open(path_, error_);
  ASSERT_TRUE(store->Load(image_, error_));
  ASSERT_EQ(chmod(path_.c_str(), 0640), 0);
  ASSERT_TRUE(store->Save(image_, error_));
  struct stat status = {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
  ASSERT_EQ(unlink(path_.c_str()), 0);
  ASSERT_TRUE(store->Save(image_, error_));
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(ImageStoreTest, ASecondProcessIsToldWhoHasTheFile) {
  const auto store = ImageStore::Open(path_, error_);
  ASSERT_TRUE(store);
  EXPECT_EQ(ImageStore::Open(path_, error_), nullptr);
  EXPECT_NE(error_.find("in use by"), std::string::npos) << error_;
  EXPECT_NE(error_.find("process " + std::to_string(getpid())), std::string::npos) << error_;
  EXPECT_EQ(InAnotherProcess([this] { return ImageStore::Open(path_, error_) ? 1 : 7; }), 7);
}

TEST_F(ImageStoreTest, AKilledHolderLeavesTheFileFree) {
  EXPECT_EQ(InAnotherProcess([this] {
              const auto held = ImageStore::Open(path_, error_);
              raise(SIGKILL);
              return 0;
            }),
            -1);
  EXPECT_TRUE(ImageStore::Open(path_, error_)) << error_;
}

TEST_F(ImageStoreTest, ALinkToAFileIsTheFile) {
  const std::string link = (folder_.Path() / "link.json").string();
  ASSERT_EQ(symlink(path_.c_str(), link.c_str()), 0);
  auto store = ImageStore::Open(link, error_);
  ASSERT_TRUE(store) << error_;
  EXPECT_EQ(ImageStore::Open(path_, error_), nullptr);
  ASSERT_TRUE(store->Load(image_, error_));
  ASSERT_TRUE(store->Save(image_, error_));
  struct stat status = {};
  ASSERT_EQ(lstat(link.c_str(), &status), 0);
  EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST_F(ImageStoreTest, WhatIsNoFileIsRefused) {
  EXPECT_EQ(ImageStore::Open(folder_.Path().string(), error_), nullptr);
  EXPECT_NE(error_.find("not a file"), std::string::npos);
  EXPECT_EQ(ImageStore::Open(path_ + "x", error_), nullptr);
  EXPECT_NE(error_.find("cannot be opened: it is not there"), std::string::npos);
  const std::string pipe = (folder_.Path() / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(ImageStore::Open(pipe, error_), nullptr);
}

TEST_F(ImageStoreTest, ABrokenFileSaysWhereAndStaysUntouched) {
  const std::string broken = folder_.Write("broken.json", "{\"format\": 7}");
  const auto store = ImageStore::Open(broken, error_);
  ASSERT_TRUE(store);
  EXPECT_FALSE(store->Load(image_, error_));
  EXPECT_NE(error_.find("broken.json: "), std::string::npos) << error_;
  EXPECT_EQ(TemporaryFolder::Read(broken), "{\"format\": 7}");
}

TEST_F(ImageStoreTest, AChangeBySomebodyElseIsSeen) {
  const auto store = ImageStore::Open(path_, error_);
  ASSERT_TRUE(store->Load(image_, error_));
  EXPECT_FALSE(store->ChangedOutside());
  folder_.Write("card.json", SmallCard("\"note\": \"by hand\", "));
  EXPECT_TRUE(store->ChangedOutside());
  ASSERT_TRUE(store->Load(image_, error_));
  EXPECT_FALSE(store->ChangedOutside());
  ASSERT_EQ(unlink(path_.c_str()), 0);
  EXPECT_TRUE(store->ChangedOutside());
}

TEST_F(ImageStoreTest, AFullDiskLeavesTheOldFileWhole) {
  const std::string before = TemporaryFolder::Read(path_);
  auto store = ImageStore::Open(path_, error_);
  ASSERT_TRUE(store);
  ASSERT_TRUE(store->Load(image_, error_));
  image_.note = "never kept";
  bool saved = true;
  {
    const FullDisk full;
    saved = store->Save(image_, error_);
  }
  EXPECT_FALSE(saved);
  EXPECT_NE(error_.find("cannot be saved: files may not grow so large"), std::string::npos)
      << error_;
  EXPECT_EQ(TemporaryFolder::Read(path_), before);
  EXPECT_FALSE(store->ChangedOutside());
  store.reset();
  EXPECT_EQ(folder_.Count(), 1);
}

}  // namespace
}  // namespace kelpin::device::softcard
