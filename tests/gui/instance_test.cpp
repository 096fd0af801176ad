#include "device/qt/instance.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <atomic>
#include <csignal>
#include <cstring>
#include <fstream>
#include <string>

#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

using qt::AnchorInfo;
using qt::AnchorServer;

class Instance : public ::testing::Test {
 protected:
  std::filesystem::path Folder() const {
    return std::filesystem::path(folder_.path().toStdString()) / "run";
  }
  std::size_t Sockets() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(Folder())) {
      count += entry.is_socket() ? 1 : 0;
    }
    return count;
  }

  QTemporaryDir folder_;
  const AnchorInfo info_ = {0x1234abcc, "OEM_CLASS", "Kelpin – ü", ""};
};

TEST_F(Instance, AWindowIsFoundByClassAndTitle) {
  const AnchorServer server(Folder(), info_, [](const std::string&) {});
  ASSERT_TRUE(server.Listening());
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", "Kelpin – ü"), info_);
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", ""), info_);
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", "Kelpin"), std::nullopt);
  EXPECT_EQ(qt::FindAnchor(Folder(), "ANOTHER", ""), std::nullopt);
}

TEST_F(Instance, TheSocketIsTheUsersAlone) {
  const AnchorServer server(Folder(), info_, [](const std::string&) {});
  ASSERT_TRUE(server.Listening());
  std::size_t sockets = 0;
  for (const auto& entry : std::filesystem::directory_iterator(Folder())) {
    EXPECT_EQ(entry.status().permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    ++sockets;
  }
  EXPECT_EQ(sockets, 1u);
}

TEST_F(Instance, TwoWindowsAreToldApart) {
  const AnchorServer one(Folder(), info_, [](const std::string&) {});
  const AnchorServer two(Folder(), {0x10, "ANOTHER", "Title", ":1.5"}, [](const std::string&) {});
  const auto found = qt::FindAnchor(Folder(), "ANOTHER", "");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->handle, 0x10u);
  EXPECT_EQ(found->busName, ":1.5");
}

TEST_F(Instance, RaisingHandsTheTokenOn) {
  std::string token;
  const AnchorServer server(Folder(), info_, [&](const std::string& given) { token = given; });
  EXPECT_TRUE(qt::RaiseAnchor(Folder(), info_.handle, "token-7"));
  EXPECT_EQ(token, "token-7");
  EXPECT_FALSE(qt::RaiseAnchor(Folder(), 0x7FFFFFF0, "token-7"));
}

TEST_F(Instance, NothingIsLeftBehind) {
  {
    const AnchorServer server(Folder(), info_, [](const std::string&) {});
  }
  EXPECT_EQ(Sockets(), 0u);
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", ""), std::nullopt);
}

