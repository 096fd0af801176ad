// The program that serves the software card as a modem, a program that is not ours and speaks to
// it, and the whole of Kelpin on it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/contract/modem/modem_card_test.h"

namespace kelpin::contract {
namespace {

using platform::SimResult;
using ::testing::HasSubstr;
using ::testing::Not;

std::string ReadFile(const std::string& file) {
  std::ifstream in(file);
  return {std::istreambuf_iterator<char>(in), {}};
}

class ModemProgramTest : public ModemCardTest {
 protected:
  void TearDown() override {
    ModemCardTest::TearDown();
    End();
  }

  int Run(const std::string& command) {
    const std::string file = (folder.Path() / "output").string();
    const int status = std::system(
        ("( export LC_ALL=C.UTF-8 LANGUAGE=; " + command + " ) >'" + file + "' 2>&1").c_str());
    written = ReadFile(file);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  int RunCard(const std::string& arguments) {
    return Run("'" KELPIN_SOFTCARD_PROGRAM "' " + arguments);
  }
  // Kelpin itself, without a display, with folders of its own.
  int RunKelpin(const std::string& arguments) {
    const std::string home = "'" + folder.Path().string() + "'";
    return Run("cd " + home + " && env QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR=" + home +
               " XDG_STATE_HOME=" + home + " XDG_CONFIG_HOME=" + home + " XDG_DATA_HOME=" + home +
               " timeout 60 '" + Kelpin() + "' " + arguments);
  }
  static std::string Kelpin() {
#ifdef KELPIN_PROGRAM
    return KELPIN_PROGRAM;
#else
    return "";
#endif
  }
  std::string Link() const {
    return (folder.Path() / "modem").string();
  }
  std::string Image() const {
    return (folder.Path() / "image.json").string();
  }

  // The sample card in a modem of the program's.
  void Start(const std::string& sample, const std::vector<std::string>& more = {}) {
    std::ofstream(Image()) << device::card::ImageText(sample);
    std::vector<std::string> arguments = {KELPIN_SOFTCARD_PROGRAM, "--image", Image(), "--modem",
                                          Link()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const std::string output = (folder.Path() / "port").string();
    std::filesystem::remove(output);  // of an earlier start
    process = ::fork();
    if (process == 0) {
      const int file = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      ::dup2(file, STDOUT_FILENO);
      ::execv(KELPIN_SOFTCARD_PROGRAM, pointers.data());
      ::_exit(127);
    }
    ASSERT_GT(process, 0);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (ReadFile(output) != Link() + "\n" && std::chrono::steady_clock::now() < limit) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(ReadFile(output), Link() + "\n");
  }
  void Use() {
    channel = OpenModem(Link());
    ASSERT_NE(channel, nullptr);
    service = std::make_unique<device::card::SimService>(*channel);
    sim = std::make_unique<device::card::SimClient>(*service);
  }
  // Its exit code.
  int End() {
    if (process <= 0) return -1;
    ::kill(process, SIGTERM);
    int status = 0;
    ::waitpid(process, &status, 0);
    process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string written;
  pid_t process = -1;
};

TEST_F(ModemProgramTest, TheHelpNamesTheModemsOptions) {
  EXPECT_EQ(RunCard("--help"), 0);
  for (const char* option : {"--modem", "--no-cgla", "--no-csim", "--no-crsm", "--no-paths",
                             "--unsolicited-ms", "kelpin --sim modem:PORT"}) {
    EXPECT_THAT(written, HasSubstr(option));
  }
}

TEST_F(ModemProgramTest, AModemAndAReaderAtOnceMakeNoSense) {
  EXPECT_EQ(RunCard("--image x --modem --vpcd localhost:1"), 2);
  EXPECT_EQ(RunCard("--image x --no-cgla"), 2);
  EXPECT_EQ(RunCard("--image x --modem --unsolicited-ms 0"), 2);
}

TEST_F(ModemProgramTest, WhatIsWrittenThroughTheModemIsInTheImage) {
  Start("usim", {"--unsolicited-ms", "20"});
  Use();
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  EXPECT_EQ(sim->Write(1, u"Kept", u"1"), SimResult::kOk);
  Close();
  EXPECT_EQ(End(), 0);
  auto kept = nlohmann::json::parse(std::ifstream(Image()));
  EXPECT_EQ(device::card::ImageRecord(kept, {"7F10", "5F3A", "4F3A"}, 1).substr(0, 8), "4B657074");
  EXPECT_FALSE(std::filesystem::is_symlink(Link()));
}

TEST_F(ModemProgramTest, EachWayCanBeTakenAway) {
  Start("usim", {"--no-cgla"});
  Use();
  EXPECT_THAT(channel->Description(), HasSubstr("(+CSIM)"));
  Close();
  EXPECT_EQ(End(), 0);
  Start("usim", {"--no-cgla", "--no-csim"});
  Use();
  EXPECT_THAT(channel->Description(), HasSubstr("(+CRSM)"));
  Close();
  EXPECT_EQ(End(), 0);
  Start("usim", {"--no-cgla", "--no-csim", "--no-crsm"});
  std::string why;
  EXPECT_EQ(device::modem::ModemChannel::Open(Link(), why, LongPatience()), nullptr);
  EXPECT_THAT(why, HasSubstr("does not let other programs at its card"));
}

TEST_F(ModemProgramTest, AnAnswerTakesAsLongAsIsSaid) {
  Start("usim", {"--delay-ms", "60"});
  Use();
  const auto since = std::chrono::steady_clock::now();
  EXPECT_EQ(channel->Prepare(), device::card::TransportError::kNone);
  std::vector<std::uint8_t> answer;
  std::vector<std::uint8_t> atr;
  EXPECT_EQ(channel->Connect(atr), device::card::TransportError::kNone);
  const std::vector<std::uint8_t> select = {0x00, 0xA4, 0x00, 0x0C, 0x02, 0x3F, 0x00};
  EXPECT_EQ(channel->Transmit(select, answer), device::card::TransportError::kNone);
  EXPECT_GE(std::chrono::steady_clock::now() - since, std::chrono::milliseconds(60));
}

// A program that is not ours takes it for a modem.
TEST_F(ModemProgramTest, AnIndependentProgramIdentifiesTheModem) {
  if (std::system("command -v gammu >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "gammu is not installed";
  Start("usim");
  const std::string settings = (folder.Path() / "gammurc").string();
  std::ofstream(settings) << "[gammu]\ndevice = " << Link() << "\nconnection = at115200\n";
  EXPECT_EQ(Run("timeout 30 gammu -c '" + settings + "' identify"), 0) << written;
  EXPECT_THAT(written, HasSubstr("Software card"));
  EXPECT_THAT(written, HasSubstr("6.80"));
  EXPECT_EQ(Run("timeout 30 gammu -c '" + settings + "' getsecuritystatus"), 0) << written;
  EXPECT_THAT(written, HasSubstr("Nothing to enter."));
}

TEST_F(ModemProgramTest, KelpinListsTheCardInTheModem) {
  if (Kelpin().empty() || ::access(Kelpin().c_str(), X_OK) != 0) {
    GTEST_SKIP() << "kelpin is not built";
  }
  Start("usim");
  EXPECT_EQ(RunKelpin("--sim 'modem:" + Link() + "' --screenshot list.png"), 0) << written;
  EXPECT_THAT(written, HasSubstr("180 entries"));
}

TEST_F(ModemProgramTest, ASecondProgramIsToldWhoHasThePortAndGetsItAfterwards) {
  if (Kelpin().empty() || ::access(Kelpin().c_str(), X_OK) != 0) {
    GTEST_SKIP() << "kelpin is not built";
  }
  Start("usim");
  Use();
  const std::string list = "--sim 'modem:" + Link() + "' --screenshot list.png";
  EXPECT_EQ(RunKelpin(list), 1);
  EXPECT_THAT(written, HasSubstr(Link() + " is in use by modem_tests (process " +
                                 std::to_string(::getpid()) + ")."));
  // Which took nothing from the first.
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  EXPECT_EQ(sim->Write(1, u"Mine", u"1"), SimResult::kOk);
  Close();
  EXPECT_EQ(RunKelpin(list), 0) << written;
  EXPECT_THAT(written, HasSubstr("180 entries"));
}

TEST_F(ModemProgramTest, KelpinSaysWhatToDoWithoutTheModem) {
  if (Kelpin().empty() || ::access(Kelpin().c_str(), X_OK) != 0) {
    GTEST_SKIP() << "kelpin is not built";
  }
  EXPECT_EQ(RunKelpin("--sim 'modem:" + Link() + "' --screenshot list.png"), 1);
  EXPECT_THAT(written, HasSubstr("kelpin: There is no port " + Link()));
  EXPECT_THAT(written, Not(HasSubstr("entries")));
  EXPECT_EQ(RunKelpin("--sim modem --screenshot list.png"), 2);
  EXPECT_THAT(written, HasSubstr("write modem:PORT"));
}

}  // namespace
}  // namespace kelpin::contract
