#include "tests/support/fake_sim.h"

#include <algorithm>
#include <cstring>

#include "tests/support/call_text.h"

namespace kelpin::test {
namespace {

using platform::SimHandle;
using platform::SimPhonebookEntry;
using platform::SimResult;

void CopyText(char16_t (&to)[platform::kSimTextLength], std::u16string_view from) {
  const std::size_t length = std::min(from.size(), platform::kSimTextLength - 1);
  std::copy_n(from.begin(), length, to);
  to[length] = u'\0';
}

std::u16string_view Text(const char16_t (&from)[platform::kSimTextLength]) {
  const auto* end = std::find(std::begin(from), std::end(from), u'\0');
  return {from, static_cast<std::size_t>(end - from)};
}

std::size_t DigitCount(std::u16string_view number) {
  return number.size() - (number.starts_with(u'+') ? 1 : 0);
}

}  // namespace

SimResult FakeSim::Admit(std::string_view call, SimHandle sim) {
  const bool planned = failures_.Fails(call);
  MutexLock lock(lock_);
  if (planned) return plannedFailure_;
  const auto told = results_.find(call);
  if (told != results_.end() && told->second != SimResult::kOk) return told->second;
  return sessions_.contains(sim) ? SimResult::kOk : SimResult::kBadParameter;
}

SimResult FakeSim::CheckIndex(std::uint32_t storage, std::uint32_t index) {
  if (storage != platform::kSimPhonebookStorageSim) return SimResult::kBadParameter;
  return index >= 1 && index <= total_ ? SimResult::kOk : SimResult::kInvalidIndex;
}

SimResult FakeSim::SimInitialize(std::uint32_t flags, platform::SimNotifyCallback callback,
                                 void* parameter, SimHandle& sim) {
  journal_.Add(CallText("SimInitialize", flags, callback != nullptr ? "callback" : "none",
                        parameter != nullptr ? "parameter" : "none"));
  sim = 0;
  const bool planned = failures_.Fails("SimInitialize");
  MutexLock lock(lock_);
  if (planned) return plannedFailure_;
  const auto told = results_.find("SimInitialize");
  if (told != results_.end() && told->second != SimResult::kOk) return told->second;
  if ((flags & ~platform::kSimInitSimCardNotifications) != 0) return SimResult::kBadParameter;
  const bool notices = (flags & platform::kSimInitSimCardNotifications) != 0;
  sim = ++lastHandle_;
  sessions_[sim] = {notices ? callback : nullptr, parameter};
  return SimResult::kOk;
}

SimResult FakeSim::SimDeinitialize(SimHandle sim) {
  journal_.Add(CallText("SimDeinitialize", sim));
  const SimResult admitted = Admit("SimDeinitialize", sim);
  if (admitted != SimResult::kOk) return admitted;
  {
    MutexLock lock(lock_);
    sessions_.erase(sim);
  }
  callbacks_.Drop(sim);
  return SimResult::kOk;
}

SimResult FakeSim::SimGetDevCaps(SimHandle sim, std::uint32_t type, platform::SimCaps& caps) {
  journal_.Add(CallText("SimGetDevCaps", sim, type));
  const SimResult admitted = Admit("SimGetDevCaps", sim);
  if (admitted != SimResult::kOk) return admitted;
  if (type != platform::kSimCapsAll) return SimResult::kBadParameter;
  MutexLock lock(lock_);
  caps = {};
  caps.params = platform::kSimCapsAll;
  caps.maxAddressLength = maxAddressLength_;
  caps.maxTextLength = maxTextLength_;
  caps.minIndex = 1;
  caps.maxIndex = total_;
  return SimResult::kOk;
}

SimResult FakeSim::SimReadPhonebookEntry(SimHandle sim, std::uint32_t storage, std::uint32_t index,
                                         SimPhonebookEntry& entry) {
  journal_.Add(CallText("SimReadPhonebookEntry", sim, storage, index));
  const SimResult admitted = Admit("SimReadPhonebookEntry", sim);
  if (admitted != SimResult::kOk) return admitted;
  MutexLock lock(lock_);
  const SimResult location = CheckIndex(storage, index);
  if (location != SimResult::kOk) return location;
  const auto found = entries_.find(index);
  if (found == entries_.end()) return SimResult::kEntryEmpty;
  entry = found->second;
  return SimResult::kOk;
}

SimResult FakeSim::SimGetPhonebookStatus(SimHandle sim, std::uint32_t storage, std::uint32_t& used,
                                         std::uint32_t& total) {
  journal_.Add(CallText("SimGetPhonebookStatus", sim, storage));
  const SimResult admitted = Admit("SimGetPhonebookStatus", sim);
  if (admitted != SimResult::kOk) return admitted;
  if (storage != platform::kSimPhonebookStorageSim) return SimResult::kBadParameter;
  MutexLock lock(lock_);
  used = reportedUsed_.value_or(static_cast<std::uint32_t>(entries_.size()));
  total = total_;
  return SimResult::kOk;
}

bool FakeSim::Holds(std::uint32_t index, const SimPhonebookEntry* known) const {
  MutexLock lock(lock_);
  const auto found = entries_.find(index);
  if (known == nullptr || found == entries_.end()) {
    return known == nullptr && found == entries_.end();
  }
  return Text(known->text) == Text(found->second.text) &&
         Text(known->address) == Text(found->second.address);
}

SimResult FakeSim::SimWritePhonebookEntry(SimHandle sim, std::uint32_t storage, std::uint32_t index,
                                          const SimPhonebookEntry& entry) {
  journal_.Add(CallText("SimWritePhonebookEntry", sim, storage, index, Text(entry.text),
                        Text(entry.address)));
  const SimResult admitted = Admit("SimWritePhonebookEntry", sim);
  if (admitted != SimResult::kOk) return admitted;
  MutexLock lock(lock_);
  const SimResult location = CheckIndex(storage, index);
  if (location != SimResult::kOk) return location;
  if (Text(entry.text).size() > maxTextLength_ ||
      DigitCount(Text(entry.address)) > maxAddressLength_) {
    return SimResult::kBadParameter;
  }
  entries_[index] = entry;
  PostOwn(platform::kSimNotifyPhonebookEntryStored, index);
  return SimResult::kOk;
}

SimResult FakeSim::SimDeletePhonebookEntry(SimHandle sim, std::uint32_t storage,
                                           std::uint32_t index) {
  journal_.Add(CallText("SimDeletePhonebookEntry", sim, storage, index));
  const SimResult admitted = Admit("SimDeletePhonebookEntry", sim);
  if (admitted != SimResult::kOk) return admitted;
  MutexLock lock(lock_);
  const SimResult location = CheckIndex(storage, index);
  if (location != SimResult::kOk) return location;
  if (entries_.erase(index) != 0) PostOwn(platform::kSimNotifyPhonebookEntryDeleted, index);
  return SimResult::kOk;
}

SimResult FakeSim::SimWritePhonebookEntryIf(SimHandle sim, std::uint32_t storage,
                                            std::uint32_t index, const SimPhonebookEntry& entry,
                                            const SimPhonebookEntry* known) {
  return Holds(index, known) ? SimWritePhonebookEntry(sim, storage, index, entry)
                             : SimResult::kEntryChanged;
}

SimResult FakeSim::SimDeletePhonebookEntryIf(SimHandle sim, std::uint32_t storage,
                                             std::uint32_t index, const SimPhonebookEntry* known) {
  return Holds(index, known) ? SimDeletePhonebookEntry(sim, storage, index)
                             : SimResult::kEntryChanged;
}

SimResult FakeSim::SimGetSmsStorageStatus(SimHandle sim, std::uint32_t storage, std::uint32_t& used,
                                          std::uint32_t& total) {
  journal_.Add(CallText("SimGetSmsStorageStatus", sim, storage));
  const SimResult admitted = Admit("SimGetSmsStorageStatus", sim);
  if (admitted != SimResult::kOk) return admitted;
  if (storage != platform::kSimSmsStorageSim) return SimResult::kBadParameter;
  MutexLock lock(lock_);
  used = smsUsed_;
  total = smsTotal_;
  return SimResult::kOk;
}

void FakeSim::SetCapacity(std::uint32_t total) {
  MutexLock lock(lock_);
  total_ = total;
}

void FakeSim::SetLengths(std::uint32_t maxAddressLength, std::uint32_t maxTextLength) {
  MutexLock lock(lock_);
  maxAddressLength_ = maxAddressLength;
  maxTextLength_ = maxTextLength;
}

void FakeSim::SetSms(std::uint32_t used, std::uint32_t total) {
  MutexLock lock(lock_);
  smsUsed_ = used;
  smsTotal_ = total;
}

void FakeSim::SetEntry(std::uint32_t index, std::u16string_view name, std::u16string_view number) {
  SimPhonebookEntry entry;
  entry.params = platform::kSimEntryAll;
  entry.addressType = number.starts_with(u'+') ? platform::kAddressTypeInternational
                                               : platform::kAddressTypeUnknown;
  entry.numPlan = platform::kNumPlanTelephone;
  CopyText(entry.text, name);
  CopyText(entry.address, number);
  SetEntry(index, entry);
}

void FakeSim::SetEntry(std::uint32_t index, const SimPhonebookEntry& entry) {
  MutexLock lock(lock_);
  entries_[index] = entry;
}

void FakeSim::RemoveEntry(std::uint32_t index) {
  MutexLock lock(lock_);
  entries_.erase(index);
}

std::map<std::uint32_t, SimPhonebookEntry> FakeSim::Entries() const {
  MutexLock lock(lock_);
  return entries_;
}

std::u16string FakeSim::Name(std::uint32_t index) const {
  MutexLock lock(lock_);
  const auto found = entries_.find(index);
  return found == entries_.end() ? std::u16string() : std::u16string(Text(found->second.text));
}

std::u16string FakeSim::Number(std::uint32_t index) const {
  MutexLock lock(lock_);
  const auto found = entries_.find(index);
  return found == entries_.end() ? std::u16string() : std::u16string(Text(found->second.address));
}

void FakeSim::SetUsed(std::optional<std::uint32_t> used) {
  MutexLock lock(lock_);
  reportedUsed_ = used;
}

void FakeSim::SetResult(std::string_view call, SimResult result) {
  MutexLock lock(lock_);
  results_.insert_or_assign(std::string(call), result);
}

void FakeSim::SetPlannedFailure(SimResult result) {
  MutexLock lock(lock_);
  plannedFailure_ = result;
}

void FakeSim::SetOwnNotices(bool on) {
  MutexLock lock(lock_);
  ownNotices_ = on;
}

void FakeSim::Post(std::uint32_t code, const void* data, std::uint32_t size) {
  std::vector<std::uint8_t> bytes(size);
  if (size > 0) std::memcpy(bytes.data(), data, size);
  for (const auto& [handle, session] : sessions_) {
    if (session.callback == nullptr) continue;
    callbacks_.Post(handle, [session = session, code, bytes] {
      session.callback(code, bytes.data(), static_cast<std::uint32_t>(bytes.size()),
                       session.parameter);
    });
  }
}

void FakeSim::PostOwn(std::uint32_t code, std::uint32_t index) {
  if (!ownNotices_) return;
  const platform::SimPhonebookChange change{index, platform::kSimPhonebookStorageSim};
  Post(code, &change, sizeof(change));
}

void FakeSim::Notify(std::uint32_t code, const void* data, std::uint32_t size) {
  {
    MutexLock lock(lock_);
    Post(code, data, size);
  }
  callbacks_.Drain();
}

void FakeSim::NotifyChange(std::uint32_t code, std::uint32_t index, std::uint32_t storage) {
  const platform::SimPhonebookChange change{index, storage};
  Notify(code, &change, sizeof(change));
}

std::size_t FakeSim::OpenSessions() const {
  MutexLock lock(lock_);
  return sessions_.size();
}

}  // namespace kelpin::test
