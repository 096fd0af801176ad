#pragma once

#include <winscard.h>

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "device/pcsc/pcsc_codes.h"

namespace kelpin::device::pcsc {

// One reader, or none plugged in yet, and whether a card is in it.
struct Reader {
  std::string name;  // as the service gives it
  bool hasCard = false;
};

// Splits the service's list: names that each end with a zero byte, then one more. Never reads
// beyond `list`, whatever stands there.
std::vector<std::string> SplitNames(std::span<const char> list);

// A context of the smart-card service. Ends with the object.
class Context {
 public:
  Context() = default;
  ~Context() { Release(); }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  Verdict Establish();
  void Release();
  bool Established() const { return established_; }
  SCARDCONTEXT Handle() const { return handle_; }

  // kNoReader when there is none.
  Verdict ListReaders(std::vector<Reader>& readers);

 private:
  SCARDCONTEXT handle_ = 0;
  bool established_ = false;
};

// The card in one reader, shared with other programs. Every call may block for as long as another
// program or the card likes. One thread at a time.
//
// Once taken, the card is kept for a moment after EndTransaction, so that a run of commands does
// not have to select its file again for each; never for longer than about a second.
class PcscSession {
 public:
  using Clock = std::chrono::steady_clock;
  using Duration = std::chrono::milliseconds;

  explicit PcscSession(std::string reader) : reader_(std::move(reader)) {}
  ~PcscSession() { Close(); }
  PcscSession(const PcscSession&) = delete;
  PcscSession& operator=(const PcscSession&) = delete;

  // Connects afresh. The card is reset only when it did not answer as it should before.
  Verdict Connect(std::vector<std::uint8_t>& atr);
  void Disconnect();
  Verdict Transmit(std::span<const std::uint8_t> command, std::vector<std::uint8_t>& response);
  // `fresh`: other programs had access since the last EndTransaction.
  Verdict BeginTransaction(bool& fresh);
  void EndTransaction();

  // To be called when nothing else is to do: lets others have the card, and looks whether it is
  // still the same one. Returns after how long it wants to be called again.
  Duration Idle();
  // How the session ended, once for each end; kDone when it did not.
  Verdict TakeEnd() { return std::exchange(news_, Verdict::kDone); }

 private:
  // What a code means, after having looked what became of the card where the code does not say.
  Verdict Settle(LONG code);
  // Asks the service about the card, and the card nothing.
  LONG Look();
  void Release();
  void Close();
  // What goes over the line: T=0 has no length of the answer beside data, and always a fifth byte.
  std::span<const std::uint8_t> Frame(std::span<const std::uint8_t> command,
                                      std::vector<std::uint8_t>& buffer) const;

  const std::string reader_;
  Context context_;
  SCARDHANDLE card_ = 0;
  bool connected_ = false;
  DWORD protocol_ = 0;
  bool suspect_ = false;  // the card fell silent; the next connection begins with a reset
  Verdict lost_ = Verdict::kDone;
  Verdict news_ = Verdict::kDone;

  bool held_ = false;    // the card is ours alone
  bool wanted_ = false;  // and between BeginTransaction and EndTransaction
  Clock::time_point heldSince_;
  Clock::time_point lastUse_;
  Clock::time_point othersUntil_;  // the card is left to others until then
};

}  // namespace kelpin::device::pcsc
