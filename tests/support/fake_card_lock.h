#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/card_lock.h"
#include "platform/mutex.h"

namespace kelpin::test {

// A card with a PIN and a PUK, as a phone's lock has them. Any thread.
class FakeCardLock : public platform::CardLock {
 public:
  struct Card {
    bool enabled = true;
    bool verified = false;
    int tries = 3;
    int unblockTries = 10;
    std::string pin = "1234";
    std::string puk = "12345678";
  };

  FakeCardLock() = default;
  explicit FakeCardLock(const Card& card) : card_(card) {}

  platform::SimResult GetLockState(platform::CardLockState& state) override;
  platform::CardLockResult VerifyPin(std::string_view pin, platform::LastTry lastTry,
                                     platform::CardLockState& after) override;
  platform::CardLockResult UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                      platform::LastTry lastTry,
                                      platform::CardLockState& after) override;
  void ExpectCode() override;

  // The card loses what was verified.
  void Reset();
  // Another card is in; what this one refused was not its.
  void PutIn(const Card& card);
  // What every call answers instead of asking the card; kOk: the card is asked.
  void SetFailure(platform::SimResult failure);
  // Called after a code was taken.
  void OnTaken(std::function<void()> look);

  Card Now() const;
  std::vector<std::string> Sent() const;  // all codes that reached the card, in order
  int CodesExpected() const;              // calls of ExpectCode
  int Asked() const;                      // calls of GetLockState

 private:
  platform::CardLockState State() const REQUIRES(lock_);

  mutable Mutex lock_;
  Card card_ GUARDED_BY(lock_);
  std::uint32_t powerUp_ GUARDED_BY(lock_) = 1;
  platform::SimResult failure_ GUARDED_BY(lock_) = platform::SimResult::kOk;
  std::function<void()> onTaken_ GUARDED_BY(lock_);
  std::set<std::string> refused_ GUARDED_BY(lock_);
  std::vector<std::string> sent_ GUARDED_BY(lock_);
  int expected_ GUARDED_BY(lock_) = 0;
  int asked_ GUARDED_BY(lock_) = 0;
};

}  // namespace kelpin::test
