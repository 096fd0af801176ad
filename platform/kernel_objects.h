#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace kelpin::platform {

inline constexpr std::uint32_t kInfinite = 0xFFFFFFFF;  // milliseconds

enum class WaitResult {
  kSignaled,
  kTimeout,
  kAbandoned,  // the program is ending (KernelObjects::EndThreads); do not wait again
};

enum class EventAction : std::uint32_t {
  kPulse = 1,  // frees one waiter that waits at this moment; lost when nobody waits
  kReset = 2,
  kSet = 3,  // frees one waiter, now or later
};

// An auto-reset event: a wait that was freed leaves it unsignalled. Any thread, any process that
// opened the same name.
class Event {
 public:
  virtual ~Event() = default;
  virtual bool EventModify(EventAction action) = 0;
  virtual WaitResult Wait(std::uint32_t milliseconds) = 0;
};

// Tells that a copy of the program runs. Nobody waits on it. Destroying it closes it; the system
// closes it for a process that dies.
class NamedMutex {
 public:
  virtual ~NamedMutex() = default;
  virtual void Release() = 0;
};

class KernelObjects {
 public:
  virtual ~KernelObjects() = default;

  // Null when it cannot be made. `alreadyExists` tells whether another process held the name.
  virtual std::unique_ptr<NamedMutex> CreateMutex(std::u16string_view name, bool initiallyOwned,
                                                  bool& alreadyExists) = 0;
  // An auto-reset event, initially not signalled; an empty name is this process's own. Null when
  // it cannot be made.
  virtual std::unique_ptr<Event> CreateEvent(std::u16string_view name) = 0;
  // Starts `body` on a thread of its own that needs no further care. 0 when no thread could be
  // made, else 1.
  virtual int CreateThread(std::function<void()> body) = 0;
  // Ends every wait with kAbandoned, now and later, and returns when all threads made by
  // CreateThread have ended. Called once, on the main thread, when the message loop is over.
  virtual void EndThreads() = 0;
};

}  // namespace kelpin::platform
