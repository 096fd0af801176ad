// The whole program on a card in a reader, as it is started.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/contract/pcsc/reader_card_test.h"

#ifdef KELPIN_PROGRAM
namespace kelpin::contract {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class ReaderProgramTest : public ReaderCardTest {
 protected:
  void SetUp() override {
    ReaderCardTest::SetUp();
    if (::access(KELPIN_PROGRAM, X_OK) != 0) GTEST_SKIP() << KELPIN_PROGRAM << " is not built";
  }

  // The exit code. What was printed is in `written`, messages of boxes among it.
  int Run(const std::string& arguments, const std::string& environment = "") {
    const std::string home = "'" + folder.Path().string() + "'";
    const std::string output = (folder.Path() / "output").string();
    const std::string command =
        "cd " + home +
        " && env LC_ALL=C.UTF-8 LANGUAGE= QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR=" + home +
        " XDG_STATE_HOME=" + home + " XDG_CONFIG_HOME=" + home + " XDG_DATA_HOME=" + home + " " +
        environment + " timeout 60 '" KELPIN_PROGRAM "' " + arguments + " >'" + output + "' 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream in(output);
    written.assign(std::istreambuf_iterator<char>(in), {});
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  device::card::ScratchFolder folder;
  std::string written;
};

TEST_F(ReaderProgramTest, ListsTheCardInTheReader) {
  card = std::make_unique<device::card::SoftCard>("usim");
  LastingCard().Use(&card->Channel());
  EXPECT_EQ(Run("--sim pcsc --screenshot list.png"), 0);
  EXPECT_THAT(written, HasSubstr("180 entries"));
  EXPECT_EQ(Run("--sim 'pcsc:" + LastingCard().Reader() + "' --screenshot list.png"), 0);
  EXPECT_THAT(written, HasSubstr("180 entries"));
}

TEST_F(ReaderProgramTest, PrintsTheReaders) {
  LastingCard();
  EXPECT_EQ(Run("--list-readers"), 0);
  EXPECT_EQ(written, Daemon::Get().ReaderName(0) + "  (card)\n" + Daemon::Get().ReaderName(1) +
                         "  (empty)\n");
}

TEST_F(ReaderProgramTest, AnEmptyReaderIsSaidAndWhatToDo) {
  const std::string reader = Daemon::Get().ReaderName(1);
  EXPECT_EQ(Run("--sim 'pcsc:" + reader + "' --screenshot list.png"), 1);
  EXPECT_THAT(written, HasSubstr("no card in the reader " + reader + "; put one in"));
  EXPECT_THAT(written, HasSubstr("SIM isn't inserted into the phone."));
}

TEST_F(ReaderProgramTest, AReaderThatIsNotThereIsSaidWithThoseThatAre) {
  EXPECT_EQ(Run("--sim pcsc:Nobody --screenshot list.png"), 1);
  EXPECT_THAT(written, HasSubstr("No reader is called \"Nobody\""));
  EXPECT_THAT(written, HasSubstr(Daemon::Get().ReaderName(1)));
}

TEST_F(ReaderProgramTest, WithoutTheServiceItIsSaidWhatToDo) {
  const std::string none = "PCSCLITE_CSOCK_NAME='" + (folder.Path() / "none").string() + "'";
  for (const char* arguments : {"--sim pcsc --screenshot list.png", "--list-readers"}) {
    EXPECT_EQ(Run(arguments, none), 1) << arguments;
    EXPECT_THAT(written, HasSubstr("The smart-card service (pcscd) is not running.")) << arguments;
    EXPECT_THAT(written, HasSubstr("Install the package pcscd")) << arguments;
    EXPECT_THAT(written, Not(HasSubstr("entries"))) << arguments;
  }
}

}  // namespace
}  // namespace kelpin::contract
#endif
