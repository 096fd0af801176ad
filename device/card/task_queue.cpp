#include "device/card/task_queue.h"

#include <iterator>
#include <utility>

namespace kelpin::device::card {

TaskQueue::TaskQueue() {
  // The thread looks at its own id through OnThread: it starts when that is in place.
  const MutexLock lock(lock_);
  thread_ = std::thread([this] { Work(); });
}

TaskQueue::~TaskQueue() {
  {
    const MutexLock lock(lock_);
    ending_ = true;
    for (Entry& entry : waiting_) entry.cancelled = true;
  }
  posted_.notify_all();
  thread_.join();
}

bool TaskQueue::Post(std::uint32_t owner, Task task) {
  {
    const MutexLock lock(lock_);
    if (ending_) return false;
    waiting_.push_back({owner, false, std::move(task)});
  }
  posted_.notify_one();
  return true;
}

void TaskQueue::WaitFor(const bool& done) {
  const MutexLock lock(lock_);
  while (!done) finished_.wait(lock_);
}

void TaskQueue::Run(Task task) {
  if (OnThread()) {
    task(false);
    return;
  }
  bool done = false;
  const auto whole = [this, &task, &done](bool cancelled) {
    task(cancelled);
    const MutexLock lock(lock_);
    done = true;
    // Under the lock: `done` is gone as soon as the other thread may go on.
    finished_.notify_all();
  };
  if (!Post(0, whole)) {
    task(true);
    return;
  }
  WaitFor(done);
}

void TaskQueue::Dismiss(std::uint32_t owner, std::function<void()> last) {
  bool done = false;
  {
    const MutexLock lock(lock_);
    std::deque<Entry> own;
    std::deque<Entry> others;
    for (Entry& entry : waiting_) {
      (entry.owner == owner ? own : others).push_back(std::move(entry));
    }
    for (Entry& entry : own) entry.cancelled = true;
    own.push_back({0, false, [this, &last, &done](bool) {
                     last();
                     const MutexLock inner(lock_);
                     done = true;
                     finished_.notify_all();
                   }});
    own.insert(own.end(), std::make_move_iterator(others.begin()),
               std::make_move_iterator(others.end()));
    waiting_ = std::move(own);
  }
  posted_.notify_one();
  WaitFor(done);
}

void TaskQueue::Work() {
  for (;;) {
    Entry entry;
    {
      const MutexLock lock(lock_);
      while (waiting_.empty() && !ending_) posted_.wait(lock_);
      if (waiting_.empty()) return;
      entry = std::move(waiting_.front());
      waiting_.pop_front();
    }
    entry.task(entry.cancelled);
  }
}

}  // namespace kelpin::device::card
