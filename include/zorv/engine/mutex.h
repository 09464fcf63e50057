// A mutex whose use clang checks at compile time: what a lock guards is marked ZORV_GUARDED_BY,
// what must be called under a lock ZORV_REQUIRES, and -Wthread-safety refuses every access without
// it. The marks mean nothing to other compilers.
#pragma once

#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define ZORV_LOCK_MARK(mark) __attribute__((mark))
#else
#define ZORV_LOCK_MARK(mark)
#endif

#define ZORV_GUARDED_BY(mutex) ZORV_LOCK_MARK(guarded_by(mutex))
#define ZORV_REQUIRES(...) ZORV_LOCK_MARK(requires_capability(__VA_ARGS__))
#define ZORV_EXCLUDES(...) ZORV_LOCK_MARK(locks_excluded(__VA_ARGS__))
// For a function whose safety the analysis cannot see; say beside it why it is safe.
#define ZORV_UNCHECKED_LOCKS ZORV_LOCK_MARK(no_thread_safety_analysis)

namespace zorv {

class ZORV_LOCK_MARK(capability("mutex")) Mutex {
 public:
  void lock() ZORV_LOCK_MARK(acquire_capability()) { mutex_.lock(); }
  void unlock() ZORV_LOCK_MARK(release_capability()) { mutex_.unlock(); }

 private:
  friend class Condition;
  std::mutex mutex_;
};

// Holds a mutex for the length of a block.
class ZORV_LOCK_MARK(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ZORV_LOCK_MARK(acquire_capability(mutex)) : mutex_(mutex) {
    mutex_.lock();
  }
  ~MutexLock() ZORV_LOCK_MARK(release_capability()) { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

// A condition variable for a Mutex. A wait may return without a notification, so it stands in a
// loop that tests what is waited for. (A predicate passed as a lambda would be outside the
// analysis.)
class Condition {
 public:
  void wait(Mutex& mutex) ZORV_REQUIRES(mutex) {
    std::unique_lock<std::mutex> lock(mutex.mutex_, std::adopt_lock);
    condition_.wait(lock);
    lock.release();
  }
  // False if `deadline` has passed.
  template <typename Deadline>
  bool wait_until(Mutex& mutex, const Deadline& deadline) ZORV_REQUIRES(mutex) {
    std::unique_lock<std::mutex> lock(mutex.mutex_, std::adopt_lock);
    const bool in_time = condition_.wait_until(lock, deadline) == std::cv_status::no_timeout;
    lock.release();
    return in_time;
  }
  void notify_one() { condition_.notify_one(); }
  void notify_all() { condition_.notify_all(); }

 private:
  std::condition_variable condition_;
};

}  // namespace zorv
