#include "device/card/card_session.h"

#include <algorithm>
#include <span>

#include "device/card/status_map.h"

namespace kelpin::device::card {
namespace {

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
  if (!swapped_) return SimResult::kOk;
  files_.EndTransaction();
  return SimResult::kWrongSim;
}

SimResult CardSession::Change(const std::function<CardResult()>& operation) {
  const SimResult begun = BeginChange();
  if (!Succeeded(begun)) return begun;
  const SimResult result = ToSimResult(operation());
  files_.EndTransaction();
  return Explain(result);
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
  EntryWriter writer(book_.Layout());
  outcome = operation(writer);
  files_.EndTransaction();
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

SimResult CardSession::VerifyPin(std::string_view code, bool evenTheLastTry, PinState& state) {
  const SimResult asked = GetPinState(state);
  if (!Succeeded(asked)) return asked;
  if (state.blocked) return SimResult::kPukRequired;
  if (state.verified || !state.enabled) return SimResult::kOk;
  if (state.triesLeft == 1 && !evenTheLastTry) return SimResult::kPinRequired;
  const CardResult sent = files_.VerifyPin(code, state);
  if (!sent.Ok()) return ToSimResult(sent);
  if (state.blocked) return SimResult::kPukRequired;
  return state.verified ? SimResult::kOk : SimResult::kIncorrectPassword;
}

}  // namespace kelpin::device::card
