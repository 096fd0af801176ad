#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "device/card/card_channel.h"
#include "device/softcard/apdu_interpreter.h"
#include "device/softcard/card_image.h"
#include "device/softcard/image_store.h"
#include "platform/mutex.h"

namespace kelpin::device::softcard {

// A software card: a card image in a file, and the card that answers over it. Every change is on
// the disk before the command that made it is answered; a change the disk refuses is taken back,
// Transmit then tells kStorage and the card's answer is the memory problem of its class.
//
// The file is this process's while the card is open. When somebody writes it all the same, a
// command that would save over that answers kReset with nothing changed, and Connect reads the file
// anew; either tells the listener that the card was touched.
//
// Any thread; calls wait for one another, but Remove and Reset do not wait for a slow command: they
// end it.
class SoftChannel : public card::CardChannel {
 public:
  // Told of every command and answer, as lines "> 00A40004023F00" and "< 613A"; PINs are masked
  // with asterisks. Called within Transmit; must not call back.
  using Trace = std::function<void(std::string_view line)>;

  // Null when the image cannot be used; `error` says why and what to do.
  static std::unique_ptr<SoftChannel> Open(const std::string& path, std::string& error);
  ~SoftChannel() override;

  card::TransportError Connect(std::vector<std::uint8_t>& atr) override;
  void Disconnect() override;
  card::TransportError Transmit(std::span<const std::uint8_t> command,
                                std::vector<std::uint8_t>& response) override;
  card::TransportError BeginTransaction() override;
  void EndTransaction() override;
  // When this returns, the listener before is not called any more.
  void SetListener(card::CardChannelListener* listener) override;
  std::string Description() const override;
  std::string Trouble() const override;

  // Takes the card out of its slot, as a person does.
  void Remove();
  // Puts it back; nothing when it is in.
  void Insert();
  // Puts another card in (and takes out the one that was in). On failure the slot is as it was.
  bool Insert(const std::string& path, std::string& error);
  // Resets the card, as another program does. False while a transaction keeps others off.
  bool Reset();

  // Commands the card answered since it was opened.
  std::uint64_t CommandCount() const;
  void SetTrace(Trace trace);
  // Told why a change could not be saved, each time. Called within Transmit; must not call back.
  using HearTrouble = std::function<void(const std::string& trouble)>;
  void SetTrouble(HearTrouble trouble);
  // Why the last kStorage or kNoReader was told.
  std::string LastError() const;

 private:
  enum class Power { kOff, kOn, kResetBehind, kRemoved };
  enum class Event { kInserted, kRemoved, kReset, kTouched };

  SoftChannel(std::unique_ptr<ImageStore> store, CardImage image);
  void Notify() EXCLUDES(lock_);
  void Post(Event event) REQUIRES(lock_);
  void PutIn(std::unique_ptr<ImageStore> store, CardImage image) REQUIRES(lock_);
  bool Persist();
  card::TransportError NotReady() const REQUIRES(lock_);
  void Emit(char direction, std::span<const std::uint8_t> bytes, std::size_t clear) REQUIRES(lock_);

  mutable Mutex lock_;
  Condition changed_;
  std::unique_ptr<ImageStore> store_ GUARDED_BY(lock_);
  CardImage image_ GUARDED_BY(lock_);
  std::unique_ptr<ApduInterpreter> card_ GUARDED_BY(lock_);
  bool inserted_ GUARDED_BY(lock_) = true;
  Power power_ GUARDED_BY(lock_) = Power::kOff;
  bool busy_ GUARDED_BY(lock_) = false;  // a command is being taken
  int transactions_ GUARDED_BY(lock_) = 0;
  bool saveFailed_ GUARDED_BY(lock_) = false;
  bool overtaken_ GUARDED_BY(lock_) = false;  // the file was found changed by somebody else
  std::uint64_t commands_ GUARDED_BY(lock_) = 0;
  std::string error_ GUARDED_BY(lock_);
  bool unreadable_ GUARDED_BY(lock_) = false;  // when it was connected to last
  Trace trace_ GUARDED_BY(lock_);
  HearTrouble trouble_ GUARDED_BY(lock_);
  std::deque<Event> events_ GUARDED_BY(lock_);
  bool closing_ GUARDED_BY(lock_) = false;

  // Held while the listener is called, so that SetListener waits for a call under way.
  Mutex listenerLock_;
  card::CardChannelListener* listener_ GUARDED_BY(listenerLock_) = nullptr;
  std::thread notifier_;
};

}  // namespace kelpin::device::softcard
