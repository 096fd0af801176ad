#include "tests/support/fake_card_lock.h"

#include <algorithm>

namespace kelpin::test {

using platform::CardLockResult;
using platform::LastTry;
using platform::SimResult;

namespace {

bool IsCode(std::string_view text, std::size_t shortest) {
  return text.size() >= shortest && text.size() <= 8 &&
         text.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

platform::CardLockState FakeCardLock::State() const {
  platform::CardLockState state;
  state.wanted = card_.enabled && !card_.verified;
  state.blocked = card_.enabled && card_.tries == 0;
  state.triesLeft = card_.tries;
  state.unblockTriesLeft = card_.unblockTries;
  state.powerUp = powerUp_;
  return state;
}

SimResult FakeCardLock::GetLockState(platform::CardLockState& state) {
  const MutexLock lock(lock_);
  ++asked_;
  if (!Succeeded(failure_)) return failure_;
  state = State();
  return SimResult::kOk;
}

CardLockResult FakeCardLock::VerifyPin(std::string_view pin, LastTry lastTry,
                                       platform::CardLockState& after) {
  std::function<void()> taken;
  {
    const MutexLock lock(lock_);
    if (!IsCode(pin, 4)) return CardLockResult::kNoCode;
    if (!Succeeded(failure_)) return CardLockResult::kFailed;
    after = State();
    if (!after.wanted) return CardLockResult::kTaken;
    if (after.blocked) return CardLockResult::kBlocked;
    const std::string code(pin);
    if (refused_.count(code) != 0) return CardLockResult::kRefusedBefore;
    if (card_.tries == 1 && lastTry == LastTry::kKeep) return CardLockResult::kLastTry;
    sent_.push_back(code);
    card_.verified = code == card_.pin;
    card_.tries = card_.verified ? 3 : card_.tries - 1;
    after = State();
    if (!card_.verified) {
      refused_.insert(code);
      return after.blocked ? CardLockResult::kBlocked : CardLockResult::kRefused;
    }
    taken = onTaken_;
  }
  if (taken) taken();
  return CardLockResult::kTaken;
}

CardLockResult FakeCardLock::UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                        LastTry lastTry, platform::CardLockState& after) {
  std::function<void()> taken;
  {
    const MutexLock lock(lock_);
    if (!IsCode(unblockingCode, 8) || !IsCode(newPin, 4)) return CardLockResult::kNoCode;
    if (!Succeeded(failure_) || card_.tries > 0) return CardLockResult::kFailed;
    after = State();
    if (card_.unblockTries == 0) return CardLockResult::kBlocked;
    const std::string code(unblockingCode);
    if (refused_.count("puk " + code) != 0) return CardLockResult::kRefusedBefore;
    if (card_.unblockTries == 1 && lastTry == LastTry::kKeep) return CardLockResult::kLastTry;
    sent_.push_back(code);
    if (code != card_.puk) {
      --card_.unblockTries;
      refused_.insert("puk " + code);
      after = State();
      return card_.unblockTries == 0 ? CardLockResult::kBlocked : CardLockResult::kRefused;
    }
    card_.pin = newPin;
    card_.verified = true;
    card_.tries = 3;
    card_.unblockTries = 10;
    refused_.erase(card_.pin);
    after = State();
    taken = onTaken_;
  }
  if (taken) taken();
  return CardLockResult::kTaken;
}

void FakeCardLock::ExpectCode() {
  const MutexLock lock(lock_);
  ++expected_;
}

void FakeCardLock::Reset() {
  const MutexLock lock(lock_);
  card_.verified = false;
  ++powerUp_;
}

void FakeCardLock::PutIn(const Card& card) {
  const MutexLock lock(lock_);
  card_ = card;
  refused_.clear();
  ++powerUp_;
}

void FakeCardLock::SetFailure(SimResult failure) {
  const MutexLock lock(lock_);
  failure_ = failure;
}

void FakeCardLock::OnTaken(std::function<void()> look) {
  const MutexLock lock(lock_);
  onTaken_ = std::move(look);
}

FakeCardLock::Card FakeCardLock::Now() const {
  const MutexLock lock(lock_);
  return card_;
}

std::vector<std::string> FakeCardLock::Sent() const {
  const MutexLock lock(lock_);
  return sent_;
}

int FakeCardLock::CodesExpected() const {
  const MutexLock lock(lock_);
  return expected_;
}

int FakeCardLock::Asked() const {
  const MutexLock lock(lock_);
  return asked_;
}

}  // namespace kelpin::test
