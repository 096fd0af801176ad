#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "device/card/card_channel.h"
#include "platform/mutex.h"

namespace kelpin::contract {

// What happened, in words.
class CardEvents final : public device::card::CardChannelListener {
 public:
  void CardInserted() override { Add("inserted"); }
  void CardRemoved() override { Add("removed"); }
  void CardReset() override { Add("reset"); }
  void CardTouched() override { Add("touched"); }

  // The events so far, once there are that many or they do not come.
  std::vector<std::string> Await(std::size_t count) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    const MutexLock hold(lock_);
    while (events_.size() < count && came_.wait_until(lock_, limit) != std::cv_status::timeout) {
    }
    return events_;
  }

 private:
  void Add(const char* event) {
    const MutexLock hold(lock_);
    events_.emplace_back(event);
    came_.notify_all();
  }

  Mutex lock_;
  Condition came_;
  std::vector<std::string> events_ GUARDED_BY(lock_);
};

}  // namespace kelpin::contract
