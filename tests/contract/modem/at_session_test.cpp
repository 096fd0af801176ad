// A modem that says more than it is asked for.
#include "device/modem/at_session.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/mutex.h"
#include "tools/modem_line.h"

namespace kelpin::contract {
namespace {

using device::modem::AtAnswer;
using device::modem::AtSession;

constexpr char kQuestion[] = "AT+CCLK?";
constexpr char kName[] = "+CCLK";
constexpr char kMark[] = "HEARD";

// The modem of these tests answers, as late as the machine is slow.
device::modem::Patience Patient() {
  device::modem::Patience patience;
  patience.plain = std::chrono::milliseconds(60000);
  patience.sync = std::chrono::milliseconds(20000);
  return patience;
}

// Answers every command with OK, and the question with so many lines before that.
class TalkativeModem {
 public:
  explicit TalkativeModem(std::size_t lines) {
    std::string why;
    line_ = tools::ModemLine::Open("", why);
    EXPECT_NE(line_, nullptr) << why;
    thread_ = std::thread([this, lines] {
      line_->Serve([this, lines](std::string_view command) {
        {
          const MutexLock hold(lock_);
          commands_.emplace_back(command);
        }
        std::string answer;
        for (std::size_t i = 0; command == kQuestion && i < lines; ++i) {
          answer += "\r\n+CCLK: 1\r\n";
        }
        return answer + "\r\nOK\r\n";
      });
    });
  }
  ~TalkativeModem() {
    line_->Stop();
    thread_.join();
  }
  TalkativeModem(const TalkativeModem&) = delete;
  TalkativeModem& operator=(const TalkativeModem&) = delete;

  const std::string& Port() const { return line_->Port(); }
  void Tell(std::string_view text) { line_->Tell(text); }
  std::vector<std::string> TakeCommands() {
    const MutexLock hold(lock_);
    return std::exchange(commands_, {});
  }

 private:
  Mutex lock_;
  std::vector<std::string> commands_ GUARDED_BY(lock_);
  std::unique_ptr<tools::ModemLine> line_;
  std::thread thread_;
};

// The session's lines, of which a test waits for one.
class Listener {
 public:
  AtSession::Observer Observer() {
    return {.line =
                [this](std::string_view line) {
                  const MutexLock hold(lock_);
                  heard_ = heard_ || line == kMark;
                  changed_.notify_all();
                },
            .gone = [] {}};
  }
  bool Heard() {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    const MutexLock hold(lock_);
    while (!heard_ && std::chrono::steady_clock::now() < limit) {
      changed_.wait_until(lock_, limit);
    }
    return heard_;
  }

 private:
  Mutex lock_;
  Condition changed_;
  bool heard_ GUARDED_BY(lock_) = false;
};

TEST(AtSession, AfterAnAnswerThatNobodyWaitedForTheModemIsBroughtIntoStep) {
  TalkativeModem modem(1);
  Listener listener;
  AtSession session(Patient(), listener.Observer());
  std::string why;
  ASSERT_TRUE(session.Open(modem.Port(), why)) << why;
  modem.TakeCommands();
  ASSERT_TRUE(session.Send(kQuestion, kName, Patient().plain).Ok());
  EXPECT_EQ(modem.TakeCommands(), std::vector<std::string>{kQuestion});

  modem.Tell("\r\nOK\r\n\r\nHEARD\r\n");
  ASSERT_TRUE(listener.Heard());
  const AtAnswer answer = session.Send(kQuestion, kName, Patient().plain);
  EXPECT_TRUE(answer.Ok());
  EXPECT_EQ(answer.lines, std::vector<std::string>{"+CCLK: 1"});
  const std::vector<std::string> commands = modem.TakeCommands();
  ASSERT_GE(commands.size(), 2U);
  EXPECT_EQ(commands.front(), "AT");
  EXPECT_EQ(commands.back(), kQuestion);

  // Once is enough.
  EXPECT_TRUE(session.Send(kQuestion, kName, Patient().plain).Ok());
  EXPECT_EQ(modem.TakeCommands(), std::vector<std::string>{kQuestion});
}

TEST(AtSession, OfAnAnswerWithoutMeasureTheFirstLinesAreKept) {
  TalkativeModem modem(65);
  Listener listener;
  AtSession session(Patient(), listener.Observer());
  std::string why;
  ASSERT_TRUE(session.Open(modem.Port(), why)) << why;
  const AtAnswer answer = session.Send(kQuestion, kName, Patient().plain);
  EXPECT_TRUE(answer.Ok());
  EXPECT_EQ(answer.lines.size(), 64U);
}

}  // namespace
}  // namespace kelpin::contract
