#include "device/pcsc/deadline_thread.h"

#include <cstdint>
#include <deque>
#include <thread>
#include <utility>

#include "platform/mutex.h"

namespace kelpin::device::pcsc {
namespace {

using Clock = std::chrono::steady_clock;

constexpr DeadlineThread::Duration kLastWait{1000};

}  // namespace

struct DeadlineThread::State {
  Idle idle;
  Job last;
  Mutex lock;
  Condition posted;
  Condition finished;
  std::deque<Job> jobs GUARDED_BY(lock);
  std::uint64_t postedJobs GUARDED_BY(lock) = 0;
  std::uint64_t doneJobs GUARDED_BY(lock) = 0;
  std::uint64_t givenUp GUARDED_BY(lock) = 0;  // the last job that nobody waits for any more
  bool ending GUARDED_BY(lock) = false;
  bool ended GUARDED_BY(lock) = false;
};

DeadlineThread::DeadlineThread(Idle idle, Job last) : state_(std::make_shared<State>()) {
  state_->idle = std::move(idle);
  state_->last = std::move(last);
  std::thread([state = state_] { Work(state); }).detach();
}

DeadlineThread::~DeadlineThread() {
  const auto limit = Clock::now() + kLastWait;
  const MutexLock hold(state_->lock);
  state_->ending = true;
  state_->posted.notify_all();
  while (!state_->ended &&
         state_->finished.wait_until(state_->lock, limit) != std::cv_status::timeout) {
  }
}

bool DeadlineThread::Run(Job job, Duration limit) {
  const auto end = Clock::now() + limit;
  const MutexLock hold(state_->lock);
  if (state_->doneJobs < state_->givenUp) return false;
  state_->jobs.push_back(std::move(job));
  const std::uint64_t mine = ++state_->postedJobs;
  state_->posted.notify_all();
  while (state_->doneJobs < mine) {
    if (state_->finished.wait_until(state_->lock, end) == std::cv_status::timeout &&
        state_->doneJobs < mine) {
      state_->givenUp = mine;
      return false;
    }
  }
  return true;
}

void DeadlineThread::Post(Job job) {
  const MutexLock hold(state_->lock);
  state_->jobs.push_back(std::move(job));
  ++state_->postedJobs;
  state_->posted.notify_all();
}

bool DeadlineThread::Overdue() const {
  const MutexLock hold(state_->lock);
  return state_->doneJobs < state_->givenUp;
}

void DeadlineThread::Work(const std::shared_ptr<State>& state) {
  Duration pause{0};
  for (;;) {
    Job job;
    {
      const MutexLock hold(state->lock);
      const auto until = Clock::now() + pause;
      while (state->jobs.empty() && !state->ending &&
             state->posted.wait_until(state->lock, until) != std::cv_status::timeout) {
      }
      if (!state->jobs.empty()) {
        job = std::move(state->jobs.front());
        state->jobs.pop_front();
      } else if (state->ending) {
        break;
      }
    }
    if (job) {
      job();
      job = nullptr;
      const MutexLock hold(state->lock);
      ++state->doneJobs;
      state->finished.notify_all();
    }
    pause = state->idle();
  }
  state->last();
  const MutexLock hold(state->lock);
  state->ended = true;
  state->finished.notify_all();
}

}  // namespace kelpin::device::pcsc
