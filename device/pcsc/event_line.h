#pragma once

#include "device/card/card_channel.h"
#include "platform/mutex.h"

namespace kelpin::device::pcsc {

// Where a channel's threads tell what happened to the card. Outlives the channel when one of its
// threads is held up.
class EventLine {
 public:
  // When this returns, the listener before is not called any more.
  void SetListener(card::CardChannelListener* listener) {
    const MutexLock hold(lock_);
    listener_ = listener;
  }
  void Inserted() {
    const MutexLock hold(lock_);
    if (listener_ != nullptr) listener_->CardInserted();
  }
  void Removed() {
    const MutexLock hold(lock_);
    if (listener_ != nullptr) listener_->CardRemoved();
  }
  void Reset() {
    const MutexLock hold(lock_);
    if (listener_ != nullptr) listener_->CardReset();
  }

 private:
  Mutex lock_;
  card::CardChannelListener* listener_ GUARDED_BY(lock_) = nullptr;
};

}  // namespace kelpin::device::pcsc
