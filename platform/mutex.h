#pragma once

#include <condition_variable>
#include <mutex>

// Clang's thread-safety annotations on a thin wrapper over std::mutex: what a lock guards is where
// the compiler checks it. Other compilers see plain code.
#if defined(__clang__)
#define KELPIN_TSA(x) __attribute__((x))
#else
#define KELPIN_TSA(x)
#endif

#define CAPABILITY(x) KELPIN_TSA(capability(x))
#define SCOPED_CAPABILITY KELPIN_TSA(scoped_lockable)
#define GUARDED_BY(x) KELPIN_TSA(guarded_by(x))
#define REQUIRES(...) KELPIN_TSA(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) KELPIN_TSA(acquire_capability(__VA_ARGS__))
#define RELEASE(...) KELPIN_TSA(release_capability(__VA_ARGS__))
#define EXCLUDES(...) KELPIN_TSA(locks_excluded(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS KELPIN_TSA(no_thread_safety_analysis)

// A std::mutex ends without a word. The thread sanitizer has to be told, or it takes the next one
// at the same address for the same, and finds orders of locks that nobody has.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KELPIN_TELLS_MUTEX_END
extern "C" void __tsan_mutex_destroy(void* address, unsigned flags);
#endif
#endif

namespace kelpin {

#if defined(KELPIN_TELLS_MUTEX_END)
struct EndingMutex : std::mutex {
  ~EndingMutex() { __tsan_mutex_destroy(native_handle(), 0); }
};
#else
using EndingMutex = std::mutex;
#endif

class CAPABILITY("mutex") Mutex {
 public:
  void lock() ACQUIRE() { mutex_.lock(); }
  void unlock() RELEASE() { mutex_.unlock(); }

 private:
  EndingMutex mutex_;
};

class SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

// Waits with a Mutex that the caller holds: `while (!ready) condition.wait(mutex);`
using Condition = std::condition_variable_any;

}  // namespace kelpin
