#include "device/card/sim_service.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

namespace kelpin::device::card {

using platform::SimResult;
using platform::Succeeded;

namespace {

constexpr std::uint8_t kPlanMask = 0x0F;

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

// Events of the card.

void SimService::CardInserted() {
  lost_ = true;
  queue_.Post(0, [this](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    changedByOthers_ = true;
    NotifyRewritten();
  });
}

void SimService::CardRemoved() {
  lost_ = true;
  queue_.Post(0, [this](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    NotifyReady(false);
  });
}

void SimService::CardReset() {
  lost_ = true;
  queue_.Post(0, [this](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    changedByOthers_ = true;
    NotifyRewritten();
  });
}

void SimService::CardTouched() {
  touched_ = true;
  queue_.Post(0, [this](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    changedByOthers_ = true;
    NotifyRewritten();
  });
}

void SimService::HeedEvents() {
  if (lost_.exchange(false)) session_.Drop();
  if (touched_.exchange(false)) session_.Forget();
}

void SimService::NotifySim(std::uint32_t code, std::uint32_t location) {
  std::vector<SimSession> sessions;
  {
    const MutexLock lock(lock_);
    for (const auto& [handle, session] : simSessions_) {
      if (session.notify != nullptr) sessions.push_back(session);
    }
  }
  // Sessions are closed on this thread: those copied are open until we return.
  const platform::SimPhonebookChange change = {location, platform::kSimPhonebookStorageSim};
  for (const SimSession& session : sessions) {
    session.notify(code, &change, sizeof(change), session.parameter);
  }
}

void SimService::NotifyRadio(std::uint32_t code, const void* data, std::uint32_t size) {
  std::vector<RadioSession> sessions;
  {
    const MutexLock lock(lock_);
    for (const auto& [handle, session] : radioSessions_) {
      if (session.notify != nullptr && (session.classes & code & 0xFFFF0000) != 0) {
        sessions.push_back(session);
      }
    }
  }
  for (const RadioSession& session : sessions) {
    session.notify(code, data, size, session.parameter);
  }
}

void SimService::NotifyReady(bool ready) {
  platform::RilEquipmentState state;
  state.readyState = ready ? platform::kRilReadyPhonebook : 0;
  NotifyRadio(platform::kRilNotifyEquipmentState, &state, sizeof(state));
}

void SimService::NotifyRewritten() {
  NotifyRadio(platform::kRilNotifyPhonebookRewritten, nullptr, 0);
  NotifyReady(true);
}

// The SIM interface.

bool SimService::HasSimSession(platform::SimHandle sim) {
  const MutexLock lock(lock_);
  return simSessions_.count(sim) != 0;
}

template <typename Operation>
SimResult SimService::OnCard(platform::SimHandle sim, bool storageFits, Operation operation) {
  if (!storageFits || !HasSimSession(sim)) return SimResult::kBadParameter;
  SimResult result = SimResult::kNotReady;
  queue_.Run([&](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    result = operation();
  });
  return result;
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
    const MutexLock lock(lock_);
    simSessions_.erase(sim);
  });
  return SimResult::kOk;
}

SimResult SimService::SimGetDevCaps(platform::SimHandle sim, std::uint32_t type,
                                    platform::SimCaps& caps) {
  return OnCard(sim, type == platform::kSimCapsAll, [&] {
    platform::SimCaps read;
    const SimResult result = session_.Read([&] {
      const SimResult limits = session_.Book().Limits(read.maxAddressLength, read.maxTextLength);
      read.maxIndex = session_.Book().Layout().Total();
      return limits;
    });
    if (!Succeeded(result)) return result;
    read.params = platform::kSimCapsAll;
    read.minIndex = 1;
    caps = read;
    return result;
  });
}

SimResult SimService::SimReadPhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                            std::uint32_t index,
                                            platform::SimPhonebookEntry& entry) {
  return OnCard(sim, storage == platform::kSimPhonebookStorageSim, [&] {
    PhonebookEntry read;
    const SimResult result = session_.Read([&] { return session_.Book().Read(index, read); });
    if (Succeeded(result)) entry = ToPlatform(read);
    return result;
  });
}

SimResult SimService::SimGetPhonebookStatus(platform::SimHandle sim, std::uint32_t storage,
                                            std::uint32_t& used, std::uint32_t& total) {
  return OnCard(sim, storage == platform::kSimPhonebookStorageSim,
                [&] { return session_.Read([&] { return session_.Book().Status(used, total); }); });
}

SimResult SimService::SimWritePhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                             std::uint32_t index,
                                             const platform::SimPhonebookEntry& entry) {
  if (entry.size != sizeof(entry)) return SimResult::kBadParameter;
  return OnCard(sim, storage == platform::kSimPhonebookStorageSim, [&] {
    const bool international = (entry.params & platform::kSimEntryAddressType) != 0 &&
                               entry.addressType == platform::kAddressTypeInternational;
    const std::u16string_view address =
        (entry.params & platform::kSimEntryAddress) != 0 ? Text(entry.address) : u"";
    const std::u16string_view text =
        (entry.params & platform::kSimEntryText) != 0 ? Text(entry.text) : u"";
    const WriteOutcome outcome = session_.ChangeEntry(index, [&](EntryWriter& writer) {
      return writer.Write(index, text, address, international);
    });
    if (Succeeded(outcome.result)) NotifySim(platform::kSimNotifyPhonebookEntryStored, index);
    return outcome.result;
  });
}

