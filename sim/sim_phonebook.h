#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/kernel_objects.h"
#include "platform/mutex.h"
#include "platform/sim_interface.h"
#include "sim/index_list.h"

namespace kelpin::sim {

inline constexpr std::size_t kEntryTextLength = 256;  // UTF-16 units, terminator included

inline constexpr std::u16string_view kStoredEventName = u"OEM_MY_SIM_STORED_EVENT_OEM";
inline constexpr std::u16string_view kDeletedEventName = u"OEM_MY_SIM_DELETED_EVENT_OEM";

// One entry of the SIM's phone book.
struct SimEntry {
  std::uint32_t index = 0;  // location, 1 … total
  char16_t name[kEntryTextLength] = {};
  char16_t number[kEntryTextLength] = {};  // dial string
  std::uint32_t addressType = platform::kAddressTypeUnknown;
  std::uint32_t numPlan = platform::kNumPlanTelephone;
};

// 1 when a number is an international one: it has a '+' that stands first or right after '#'.
int IsInternational(std::u16string_view number);

// The one door to the SIM's basic phone book. It keeps no entries: what is known of the card here
// is its figures, which locations are occupied, and which ones were stored or deleted while the
// program ran. Any thread, except that Open and Close take turns.
class SimPhonebook {
 public:
  SimPhonebook(platform::SimInterface& sim, platform::KernelObjects& kernel);
  ~SimPhonebook();  // closes
  SimPhonebook(const SimPhonebook&) = delete;
  SimPhonebook& operator=(const SimPhonebook&) = delete;

  // Whether a SIM can be used at all, asked through a session of its own.
  static platform::SimResult ProbeSim(platform::SimInterface& sim);

  // Starts afresh and opens a session with notices.
  platform::SimResult Open();
  // Ends the session. The waits under way go on until the program ends; no new one begins.
  void Close();

  // The SIM's limits. Asked before every operation on the SIM: its result tells whether the SIM is
  // ready.
  platform::SimResult ReadCaps();
  // Used and total.
  platform::SimResult ReadStatus();
  platform::SimResult ReadSmsStatus();

  // `name` and `number` may not be null, else nothing is asked. On failure both keep what the
  // caller put there.
  platform::SimResult ReadEntry(std::uint32_t index, std::u16string* name, std::u16string* number);
  // Texts are cut to 255 units; null texts: nothing is written.
  platform::SimResult WriteEntry(std::uint32_t index, const char16_t* name, const char16_t* number);
  platform::SimResult DeleteEntry(std::uint32_t index);

  // The same two for an entry that still is what `known` says, both texts empty where it is free.
  // Otherwise kEntryChanged: another program changed it, and nothing is written.
  struct KnownTexts {
    std::u16string_view name;
    std::u16string_view number;
  };
  platform::SimResult WriteEntry(std::uint32_t index, const char16_t* name, const char16_t* number,
                                 const KnownTexts& known);
  platform::SimResult DeleteEntry(std::uint32_t index, const KnownTexts& known);
  // Writes an entry at the lowest free location, which `index` becomes, and marks it. A location
  // that another program took meanwhile is marked and passed over. None left: kSimFull, and 0.
  platform::SimResult WriteNewEntry(std::uint32_t& index, const char16_t* name,
                                    const char16_t* number);

  // The same for a whole entry at its `index`. Writing sets `addressType` and `numPlan`.
  platform::SimResult ReadEntry(SimEntry& entry);
  platform::SimResult WriteEntry(SimEntry& entry);

  // The map of occupied locations. It has every location of the current total, all free, after
  // PrepareSlotMap; the caller marks the occupied ones. Before the first PrepareSlotMap there is
  // none, and locations that it does not know are neither marked nor free.
  void PrepareSlotMap();
  void MarkSlot(std::uint32_t index, std::uint8_t value);
  // 1 or 0; 0 for what is not in the map.
  std::uint8_t Slot(std::uint32_t index) const;
  // The lowest free location, 1-based; 0 when there is none.
  std::uint32_t FirstFreeSlot() const;

