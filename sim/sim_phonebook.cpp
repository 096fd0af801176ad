#include "sim/sim_phonebook.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>

namespace kelpin::sim {
namespace {

using platform::SimResult;

// At most 255 units and a zero unit.
template <std::size_t N>
void CopyBounded(char16_t (&to)[N], std::u16string_view from) {
  const std::size_t length = std::min(from.size(), N - 1);
  std::copy_n(from.begin(), length, to);
  to[length] = u'\0';
}

// The text of a buffer; its last unit counts as the terminator whatever it holds.
template <std::size_t N>
std::u16string_view BoundedText(const char16_t (&from)[N]) {
  const char16_t* const last = std::end(from) - 1;
  return {from, static_cast<std::size_t>(std::find(from, last, u'\0') - from)};
}

platform::SimPhonebookEntry ToWrite(const char16_t* name, const char16_t* number) {
  platform::SimPhonebookEntry entry;
  entry.params = platform::kSimEntryAll;
  entry.addressType = IsInternational(number) != 0 ? platform::kAddressTypeInternational
                                                   : platform::kAddressTypeUnknown;
  entry.numPlan = platform::kNumPlanTelephone;
  CopyBounded(entry.text, name);
  CopyBounded(entry.address, number);
  return entry;
}

// What an entry has to hold; none where its location has to be free.
std::optional<platform::SimPhonebookEntry> ToCompare(std::u16string_view name,
                                                     std::u16string_view number) {
  if (name.empty() && number.empty()) return std::nullopt;
  platform::SimPhonebookEntry entry;
  entry.params = platform::kSimEntryAddress | platform::kSimEntryText;
  CopyBounded(entry.text, name);
  CopyBounded(entry.address, number);
  return entry;
}

}  // namespace

int IsInternational(std::u16string_view number) {
  for (std::size_t at = 0; at < number.size(); ++at) {
    if (number[at] == u'+' && (at == 0 || number[at - 1] == u'#')) return 1;
  }
  return 0;
}

SimPhonebook::SimPhonebook(platform::SimInterface& sim, platform::KernelObjects& kernel)
    : interface_(sim), kernel_(kernel) {}

SimPhonebook::~SimPhonebook() {
  Close();
}

SimResult SimPhonebook::ProbeSim(platform::SimInterface& sim) {
  platform::SimHandle probe = 0;
  const SimResult opened =
      sim.SimInitialize(platform::kSimInitNoNotifications, nullptr, nullptr, probe);
  if (!platform::Succeeded(opened)) return opened;
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  const SimResult status =
      sim.SimGetPhonebookStatus(probe, platform::kSimPhonebookStorageSim, used, total);
  static_cast<void>(sim.SimDeinitialize(probe));
  return status;
}

SimResult SimPhonebook::Keep(SimResult result) {
  lastResult_.store(result);
  return result;
}

SimResult SimPhonebook::Open() {
  Close();
  lastResult_.store(SimResult::kOk);
  collectDeletions_ = 1;
  collectStores_ = 1;
  total_ = 0;
  used_ = 0;
  smsTotal_ = 0;
  smsUsed_ = 0;
  reserved_ = {};
  maxNumberLength_ = 0;
  maxNameLength_ = 0;
  {
    std::shared_ptr<platform::Event> stored = kernel_.CreateEvent(kStoredEventName);
    std::shared_ptr<platform::Event> deleted = kernel_.CreateEvent(kDeletedEventName);
    const MutexLock lock(listsLock_);
    storedEvent_ = std::move(stored);
    deletedEvent_ = std::move(deleted);
  }
  platform::SimHandle opened = 0;
  const SimResult result = interface_.SimInitialize(platform::kSimInitSimCardNotifications,
                                                    &SimPhonebook::OnSimNotify, this, opened);
  sim_ = platform::Succeeded(result) ? opened : 0;
  return Keep(result);
}

void SimPhonebook::Close() {
  const platform::SimHandle open = sim_.exchange(0);
  // No notice comes after this, so what follows is nobody else's.
  if (open != 0) static_cast<void>(Keep(interface_.SimDeinitialize(open)));
  {
    const MutexLock lock(slotsLock_);
    usedSlots_.reset();
    slotCount_ = 0;
  }
  const MutexLock lock(listsLock_);
  storedEvent_.reset();
  deletedEvent_.reset();
}

SimResult SimPhonebook::ReadCaps() {
  platform::SimCaps caps;
  const SimResult result = interface_.SimGetDevCaps(sim_, platform::kSimCapsAll, caps);
  if (platform::Succeeded(result)) {
    maxNumberLength_ = caps.maxAddressLength;
    maxNameLength_ = caps.maxTextLength;
  }
  return Keep(result);
}

SimResult SimPhonebook::ReadStatus() {
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  const SimResult result =
      interface_.SimGetPhonebookStatus(sim_, platform::kSimPhonebookStorageSim, used, total);
  if (platform::Succeeded(result)) {
    used_ = used;
    total_ = total;
  }
  return Keep(result);
}

SimResult SimPhonebook::ReadSmsStatus() {
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  const SimResult result =
      interface_.SimGetSmsStorageStatus(sim_, platform::kSimSmsStorageSim, used, total);
  if (platform::Succeeded(result)) {
    smsUsed_ = used;
    smsTotal_ = total;
  }
  return Keep(result);
}

SimResult SimPhonebook::ReadEntry(std::uint32_t index, std::u16string* name,
                                  std::u16string* number) {
  if (name == nullptr || number == nullptr) return SimResult::kBadParameter;
  platform::SimPhonebookEntry entry;
  const SimResult result =
      interface_.SimReadPhonebookEntry(sim_, platform::kSimPhonebookStorageSim, index, entry);
  if (platform::Succeeded(result)) {
    name->assign(BoundedText(entry.text));
    number->assign(BoundedText(entry.address));
  }
  return Keep(result);
}

SimResult SimPhonebook::WriteEntry(std::uint32_t index, const char16_t* name,
                                   const char16_t* number) {
  if (name == nullptr || number == nullptr) return SimResult::kBadParameter;
  return Keep(interface_.SimWritePhonebookEntry(sim_, platform::kSimPhonebookStorageSim, index,
                                                ToWrite(name, number)));
}

SimResult SimPhonebook::WriteEntry(std::uint32_t index, const char16_t* name,
                                   const char16_t* number, const KnownTexts& known) {
  if (name == nullptr || number == nullptr) return SimResult::kBadParameter;
  const auto before = ToCompare(known.name, known.number);
  return Keep(interface_.SimWritePhonebookEntryIf(sim_, platform::kSimPhonebookStorageSim, index,
                                                  ToWrite(name, number),
                                                  before ? &*before : nullptr));
}

SimResult SimPhonebook::DeleteEntry(std::uint32_t index) {
  return Keep(interface_.SimDeletePhonebookEntry(sim_, platform::kSimPhonebookStorageSim, index));
}

SimResult SimPhonebook::DeleteEntry(std::uint32_t index, const KnownTexts& known) {
  const auto before = ToCompare(known.name, known.number);
  return Keep(interface_.SimDeletePhonebookEntryIf(sim_, platform::kSimPhonebookStorageSim, index,
                                                   before ? &*before : nullptr));
}

SimResult SimPhonebook::WriteNewEntry(std::uint32_t& index, const char16_t* name,
                                      const char16_t* number) {
  for (index = FirstFreeSlot(); index != 0; index = FirstFreeSlot()) {
    const SimResult result = WriteEntry(index, name, number, KnownTexts());
    if (platform::Succeeded(result)) MarkSlot(index, 1);
    if (result != SimResult::kEntryChanged) return result;
    MarkSlot(index, 1);
  }
  return SimResult::kSimFull;
}

SimResult SimPhonebook::ReadEntry(SimEntry& entry) {
  platform::SimPhonebookEntry read;
  const SimResult result =
      interface_.SimReadPhonebookEntry(sim_, platform::kSimPhonebookStorageSim, entry.index, read);
  if (platform::Succeeded(result)) {
    CopyBounded(entry.name, BoundedText(read.text));
    CopyBounded(entry.number, BoundedText(read.address));
    entry.addressType = read.addressType;
    entry.numPlan = read.numPlan;
  }
  return Keep(result);
}

SimResult SimPhonebook::WriteEntry(SimEntry& entry) {
  entry.name[kEntryTextLength - 1] = u'\0';
  entry.number[kEntryTextLength - 1] = u'\0';
  entry.addressType = IsInternational(entry.number) != 0 ? platform::kAddressTypeInternational
                                                         : platform::kAddressTypeUnknown;
  entry.numPlan = platform::kNumPlanTelephone;
  return WriteEntry(entry.index, entry.name, entry.number);
}

void SimPhonebook::PrepareSlotMap() {
  const std::size_t wanted = std::size_t{total_} + 1;
  const MutexLock lock(slotsLock_);
  if (usedSlots_ != nullptr && slotCount_ == wanted) {
    std::memset(usedSlots_.get(), 0, slotCount_);
    return;
  }
  // The first map, or that of a card with another capacity.
  usedSlots_.reset(new (std::nothrow) std::uint8_t[wanted]());
  slotCount_ = usedSlots_ != nullptr ? wanted : 0;
}

void SimPhonebook::MarkSlotLocked(std::uint32_t index, std::uint8_t value) {
  if (index < slotCount_) usedSlots_[index] = value;
}

void SimPhonebook::MarkSlot(std::uint32_t index, std::uint8_t value) {
  const MutexLock lock(slotsLock_);
  MarkSlotLocked(index, value);
}

std::uint8_t SimPhonebook::Slot(std::uint32_t index) const {
  const MutexLock lock(slotsLock_);
  return index < slotCount_ ? usedSlots_[index] : std::uint8_t{0};
}

std::uint32_t SimPhonebook::FirstFreeSlotLocked() const {
  const std::uint32_t total = total_;
  for (std::uint32_t index = 1; index <= total && index < slotCount_; ++index) {
    if (usedSlots_[index] == 0) return index;
  }
  return 0;
}

std::uint32_t SimPhonebook::FirstFreeSlot() const {
  const MutexLock lock(slotsLock_);
  return FirstFreeSlotLocked();
}

void SimPhonebook::OnSimNotify(std::uint32_t code, const void* data, std::uint32_t size,
                               void* parameter) {
  auto* const phonebook = static_cast<SimPhonebook*>(parameter);
  if (phonebook != nullptr) (phonebook->*phonebook->handler_)(code, data, size);
}

void SimPhonebook::OnNotify(std::uint32_t code, const void* data, std::uint32_t size) {
  if (code != platform::kSimNotifyPhonebookEntryStored &&
      code != platform::kSimNotifyPhonebookEntryDeleted) {
    return;
  }
  platform::SimPhonebookChange change;
  if (data == nullptr || size < sizeof(change)) return;
  std::memcpy(&change, data, sizeof(change));
  if (change.storage != platform::kSimPhonebookStorageSim) return;
  if (code == platform::kSimNotifyPhonebookEntryStored) {
    OnStored(change.entryIndex);
  } else {
    OnDeleted(change.entryIndex);
  }
}

void SimPhonebook::OnStored(std::uint32_t index) {
  {
    const MutexLock lock(slotsLock_);
    if (usedSlots_ == nullptr) return;
    if (index == platform::kSimNoIndex) {
      index = FirstFreeSlotLocked();
      if (index == 0) return;
    }
    if (index > total_) return;
    MarkSlotLocked(index, 1);
  }
  if (index == 0 || collectStores_ == 0) return;
  const MutexLock lock(listsLock_);
  if (storedList_.Append(index) != 0 && storedEvent_ != nullptr) {
    storedEvent_->EventModify(platform::EventAction::kPulse);
  }
}

// A notice without an index is not guessed at: the first free location is no deleted one.
void SimPhonebook::OnDeleted(std::uint32_t index) {
  {
    const MutexLock lock(slotsLock_);
    if (usedSlots_ == nullptr || index > total_) return;
    MarkSlotLocked(index, 0);
  }
  if (index == 0 || collectDeletions_ == 0) return;
  const MutexLock lock(listsLock_);
  if (deletedList_.Append(index) != 0 && deletedEvent_ != nullptr) {
    deletedEvent_->EventModify(platform::EventAction::kPulse);
  }
}

std::shared_ptr<platform::Event> SimPhonebook::StoredEvent() const {
  const MutexLock lock(listsLock_);
  return storedEvent_;
}

std::shared_ptr<platform::Event> SimPhonebook::DeletedEvent() const {
  const MutexLock lock(listsLock_);
  return deletedEvent_;
}

platform::WaitResult SimPhonebook::WaitStored(std::uint32_t milliseconds) {
  const std::shared_ptr<platform::Event> event = StoredEvent();
  return event != nullptr ? event->Wait(milliseconds) : platform::WaitResult::kAbandoned;
}

platform::WaitResult SimPhonebook::WaitDeleted(std::uint32_t milliseconds) {
  const std::shared_ptr<platform::Event> event = DeletedEvent();
  return event != nullptr ? event->Wait(milliseconds) : platform::WaitResult::kAbandoned;
}

int SimPhonebook::TakeStored(std::uint32_t& index) {
  const MutexLock lock(listsLock_);
  return storedList_.TakeFirst(index);
}

int SimPhonebook::TakeDeleted(std::uint32_t& index) {
  const MutexLock lock(listsLock_);
  return deletedList_.TakeFirst(index);
}

std::uint32_t SimPhonebook::StoredCount() const {
  const MutexLock lock(listsLock_);
  return storedList_.Count();
}

std::uint32_t SimPhonebook::DeletedCount() const {
  const MutexLock lock(listsLock_);
  return deletedList_.Count();
}

}  // namespace kelpin::sim
