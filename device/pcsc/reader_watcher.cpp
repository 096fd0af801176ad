#include "device/pcsc/reader_watcher.h"

#include <winscard.h>

#include <array>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

#include "device/pcsc/pcsc_session.h"
#include "platform/mutex.h"

namespace kelpin::device::pcsc {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The service's own name for "a reader came or went".
constexpr char kAnyReader[] = "\\\\?PnP?\\Notification";
// How often a reader or a service that is not there is looked for.
constexpr auto kRetry = 400ms;
constexpr auto kLastWait = 1000ms;
constexpr auto kCancelAgain = 10ms;
constexpr DWORD kChangeCounter = 0xFFFF0000;

}  // namespace

struct ReaderWatcher::State {
  std::string reader;
  std::shared_ptr<EventLine> events;

  Mutex lock;
  Condition changed;
  bool ending GUARDED_BY(lock) = false;
  bool ended GUARDED_BY(lock) = false;
  std::optional<SCARDCONTEXT> waiting GUARDED_BY(lock);  // to be cancelled when it shall end

  // The watching thread's alone.
  bool present = false;
  std::optional<DWORD> counter;  // of insertions and removals; not known before the first look

  // False when the thread shall end.
  bool Pause() EXCLUDES(lock) {
    const auto until = Clock::now() + kRetry;
    const MutexLock hold(lock);
    while (!ending && changed.wait_until(lock, until) != std::cv_status::timeout) {
    }
    return !ending;
  }

  bool SetWaiting(std::optional<SCARDCONTEXT> context) EXCLUDES(lock) {
    const MutexLock hold(lock);
    waiting = context;
    return !ending;
  }

  void Gone() {
    if (present) events->Removed();
    present = false;
    counter.reset();
  }

  void Saw(DWORD told) {
    const bool now = (told & SCARD_STATE_PRESENT) != 0;
    const DWORD count = told & kChangeCounter;
    const bool swapped = present && now && counter && *counter != count;
    counter = count;
    if (present && (!now || swapped)) events->Removed();
    if (now && (!present || swapped)) events->Inserted();
    present = now;
  }

  // Until the service or the reader goes, or the thread shall end.
  void Follow(Context& context) EXCLUDES(lock) {
    std::array<SCARD_READERSTATE, 2> states = {};
    states[0].szReader = reader.c_str();
    states[1].szReader = kAnyReader;
    DWORD patience = 0;  // the first answer is wanted at once
    while (SetWaiting(context.Handle())) {
      const LONG code =
          SCardGetStatusChange(context.Handle(), patience, states.data(), states.size());
      SetWaiting(std::nullopt);
      const Verdict verdict = Judge(code);
      if (verdict == Verdict::kCancelled) continue;
      if (verdict != Verdict::kDone && verdict != Verdict::kTimedOut) return;
      patience = INFINITE;
      if ((states[0].dwEventState & (SCARD_STATE_UNKNOWN | SCARD_STATE_UNAVAILABLE)) != 0) return;
      Saw(states[0].dwEventState);
      for (SCARD_READERSTATE& state : states) {
        state.dwCurrentState = state.dwEventState & ~static_cast<DWORD>(SCARD_STATE_CHANGED);
      }
    }
  }
};

ReaderWatcher::ReaderWatcher(std::string reader, bool present, std::shared_ptr<EventLine> events)
    : state_(std::make_shared<State>()) {
  state_->reader = std::move(reader);
  state_->present = present;
  state_->events = std::move(events);
  std::thread([state = state_] { Watch(state); }).detach();
}

ReaderWatcher::~ReaderWatcher() {
  const auto limit = Clock::now() + kLastWait;
  const MutexLock hold(state_->lock);
  state_->ending = true;
  state_->changed.notify_all();
  // A cancellation that comes just before the wait is lost: again until the thread has ended.
  while (!state_->ended && Clock::now() < limit) {
    if (state_->waiting) SCardCancel(*state_->waiting);
    state_->changed.wait_until(state_->lock, Clock::now() + kCancelAgain);
  }
}

void ReaderWatcher::Watch(const std::shared_ptr<State>& state) {
  {
    Context context;
    do {
      if (!context.Established() && context.Establish() != Verdict::kDone) {
        state->Gone();
        continue;
      }
      state->Follow(context);
      {
        const MutexLock hold(state->lock);
        if (state->ending) break;
      }
      state->Gone();
      context.Release();
    } while (state->Pause());
  }
  const MutexLock hold(state->lock);
  state->ended = true;
  state->changed.notify_all();
}

}  // namespace kelpin::device::pcsc
