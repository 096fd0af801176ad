#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "device/card/card_channel.h"
#include "device/modem/at_session.h"
#include "device/modem/card_way.h"
#include "platform/mutex.h"

namespace kelpin::device::modem {

// The card in a modem, on an AT port that is ours alone. How it is reached (CardWay) is found out
// when the port is opened and each time the card was lost.
//
// A port that goes is taken for the card being taken out, and is looked for until it is back. That
// a card is out or in is known from what the modem tells, and from asking it every few seconds.
// The modem itself, and through it the phone's own programs, may write to the card: that is told
// by nobody.
//
// PINs go through +CPIN while the modem waits for one, so that it knows as well; it is not asked
// to remember them.
class ModemChannel final : public card::CardChannel {
 public:
  // Null when there is no modem on the port, or it gives no way to its card; `why` says what to do.
  // A modem without a card is no failure.
  static std::unique_ptr<ModemChannel> Open(const std::string& path, std::string& why,
                                            const Patience& patience = {});
  ~ModemChannel() override;

  card::TransportError Prepare() override EXCLUDES(turn_);
  bool TakesApdus() const override;
  card::TransportError Connect(std::vector<std::uint8_t>& atr) override EXCLUDES(turn_);
  void Disconnect() override;
  card::TransportError Transmit(std::span<const std::uint8_t> command,
                                std::vector<std::uint8_t>& response) override EXCLUDES(turn_);
  card::TransportError TransmitFileCommand(const card::FileCommand& command,
                                           std::vector<std::uint8_t>& response) override
      EXCLUDES(turn_);
  card::TransportError BeginTransaction() override;
  void EndTransaction() override;
  bool OthersMaySelect() const override;
  bool OthersMayWrite() const override { return true; }
  bool MayMisplaceUpdates() const override { return true; }
  void SetListener(card::CardChannelListener* listener) override;
  std::string Description() const override;

  // Whether a card was in the modem when it was opened.
  bool HadCard() const { return hadCard_; }

 private:
  enum class Event { kInserted, kRemoved, kReset };

  ModemChannel(std::string path, const Patience& patience);

  // On the port's thread.
  void Heard(std::string_view line) EXCLUDES(lock_);
  void PortGone() EXCLUDES(lock_);
  // What is known of the card from now on; told where it is news.
  void Note(bool present) EXCLUDES(lock_);
  void NoteReset() EXCLUDES(lock_);
  void Tell(Event event) EXCLUDES(listenerLock_);

  // Looks after the port and the card while nothing else is asked.
  void Watch() EXCLUDES(lock_, turn_);
  bool Pause(std::chrono::milliseconds time) EXCLUDES(lock_);

  card::TransportError Lost() EXCLUDES(lock_);
  void Lose(card::TransportError error) EXCLUDES(lock_);
  card::TransportError FindWay() REQUIRES(turn_);
  // False: the modem finds no folders, and the card has no phone book but in one of those.
  bool ReachesPhonebook() REQUIRES(turn_);
  // Asks until a card that is busy has come to rest, or for too long.
  template <typename Send>
  Reply Patiently(bool onlyReads, Send send) REQUIRES(turn_);
  // What is known of the card after the reply, and the error it leaves.
  card::TransportError Settle(Reply& reply, bool onlyReads, std::vector<std::uint8_t>& response)
      REQUIRES(turn_);
  // What becomes of a command while the PIN is wanted.
  Reply AnswerLocked() REQUIRES(turn_);
  // A command of the PIN while the modem waits for it. False: the card is to answer it itself.
  bool AnswerPin(std::span<const std::uint8_t> command, Reply& reply) REQUIRES(turn_);
  Reply PresentCodes(const std::string& codes, std::string_view name) REQUIRES(turn_);

  const std::string path_;
  const Patience patience_;
  bool hadCard_ = false;

  Mutex turn_;  // one at a time uses the session
  AtSession session_ GUARDED_BY(turn_);
  CardWay way_ GUARDED_BY(turn_);

  mutable Mutex lock_;
  Condition changed_;
  Way kind_ GUARDED_BY(lock_) = Way::kNone;
  bool present_ GUARDED_BY(lock_) = false;
  bool portGone_ GUARDED_BY(lock_) = false;
  bool ending_ GUARDED_BY(lock_) = false;
  bool fresh_ GUARDED_BY(lock_) = true;  // opened, and not asked again since
  int transactions_ GUARDED_BY(lock_) = 0;
  std::chrono::steady_clock::time_point lastUse_ GUARDED_BY(lock_);
  card::TransportError lost_ GUARDED_BY(lock_) = card::TransportError::kReset;

  Mutex listenerLock_;  // held while the listener is called
  card::CardChannelListener* listener_ GUARDED_BY(listenerLock_) = nullptr;

  std::thread watcher_;
};

}  // namespace kelpin::device::modem
