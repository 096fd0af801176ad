#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace kelpin::device::pcsc {

// A thread that does jobs one after the other, for calls that may never return: who waits for a job
// gives up after a while and the job goes on alone. One caller at a time.
class DeadlineThread {
 public:
  using Duration = std::chrono::milliseconds;
  // Must own all that it touches: it may run, or end, after its caller and this object have gone.
  using Job = std::function<void()>;
  // Called on the thread when no job waits; says after how long it wants to be called again.
  using Idle = std::function<Duration()>;

  // `last` is the last thing that runs on the thread.
  DeadlineThread(Idle idle, Job last);
  // Waits a second for a job under way; one that takes longer is left behind with its thread.
  ~DeadlineThread();
  DeadlineThread(const DeadlineThread&) = delete;
  DeadlineThread& operator=(const DeadlineThread&) = delete;

  // False when `job` is not done in time: then it is done later, or under way. At once, with the
  // job dropped, while one that was given up is still under way.
  bool Run(Job job, Duration limit);
  // Does not wait.
  void Post(Job job);
  // A job that somebody gave up is still under way.
  bool Overdue() const;

 private:
  struct State;
  static void Work(const std::shared_ptr<State>& state);

  const std::shared_ptr<State> state_;
};

}  // namespace kelpin::device::pcsc
