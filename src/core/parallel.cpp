#include "core/parallel.h"

#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "zorv/engine/mutex.h"
#include "zorv/engine/thread_team.h"

namespace zorv {

namespace {

constexpr uint32_t kMaxPoolThreads = 8;  // the caller included

uint32_t configured_threads() {
  unsigned long wanted = std::max(1u, std::thread::hardware_concurrency());
  if (const char* text = std::getenv("ZORV_NUM_THREADS")) {
    const long n = std::strtol(text, nullptr, 10);
    if (n > 0) wanted = static_cast<unsigned long>(n);
  }
  return static_cast<uint32_t>(std::min<unsigned long>(wanted, kMostThreads));
}

// Set on every thread while it runs the body of a region, so that a region inside it stays there.
thread_local bool inside_region = false;

class RegionMark {
 public:
  RegionMark() { inside_region = true; }
  ~RegionMark() { inside_region = false; }
};

// The threads that all regions share, made when the first region needs them.
//
// Workers sleep between regions and touch nothing but the guarded fields, so the pool may be torn
// down at exit after everything else.
class ThreadPool {
 public:
  static ThreadPool& instance();

  void run(uint32_t threads, const std::function<void()>& work) ZORV_EXCLUDES(region_lock_, lock_);

 private:
  ThreadPool();
  ~ThreadPool();
  void serve() ZORV_EXCLUDES(lock_);
  void begin(const std::function<void()>& work) ZORV_EXCLUDES(lock_);
  void wait_for_workers() ZORV_EXCLUDES(lock_);
  // No worker survives a fork: a child has the pool's memory but not its threads.
  bool is_forked() const { return getpid() != owner_; }

  const pid_t owner_ = getpid();
  Mutex region_lock_;  // held by the caller for a whole region: regions run one at a time
  Mutex lock_;         // taken after region_lock_
  Condition wake_;
  Condition done_;
  const std::function<void()>* task_ ZORV_GUARDED_BY(lock_) = nullptr;
  uint32_t active_ ZORV_GUARDED_BY(lock_) = 0;      // workers that have not finished the task
  uint64_t generation_ ZORV_GUARDED_BY(lock_) = 0;  // tasks so far
  bool stop_ ZORV_GUARDED_BY(lock_) = false;
  ThreadTeam workers_;  // last, as they use all of the above
};

ThreadPool::ThreadPool()
    : workers_(std::min(num_threads(), kMaxPoolThreads) - 1, [this](uint32_t) { serve(); }) {}

ThreadPool& ThreadPool::instance() {
  // A forked child leaves the pool as it is: it could wait for the workers for ever.
  struct Owner {
    ThreadPool* const pool = new ThreadPool();
    ~Owner() {
      if (!pool->is_forked()) delete pool;
    }
  };
  static const Owner owner;
  return *owner.pool;
}

ThreadPool::~ThreadPool() {
  {
    const MutexLock lock(lock_);
    stop_ = true;
  }
  wake_.notify_all();
  workers_.join();
}

void ThreadPool::serve() {
  uint64_t seen = 0;
  for (;;) {
    const std::function<void()>* task;
    {
      const MutexLock lock(lock_);
      while (!stop_ && generation_ == seen) wake_.wait(lock_);
      if (stop_) return;
      seen = generation_;
      task = task_;
    }
    (*task)();
    const MutexLock lock(lock_);
    if (--active_ == 0) done_.notify_one();
  }
}

void ThreadPool::begin(const std::function<void()>& work) {
  {
    const MutexLock lock(lock_);
    task_ = &work;
    active_ = workers_.size();
    ++generation_;
  }
  wake_.notify_all();
}

void ThreadPool::wait_for_workers() {
  const MutexLock lock(lock_);
  while (active_ > 0) done_.wait(lock_);
}

void ThreadPool::run(uint32_t threads, const std::function<void()>& work) {
  if (is_forked()) return work();
  const uint32_t pooled = workers_.size() + 1;
  ThreadTeam extra(threads > pooled ? threads - pooled : 0, [&work](uint32_t) { work(); });
  const MutexLock region(region_lock_);
  begin(work);
  work();
  wait_for_workers();
}

}  // namespace

uint32_t num_threads() {
  static const uint32_t n = configured_threads();
  return n;
}

uint32_t par_threads(uint64_t n) {
  uint32_t most = 64;
  if (n <= 99'999'999) {
    most = kMaxPoolThreads;
  } else if (n <= 999'999'999) {
    most = 16;
  } else if (n <= 9'999'999'999) {
    most = 32;
  }
  return std::min(num_threads(), most);
}

Chunking::Chunking(uint64_t n, uint64_t threads)
    : items(n),
      chunks(std::min(threads < 2 ? 1 : kChunksPerThread * threads, n)),
      chunk_items(chunks == 0 ? 0 : (n + chunks - 1) / chunks) {}

namespace detail {

void run_region(uint32_t threads, const std::function<void()>& work) {
  if (inside_region) return work();
  ThreadPool::instance().run(threads, [&work] {
    run_or_end([&work] {
      const RegionMark mark;
      work();
    });
  });
}

void run_fresh(uint32_t threads, const std::function<void(uint32_t)>& work) {
  if (inside_region) return work(0);
  const auto marked = [&work](uint32_t t) {
    run_or_end([&work, t] {
      const RegionMark mark;
      work(t);
    });
  };
  const ThreadTeam team(threads, marked);
  if (team.size() == 0) marked(0);
}

}  // namespace detail

}  // namespace zorv
