#include "device/card/sim_service.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "device/card/card_code.h"
#include "platform/utf8.h"

namespace kelpin::device::card {

using platform::CardLockResult;
using platform::SimResult;
using platform::Succeeded;

namespace {

constexpr std::uint8_t kPlanMask = 0x0F;

// What an operation leaves to its caller.
struct Outcome {
  SimResult result = SimResult::kNotReady;
};

struct Figures {
  SimResult result = SimResult::kNotReady;
  std::uint32_t used = 0;
  std::uint32_t total = 0;

  SimResult Tell(std::uint32_t& usedOut, std::uint32_t& totalOut) const {
    if (Succeeded(result)) {
      usedOut = used;
      totalOut = total;
    }
    return result;
  }
};

template <std::size_t size>
void CopyText(char16_t (&out)[size], std::u16string_view text) {
  const std::size_t length = std::min(text.size(), size - 1);
  std::copy_n(text.begin(), length, out);
}

// Up to the terminator, and never beyond the array.
template <std::size_t size>
std::u16string_view Text(const char16_t (&text)[size]) {
  return {text, static_cast<std::size_t>(std::find(text, text + size, u'\0') - text)};
}

platform::SimPhonebookEntry ToCondition(const platform::SimPhonebookEntry* known) {
  return known != nullptr ? *known : platform::SimPhonebookEntry();
}

platform::SimPhonebookEntry ToPlatform(const PhonebookEntry& entry) {
  platform::SimPhonebookEntry out;
  out.params = platform::kSimEntryAll;
  CopyText(out.address, AddressText(entry.number.digits, entry.number.tonNpi));
  out.addressType = IsInternational(entry.number.tonNpi) ? platform::kAddressTypeInternational
                                                         : platform::kAddressTypeUnknown;
  out.numPlan = entry.number.tonNpi & kPlanMask;
  CopyText(out.text, entry.name);
  return out;
}

}  // namespace

SimService::SimService(CardChannel& channel)
    : channel_(channel), files_(channel), session_(files_), commands_(session_) {
  channel_.SetListener(this);
}

SimService::~SimService() {
  channel_.SetListener(nullptr);
}

std::u16string SimService::Trouble() const {
  const std::string trouble = channel_.Trouble();
  std::u16string text;
  for (std::string_view rest = trouble; !rest.empty();) {
    AppendUtf16(TakeUtf8(rest).value_or(0xFFFD), text);
  }
  return text;
}

// Events of the card.

void SimService::CardInserted() {
  Hear(lost_, News::kRewritten);
}

void SimService::CardRemoved() {
  Hear(lost_, News::kGone);
}

void SimService::CardReset() {
  Hear(lost_, News::kRewritten);
}

void SimService::CardTouched() {
  Hear(touched_, News::kRewritten);
}

void SimService::Hear(std::atomic<bool>& event, News news) {
  event = true;
  ++generation_;
  queue_.Post(0, [this, news](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    if (news == News::kGone) {
      NotifyReady(false);
      return;
    }
    changedByOthers_ = true;
    NotifyRewritten();
  });
}

void SimService::HeedEvents() {
  if (lost_.exchange(false)) session_.Drop();
  if (touched_.exchange(false)) session_.Forget();
  // One that others ever had to themselves may have been written to at any time since.
  if (channel_.OthersMayWrite()) shared_ = true;
  if (afresh_.exchange(false) && shared_) {
    ++generation_;
    session_.Forget();
  }
}

void SimService::HeedFinds() {
  if (session_.TakeOthersWrote()) CardTouched();
}

void SimService::CallOut(const std::function<bool()>& open, const std::function<void()>& call) {
  // The lock is this thread's already where one call leads to another.
  if (callsOut_++ == 0) callLock_.lock();
  if (open()) call();
  if (--callsOut_ == 0) callLock_.unlock();
}

void SimService::NotifySim(std::uint32_t code, std::uint32_t location) {
  std::vector<std::pair<platform::SimHandle, SimSession>> sessions;
  {
    const MutexLock lock(lock_);
    for (const auto& [handle, session] : simSessions_) {
      if (session.notify != nullptr) sessions.emplace_back(handle, session);
    }
  }
  const platform::SimPhonebookChange change = {location, platform::kSimPhonebookStorageSim};
  for (const auto& [handle, session] : sessions) {
    CallOut([this, sim = handle] { return HasSimSession(sim); },
            [&, to = session] { to.notify(code, &change, sizeof(change), to.parameter); });
  }
}

// The SIM interface.

bool SimService::HasSimSession(platform::SimHandle sim) {
  const MutexLock lock(lock_);
  return simSessions_.count(sim) != 0;
}

template <typename Outcome>
Outcome SimService::OnCard(std::function<void(Outcome& outcome)> operation) {
  const auto outcome = std::make_shared<Outcome>();
  const bool ran = queue_.Run([this, outcome, operation = std::move(operation)](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    operation(*outcome);
    HeedFinds();
  });
  return ran ? *outcome : Outcome();
}

template <typename Outcome>
Outcome SimService::OnCard(platform::SimHandle sim, bool storageFits,
                           std::function<void(Outcome& outcome)> operation) {
  if (storageFits && HasSimSession(sim)) return OnCard(std::move(operation));
  Outcome outcome;
  outcome.result = SimResult::kBadParameter;
  return outcome;
}

SimResult SimService::SimInitialize(std::uint32_t flags, platform::SimNotifyCallback callback,
                                    void* parameter, platform::SimHandle& sim) {
  sim = 0;
  if ((flags & ~platform::kSimInitSimCardNotifications) != 0) return SimResult::kBadParameter;
  SimSession session;
  session.parameter = parameter;
  if ((flags & platform::kSimInitSimCardNotifications) != 0) session.notify = callback;
  const MutexLock lock(lock_);
  sim = nextHandle_++;
  simSessions_[sim] = session;
  return SimResult::kOk;
}

SimResult SimService::SimDeinitialize(platform::SimHandle sim) {
  if (!HasSimSession(sim)) return SimResult::kBadParameter;
  queue_.Dismiss(sim, [this, sim] {
    const MutexLock calls(callLock_);
    const MutexLock lock(lock_);
    simSessions_.erase(sim);
  });
  return SimResult::kOk;
}

SimResult SimService::SimGetDevCaps(platform::SimHandle sim, std::uint32_t type,
                                    platform::SimCaps& caps) {
  struct Outcome {
    SimResult result = SimResult::kNotReady;
    platform::SimCaps caps;
  };
  const auto outcome = OnCard<Outcome>(sim, type == platform::kSimCapsAll, [this](Outcome& out) {
    out.result = session_.Read([this, &out] {
      const SimResult limits =
          session_.Book().Limits(out.caps.maxAddressLength, out.caps.maxTextLength);
      out.caps.maxIndex = session_.Book().Layout().Total();
      return limits;
    });
  });
  if (!Succeeded(outcome.result)) return outcome.result;
  caps = outcome.caps;
  caps.params = platform::kSimCapsAll;
  caps.minIndex = 1;
  return outcome.result;
}

SimResult SimService::SimReadPhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                            std::uint32_t index,
                                            platform::SimPhonebookEntry& entry) {
  struct Outcome {
    SimResult result = SimResult::kNotReady;
    PhonebookEntry entry;
  };
  const auto outcome = OnCard<Outcome>(
      sim, storage == platform::kSimPhonebookStorageSim, [this, index](Outcome& out) {
        out.result = session_.Read([&] { return session_.Book().Read(index, out.entry); });
      });
  if (Succeeded(outcome.result)) entry = ToPlatform(outcome.entry);
  return outcome.result;
}

