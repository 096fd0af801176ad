#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/sim_result.h"

namespace kelpin::platform {

using SimHandle = std::uint32_t;  // 0 is no handle

inline constexpr std::uint32_t kSimInitNoNotifications = 0;
inline constexpr std::uint32_t kSimInitSimCardNotifications = 1;
inline constexpr std::uint32_t kSimCapsAll = 63;
inline constexpr std::uint32_t kSimPhonebookStorageSim = 16;
inline constexpr std::uint32_t kSimSmsStorageSim = 2;

// Notification codes.
inline constexpr std::uint32_t kSimNotifyPhonebookEntryStored = 0x104;
inline constexpr std::uint32_t kSimNotifyPhonebookEntryDeleted = 0x105;
inline constexpr std::uint32_t kSimNoIndex = 0xFFFFFFFF;

// Which fields of an entry are valid.
inline constexpr std::uint32_t kSimEntryAddress = 1;
inline constexpr std::uint32_t kSimEntryAddressType = 2;
inline constexpr std::uint32_t kSimEntryNumPlan = 4;
inline constexpr std::uint32_t kSimEntryText = 8;
inline constexpr std::uint32_t kSimEntryAll = 15;

inline constexpr std::uint32_t kAddressTypeUnknown = 0;
inline constexpr std::uint32_t kAddressTypeInternational = 1;
inline constexpr std::uint32_t kNumPlanTelephone = 1;

inline constexpr std::size_t kSimTextLength = 256;  // UTF-16 units, terminator included

// One entry. Both texts end in a zero unit. The address is the dial string as the user writes it, a
// leading '+' included (and one right after '#' or '*', where the card's number held it there).
struct SimPhonebookEntry {
  std::uint32_t size = 1040;
  std::uint32_t params = 0;
  char16_t address[kSimTextLength] = {};
  std::uint32_t addressType = kAddressTypeUnknown;
  std::uint32_t numPlan = 0;
  char16_t text[kSimTextLength] = {};
};
static_assert(sizeof(SimPhonebookEntry) == 1040);

// What the card can hold. Lengths in characters of the GSM default alphabet (text) and digits.
struct SimCaps {
  std::uint32_t size = 24;
  std::uint32_t params = 0;            // kSimCapsAll when every field below is valid
  std::uint32_t maxAddressLength = 0;  // digits of one number, a leading '+' not counted
  std::uint32_t maxTextLength = 0;     // bytes of the alpha identifier
  std::uint32_t minIndex = 0;          // first location, 1
  std::uint32_t maxIndex = 0;          // last location
};
static_assert(sizeof(SimCaps) == 24);

// The data of both notifications.
struct SimPhonebookChange {
  std::uint32_t entryIndex = 0;
  std::uint32_t storage = 0;
};
static_assert(sizeof(SimPhonebookChange) == 8);

// Called on a thread of the platform's. `data` lives until the call returns.
using SimNotifyCallback = void (*)(std::uint32_t code, const void* data, std::uint32_t size,
                                   void* parameter);

// The SIM's basic phone book, as the platform offers it.
// Calls block until the card answers; any thread, several at once. After SimDeinitialize has
// returned no callback runs for that handle (so it must not be called from the callback).
class SimInterface {
 public:
  virtual ~SimInterface() = default;

  // `flags`: kSimInit…; `callback` may be null. On failure `sim` becomes 0.
  virtual SimResult SimInitialize(std::uint32_t flags, SimNotifyCallback callback, void* parameter,
                                  SimHandle& sim) = 0;
  virtual SimResult SimDeinitialize(SimHandle sim) = 0;
  // `type`: kSimCapsAll. On failure `caps` is left as it was.
  virtual SimResult SimGetDevCaps(SimHandle sim, std::uint32_t type, SimCaps& caps) = 0;
  // `index` is a 1-based location. On failure `entry` is left as it was. An empty location answers
  // kEntryEmpty, one beyond the capacity kInvalidIndex.
  virtual SimResult SimReadPhonebookEntry(SimHandle sim, std::uint32_t storage, std::uint32_t index,
                                          SimPhonebookEntry& entry) = 0;
  // Entries in use and capacity, both in locations. On failure both are left as they were.
  virtual SimResult SimGetPhonebookStatus(SimHandle sim, std::uint32_t storage, std::uint32_t& used,
                                          std::uint32_t& total) = 0;
  // Writes the whole location. Text or address that do not fit the card: kBadParameter, nothing
  // written. Every handle opened with notifications is told (also the writer's own).
  virtual SimResult SimWritePhonebookEntry(SimHandle sim, std::uint32_t storage,
                                           std::uint32_t index, const SimPhonebookEntry& entry) = 0;
  // Deleting an empty location succeeds.
  virtual SimResult SimDeletePhonebookEntry(SimHandle sim, std::uint32_t storage,
                                            std::uint32_t index) = 0;
  // The same two, carried out only while the location holds `known`, as a read entry tells
  // it (address and text count); null: while it is free. Otherwise kEntryChanged, and nothing is
  // written. Nobody else's change comes between the look and the write.
  virtual SimResult SimWritePhonebookEntryIf(SimHandle sim, std::uint32_t storage,
                                             std::uint32_t index, const SimPhonebookEntry& entry,
                                             const SimPhonebookEntry* known) = 0;
  virtual SimResult SimDeletePhonebookEntryIf(SimHandle sim, std::uint32_t storage,
                                              std::uint32_t index,
                                              const SimPhonebookEntry* known) = 0;
  // Short messages on the card. On failure both are left as they were.
  virtual SimResult SimGetSmsStorageStatus(SimHandle sim, std::uint32_t storage,
                                           std::uint32_t& used, std::uint32_t& total) = 0;
};

}  // namespace kelpin::platform
