#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "device/card/card_files.h"
#include "device/card/entry_writer.h"
#include "device/card/phonebook_files.h"
#include "device/card/refused_codes.h"
#include "platform/card_lock.h"
#include "platform/sim_result.h"

namespace kelpin::device::card {

// The card that is in now, for one thread. Connects when something is wanted of it and after it was
// lost; knows when it is another card than before.
class CardSession {
 public:
  explicit CardSession(CardFiles& files) : files_(files), book_(files) {}

  PhonebookFiles& Book() { return book_; }

  // Connected, and the phone book found. PIN wanted: kPinRequired, blocked: kPukRequired.
  platform::SimResult Ready();
  // Runs `operation` on the ready card. When the card was reset under it, connects and runs it once
  // more; it must change nothing.
  platform::SimResult Read(const std::function<platform::SimResult()>& operation);
  // Runs `operation` once, within a transaction. kWrongSim, with nothing run, while the card is
  // another than the one the callers know.
  platform::SimResult Change(const std::function<CardResult()>& operation);
  // Changes one entry. What a lost answer leaves in doubt is read back from the card.
  WriteOutcome ChangeEntry(std::uint32_t location,
                           const std::function<WriteOutcome(EntryWriter&)>& operation);

  // The card held something else than was known of it; told once.
  void NoteOthersWrote() { othersWrote_ = true; }
  bool TakeOthersWrote() { return std::exchange(othersWrote_, false); }

  // An update is under way. Any thread.
  bool Changing() const { return changing_; }

  // The callers look at the card afresh: another card is no longer unexpected.
  void Accept() {
    if (holds_ == 0) swapped_ = false;
  }
  bool Swapped() const { return swapped_; }  // any thread
  // From Hold to LetGo another card stays unexpected. Counted. Any thread.
  void Hold() { ++holds_; }
  void LetGo() { --holds_; }
  // Nothing is answered from memory any more.
  void Forget();
  // The card is out, or was reset: connect again before anything else.
  void Drop();

  platform::SimResult GetPinState(PinState& state);
  // Rises whenever the card was powered anew, which takes back what was verified.
  std::uint32_t PowerUps() const { return powerUps_; }
  // `state` is what the card says in the end; left as it was when the card was not asked.
  platform::CardLockResult VerifyPin(std::string_view code, platform::LastTry lastTry,
                                     PinState& state);
  platform::CardLockResult UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                      platform::LastTry lastTry, PinState& state);

 private:
  platform::SimResult Connect();
  platform::SimResult Explain(platform::SimResult result);
  // Connecting again tells why a connection broke in the middle of a change.
  platform::SimResult WhyBroken(platform::SimResult result);
  // Ready, the card the callers know, and other programs kept off until EndTransaction.
  platform::SimResult BeginChange();
  void EndChange();
  void ReadBack(std::uint32_t location, WriteOutcome& outcome);

  CardFiles& files_;
  PhonebookFiles book_;
  std::vector<std::uint8_t> iccid_;  // of the card that was in last; empty: not known
  std::atomic<bool> swapped_ = false;
  std::atomic<int> holds_ = 0;
  RefusedCodes refused_;
  std::atomic<bool> changing_ = false;
  std::uint32_t powerUps_ = 0;
  bool othersWrote_ = false;
};

}  // namespace kelpin::device::card
