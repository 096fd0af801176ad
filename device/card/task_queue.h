#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <thread>

#include "platform/mutex.h"

namespace kelpin::device::card {

// One thread that does tasks in the order in which they come. Any thread may post.
class TaskQueue {
 public:
  // `cancelled`: the owner has gone or the queue ends; only answer, do no work.
  using Task = std::function<void(bool cancelled)>;

  TaskQueue();
  // Tasks that wait are called with `cancelled`. Not from a task.
  ~TaskQueue();
  TaskQueue(const TaskQueue&) = delete;
  TaskQueue& operator=(const TaskQueue&) = delete;

  // `owner` is for Dismiss; 0 is nobody's. False, and the task never called, when the queue ends.
  bool Post(std::uint32_t owner, Task task) EXCLUDES(lock_);
  // Runs `task` on the thread and returns true when it is done; at once when called from a task.
  // False when the task was cancelled, or when the queue was abandoned first: then it may be
  // running yet, or comes to be called with `cancelled`, so it owns what it uses.
  bool Run(Task task) EXCLUDES(lock_);
  // Calls the owner's waiting tasks with `cancelled` before any other, then `last`; returns when
  // that is done and no task of the owner's runs any more. Not from a task. In an abandoned queue
  // the owner's tasks are dropped, `last` is called here, and a task that runs is not waited for.
  void Dismiss(std::uint32_t owner, std::function<void()> last) EXCLUDES(lock_);
  // The owner ends: whoever waits goes on at once, and all tasks but the one that runs are called
  // with `cancelled`. Any thread.
  void Abandon() EXCLUDES(lock_);
  // Waits until no task runs or waits; false when that takes longer.
  bool WaitUntilIdle(std::chrono::milliseconds patience) EXCLUDES(lock_);
  bool OnThread() const { return std::this_thread::get_id() == thread_.get_id(); }

 private:
  struct Entry {
    std::uint32_t owner = 0;
    bool cancelled = false;
    Task task;
  };

  void Work() EXCLUDES(lock_);
  // True when it is done, false when the queue was abandoned first.
  bool WaitFor(const bool& done) EXCLUDES(lock_);

  Mutex lock_;
  Condition posted_;
  Condition finished_;
  std::deque<Entry> waiting_ GUARDED_BY(lock_);
  bool ending_ GUARDED_BY(lock_) = false;
  bool abandoned_ GUARDED_BY(lock_) = false;
  bool working_ GUARDED_BY(lock_) = false;  // a task runs
  std::thread thread_;
};

}  // namespace kelpin::device::card
