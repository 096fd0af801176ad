#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "device/card/card_channel.h"
#include "device/pcsc/deadline_thread.h"
#include "device/pcsc/event_line.h"
#include "device/pcsc/pcsc_session.h"
#include "device/pcsc/reader_watcher.h"

namespace kelpin::device::pcsc {

// How long a call waits for the smart-card service. The service itself never gives up.
struct Patience {
  std::chrono::milliseconds answer{20000};  // of the card, for one command
  std::chrono::milliseconds turn{5000};     // until another program lets go of the card
  std::chrono::milliseconds connection{10000};
};

// Every reader that is plugged in. On failure `why` says what to do.
bool ListReaders(std::vector<Reader>& readers, std::string& why);

// A card in a PC/SC reader, shared with other programs. The service's calls run on a thread of
// their own: a card that falls silent ends in kTimeout, and a program that keeps the card to itself
// in kBusy; until the call comes back after all, every further one ends so at once.
//
// A card that was reset by another program is noticed within a second, also when nothing is asked
// of it. What another program writes without a reset is not told by the service.
class PcscChannel final : public card::CardChannel {
 public:
  // `name`: a reader's whole name, or as much of it as tells it from the others, in upper or lower
  // case; empty: the first one with a card in it, or else the first one. Null when there is no such
  // reader; `why` says what to do. A reader without a card is no failure.
  static std::unique_ptr<PcscChannel> Open(const std::string& name, std::string& why,
                                           const Patience& patience = {});
  ~PcscChannel() override;

  card::TransportError Connect(std::vector<std::uint8_t>& atr) override;
  void Disconnect() override;
  card::TransportError Transmit(std::span<const std::uint8_t> command,
                                std::vector<std::uint8_t>& response) override;
  card::TransportError BeginTransaction() override;
  void EndTransaction() override;
  bool OthersMaySelect() const override { return othersMaySelect_; }
  void SetListener(card::CardChannelListener* listener) override;
  std::string Description() const override;

  const std::string& ReaderName() const { return reader_; }
  // Whether a card was in the reader when it was opened.
  bool HadCard() const { return hadCard_; }

 private:
  // What the session's thread and its callers share.
  struct Shared {
    explicit Shared(const std::string& reader) : session(reader) {}
    PcscSession session;  // the thread's alone
    std::shared_ptr<EventLine> events = std::make_shared<EventLine>();
    // After each use of the session: tells of a card that was reset.
    void Tell();
  };

  PcscChannel(const Reader& reader, const Patience& patience);

  const std::string reader_;
  const bool hadCard_;
  const Patience patience_;
  const std::shared_ptr<Shared> shared_;
  bool othersMaySelect_ = true;
  card::TransportError overdue_ = card::TransportError::kTimeout;  // why the last call was given up
  DeadlineThread thread_;
  ReaderWatcher watcher_;
};

}  // namespace kelpin::device::pcsc
