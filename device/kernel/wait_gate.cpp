#include "device/kernel/wait_gate.h"

namespace kelpin::device::kernel {

bool WaitGate::Enter(const EventTicket& ticket) {
  MutexLock lock(lock_);
  if (closed_) return false;
  waits_.push_back(ticket);
  return true;
}

void WaitGate::Leave(const EventTicket& ticket) {
  MutexLock lock(lock_);
  std::erase_if(waits_, [&ticket](const EventTicket& wait) {
    return wait.slot == ticket.slot && wait.number == ticket.number;
  });
}

void WaitGate::Close() {
  MutexLock lock(lock_);
  closed_ = true;
  for (const EventTicket& wait : waits_) EventBlock::Abandon(wait);
}

bool WaitGate::IsClosed() const {
  MutexLock lock(lock_);
  return closed_;
}

}  // namespace kelpin::device::kernel
