#include "tests/support/callback_thread.h"

#include <utility>

namespace kelpin::test {

CallbackThread::~CallbackThread() {
  {
    MutexLock lock(lock_);
    ending_ = true;
    changed_.notify_all();
  }
  if (thread_.joinable()) thread_.join();
}

void CallbackThread::Post(std::uint32_t owner, std::function<void()> callback) {
  MutexLock lock(lock_);
  if (!thread_.joinable()) thread_ = std::thread([this] { Run(); });
  queue_.push_back({owner, std::move(callback)});
  ++posted_;
  changed_.notify_all();
}

void CallbackThread::Drop(std::uint32_t owner) {
  MutexLock lock(lock_);
  finished_ += std::erase_if(queue_, [owner](const Item& item) { return item.owner == owner; });
  changed_.notify_all();
  while (running_ && runningOwner_ == owner) changed_.wait(lock_);
}

void CallbackThread::Drain() {
  MutexLock lock(lock_);
  const std::uint64_t upTo = posted_;
  while (finished_ < upTo) changed_.wait(lock_);
}

void CallbackThread::Run() {
  MutexLock lock(lock_);
  for (;;) {
    while (queue_.empty()) {
      if (ending_) return;
      changed_.wait(lock_);
    }
    Item item = std::move(queue_.front());
    queue_.pop_front();
    running_ = true;
    runningOwner_ = item.owner;
    lock_.unlock();
    item.callback();
    item.callback = nullptr;
    lock_.lock();
    running_ = false;
    ++finished_;
    changed_.notify_all();
  }
}

}  // namespace kelpin::test
