#include "device/card/card_session.h"

#include <algorithm>
#include <span>

#include "device/card/card_code.h"
#include "device/card/status_map.h"

namespace kelpin::device::card {
namespace {

using platform::CardLockResult;
using platform::LastTry;
using platform::SimResult;
using platform::Succeeded;

constexpr std::uint16_t kIccidLength = 10;

}  // namespace

void CardSession::Forget() {
  files_.Forget();
  book_.Forget();
}

void CardSession::Drop() {
  files_.Close();
  book_.Forget();
}

SimResult CardSession::Connect() {
  if (files_.IsOpen()) {
    // Costs the card nothing, and tells a removal or a reset before anything is answered from
    // memory: the event may still be under way.
    const CardTransaction alive(files_);
  }
  if (files_.IsOpen()) return SimResult::kOk;
  book_.Forget();
  if (const TransportError error = files_.Open(); error != TransportError::kNone) {
    return ToSimResult(error);
  }
  ++powerUps_;
  std::vector<std::uint8_t> iccid;
  const CardResult result = files_.ReadBinary({kEfIccid}, 0, kIccidLength, iccid);
  if (result.Error() != TransportError::kNone) return ToSimResult(result);
  if (!iccid_.empty() && !iccid.empty() && iccid != iccid_) swapped_ = true;
  if (!iccid.empty()) iccid_ = std::move(iccid);
  return SimResult::kOk;
}

SimResult CardSession::Explain(SimResult result) {
  if (result != SimResult::kPinRequired) return result;
  PinState pin;
  if (!files_.GetPinState(pin).Ok()) return result;
  if (pin.blocked && pin.enabled) return SimResult::kPukRequired;
  // No PIN stands in the way: this card gives the right to its issuer alone.
  return pin.enabled && !pin.verified ? result : SimResult::kUnsupported;
}

SimResult CardSession::Ready() {
  const SimResult connected = Connect();
  if (!Succeeded(connected)) return connected;
  return Explain(ToSimResult(book_.Layout().Discover()));
}

SimResult CardSession::Read(const std::function<SimResult()>& operation) {
  SimResult result = Ready();
  if (Succeeded(result)) result = Explain(operation());
  if (result == ToSimResult(TransportError::kReset) && !files_.IsOpen()) {
    result = Ready();
    if (Succeeded(result)) result = Explain(operation());
  }
  return result;
}

SimResult CardSession::BeginChange() {
  SimResult result = Read([] { return SimResult::kOk; });
  if (!Succeeded(result)) return result;
  TransportError error = files_.BeginTransaction();
  if (error == TransportError::kReset) {
    // Reset since it was last used; nothing of the change was sent yet.
    Drop();
    result = Ready();
    if (!Succeeded(result)) return result;
    error = files_.BeginTransaction();
  }
  if (error != TransportError::kNone) return ToSimResult(error);
  if (!swapped_) {
    changing_ = true;
    return SimResult::kOk;
  }
  files_.EndTransaction();
  return SimResult::kWrongSim;
}

void CardSession::EndChange() {
  files_.EndTransaction();
  changing_ = false;
}

SimResult CardSession::WhyBroken(SimResult result) {
  if (result != ToSimResult(TransportError::kReset) || files_.IsOpen()) return result;
  const SimResult again = Ready();
  return Succeeded(again) ? result : again;
}

SimResult CardSession::Change(const std::function<CardResult()>& operation) {
  const SimResult begun = BeginChange();
  if (!Succeeded(begun)) return begun;
  const SimResult result = ToSimResult(operation());
  EndChange();
  return Explain(WhyBroken(result));
}

void CardSession::ReadBack(std::uint32_t location, WriteOutcome& outcome) {
  if (!Succeeded(Ready()) || swapped_) return;
  EntryPlace place;
  std::span<const std::uint8_t> data;
  if (!book_.Layout().Find(location, place) ||
      !place.set->adn->ReadAfresh(place.record, data).Ok()) {
    return;
  }
  outcome.doubtful = false;
  if (std::equal(data.begin(), data.end(), outcome.intended.begin(), outcome.intended.end())) {
    outcome.result = SimResult::kOk;
    outcome.changed = true;
  }
}

WriteOutcome CardSession::ChangeEntry(std::uint32_t location,
                                      const std::function<WriteOutcome(EntryWriter&)>& operation) {
  WriteOutcome outcome;
  outcome.changed = false;
  outcome.result = BeginChange();
  if (!Succeeded(outcome.result)) return outcome;
  EntryWriter writer(book_.Layout(), book_.Marks());
  outcome = operation(writer);
  EndChange();
  if (outcome.othersWrote) NoteOthersWrote();
  outcome.result = WhyBroken(outcome.result);
  if (outcome.doubtful) ReadBack(location, outcome);
  outcome.result = Explain(outcome.result);
  return outcome;
}

SimResult CardSession::GetPinState(PinState& state) {
  const SimResult connected = Connect();
  if (!Succeeded(connected)) return connected;
  // The application's PIN counts where there is an application; finding it needs no PIN.
  static_cast<void>(book_.Layout().Discover().Ok());
  return ToSimResult(files_.GetPinState(state));
}

CardLockResult CardSession::VerifyPin(std::string_view code, LastTry lastTry, PinState& state) {
  using Kind = RefusedCodes::Kind;
  if (!IsPin(code)) return CardLockResult::kNoCode;
  if (!Succeeded(GetPinState(state))) return CardLockResult::kFailed;
  if (!state.enabled || state.verified) return CardLockResult::kTaken;
  if (state.blocked) return CardLockResult::kBlocked;
  if (refused_.Has(iccid_, Kind::kPin, code)) return CardLockResult::kRefusedBefore;
  if (state.triesLeft == 1 && lastTry == LastTry::kKeep) return CardLockResult::kLastTry;
  if (!files_.VerifyPin(code, state).Ok()) return CardLockResult::kFailed;
  if (state.verified) return CardLockResult::kTaken;
  refused_.Add(iccid_, Kind::kPin, code);
  return state.blocked ? CardLockResult::kBlocked : CardLockResult::kRefused;
}

CardLockResult CardSession::UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                       LastTry lastTry, PinState& state) {
  using Kind = RefusedCodes::Kind;
  if (!IsPuk(unblockingCode) || !IsPin(newPin)) return CardLockResult::kNoCode;
  if (!Succeeded(GetPinState(state)) || !state.blocked) return CardLockResult::kFailed;
  if (state.unblockTriesLeft == 0) return CardLockResult::kBlocked;
  if (refused_.Has(iccid_, Kind::kPuk, unblockingCode)) return CardLockResult::kRefusedBefore;
  if (state.unblockTriesLeft == 1 && lastTry == LastTry::kKeep) return CardLockResult::kLastTry;
  if (!files_.UnblockPin(unblockingCode, newPin, state).Ok()) return CardLockResult::kFailed;
  if (!state.blocked) {
    // What was wrong before is right now.
    refused_.Remove(iccid_, Kind::kPin, newPin);
    return CardLockResult::kTaken;
  }
  refused_.Add(iccid_, Kind::kPuk, unblockingCode);
  return state.unblockTriesLeft == 0 ? CardLockResult::kBlocked : CardLockResult::kRefused;
}

}  // namespace kelpin::device::card
