#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "device/modem/modem_channel.h"
#include "device/softcard/soft_channel.h"
#include "platform/mutex.h"
#include "tests/card/soft_card.h"
#include "tools/at_modem.h"
#include "tools/modem_line.h"

namespace kelpin::contract {

using tools::AtModem;

// For a modem that answers, as late as the machine is slow; what is done now and then is done
// often.
inline device::modem::Patience LongPatience() {
  device::modem::Patience patience;
  patience.plain = std::chrono::milliseconds(60000);
  patience.card = std::chrono::milliseconds(60000);
  patience.sync = std::chrono::milliseconds(20000);
  patience.quiet = std::chrono::milliseconds(20);
  patience.drain = std::chrono::milliseconds(100);
  patience.busy = std::chrono::milliseconds(60000);
  patience.busyPause = std::chrono::milliseconds(10);
  patience.look = std::chrono::milliseconds(50);
  patience.reopening = std::chrono::milliseconds(20);
  return patience;
}

// For one that does not, or whose card stays busy.
inline device::modem::Patience ShortPatience() {
  device::modem::Patience patience = LongPatience();
  patience.card = std::chrono::milliseconds(2000);
  patience.busy = std::chrono::milliseconds(2000);
  return patience;
}
// For a port on which nobody ever answers.
inline device::modem::Patience NoPatience() {
  device::modem::Patience patience = ShortPatience();
  patience.sync = std::chrono::milliseconds(200);
  return patience;
}

inline AtModem::Abilities LogicalChannels() {
  return {.apdus = false, .fileCommands = false};
}
inline AtModem::Abilities BasicChannel() {
  return {.logicalChannels = false, .fileCommands = false};
}
inline AtModem::Abilities FileCommands() {
  return {.logicalChannels = false, .apdus = false};
}

// A modem on a line of its own, served by a thread. A test may stand between it and the line.
class TestModem {
 public:
  using Rest = std::function<std::string()>;  // what the modem itself answers
  using Between = std::function<std::string(std::string_view command, const Rest& rest)>;

  TestModem(device::card::CardChannel& card, const AtModem::Abilities& abilities,
            const std::string& link = "")
      : modem_(card, abilities), link_(link) {
    PlugIn();
  }
  ~TestModem() { PullOut(); }
  TestModem(const TestModem&) = delete;
  TestModem& operator=(const TestModem&) = delete;

  const std::string& Port() const { return line_->Port(); }
  // What stood there before is not called any more when this returns. Not within such a call.
  void SetBetween(Between between) {
    const MutexLock hold(lock_);
    between_ = std::move(between);
    while (calls_ > 0) called_.wait(lock_);
  }
  // The commands since the last call.
  std::vector<std::string> TakeCommands() {
    const MutexLock hold(lock_);
    return std::exchange(commands_, {});
  }
  void Tell(std::string_view text) { line_->Tell(text); }
  // The card, taken out and put in.
  void SetPresent(bool present) {
    std::string told;
    {
      const MutexLock hold(modemLock_);
      told = modem_.SetPresent(present);
    }
    Tell(told);
  }
  // The modem itself: unplugged, and plugged in again (under its link's name).
  void PullOut() {
    if (line_ == nullptr) return;
    line_->Stop();
    thread_.join();
    line_.reset();
  }
  void PlugIn() {
    std::string why;
    line_ = tools::ModemLine::Open(link_, why);
    ASSERT_NE(line_, nullptr) << why;
    thread_ = std::thread(
        [this] { line_->Serve([this](std::string_view command) { return Answer(command); }); });
  }

 private:
  std::string Answer(std::string_view command) {
    Between between;
    {
      const MutexLock hold(lock_);
      if (!command.empty()) commands_.emplace_back(command);
      between = between_;
      ++calls_;
    }
    const Rest rest = [this, command] {
      const MutexLock hold(modemLock_);
      return modem_.Answer(command);
    };
    std::string answer = between ? between(command, rest) : rest();
    const MutexLock hold(lock_);
    --calls_;
    called_.notify_all();
    return answer;
  }

  Mutex modemLock_;
  AtModem modem_ GUARDED_BY(modemLock_);
  const std::string link_;
  Mutex lock_;
  Condition called_;
  int calls_ GUARDED_BY(lock_) = 0;
  Between between_ GUARDED_BY(lock_);
  std::vector<std::string> commands_ GUARDED_BY(lock_);
  std::unique_ptr<tools::ModemLine> line_;
  std::thread thread_;
};

inline std::unique_ptr<device::modem::ModemChannel> OpenModem(
    const std::string& port, const device::modem::Patience& patience = LongPatience()) {
  std::string why;
  auto channel = device::modem::ModemChannel::Open(port, why, patience);
  EXPECT_NE(channel, nullptr) << why;
  return channel;
}

}  // namespace kelpin::contract
