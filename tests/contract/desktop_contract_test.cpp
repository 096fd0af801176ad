#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "device/desktop/desktop_programs.h"
#include "device/desktop/spdlog_log.h"
#include "device/desktop/steady_clock.h"
#include "device/desktop/utf8.h"
#include "tests/contract/clock_log_contract.h"
#include "tests/contract/programs_contract.h"
#include "tests/contract/shell_contract.h"
#include "tests/device/fake_opener.h"
#include "tests/device/scratch_folder.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_log.h"
#include "tests/support/fake_programs.h"
#include "tests/support/fake_shell.h"
#include "tests/support/journal.h"

namespace kelpin::contract {
namespace {

class FakeClockMaker {
 public:
  platform::Clock& Port() { return clock_; }

 private:
  test::Journal journal_;
  test::FakeClock clock_{journal_};
};

class SteadyClockMaker {
 public:
  platform::Clock& Port() { return clock_; }

 private:
  device::desktop::SteadyClock clock_;
};

class FakeLogMaker {
 public:
  platform::Log& Port() { return log_; }
  std::vector<std::string> Texts() {
    std::vector<std::string> texts;
    for (const std::u16string& line : log_.Lines()) {
      std::string text = device::desktop::Utf8(line);
      while (text.ends_with('\n') || text.ends_with('\r')) text.pop_back();
      texts.push_back(text);
    }
    return texts;
  }

 private:
  test::FakeLog log_;
};

class SpdlogMaker {
 public:
  SpdlogMaker() {
    std::string why;
    log_ = device::desktop::SpdlogLog::Open(folder_.Path(), false, why);
    if (log_ == nullptr) ADD_FAILURE() << why;
  }
  platform::Log& Port() { return *log_; }
  std::vector<std::string> Texts() {
    std::vector<std::string> texts;
    const std::string file = test::ReadText(folder_ / "kelpin.log");
    const std::size_t time = std::string("2026-01-31 12:00:00.000 ").size();
    for (std::size_t at = 0; at < file.size();) {
      const std::size_t end = file.find('\n', at);
      texts.push_back(file.substr(at + time, end - at - time));
      at = end + 1;
    }
    return texts;
  }

 private:
  test::ScratchFolder folder_;
  std::unique_ptr<device::desktop::SpdlogLog> log_;
};

class FakeProgramsMaker {
 public:
  platform::Programs& Port() { return programs_; }
  std::string NextTopic() {
    const auto start = programs_.Started().at(next_++);
    EXPECT_EQ(start.program, u"peghelp");
    return device::desktop::Utf8(start.commandLine);
  }
  void MakeUnstartable() { programs_.SetStartable(false); }

 private:
  test::Journal journal_;
  test::FailPlan failures_;
  test::FakePrograms programs_{journal_, failures_};
  std::size_t next_ = 0;
};

class DesktopProgramsMaker {
 public:
  DesktopProgramsMaker() {
    std::filesystem::create_directory(folder_ / "help");
    test::WriteText(folder_ / "help/Kelpin.htm", "<html></html>");
  }
  platform::Programs& Port() { return programs_; }
  std::string NextTopic() {
    const std::string opened = opener_.Await();
    const std::string folder = "1\nfile://" + folder_.Path().string() + "/help/";
    EXPECT_TRUE(opened.starts_with(folder)) << opened;
    const std::string topic = opened.substr(std::min(folder.size(), opened.size()));
    return topic.substr(0, topic.find('\n'));
  }
  void MakeUnstartable() { std::filesystem::remove(opener_.Program()); }

 private:
  test::ScratchFolder folder_;
  test::FakeOpener opener_{folder_.Path()};
  device::desktop::DesktopPrograms programs_{
      {.dataFolders = {folder_.Path()}, .opener = opener_.Program()}};
};

class FakeShellMaker {
 public:
  platform::Shell& Port() { return shell_; }
  std::u16string Type() { return u"PocketPC"; }

 private:
  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeShell shell_{journal_, failures_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ClockContract, FakeClockMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Steady, ClockContract, SteadyClockMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, LogContract, FakeLogMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Spdlog, LogContract, SpdlogMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ProgramsContract, FakeProgramsMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Desktop, ProgramsContract, DesktopProgramsMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ShellContract, FakeShellMaker);

}  // namespace
}  // namespace kelpin::contract
