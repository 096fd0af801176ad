#pragma once

#include <vector>

#include "device/kernel/event_block.h"
#include "platform/mutex.h"

namespace kelpin::device::kernel {

// The waits of this process: all of them end when the program does.
class WaitGate {
 public:
  // False when the program is ending: the wait is not to begin.
  bool Enter(const EventTicket& ticket);
  void Leave(const EventTicket& ticket);
  // Ends the waits under way and lets no more begin.
  void Close();
  bool IsClosed() const;

 private:
  mutable Mutex lock_;
  bool closed_ GUARDED_BY(lock_) = false;
  std::vector<EventTicket> waits_ GUARDED_BY(lock_);
};

}  // namespace kelpin::device::kernel