  // Waits until an entry was stored, or deleted. kAbandoned: wait no more.
  platform::WaitResult WaitStored(std::uint32_t milliseconds = platform::kInfinite);
  platform::WaitResult WaitDeleted(std::uint32_t milliseconds = platform::kInfinite);
  // Takes the oldest location out of the list of stored, or deleted, ones. 1, or 0 when the list is
  // empty.
  int TakeStored(std::uint32_t& index);
  int TakeDeleted(std::uint32_t& index);
  std::uint32_t StoredCount() const;
  std::uint32_t DeletedCount() const;

  // Whether notices of stored, or deleted, entries are kept for the watchers: 1 after Open. With 0
  // they only change the map.
  void SetCollectStores(std::uint32_t on) { collectStores_ = on; }
  void SetCollectDeletions(std::uint32_t on) { collectDeletions_ = on; }
  std::uint32_t CollectStores() const { return collectStores_; }
  std::uint32_t CollectDeletions() const { return collectDeletions_; }

  // As last read; 0 before.
  std::uint32_t Total() const { return total_; }
  std::uint32_t Used() const { return used_; }
  std::uint32_t SmsTotal() const { return smsTotal_; }
  std::uint32_t SmsUsed() const { return smsUsed_; }
  std::uint32_t MaxNumberLength() const { return maxNumberLength_; }
  std::uint32_t MaxNameLength() const { return maxNameLength_; }
  // Of the last call to the SIM.
  platform::SimResult LastResult() const { return lastResult_; }
  platform::SimHandle Handle() const { return sim_; }

  // What the SIM interface calls back: `parameter` is the object.
  static void OnSimNotify(std::uint32_t code, const void* data, std::uint32_t size,
                          void* parameter);

 private:
  using Handler = void (SimPhonebook::*)(std::uint32_t code, const void* data, std::uint32_t size);

  void OnNotify(std::uint32_t code, const void* data, std::uint32_t size);
  void OnStored(std::uint32_t index);
  void OnDeleted(std::uint32_t index);
  std::uint32_t FirstFreeSlotLocked() const REQUIRES(slotsLock_);
  void MarkSlotLocked(std::uint32_t index, std::uint8_t value) REQUIRES(slotsLock_);
  platform::SimResult Keep(platform::SimResult result);
  std::shared_ptr<platform::Event> StoredEvent() const;
  std::shared_ptr<platform::Event> DeletedEvent() const;

  const Handler handler_ = &SimPhonebook::OnNotify;
  platform::SimInterface& interface_;
  platform::KernelObjects& kernel_;

  // usedSlots_[0] stands for no location.
  std::unique_ptr<std::uint8_t[]> usedSlots_ GUARDED_BY(slotsLock_);
  std::size_t slotCount_ GUARDED_BY(slotsLock_) = 0;  // bytes of usedSlots_
  std::atomic<std::uint32_t> total_ = 0;
  std::atomic<std::uint32_t> used_ = 0;
  std::atomic<std::uint32_t> smsTotal_ = 0;
  std::atomic<std::uint32_t> smsUsed_ = 0;
  std::array<std::uint32_t, 2> reserved_ = {};
  // Shared with the threads that wait, so that closing takes no event away from under them.
  std::shared_ptr<platform::Event> storedEvent_ GUARDED_BY(listsLock_);
  std::shared_ptr<platform::Event> deletedEvent_ GUARDED_BY(listsLock_);
  std::atomic<std::uint32_t> maxNumberLength_ = 0;
  std::atomic<std::uint32_t> maxNameLength_ = 0;
  std::atomic<std::uint32_t> collectDeletions_ = 1;
  std::atomic<std::uint32_t> collectStores_ = 1;
  std::atomic<platform::SimResult> lastResult_ = platform::SimResult::kOk;
  IndexList storedList_ GUARDED_BY(listsLock_);
  IndexList deletedList_ GUARDED_BY(listsLock_);
  std::atomic<platform::SimHandle> sim_ = 0;
  mutable Mutex slotsLock_;  // held for one byte, or for the search of the first free one
  mutable Mutex listsLock_;
};

}  // namespace kelpin::sim
