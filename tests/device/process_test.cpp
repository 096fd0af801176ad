#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "device/desktop/address_opener.h"
#include "device/desktop/desktop_programs.h"
#include "device/desktop/desktop_telephone.h"
#include "device/desktop/detached_process.h"
#include "device/desktop/process_output.h"
#include "tests/device/fake_opener.h"
#include "tests/device/scratch_folder.h"

namespace kelpin::device::desktop {
namespace {

using testing::HasSubstr;

bool Becomes(const std::function<bool()>& done) {
  for (int tries = 0; tries < 2000; ++tries) {
    if (done()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

// waitid finds a child of ours, running or a zombie, until it was reaped.
bool HasNoChild() {
  ::siginfo_t info{};
  return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) != 0;
}

class ProcessTest : public testing::Test {
 protected:
  std::string Script(const std::string& name, const std::string& body) {
    test::WriteText(scratch_ / name, body);
    std::filesystem::permissions(scratch_ / name, std::filesystem::perms::owner_all);
    return (scratch_ / name).string();
  }

  test::ScratchFolder scratch_;
};

TEST_F(ProcessTest, NothingThatIsOpenHereIsOpenThere) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(::pipe(ends), 0);  // as a library does that does not think of children
  const int high = ::fcntl(ends[0], F_DUPFD, 200);
  ASSERT_GE(high, 200);
  // The listing's own descriptor is the one beyond the standard streams.
  EXPECT_EQ(ProcessOutput({"ls", "/proc/self/fd"}, 60000), "0\n1\n2\n3");
  for (const int descriptor : {ends[0], ends[1], high}) ::close(descriptor);
}

TEST_F(ProcessTest, ItHasASessionOfItsOwnAndNothingToRead) {
  EXPECT_EQ(ProcessOutput({"cat"}, 60000), "");
  const std::string own = ProcessOutput({Script("session",
                                                "#!/bin/sh\necho $$\ncut -d' ' -f6 "
                                                "/proc/$$/stat\n")},
                                        60000);
  const std::size_t line = own.find('\n');
  ASSERT_NE(line, std::string::npos);
  EXPECT_EQ(own.substr(0, line), own.substr(line + 1));
}

TEST_F(ProcessTest, WhatCannotRunIsToldAtOnceAndLeavesNothing) {
  test::WriteText(scratch_ / "plain", "#!/bin/sh\nexit 0\n");
  const std::string noInterpreter = Script("no-interpreter", "#!/no/such/shell\n");
  const std::string noFormat = Script("no-format", "exit 0\n");
  std::filesystem::create_directory(scratch_ / "folder");
  for (const std::string& program :
       {(scratch_ / "plain").string(), noInterpreter, noFormat, (scratch_ / "folder").string(),
        (scratch_ / "missing").string(), std::string(), std::string("tr\0ue", 5),
        std::string(100000, 'x')}) {
    EXPECT_FALSE(StartDetached({program})) << program;
  }
  EXPECT_FALSE(StartDetached({"true", std::string("a\0b", 3)}));
  EXPECT_TRUE(Becomes(HasNoChild));
}

TEST_F(ProcessTest, WhatItEndedWithIsTold) {
  const auto endOf = [](const std::vector<std::string>& arguments) {
    std::promise<int> told;
    EXPECT_TRUE(StartDetached(arguments, [&told](int code) { told.set_value(code); }));
    return told.get_future().get();
  };
  EXPECT_EQ(endOf({"true"}), 0);
  EXPECT_EQ(endOf({"sh", "-c", "exit 3"}), 3);
  EXPECT_EQ(endOf({"sh", "-c", "kill -9 $$"}), -1);
}

TEST_F(ProcessTest, AToolThatHangsIsEndedWithWhatItStarted) {
  const std::string tool = Script("tool", "#!/bin/sh\nsleep 600 &\necho one\nsleep 600\n");
  std::string told;
  // As long as the machine takes to start it; none of these ends by itself.
  for (const int milliseconds : {300, 3000, 30000}) {
    told = ProcessOutput({tool}, milliseconds).substr(0, 3);
    if (!told.empty()) break;
  }
  EXPECT_EQ(told, "one");
  EXPECT_EQ(ProcessOutput({"yes"}, 60000).substr(0, 4), "y\ny\n");
  EXPECT_TRUE(Becomes(HasNoChild)) << "it was left behind";
}

TEST_F(ProcessTest, WhatCanBeStartedIsKnown) {
  EXPECT_TRUE(IsStartable("sh"));
  EXPECT_TRUE(IsStartable(Script("tool", "#!/bin/sh\n")));
  test::WriteText(scratch_ / "plain", "#!/bin/sh\n");
  EXPECT_FALSE(IsStartable((scratch_ / "plain").string()));
  EXPECT_FALSE(IsStartable(scratch_.Path().string()));
  EXPECT_FALSE(IsStartable("kelpin-no-such-program"));
  EXPECT_FALSE(IsStartable(""));
}

TEST_F(ProcessTest, AnOpenerThatOpensNothingIsTold) {
  std::promise<std::pair<std::string, int>> told;
  const AddressOpener opener(Script("opener", "#!/bin/sh\nexit 3\n"),
                             [&](const std::string& uri, int code) {
                               told.set_value({uri, code});
                             });
  EXPECT_TRUE(opener.Open("tel:112"));
  EXPECT_EQ(told.get_future().get(), std::make_pair(std::string("tel:112"), 3));
}

TEST_F(ProcessTest, AnOpenerThatEndsAsItShouldOrIsEndedIsNot) {
  std::atomic<int> told = 0;
  const std::string program = Script("opener", "#!/bin/sh\n");
  const AddressOpener opener(program, [&](const std::string&, int) { ++told; });
  for (const char* body :
       {"#!/bin/sh\nexit 0\n", "#!/bin/sh\nkill -9 $$\n", "#!/bin/sh\nexit 3\n"}) {
    Script("opener", body);
    EXPECT_TRUE(opener.Open("tel:112"));
    EXPECT_TRUE(Becomes(HasNoChild));
  }
  EXPECT_TRUE(Becomes([&] { return told > 0; }));
  EXPECT_EQ(told, 1);
}

TEST_F(ProcessTest, NothingIsToldWhenNobodyListensAnyMore) {
  const std::string gate = (scratch_ / "gate").string();
  ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
  std::atomic<int> told = 0;
  {
    const AddressOpener opener(Script("opener", "#!/bin/sh\nread x < '" + gate + "'\nexit 3\n"),
                               [&](const std::string&, int) { ++told; });
    EXPECT_TRUE(opener.Open("tel:112"));
  }
  test::WriteText(gate, "go\n");
  EXPECT_TRUE(Becomes(HasNoChild));
  EXPECT_EQ(told, 0);
}

TEST_F(ProcessTest, HelpThatNoBrowserShowsIsTold) {
  std::filesystem::create_directory(scratch_ / "help");
  test::WriteText(scratch_ / "help/Kelpin.htm", "<html></html>");
  std::promise<std::string> told;
  DesktopPrograms programs({.dataFolders = {scratch_.Path()},
                            .opener = Script("opener", "#!/bin/sh\nexit 3\n"),
                            .helpFailed = [&](const std::string& why) { told.set_value(why); }});
  EXPECT_EQ(programs.StartProgram(u"peghelp", u"Kelpin.htm"), 1);
  const std::string why = told.get_future().get();
  EXPECT_THAT(why, HasSubstr("Install a browser"));
  EXPECT_THAT(why, HasSubstr("help/Kelpin.htm"));
}

TEST_F(ProcessTest, ACallThatNoProgramTakesIsTold) {
  std::promise<int> told;
  DesktopTelephone telephone(Script("opener", "#!/bin/sh\nexit 4\n"),
                             [&](const std::string&, int code) { told.set_value(code); });
  platform::PhoneCallRequest request;
  request.destinationAddress = u"112";
  EXPECT_EQ(telephone.PhoneMakeCall(request), 1);
  EXPECT_EQ(told.get_future().get(), 4);
}

TEST_F(ProcessTest, AMessageDoesNotWaitForTheToolThatKnowsWhoOpensIt) {
  const test::FakeOpener opener(scratch_.Path());
  const std::string gate = (scratch_ / "gate").string();
  ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
  DesktopPrograms programs(
      {.opener = opener.Program(),
       .mimeTool = Script("tool", "#!/bin/sh\nread x < '" + gate + "'\necho mms.desktop\n")});
  EXPECT_EQ(programs.StartProgram(u"\\Windows\\MMSC.exe", u"\"1\" \"12\""), 1);
  EXPECT_FALSE(std::filesystem::exists(scratch_ / "opened"));  // it is still asking
  test::WriteText(gate, "go\n");
  EXPECT_EQ(opener.Await(), "1\nmmsto:12\n");
}

}  // namespace
}  // namespace kelpin::device::desktop