SimResult SimService::SimDeletePhonebookEntry(platform::SimHandle sim, std::uint32_t storage,
                                              std::uint32_t index) {
  return OnCard(sim, storage == platform::kSimPhonebookStorageSim, [&] {
    const WriteOutcome outcome =
        session_.ChangeEntry(index, [&](EntryWriter& writer) { return writer.Delete(index); });
    if (Succeeded(outcome.result) && outcome.changed) {
      NotifySim(platform::kSimNotifyPhonebookEntryDeleted, index);
    }
    return outcome.result;
  });
}

SimResult SimService::SimGetSmsStorageStatus(platform::SimHandle sim, std::uint32_t storage,
                                             std::uint32_t& used, std::uint32_t& total) {
  return OnCard(sim, storage == platform::kSimSmsStorageSim, [&] {
    return session_.Read([&] { return session_.Book().Messages(used, total); });
  });
}

SimResult SimService::GetPinState(PinState& state) {
  SimResult result = SimResult::kNotReady;
  queue_.Run([&](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    result = session_.GetPinState(state);
  });
  return result;
}

SimResult SimService::VerifyPin(std::string_view code, bool evenTheLastTry, PinState& state) {
  SimResult result = SimResult::kNotReady;
  queue_.Run([&](bool cancelled) {
    if (cancelled) return;
    HeedEvents();
    result = session_.VerifyPin(code, evenTheLastTry, state);
    if (Succeeded(result)) NotifyRewritten();
  });
  return result;
}

// The radio interface.

std::int32_t SimService::RIL_Initialize(std::uint32_t port, platform::RilResultCallback result,
                                        platform::RilNotifyCallback notify,
                                        std::uint32_t notificationClasses, void* parameter,
                                        platform::RilHandle& ril) {
  ril = 0;
  if (port != platform::kRilPort) return -1;
  const MutexLock lock(lock_);
  ril = nextHandle_++;
  radioSessions_[ril] = {result, notify, notificationClasses, parameter};
  return 0;
}

std::int32_t SimService::RIL_Deinitialize(platform::RilHandle ril) {
  {
    const MutexLock lock(lock_);
    if (radioSessions_.count(ril) == 0) return -1;
  }
  queue_.Dismiss(ril, [this, ril] {
    const MutexLock lock(lock_);
    radioSessions_.erase(ril);
  });
  return 0;
}

template <typename Operation>
std::int32_t SimService::Command(platform::RilHandle ril, Operation operation) {
  RadioSession session;
  std::int32_t id = 0;
  {
    const MutexLock lock(lock_);
    const auto found = radioSessions_.find(ril);
    if (found == radioSessions_.end()) return -1;
    session = found->second;
    id = nextCommand_;
    nextCommand_ = id == std::numeric_limits<std::int32_t>::max() ? 1 : id + 1;
  }
  const bool posted = queue_.Post(ril, [this, session, id, operation](bool cancelled) {
    RadioAnswer answer;
    if (!cancelled) {
      HeedEvents();
      answer = operation();
    }
    if (session.result != nullptr) {
      session.result(answer.code, id, answer.data.empty() ? nullptr : answer.data.data(),
                     static_cast<std::uint32_t>(answer.data.size()), session.parameter);
    }
    if (answer.ownNumbersChanged) {
      const std::int32_t changed = -1;
      NotifyRadio(platform::kRilNotifyMiscellaneousSim, &changed, sizeof(changed));
    }
  });
  return posted ? id : -1;
}

std::int32_t SimService::RIL_ReadPhonebookEntries(platform::RilHandle ril, std::uint32_t first,
                                                  std::uint32_t last) {
  return Command(ril, [this, first, last] { return commands_.ReadEntries(first, last, false); });
}

std::int32_t SimService::RIL_SendRestrictedSimCmd(platform::RilHandle ril, std::uint32_t command,
                                                  const platform::RilSimCmdParameters& parameters,
                                                  const std::uint8_t* data, std::uint32_t size) {
  if (parameters.size != sizeof(parameters) || size > 0xFF) return -1;
  std::vector<std::uint8_t> bytes;
  if (data != nullptr) bytes.assign(data, data + size);
  return Command(ril, [this, command, parameters, bytes] {
    return commands_.RestrictedCommand(command, parameters, bytes);
  });
}

RadioAnswer SimService::TellChanged() {
  RadioAnswer answer;
  answer.code = platform::kRilResultOk;
  const std::uint32_t changed = std::exchange(changedByOthers_, false) ? 1 : 0;
  answer.data.resize(sizeof(changed));
  std::memcpy(answer.data.data(), &changed, sizeof(changed));
  return answer;
}

std::int32_t SimService::RIL_DevSpecific(platform::RilHandle ril, const void* block,
                                         std::uint32_t size) {
  std::uint32_t word = 0;
  if (block == nullptr || size < sizeof(word)) return -1;
  std::memcpy(&word, block, sizeof(word));
  switch (word) {
    case platform::kRilDevSimFile: {
      platform::RilSimFileCommand command;
      if (size != sizeof(command)) return -1;
      std::memcpy(&command, block, sizeof(command));
      return Command(ril, [this, command] { return commands_.FileCommand(command); });
    }
    case platform::kRilDevPhonebookChanged:
      return Command(ril, [this] { return TellChanged(); });
    case platform::kRilDevReadPhonebook: {
      std::uint32_t words[3] = {};
      std::memcpy(words, block, sizeof(words));
      return Command(ril, [this, first = words[1], last = words[2]] {
        return commands_.ReadEntries(first, last, true);
      });
    }
    case platform::kRilDevFreeExtensionRecords:
      return Command(ril, [this] { return commands_.FreeExtensionRecords(); });
    default:
      return -1;
  }
}

}  // namespace kelpin::device::card
