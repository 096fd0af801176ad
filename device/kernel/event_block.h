#pragma once

#include <pthread.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/kernel_objects.h"

namespace kelpin::device::kernel {

// A place in an event's memory where one thread waits. The word is a futex: a ticket in its upper
// 30 bits, what has become of the wait in its lower two. Only the holder of the ticket frees a
// slot (or whoever finds the holder dead), by a compare and exchange on the whole word.
struct EventSlot {
  enum State : std::uint32_t { kFree, kWaiting, kFreed, kAbandoned };

  std::atomic<std::uint32_t> word;
  std::int32_t process;
  std::int32_t thread;
  std::uint32_t reserved;
  std::uint64_t threadStart;  // with the thread's number, names one thread for good
};
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

// A wait under way: the slot and its word as it was when the wait began.
struct EventTicket {
  EventSlot* slot = nullptr;
  std::uint32_t number = 0;

  std::uint32_t Word(EventSlot::State state) const { return number << 2 | state; }
};

// The memory of one auto-reset event, for all processes that have it mapped. A process may be
// killed at any instruction: the lock is robust, every change under it is one store, and a waiter
// that is no more is passed over.
class EventBlock {
 public:
  static constexpr std::size_t kSlots = 64;

  // Makes zeroed memory an event, not signalled. Last of all it marks it as made.
  bool Initialise();
  bool IsInitialised() const;

  // False when the lock cannot be had any more. `freedOne`, where it is given, tells whether a
  // waiter was freed.
  bool Modify(platform::EventAction action, bool* freedOne = nullptr);

  enum class Entry {
    kSignaled,    // the event was set; it is reset now
    kRegistered,  // `ticket` waits
    kNone,        // not signalled, and no wait was wanted
    kFull,        // every slot has a living waiter
    kBroken,      // the lock cannot be had any more
  };
  // With `wait` false only looks.
  Entry Enter(bool wait, EventTicket& ticket);

  enum class Outcome { kWaiting, kSignaled, kAbandoned, kDropped };
  // What has become of the ticket; every answer but kWaiting frees the slot. kDropped: somebody
  // took the waiter for dead; it must enter again.
  static Outcome Conclude(const EventTicket& ticket);
  // Ends the wait unless it was freed before; true when it did. The slot is free then.
  static bool Cancel(const EventTicket& ticket);
  // Ends the wait from outside; its thread wakes and concludes kAbandoned.
  static void Abandon(const EventTicket& ticket);

  // Sleeps while the ticket waits, at most until `deadline` (nanoseconds of the monotonic clock);
  // none is for ever.
  static void Sleep(const EventTicket& ticket, std::optional<std::uint64_t> deadline);
  static std::uint64_t Now();  // the same clock

  std::size_t Waiters() const;

  // Taken and left by the operations above.
  bool Lock();
  void Unlock();

 private:
  EventSlot* OldestWaiter();
  EventSlot* FreeSlot();

  std::atomic<std::uint32_t> mark_;
  std::uint32_t signaled_;
  std::uint32_t lastTicket_;
  pthread_mutex_t lock_;
  std::array<EventSlot, kSlots> slots_;
};

}  // namespace kelpin::device::kernel
