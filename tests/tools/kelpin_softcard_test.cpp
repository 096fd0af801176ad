#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/tools/program_run.h"

// The program that serves the software card, run as another program runs it.
namespace kelpin {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kPatience = 60000;  // milliseconds

std::string ReadFile(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// Adds what comes to `text` until it ends with `end` or has it in it; false when it does not come.
bool ReadUntil(int descriptor, const std::string& end, std::string& text) {
  while (text.find(end) == std::string::npos) {
    ::pollfd ready = {descriptor, POLLIN, 0};
    char bytes[1024];
    if (::poll(&ready, 1, kPatience) <= 0) return false;
    const ::ssize_t count = ::read(descriptor, bytes, sizeof bytes);
    if (count <= 0) return false;
    text.append(bytes, static_cast<std::size_t>(count));
  }
  return true;
}

class SoftcardProgram : public ProgramRun {
 protected:
  void SetUp() override {
    std::filesystem::copy_file(KELPIN_SOURCE_DIR "/res/cards/sim-250.json", Image());
  }
  void TearDown() override { End(); }

  int RunCard(const std::string& arguments) { return Run(KELPIN_SOFTCARD_PROGRAM, arguments); }
  std::string Image() { return (scratch_ / "card.json").string(); }

  // As a modem, whose files may not grow beyond `fileSize` bytes.
  void Serve(::rlim_t fileSize) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const std::string image = Image();
    process_ = ::fork();
    if (process_ == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::dup2(ends[1], STDERR_FILENO);
      struct ::rlimit limit = {fileSize, fileSize};
      ::setrlimit(RLIMIT_FSIZE, &limit);
      ::signal(SIGXFSZ, SIG_DFL);
      ::execl(KELPIN_SOFTCARD_PROGRAM, KELPIN_SOFTCARD_PROGRAM, "--image", image.c_str(), "--modem",
              nullptr);
      ::_exit(127);
    }
    ::close(ends[1]);
    output_ = ends[0];
    std::string port;
    ASSERT_TRUE(ReadUntil(output_, "\n", port)) << port;
    line_ = ::open(port.substr(0, port.find('\n')).c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(line_, 0) << port;
  }

  // The modem's answer to a command for its card.
  std::string Ask(const std::string& apdu) {
    const std::string command = "AT+CSIM=" + std::to_string(apdu.size()) + ",\"" + apdu + "\"\r";
    EXPECT_EQ(::write(line_, command.data(), command.size()),
              static_cast<::ssize_t>(command.size()));
    std::string answer;
    EXPECT_TRUE(ReadUntil(line_, "OK\r\n", answer)) << answer;
    return answer;
  }

  // The exit code after SIGTERM; -1 when it was killed by something else.
  int End() {
    if (process_ <= 0) return -1;
    ::kill(process_, SIGTERM);
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    ::close(line_);
    ::close(output_);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  int output_ = -1;
  int line_ = -1;
  pid_t process_ = -1;
};

TEST_F(SoftcardProgram, AChangeThatTheDiskDoesNotTakeIsAMemoryFailureAndTold) {
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
  GTEST_SKIP() << "the sanitizer's runtime is ended by such a limit before the program begins";
#endif
#endif
  const std::string before = ReadFile(Image());
  Serve(0);
  Ask("A0A40000023F00");
  Ask("A0A40000027F10");
  Ask("A0A40000026F3A");
  // The first record's name becomes "X"; 9240 is the memory problem of TS 51.011.
  const std::string update =
      "A0DC01041E58" + std::string(30, 'F') + "038111F2" + std::string(20, 'F');
  EXPECT_THAT(Ask(update), HasSubstr("+CSIM: 4,\"9240\""));
  EXPECT_EQ(ReadFile(Image()), before);
  std::string told;
  EXPECT_TRUE(ReadUntil(output_, "\n", told));
  EXPECT_THAT(told, HasSubstr("kelpin-softcard: " + Image() + ": the card file cannot be saved: " +
                              "files may not grow so large here."));
  // It goes on, with the record as it is in the file.
  EXPECT_THAT(Ask("A0B201041E"), HasSubstr("4E6F74727566FFFF"));
  EXPECT_EQ(End(), 0);
  EXPECT_EQ(ReadFile(Image()), before);
}

TEST_F(SoftcardProgram, SavesWhatTheDiskTakesAndEndsWell) {
  Serve(RLIM_INFINITY);
  Ask("A0A40000023F00");
  Ask("A0A40000027F10");
  Ask("A0A40000026F3A");
  EXPECT_THAT(Ask("A0DC01041E58" + std::string(30, 'F') + "038111F2" + std::string(20, 'F')),
              HasSubstr("+CSIM: 4,\"9000\""));
  EXPECT_EQ(End(), 0);
  EXPECT_THAT(ReadFile(Image()),
              HasSubstr("\"58" + std::string(30, 'F') + "038111F2" + std::string(20, 'F') + "\""));
}

TEST_F(SoftcardProgram, ExplainsItself) {
  EXPECT_EQ(RunCard("--help"), 0);
  EXPECT_THAT(written, HasSubstr("memory failure"));
  EXPECT_EQ(RunCard("--version"), 0);
  EXPECT_THAT(written, HasSubstr("6.80"));
}

TEST_F(SoftcardProgram, AWrongCommandLineEndsWith2) {
  EXPECT_EQ(RunCard(""), 2);
  EXPECT_THAT(written, HasSubstr("--image"));
  EXPECT_EQ(RunCard("--image card.json --vpcd nowhere"), 2);
  EXPECT_EQ(RunCard("--image card.json --delay-ms 60001"), 2);
  EXPECT_EQ(RunCard("--image card.json \"$(printf 'x\\033[31m')\""), 2);
  EXPECT_THAT(written, HasSubstr("x\\x1B[31m"));
}

TEST_F(SoftcardProgram, WhatCannotBeOpenedEndsWith1AndIsTold) {
  EXPECT_EQ(RunCard("--image missing.json --modem"), 1);
  EXPECT_THAT(written, HasSubstr("missing.json: the card file cannot be opened: it is not there"));
  EXPECT_EQ(RunCard("--image \"$(printf 'a\\033b')\" --modem"), 1);
  EXPECT_THAT(written, HasSubstr("a\\x1Bb: the card file cannot be opened"));
  EXPECT_EQ(RunCard("--image card.json --modem --trace missing/trace"), 1);
  EXPECT_THAT(written, HasSubstr("missing/trace: the trace cannot be written: it is not there"));
  EXPECT_EQ(RunCard("--image card.json --modem card.json"), 1);
  EXPECT_THAT(written, HasSubstr("card.json"));
  std::ofstream(scratch_ / "damaged.json") << "{\n  x";
  EXPECT_EQ(RunCard("--image damaged.json --modem"), 1);
  EXPECT_THAT(written, HasSubstr("not a card file, or a damaged one"));
  EXPECT_THAT(written, HasSubstr("line 2, column 3"));
}

}  // namespace
}  // namespace kelpin
