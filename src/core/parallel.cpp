#include "core/parallel.h"

#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

namespace zorv {

namespace {

constexpr uint32_t kMaxPoolThreads = 8;  // the caller included

uint32_t configured_threads() {
  if (const char* text = std::getenv("ZORV_NUM_THREADS")) {
    const long n = std::strtol(text, nullptr, 10);
    if (n > 0) {
      return static_cast<uint32_t>(
          std::min<unsigned long>(n, std::numeric_limits<uint32_t>::max()));
    }
  }
  return std::max(1u, std::thread::hardware_concurrency());
}

// Set on every thread that runs the body of a region, so that a region inside it stays there.
thread_local bool inside_region = false;

class RegionMark {
 public:
  RegionMark() { inside_region = true; }
  ~RegionMark() { inside_region = false; }
};

// The threads that all regions share, made when the first region needs them.
//
//   region_lock_  held by the caller for a whole region: regions run one at a time
//   lock_         guards task_, active_, generation_ and stop_; taken after region_lock_
// Workers sleep between regions and touch nothing but these fields, so the pool may be torn down
// at exit after everything else.
class ThreadPool {
 public:
  static ThreadPool& instance();

  void run(uint32_t threads, const std::function<void()>& work);

 private:
  ThreadPool();
  ~ThreadPool();
  void serve();
  // No worker survives a fork: a child has the pool's memory but not its threads.
  bool is_forked() const { return getpid() != owner_; }

  std::vector<std::thread> threads_;
  const pid_t owner_ = getpid();
  std::mutex region_lock_;
  std::mutex lock_;
  std::condition_variable wake_;
  std::condition_variable done_;
  std::function<void()> task_;
  uint32_t active_ = 0;      // workers that have not finished the current task
  uint64_t generation_ = 0;  // tasks so far
  bool stop_ = false;
};

ThreadPool::ThreadPool() {
  const uint32_t workers = std::min(num_threads(), kMaxPoolThreads) - 1;
  for (uint32_t i = 0; i < workers; ++i) threads_.emplace_back([this] { serve(); });
}

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
    const std::lock_guard lock(lock_);
    stop_ = true;
  }
  wake_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void ThreadPool::serve() {
  const RegionMark mark;
  uint64_t seen = 0;
  for (;;) {
    std::function<void()> task;
    {
      std::unique_lock lock(lock_);
      wake_.wait(lock, [&] { return stop_ || generation_ != seen; });
      if (stop_) return;
      seen = generation_;
      task = task_;
    }
    task();
    const std::lock_guard lock(lock_);
    if (--active_ == 0) done_.notify_one();
  }
}

void ThreadPool::run(uint32_t threads, const std::function<void()>& work) {
  if (is_forked()) return work();
  const uint32_t pooled = static_cast<uint32_t>(threads_.size()) + 1;
  std::vector<std::thread> extra;
  for (uint32_t i = pooled; i < threads; ++i) {
    extra.emplace_back([&work] {
      const RegionMark mark;
      work();
    });
  }
  {
    const std::lock_guard region(region_lock_);
    {
      const std::lock_guard lock(lock_);
      task_ = work;
      active_ = pooled - 1;
      ++generation_;
    }
    wake_.notify_all();
    {
      const RegionMark mark;
      work();
    }
    std::unique_lock lock(lock_);
    done_.wait(lock, [this] { return active_ == 0; });
    task_ = nullptr;
  }
  for (std::thread& thread : extra) thread.join();
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
  if (inside_region) {
    work();
  } else {
    ThreadPool::instance().run(threads, work);
  }
}

void run_fresh(uint32_t threads, const std::function<void(uint32_t)>& work) {
  if (inside_region) {
    for (uint32_t t = 0; t < threads; ++t) work(t);
    return;
  }
  std::vector<std::thread> fresh;
  fresh.reserve(threads);
  for (uint32_t t = 0; t < threads; ++t) {
    fresh.emplace_back([&work, t] {
      const RegionMark mark;
      work(t);
    });
  }
  for (std::thread& thread : fresh) thread.join();
}

}  // namespace detail

}  // namespace zorv