// A socket of a copy's that takes connections and never answers.
int ListenSilently(const std::filesystem::path& path) {
  const int silent = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  EXPECT_LT(path.string().size(), sizeof(address.sun_path));
  std::memcpy(address.sun_path, path.c_str(), path.string().size());
  EXPECT_EQ(bind(silent, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  EXPECT_EQ(listen(silent, 4), 0);
  return silent;
}

TEST_F(Instance, WhatAKilledCopyLeftIsNoWindowAndGoes) {
  ASSERT_TRUE(qt::PrepareRuntimeFolder(Folder()));
  int ready[2] = {};
  ASSERT_EQ(pipe(ready), 0);
  const pid_t copy = fork();
  if (copy == 0) {
    ListenSilently(Folder() / "window-00000042");
    (void)!write(ready[1], "y", 1);
    while (true) {
      pause();
    }
  }
  ASSERT_GT(copy, 0);
  char told = 0;
  ASSERT_EQ(read(ready[0], &told, 1), 1);
  kill(copy, SIGKILL);
  waitpid(copy, nullptr, 0);
  close(ready[0]);
  close(ready[1]);
  EXPECT_EQ(Sockets(), 1u);
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", ""), std::nullopt);
  EXPECT_EQ(Sockets(), 0u);
}

TEST_F(Instance, ACopyThatHangsIsNotWaitedForWithoutEnd) {
  ASSERT_TRUE(qt::PrepareRuntimeFolder(Folder()));
  const int silent = ListenSilently(Folder() / "window-00000042");
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", ""), std::nullopt);
  const AnchorServer server(Folder(), info_, [](const std::string&) {});
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", ""), info_) << "the living is found beside it";
  close(silent);
}

TEST_F(Instance, AFolderOthersMayEnterIsNotUsed) {
  std::filesystem::create_directories(Folder());
  std::filesystem::permissions(Folder(), std::filesystem::perms(0755));
  EXPECT_FALSE(qt::PrepareRuntimeFolder(Folder()));
  const AnchorServer server(Folder(), info_, [](const std::string&) {});
  EXPECT_FALSE(server.Listening());
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", ""), std::nullopt);
}

TEST_F(Instance, ALinkInTheFoldersPlaceIsNotUsed) {
  const auto elsewhere = std::filesystem::path(folder_.path().toStdString()) / "elsewhere";
  std::filesystem::create_directories(elsewhere);
  std::filesystem::permissions(elsewhere, std::filesystem::perms(0700));
  std::filesystem::create_symlink(elsewhere, Folder());
  EXPECT_FALSE(qt::PrepareRuntimeFolder(Folder()));
}

TEST_F(Instance, ADeepFolderIsNoHindrance) {
  const auto deep = Folder() / std::string(80, 'a') / std::string(80, 'b');
  std::filesystem::create_directories(deep);
  std::filesystem::permissions(deep, std::filesystem::perms(0700));
  const AnchorServer server(deep, info_, [](const std::string&) {});
  EXPECT_TRUE(server.Listening());
  EXPECT_EQ(qt::FindAnchor(deep, "OEM_CLASS", ""), info_);
}

TEST_F(Instance, AStrayFileIsNoWindow) {
  ASSERT_TRUE(qt::PrepareRuntimeFolder(Folder()));
  std::ofstream(Folder() / "window-zzz") << "stray";
  EXPECT_EQ(qt::FindAnchor(Folder(), "OEM_CLASS", ""), std::nullopt);
}

TEST_F(Instance, TheRuntimeFolderIsTheUsers) {
  const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
  qputenv("XDG_RUNTIME_DIR", "/run/user/77");
  EXPECT_EQ(qt::DefaultRuntimeFolder(), std::filesystem::path("/run/user/77/kelpin"));
  qunsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(qt::DefaultRuntimeFolder().filename().string(), "kelpin-" + std::to_string(geteuid()));
  if (!before.isNull()) {
    qputenv("XDG_RUNTIME_DIR", before);
  }
}

class RaisedByAnother : public GuiTest {};

TEST_F(RaisedByAnother, ComesForwardAlsoWhenItIsMinimised) {
  ASSERT_TRUE(screen_->RegisterWindowClass({.name = u"OEM_CLASS"}));
  const ui::WindowHandle anchor =
      screen_->CreateAnchorWindow(u"OEM_CLASS", u"Kelpin", ui::AnchorStyle::kVisible);
  ASSERT_NE(anchor, 0u);
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  WindowOf(*dialog)->showMinimized();
  ASSERT_TRUE(WindowOf(*dialog)->isMinimized());
  // As a second copy does: find it, then raise it.
  const auto found = qt::FindAnchor(Folder("run"), "OEM_CLASS", "Kelpin");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->handle, anchor);
  EXPECT_TRUE(qt::RaiseAnchor(Folder("run"), anchor, ""));
  EXPECT_TRUE(ServeUntil(
      [&] { return !WindowOf(*dialog)->isMinimized() && WindowOf(*dialog)->isActiveWindow(); }));
}

TEST_F(RaisedByAnother, ADisabledAnchorIsFoundAndHasNothingToRaise) {
  ASSERT_TRUE(screen_->RegisterWindowClass({.name = u"OEM_CLASS"}));
  const ui::WindowHandle anchor =
      screen_->CreateAnchorWindow(u"OEM_CLASS", u"Kelpin", ui::AnchorStyle::kDisabled);
  EXPECT_EQ(screen_->FindWindow(u"OEM_CLASS", u""), anchor);
  screen_->SetForegroundWindow(anchor | 1);
  Settle();
}

}  // namespace
}  // namespace kelpin::test
