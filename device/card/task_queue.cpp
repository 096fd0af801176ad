#include "device/card/task_queue.h"

#include <iterator>
#include <memory>
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
    waiting_.push_back({owner, abandoned_, std::move(task)});
  }
  posted_.notify_one();
  return true;
}

bool TaskQueue::WaitFor(const bool& done) {
  const MutexLock lock(lock_);
  while (!done && !abandoned_) finished_.wait(lock_);
  return done;
}

bool TaskQueue::Run(Task task) {
  if (OnThread()) {
    task(false);
    return true;
  }
  struct Outcome {
    bool done = false;
    bool worked = false;
  };
  const auto outcome = std::make_shared<Outcome>();
  const bool posted = Post(0, [this, task = std::move(task), outcome](bool cancelled) {
    task(cancelled);
    const MutexLock lock(lock_);
    *outcome = {true, !cancelled};
    finished_.notify_all();
  });
  return posted && WaitFor(outcome->done) && outcome->worked;
}

void TaskQueue::Dismiss(std::uint32_t owner, std::function<void()> last) {
  const auto done = std::make_shared<bool>(false);
  bool abandoned = false;
  {
    const MutexLock lock(lock_);
    std::deque<Entry> own;
    std::deque<Entry> others;
    for (Entry& entry : waiting_) {
      (entry.owner == owner ? own : others).push_back(std::move(entry));
    }
    abandoned = abandoned_;
    if (abandoned) {
      own.clear();
    } else {
      for (Entry& entry : own) entry.cancelled = true;
      own.push_back({0, false, [this, last, done](bool) {
                       last();
                       const MutexLock inner(lock_);
                       *done = true;
                       finished_.notify_all();
                     }});
    }
    own.insert(own.end(), std::make_move_iterator(others.begin()),
               std::make_move_iterator(others.end()));
    waiting_ = std::move(own);
  }
  posted_.notify_one();
  if (abandoned || !WaitFor(*done)) last();
}

void TaskQueue::Abandon() {
  const MutexLock lock(lock_);
  abandoned_ = true;
  for (Entry& entry : waiting_) entry.cancelled = true;
  posted_.notify_all();
  finished_.notify_all();
}

bool TaskQueue::WaitUntilIdle(std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  const MutexLock lock(lock_);
  while (working_ || !waiting_.empty()) {
    if (finished_.wait_until(lock_, deadline) == std::cv_status::timeout) {
      return !working_ && waiting_.empty();
    }
  }
  return true;
}

void TaskQueue::Work() {
  for (;;) {
    Entry entry;
    {
      const MutexLock lock(lock_);
      working_ = false;
      finished_.notify_all();
      while (waiting_.empty() && !ending_) posted_.wait(lock_);
      if (waiting_.empty()) return;
      entry = std::move(waiting_.front());
      waiting_.pop_front();
      working_ = true;
    }
    entry.task(entry.cancelled);
  }
}

}  // namespace kelpin::device::card
