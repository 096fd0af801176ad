#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

#include "device/desktop/xdg.h"
#include "device/kernel/kernel.h"
#include "tests/device/scratch_folder.h"

// The program that pulses events by name, run as another program runs it.
namespace kelpin {
namespace {

using platform::WaitResult;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr std::u16string_view kName = u"OEM_MY_RIL_SIMPB_EVENT_OEM";
constexpr std::uint32_t kLong = 20000;  // milliseconds

class EventToolTest : public testing::Test {
 protected:
  // The exit code. What it wrote is in `written`.
  int RunTool(const std::string& arguments) {
    const std::string file = (scratch_ / "output").string();
    const std::string command = "XDG_RUNTIME_DIR='" + scratch_.Path().string() +
                                "' '" KELPIN_EVENT_PROGRAM "' " + arguments + " >'" + file +
                                "' 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream in(file);
    written.assign(std::istreambuf_iterator<char>(in), {});
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  // This program's kernel, over the folder that the tool finds.
  std::unique_ptr<device::kernel::Kernel> OpenKernel() {
    const device::desktop::Folders folders =
        device::desktop::FindFolders([this](const char* name) -> std::string {
          return std::string_view(name) == "XDG_RUNTIME_DIR" ? scratch_.Path().string() : "";
        });
    std::string why;
    EXPECT_TRUE(device::desktop::MakePrivateFolder(folders.runtime, why)) << why;
    auto opened = device::kernel::Kernel::Open(folders.runtime, why);
    EXPECT_NE(opened, nullptr) << why;
    return opened;
  }

  std::string written;
  test::ScratchFolder scratch_;
};

TEST_F(EventToolTest, FreesAProgramThatWaits) {
  const auto kernel = OpenKernel();
  const auto event = kernel->CreateEvent(kName);
  ASSERT_NE(event, nullptr);
  WaitResult result = WaitResult::kTimeout;
  std::atomic<bool> done = false;
  std::thread waiter([&] {
    result = event->Wait(kLong);
    done = true;
  });
  // A pulse before the wait has begun is lost: pulse until one is not.
  while (!done) {
    ASSERT_EQ(RunTool("OEM_MY_RIL_SIMPB_EVENT_OEM"), 0) << written;
    std::this_thread::yield();
  }
  waiter.join();
  EXPECT_EQ(result, WaitResult::kSignaled);
  EXPECT_THAT(written, IsEmpty());
}

TEST_F(EventToolTest, APulseThatNobodyWaitsForIsLost) {
  const auto kernel = OpenKernel();
  const auto event = kernel->CreateEvent(kName);
  ASSERT_EQ(RunTool("OEM_MY_RIL_SIMPB_EVENT_OEM"), 0) << written;
  EXPECT_THAT(written, HasSubstr("nobody waits for OEM_MY_RIL_SIMPB_EVENT_OEM now"));
  EXPECT_EQ(event->Wait(0), WaitResult::kTimeout);
}

TEST_F(EventToolTest, SaysThatNobodyWaitsUnlessItIsToBeQuiet) {
  EXPECT_EQ(RunTool("OEM_MY_RIL_SIMPB_EVNT_OEM"), 0);
  EXPECT_THAT(written, HasSubstr("nobody waits for OEM_MY_RIL_SIMPB_EVNT_OEM now"));
  for (const char* quiet : {"-q", "--quiet"}) {
    EXPECT_EQ(RunTool(std::string(quiet) + " OEM_MY_RIL_SIMPB_EVNT_OEM"), 0);
    EXPECT_THAT(written, IsEmpty());
  }
}

TEST_F(EventToolTest, ShowsWhatWouldSteerTheTerminalEscaped) {
  EXPECT_EQ(RunTool("\"$(printf 'a\\033[2Jb')\""), 0);
  EXPECT_THAT(written, HasSubstr("nobody waits for a\\x1B[2Jb now"));
  EXPECT_EQ(RunTool("NAME \"$(printf 'a\\033\\nb')\""), 2);
  EXPECT_THAT(written, HasSubstr("a\\x1B\\x0Ab"));
}

TEST_F(EventToolTest, AFolderThatCannotBeUsedIsTold) {
  // A file where the folder of named objects is wanted.
  std::ofstream(scratch_ / "kelpin") << "x";
  EXPECT_EQ(RunTool("OEM_MY_RIL_SIMPB_EVENT_OEM"), 1);
  EXPECT_THAT(written, HasSubstr((scratch_ / "kelpin").string() + ": not a folder"));
}

TEST_F(EventToolTest, ANameOfAnotherEventFreesNobody) {
  const auto kernel = OpenKernel();
  const auto event = kernel->CreateEvent(kName);
  WaitResult result = WaitResult::kSignaled;
  std::thread waiter([&] { result = event->Wait(500); });
  ASSERT_EQ(RunTool("OEM_MY_SIM_STORED_EVENT_OEM"), 0) << written;
  waiter.join();
  EXPECT_EQ(result, WaitResult::kTimeout);
}

TEST_F(EventToolTest, ExplainsItself) {
  EXPECT_EQ(RunTool("--help"), 0);
  EXPECT_THAT(written, HasSubstr("OEM_MY_RIL_SIMPB_EVENT_OEM"));
  EXPECT_THAT(written, HasSubstr("kelpin-event"));
  EXPECT_EQ(RunTool("--version"), 0);
  EXPECT_THAT(written, HasSubstr("6.80"));
}

TEST_F(EventToolTest, AWrongCommandLineIsTold) {
  EXPECT_EQ(RunTool(""), 2);
  EXPECT_THAT(written, HasSubstr("NAME"));
  EXPECT_EQ(RunTool("--loud"), 2);
  EXPECT_EQ(RunTool("''"), 2);
  EXPECT_EQ(RunTool("\"$(printf '\\377')\""), 2);
}

TEST_F(EventToolTest, ANameTooLongForAnEventIsTold) {
  // "event-" and the name are at most 200 bytes of a file's name.
  EXPECT_EQ(RunTool("-q " + std::string(194, 'x')), 0) << written;
  EXPECT_EQ(RunTool(std::string(195, 'x')), 2);
  EXPECT_THAT(written, HasSubstr("too long"));
  EXPECT_EQ(RunTool(std::string(5000, 'x')), 2);
  // What is no letter, digit, '.', '-' or '_' takes five.
  EXPECT_EQ(RunTool("-q \"$(printf '/%.0s' $(seq 38))\""), 0) << written;
  EXPECT_EQ(RunTool("-q \"$(printf '/%.0s' $(seq 39))\""), 2);
}

}  // namespace
}  // namespace kelpin