SimResult SimService::SimGetPhonebookStatus(platform::SimHandle sim, std::uint32_t storage,
                                            std::uint32_t& used, std::uint32_t& total) {
  const auto outcome =
      OnCard<Figures>(sim, storage == platform::kSimPhonebookStorageSim, [this](Figures& out) {
        out.result = session_.Read([&] { return session_.Book().Status(out.used, out.total); });
      });
  return outcome.Tell(used, total);
}

SimResult SimService::Write(platform::SimHandle sim, std::uint32_t storage, std::uint32_t index,
                            const platform::SimPhonebookEntry& entry, const Condition& condition) {
  if (entry.size != sizeof(entry)) return SimResult::kBadParameter;
  const auto write = [this, index, entry, condition](Outcome& out) {
    const bool international = (entry.params & platform::kSimEntryAddressType) != 0 &&
                               entry.addressType == platform::kAddressTypeInternational;
    const std::u16string_view address =
        (entry.params & platform::kSimEntryAddress) != 0 ? Text(entry.address) : u"";
    const std::u16string_view text =
        (entry.params & platform::kSimEntryText) != 0 ? Text(entry.text) : u"";
    const auto change = [&](EntryWriter& writer) {
      if (condition) writer.Expect({Text(condition->text), Text(condition->address)});
      return writer.Write(index, text, address, international);
    };
    out.result = session_.ChangeEntry(index, change).result;
    if (Succeeded(out.result)) NotifySim(platform::kSimNotifyPhonebookEntryStored, index);
  };
  return OnCard<Outcome>(sim, storage == platform::kSimPhonebookStorageSim, write).result;
}

