#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "device/modem/at_answer.h"
#include "device/modem/at_port.h"
#include "device/modem/line_assembler.h"
#include "platform/mutex.h"

namespace kelpin::device::modem {

// How long a modem may take. For tests; a program leaves them as they are.
struct Patience {
  std::chrono::milliseconds plain{3000};      // a command that asks the modem alone
  std::chrono::milliseconds card{10000};      // one that asks its card
  std::chrono::milliseconds sync{500};        // AT, when nothing is known of the modem yet
  std::chrono::milliseconds quiet{150};       // without a byte: nothing more comes
  std::chrono::milliseconds drain{400};       // for that at the most
  std::chrono::milliseconds busy{10000};      // a card that is busy, before that is told
  std::chrono::milliseconds busyPause{500};   // between two tries at it
  std::chrono::milliseconds look{5000};       // between two looks whether the card is in
  std::chrono::milliseconds reopening{1000};  // between two tries at a port that has gone
};

// Commands and answers on an AT port. One caller at a time.
class AtSession {
 public:
  // On the port's thread; must not call back, nor wait.
  struct Observer {
    std::function<void(std::string_view line)> line;  // each that is neither echo nor last line
    std::function<void()> gone;
  };

  AtSession(const Patience& patience, Observer observer)
      : patience_(patience), observer_(std::move(observer)) {}
  // Opens the port and finds a modem on it: echo off, errors with numbers. False: `why` says what
  // to do.
  bool Open(const std::string& path, std::string& why);
  void Close() { port_.reset(); }
  bool IsOpen() const { return port_ != nullptr; }
  const Patience& Times() const { return patience_; }

  // Sends `command` ("AT…", no line end) and waits for what ends its answer. The answer's lines are
  // those of the name `prefix` ("+CRSM"), and with `bare` others as well that are no message of the
  // modem's own accord. After a time-out, or when an answer came that nobody waited for, the modem
  // is brought into step before the next command.
  AtAnswer Send(const std::string& command, std::string_view prefix,
                std::chrono::milliseconds patience, bool bare = false);

 private:
  struct Pending {
    bool active = false;
    bool ended = false;
    bool bare = false;
    bool unfinished = false;  // its lines may come without a last one
    std::string command = {};
    std::string_view prefix = {};
    AtAnswer answer = {};
  };

  void Received(std::span<const std::uint8_t> bytes) EXCLUDES(lock_);
  void Line(std::string_view line) EXCLUDES(lock_);
  void Gone() EXCLUDES(lock_);
  AtAnswer Exchange(const std::string& command, std::string_view prefix,
                    std::chrono::milliseconds patience, bool bare) EXCLUDES(lock_);
  // Waits until nothing comes any more.
  void Drain() EXCLUDES(lock_);
  // Nothing of an earlier command is under way any more, and AT is answered.
  bool Synchronise() EXCLUDES(lock_);
  void Greet();

  const Patience patience_;
  const Observer observer_;
  bool inStep_ = false;
  LineAssembler assembler_;  // the port's thread alone

  Mutex lock_;
  Condition changed_;
  Pending pending_ GUARDED_BY(lock_);
  bool gone_ GUARDED_BY(lock_) = false;
  bool strayed_ GUARDED_BY(lock_) = false;  // an answer ended that nobody waited for
  std::chrono::steady_clock::time_point lastByte_ GUARDED_BY(lock_);

  std::unique_ptr<AtPort> port_;  // last: its thread uses all of the above
};

}  // namespace kelpin::device::modem
