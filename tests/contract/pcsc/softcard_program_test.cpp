// The program that puts the software card into a virtual reader, and independent programs that
// read the card there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/contract/pcsc/reader_card_test.h"

namespace kelpin::contract {
namespace {

using platform::SimResult;
using ::testing::HasSubstr;
using ::testing::Not;

std::string Quoted(const std::string& text) {
  return "'" + text + "'";
}

std::string ReadFile(const std::string& file) {
  std::ifstream in(file);
  return {std::istreambuf_iterator<char>(in), {}};
}

bool HasProgram(const char* name) {
  return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

class SoftcardProgramTest : public ReaderCardTest {
 protected:
  void TearDown() override {
    End();
    ReaderCardTest::TearDown();
  }

  // Runs a command line to its end: its exit code. What it wrote is in `written`.
  int Run(const std::string& command) {
    const std::string file = (folder.Path() / "output").string();
    const int status = std::system(
        ("( export LC_ALL=C.UTF-8 LANGUAGE=; " + command + " ) >" + Quoted(file) + " 2>&1")
            .c_str());
    written = ReadFile(file);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  int RunCard(const std::string& arguments) {
    return Run(Quoted(KELPIN_SOFTCARD_PROGRAM) + " " + arguments);
  }

  std::string Image(const std::string& sample, const device::card::ImageChange& change = nullptr) {
    const std::string file = (folder.Path() / "image.json").string();
    std::ofstream(file) << device::card::ImageText(sample, change);
    return file;
  }
  static std::string Address() { return "127.0.0.1:" + std::to_string(Daemon::Get().Port(1)); }
  static std::string Reader() { return Daemon::Get().ReaderName(1); }

  // Puts the image into the reader and opens it there.
  void Start(const std::string& image, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {KELPIN_SOFTCARD_PROGRAM, "--image", image, "--vpcd",
                                          Address()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    process = ::fork();
    if (process == 0) {
      ::execv(KELPIN_SOFTCARD_PROGRAM, pointers.data());
      ::_exit(127);
    }
    ASSERT_GT(process, 0);
    ASSERT_TRUE(AwaitCard(Reader(), true));
    Open(Reader());
  }
  // Its exit code; -1 when a signal killed it.
  int End() {
    if (process <= 0) return -1;
    ::kill(process, SIGTERM);
    int status = 0;
    ::waitpid(process, &status, 0);
    process = -1;
    EXPECT_TRUE(AwaitCard(Reader(), false));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  // The reader's number for the programs that want one.
  static std::string ReaderNumber() { return "1"; }

  device::card::ScratchFolder folder;
  std::string written;
  pid_t process = -1;
};

TEST_F(SoftcardProgramTest, SaysHowItIsUsed) {
  EXPECT_EQ(RunCard("--help"), 0);
  for (const char* option : {"--image", "--vpcd", "--delay-ms", "--trace", "SIGTERM"}) {
    EXPECT_THAT(written, HasSubstr(option));
  }
  EXPECT_EQ(RunCard("--version"), 0);
  EXPECT_EQ(written, "Kelpin 6.80\n");
}

TEST_F(SoftcardProgramTest, AWrongCommandLineEndsWith2) {
  EXPECT_EQ(RunCard(""), 2);
  EXPECT_EQ(RunCard("--image x --vpcd nowhere"), 2);
  EXPECT_THAT(written, HasSubstr("HOST:PORT"));
  EXPECT_EQ(RunCard("--image x --vpcd localhost:0"), 2);
  EXPECT_EQ(RunCard("--image x --vpcd localhost:65536"), 2);
  EXPECT_EQ(RunCard("--image x --delay-ms -1"), 2);
}

TEST_F(SoftcardProgramTest, AnImageThatIsNotThereEndsWith1) {
  EXPECT_EQ(RunCard("--image /nonexistent.json --vpcd " + Address()), 1);
  EXPECT_THAT(written, HasSubstr("/nonexistent.json"));
}

TEST_F(SoftcardProgramTest, TheCardIsInTheReaderUntilItIsToldToEnd) {
  const std::string image = Image("usim");
  Start(image);
  EXPECT_EQ(sim->Text(1), u"Bauer, Anna|+12125550100");
  EXPECT_EQ(sim->Write(1, u"Kept", u"1"), SimResult::kOk);
  EXPECT_EQ(End(), 0);
  auto kept = nlohmann::json::parse(std::ifstream(image));
  EXPECT_EQ(device::card::ImageRecord(kept, {"7F10", "5F3A", "4F3A"}, 1).substr(0, 8), "4B657074");
}

TEST_F(SoftcardProgramTest, TheTraceShowsCommandsAndMasksPins) {
  const std::string trace = (folder.Path() / "trace").string();
  Start(Image("usim", [](nlohmann::json& image) { image["pins"]["pin1"]["enabled"] = true; }),
        {"--trace", trace});
  platform::CardLockState lock;
  EXPECT_EQ(service->VerifyPin("4321", platform::LastTry::kKeep, lock),
            platform::CardLockResult::kRefused);
  EXPECT_EQ(service->VerifyPin("1234", platform::LastTry::kKeep, lock),
            platform::CardLockResult::kTaken);
  EXPECT_EQ(End(), 0);
  const std::string lines = ReadFile(trace);
  EXPECT_THAT(lines, HasSubstr("> 0020000108****************\n< 63C2"));
  EXPECT_THAT(lines, HasSubstr("> 0020000108****************\n< 9000"));
  EXPECT_THAT(lines, Not(HasSubstr("31323334")));
  EXPECT_THAT(lines, Not(HasSubstr("34333231")));
}

TEST_F(SoftcardProgramTest, EveryCommandTakesAsLongAsIsSaid) {
  Start(Image("usim"), {"--delay-ms", "60"});
  const auto since = std::chrono::steady_clock::now();
  ASSERT_EQ(OtherProgram(Reader()).Transmit({0x00, 0xA4, 0x00, 0x04, 0x02, 0x3F, 0x00}).size(), 2U);
  EXPECT_GE(std::chrono::steady_clock::now() - since, std::chrono::milliseconds(60));
}

TEST_F(SoftcardProgramTest, OneByteIsNoCommandAndHangsNothing) {
  Start(Image("usim"));
  OtherProgram other(Reader());
  EXPECT_EQ(other.Transmit({0x80}), (std::vector<std::uint8_t>{0x67, 0x00}));
  EXPECT_EQ(other.Transmit({0x00, 0xA4, 0x00, 0x04, 0x02, 0x3F, 0x00}).size(), 2U);
}

// Programs that are not ours read what we wrote (TS 31.102 4.4.2.3: the name, padded with FF, then
// the length of the number, its type, its digits in pairs with the nibbles swapped).

TEST_F(SoftcardProgramTest, AnIndependentProgramReadsWhatWasWritten) {
  if (!HasProgram("opensc-tool")) GTEST_SKIP() << "opensc-tool is not installed";
  Start(Image("usim-empty"));
  ASSERT_EQ(sim->Write(1, u"Kelpin", u"+442079460000"), SimResult::kOk);
  EXPECT_EQ(Run("opensc-tool --reader " + ReaderNumber() +
                " --send-apdu 00A40804067F105F3A4F3A --send-apdu 00B201041E"),
            0)
      << written;
  EXPECT_THAT(written, HasSubstr("4B 65 6C 70 69 6E FF FF FF FF FF FF FF FF FF FF"));
  EXPECT_THAT(written, HasSubstr("07 91 44 02 97 64 00 00 FF FF FF FF FF FF"));
}

TEST_F(SoftcardProgramTest, AnIndependentProgramSeesTheDeletion) {
  if (!HasProgram("opensc-tool")) GTEST_SKIP() << "opensc-tool is not installed";
  Start(Image("usim"));
  ASSERT_EQ(sim->Delete(1), SimResult::kOk);
  EXPECT_EQ(Run("opensc-tool --reader " + ReaderNumber() +
                " --send-apdu 00A40804067F105F3A4F3A --send-apdu 00B2010400"),
            0)
      << written;
  EXPECT_THAT(written, HasSubstr("(SW1=0x90, SW2=0x00)"));
  EXPECT_THAT(written, HasSubstr("FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF"));
}

TEST_F(SoftcardProgramTest, WhatAnIndependentProgramWroteIsReadAfterAReset) {
  if (!HasProgram("opensc-tool")) GTEST_SKIP() << "opensc-tool is not installed";
  Start(Image("usim-empty"));
  EXPECT_EQ(sim->Text(1), u"!88000345");
  // "Ann", 112
  EXPECT_EQ(Run("opensc-tool --reader " + ReaderNumber() +
                " --send-apdu 00A40804067F105F3A4F3A --send-apdu 00DC01041E416E6E" +
                std::string(26, 'F') + "038111F2" + std::string(20, 'F')),
            0)
      << written;
  OtherProgram(Reader()).Reset();
  EXPECT_EQ(sim->Text(1), u"Ann|112");
}

TEST_F(SoftcardProgramTest, AnExplorerWalksTheFiles) {
  if (!HasProgram("opensc-explorer")) GTEST_SKIP() << "opensc-explorer is not installed";
  Start(Image("usim"));
  ASSERT_EQ(sim->Write(2, u"Kelpin", u"12"), SimResult::kOk);
  // In one session, as its shell does.
  const std::string script = (folder.Path() / "script").string();
  std::ofstream(script) << "apdu 00 A4 08 04 06 7F 10 5F 3A 4F 3A\napdu 00 B2 02 04 1E\n";
  Run("opensc-explorer --reader " + ReaderNumber() + " --mf '' " + Quoted(script));
  EXPECT_THAT(written, HasSubstr("4B 65 6C 70 69 6E"));
}

TEST_F(SoftcardProgramTest, AScannerShowsTheReaderAndTheAtr) {
  if (!HasProgram("pcsc_scan")) GTEST_SKIP() << "pcsc_scan is not installed";
  Start(Image("usim"));
  const std::string atr = "3B 9E 96 80 1F C7 80 31 E0 73 FE 21 13 56 4B 45 4C 50 49 4E FD";
  // It goes on until it is ended: as late as a slow machine needs.
  for (const char* seconds : {"2", "20", "60"}) {
    Run(std::string("timeout ") + seconds + " pcsc_scan -n 2>&1 || true");
    if (written.find(atr) != std::string::npos) break;
  }
  EXPECT_THAT(written, HasSubstr(Reader()));
  EXPECT_THAT(written, HasSubstr(atr));
}

}  // namespace
}  // namespace kelpin::contract