SimResult SimService::Delete(platform::SimHandle sim, std::uint32_t storage, std::uint32_t index,
                             const Condition& condition) {
  const auto remove = [this, index, condition](Outcome& out) {
    const WriteOutcome written = session_.ChangeEntry(index, [&](EntryWriter& writer) {
      if (condition) writer.Expect({Text(condition->text), Text(condition->address)});
      return writer.Delete(index);
    });
    out.result = written.result;
    if (Succeeded(out.result) && written.changed) {
      NotifySim(platform::kSimNotifyPhonebookEntryDeleted, index);
    }
  };
  return OnCard<Outcome>(sim, storage == platform::kSimPhonebookStorageSim, remove).result;
}

SimResult SimService::SimWritePhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                             std::uint32_t index,
                                             const platform::SimPhonebookEntry& entry) {
  return Write(sim, storage, index, entry, std::nullopt);
}

SimResult SimService::SimDeletePhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                              std::uint32_t index) {
  return Delete(sim, storage, index, std::nullopt);
}

SimResult SimService::SimWritePhonebookEntryIf(platform::SimHandle sim, std::uint32_t storage,
                                               std::uint32_t index,
                                               const platform::SimPhonebookEntry& entry,
                                               const platform::SimPhonebookEntry* known) {
  return Write(sim, storage, index, entry, ToCondition(known));
}

SimResult SimService::SimDeletePhonebookEntryIf(platform::SimHandle sim, std::uint32_t storage,
                                                std::uint32_t index,
                                                const platform::SimPhonebookEntry* known) {
  return Delete(sim, storage, index, ToCondition(known));
}

SimResult SimService::SimGetSmsStorageStatus(platform::SimHandle sim, std::uint32_t storage,
                                             std::uint32_t& used, std::uint32_t& total) {
  const auto outcome =
      OnCard<Figures>(sim, storage == platform::kSimSmsStorageSim, [this](Figures& out) {
        out.result = session_.Read([&] { return session_.Book().Messages(out.used, out.total); });
      });
  return outcome.Tell(used, total);
}

// The lock.

platform::CardLockState SimService::LockState(const PinState& pin) {
  platform::CardLockState state;
  state.blocked = pin.enabled && pin.blocked;
  state.triesLeft = pin.triesLeft;
  state.unblockTriesLeft = pin.unblockTriesLeft;
  state.powerUp = session_.PowerUps();
  if (pin.enabled && !pin.verified) {
    // Another program may have opened the card, and some cards guard other things alone.
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    const SimResult read = session_.Read([&] { return session_.Book().Status(used, total); });
    state.wanted = read == SimResult::kPinRequired || read == SimResult::kPukRequired;
  }
  return state;
}

SimResult SimService::GetLockState(platform::CardLockState& state) {
  struct Told {
    SimResult result = SimResult::kNotReady;
    platform::CardLockState state;
  };
  const auto told = OnCard<Told>([this](Told& out) {
    PinState pin;
    out.result = session_.GetPinState(pin);
    if (Succeeded(out.result)) out.state = LockState(pin);
  });
  if (Succeeded(told.result)) state = told.state;
  return told.result;
}

platform::CardLockResult SimService::Present(
    std::function<platform::CardLockResult(PinState& pin)> send, platform::CardLockState& after) {
  struct Told {
    CardLockResult result = CardLockResult::kFailed;
    bool asked = false;
    platform::CardLockState state;
  };
  const auto told = OnCard<Told>([this, send = std::move(send)](Told& out) {
    PinState pin;
    out.result = send(pin);
    if (out.result == CardLockResult::kTaken) NotifyRewritten();
    out.asked = out.result != CardLockResult::kNoCode && out.result != CardLockResult::kFailed;
    if (out.asked) out.state = LockState(pin);
  });
  if (told.asked) after = told.state;
  return told.result;
}

CardLockResult SimService::VerifyPin(std::string_view pin, platform::LastTry lastTry,
                                     platform::CardLockState& after) {
  const auto code = std::make_shared<CardCode>(pin);
  return Present(
      [this, code, lastTry](PinState& state) {
        return session_.VerifyPin(code->Digits(), lastTry, state);
      },
      after);
}

CardLockResult SimService::UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                      platform::LastTry lastTry, platform::CardLockState& after) {
  const auto code = std::make_shared<CardCode>(unblockingCode);
  const auto pin = std::make_shared<CardCode>(newPin);
  return Present(
      [this, code, pin, lastTry](PinState& state) {
        return session_.UnblockPin(code->Digits(), pin->Digits(), lastTry, state);
      },
      after);
}

void SimService::ExpectCode() {
  if (codeGuard_) codeGuard_();
}

void SimService::Abandon() {
  givenUp_ = true;
  files_.Stop();
  queue_.Abandon();
}

}  // namespace kelpin::device::card
