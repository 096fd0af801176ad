#include "device/kernel/event_block.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <ctime>

#include "device/kernel/thread_identity.h"

namespace kelpin::device::kernel {
namespace {

using platform::EventAction;

constexpr std::uint32_t kMark = 0x4B455631;
constexpr std::uint32_t kTicketMask = 0x3FFFFFFF;
constexpr std::uint64_t kSecond = 1'000'000'000;  // nanoseconds

std::uint32_t StateOf(std::uint32_t word) {
  return word & 3;
}

ThreadIdentity WaiterOf(const EventSlot& slot) {
  return {slot.process, slot.thread, slot.threadStart};
}

void Wake(EventSlot& slot) {
  ::syscall(SYS_futex, &slot.word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

// True when the slot went from `from` to `to` here.
bool Move(EventSlot& slot, std::uint32_t from, std::uint32_t to) {
  return slot.word.compare_exchange_strong(from, to, std::memory_order_acq_rel);
}

std::uint32_t InState(std::uint32_t word, EventSlot::State state) {
  return (word & ~std::uint32_t{3}) | state;
}

}  // namespace

bool EventBlock::Initialise() {
  pthread_mutexattr_t kind;
  if (::pthread_mutexattr_init(&kind) != 0) return false;
  const bool made = ::pthread_mutexattr_setpshared(&kind, PTHREAD_PROCESS_SHARED) == 0 &&
                    ::pthread_mutexattr_setrobust(&kind, PTHREAD_MUTEX_ROBUST) == 0 &&
                    ::pthread_mutex_init(&lock_, &kind) == 0;
  ::pthread_mutexattr_destroy(&kind);
  if (!made) return false;
  signaled_ = 0;
  lastTicket_ = 0;
  for (EventSlot& slot : slots_) slot.word.store(EventSlot::kFree, std::memory_order_relaxed);
  mark_.store(kMark, std::memory_order_release);
  return true;
}

bool EventBlock::IsInitialised() const {
  return mark_.load(std::memory_order_acquire) == kMark;
}

bool EventBlock::Lock() {
  const int result = ::pthread_mutex_lock(&lock_);
  if (result == 0) return true;
  if (result != EOWNERDEAD) return false;
  ::pthread_mutex_consistent(&lock_);
  // The dead owner may have freed a waiter and not lived to wake it.
  for (EventSlot& slot : slots_) {
    if (StateOf(slot.word.load(std::memory_order_acquire)) == EventSlot::kFreed) Wake(slot);
  }
  return true;
}

void EventBlock::Unlock() {
  ::pthread_mutex_unlock(&lock_);
}

bool EventBlock::Modify(EventAction action, bool* freedOne) {
  if (!Lock()) return false;
  bool freed = false;
  if (action != EventAction::kReset) {
    while (EventSlot* slot = OldestWaiter()) {
      const std::uint32_t word = slot->word.load(std::memory_order_acquire);
      if (StateOf(word) != EventSlot::kWaiting) continue;
      if (!IsAlive(WaiterOf(*slot))) {
        Move(*slot, word, InState(word, EventSlot::kFree));
        Wake(*slot);
      } else if (Move(*slot, word, InState(word, EventSlot::kFreed))) {
        Wake(*slot);
        freed = true;
        break;
      }
    }
  }
  signaled_ = action == EventAction::kSet && !freed ? 1 : 0;
  if (freedOne != nullptr) *freedOne = freed;
  Unlock();
  return true;
}

EventBlock::Entry EventBlock::Enter(bool wait, EventTicket& ticket) {
  const ThreadIdentity self = wait ? CurrentThread() : ThreadIdentity();
  if (!Lock()) return Entry::kBroken;
  Entry entry = Entry::kNone;
  if (signaled_ != 0) {
    signaled_ = 0;
    entry = Entry::kSignaled;
  } else if (wait) {
    EventSlot* slot = FreeSlot();
    if (slot == nullptr) {
      entry = Entry::kFull;
    } else {
      lastTicket_ = (lastTicket_ + 1) & kTicketMask;
      ticket = {slot, lastTicket_};
      slot->process = self.process;
      slot->thread = self.thread;
      slot->threadStart = self.start;
      slot->word.store(ticket.Word(EventSlot::kWaiting), std::memory_order_release);
      entry = Entry::kRegistered;
    }
  }
  Unlock();
  return entry;
}

EventBlock::Outcome EventBlock::Conclude(const EventTicket& ticket) {
  const std::uint32_t word = ticket.slot->word.load(std::memory_order_acquire);
  const auto concludes = [&ticket, word](EventSlot::State state) {
    return word == ticket.Word(state) && Move(*ticket.slot, word, ticket.Word(EventSlot::kFree));
  };
  if (word == ticket.Word(EventSlot::kWaiting)) return Outcome::kWaiting;
  if (concludes(EventSlot::kFreed)) return Outcome::kSignaled;
  if (concludes(EventSlot::kAbandoned)) return Outcome::kAbandoned;
  return Outcome::kDropped;
}

bool EventBlock::Cancel(const EventTicket& ticket) {
  return Move(*ticket.slot, ticket.Word(EventSlot::kWaiting), ticket.Word(EventSlot::kFree));
}

void EventBlock::Abandon(const EventTicket& ticket) {
  if (Move(*ticket.slot, ticket.Word(EventSlot::kWaiting), ticket.Word(EventSlot::kAbandoned))) {
    Wake(*ticket.slot);
  }
}

void EventBlock::Sleep(const EventTicket& ticket, std::optional<std::uint64_t> deadline) {
  struct timespec until {};
  if (deadline) {
    until.tv_sec = static_cast<::time_t>(*deadline / kSecond);
    until.tv_nsec = static_cast<long>(*deadline % kSecond);
  }
  const std::uint32_t waiting = ticket.Word(EventSlot::kWaiting);
  while (ticket.slot->word.load(std::memory_order_acquire) == waiting) {
    const long result = ::syscall(SYS_futex, &ticket.slot->word, FUTEX_WAIT_BITSET, waiting,
                                  deadline ? &until : nullptr, nullptr, FUTEX_BITSET_MATCH_ANY);
    if (result != 0 && errno == ETIMEDOUT) return;
  }
}

std::uint64_t EventBlock::Now() {
  struct timespec now {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * kSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

std::size_t EventBlock::Waiters() const {
  std::size_t count = 0;
  for (const EventSlot& slot : slots_) {
    count += StateOf(slot.word.load(std::memory_order_acquire)) == EventSlot::kWaiting ? 1 : 0;
  }
  return count;
}

EventSlot* EventBlock::OldestWaiter() {
  EventSlot* oldest = nullptr;
  std::uint32_t oldestAge = 0;
  for (EventSlot& slot : slots_) {
    const std::uint32_t word = slot.word.load(std::memory_order_acquire);
    if (StateOf(word) != EventSlot::kWaiting) continue;
    // Tickets wrap; their distance from the last one does not.
    const std::uint32_t age = (lastTicket_ - (word >> 2)) & kTicketMask;
    if (oldest == nullptr || age > oldestAge) {
      oldest = &slot;
      oldestAge = age;
    }
  }
  return oldest;
}

EventSlot* EventBlock::FreeSlot() {
  for (EventSlot& slot : slots_) {
    if (StateOf(slot.word.load(std::memory_order_acquire)) == EventSlot::kFree) return &slot;
  }
  EventSlot* found = nullptr;
  for (EventSlot& slot : slots_) {
    const std::uint32_t word = slot.word.load(std::memory_order_acquire);
    if (StateOf(word) == EventSlot::kFree || IsAlive(WaiterOf(slot))) continue;
    if (Move(slot, word, InState(word, EventSlot::kFree))) {
      Wake(slot);
      found = &slot;
    }
  }
  return found;
}

}  // namespace kelpin::device::kernel
