// The parallel loop that everything shares: chunks of a range, claimed through one atomic counter,
// on one process-wide pool of threads.
//
// A region may be entered from inside a region; the inner one then runs on the thread that enters
// it, since the pool is busy with the outer one.
//
// A region takes the threads that the system gives, down to the caller alone. An exception that
// leaves the body of a region ends the process: other threads still work on what it would unwind.
// Loops that stay on the caller because they are short, or only one thread is wanted, let it pass.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>

namespace zorv {

// Loops of more items than this are spread over threads; shorter ones touch no thread at all.
inline constexpr uint64_t kSerialItems = 9999;
inline constexpr uint64_t kChunksPerThread = 4;

// ZORV_NUM_THREADS if that is a number above 0, otherwise what the machine has; at most
// kMostThreads of zorv/engine/thread_team.h. Read once.
uint32_t num_threads();
// How many threads a loop of n items may use.
uint32_t par_threads(uint64_t n);

// n items in at most 4 chunks a thread. Chunk c covers [begin(c), end(c)); the last ones may be
// empty.
struct Chunking {
  uint64_t items;
  uint64_t chunks;
  uint64_t chunk_items;

  Chunking(uint64_t n, uint64_t threads);  // one chunk if `threads` is below 2
  uint64_t begin(uint64_t chunk) const { return std::min(chunk * chunk_items, items); }
  uint64_t end(uint64_t chunk) const { return std::min(begin(chunk) + chunk_items, items); }
};

namespace detail {

// Runs `work` on the caller and on the pool, plus fresh threads where `threads` goes beyond it,
// and returns when all have finished. `work` must be a loop that claims shared work.
void run_region(uint32_t threads, const std::function<void()>& work);

// Runs `work(t)`, with different t below `threads`, on up to as many fresh threads and joins them;
// as work(0) on the caller inside a region, or if no thread can be started. `work` must be a loop
// that claims shared work, and counts as the body of a region.
void run_fresh(uint32_t threads, const std::function<void(uint32_t)>& work);

// Calls f(i) once for each i of [begin, end), in no fixed order. Callers apply the threshold.
template <typename F>
void par_for_impl(uint64_t begin, uint64_t end, F f) {
  const uint64_t n = end - begin;
  const uint32_t threads = par_threads(n);
  if (threads < 2) {
    for (uint64_t i = begin; i < end; ++i) f(i);
    return;
  }
  const Chunking chunking(n, threads);
  std::atomic<uint64_t> next{0};
  run_region(threads, [&] {
    for (uint64_t c; (c = next.fetch_add(1, std::memory_order_relaxed)) < chunking.chunks;) {
      const uint64_t last = begin + chunking.end(c);
      for (uint64_t i = begin + chunking.begin(c); i < last; ++i) f(i);
    }
  });
}

}  // namespace detail

// f(i) for each i below n, spread over the pool when n is above the threshold.
template <typename F>
void par_for(uint64_t n, F f) {
  if (n > kSerialItems) {
    detail::par_for_impl(0, n, f);
  } else {
    for (uint64_t i = 0; i < n; ++i) f(i);
  }
}

// f(thread, chunk, begin, end) for each chunk of `chunking`, on `threads` fresh threads; with
// fewer than 2 on the caller, as thread 0. For loops whose threads keep sums of their own.
// Not all of the threads need take part.
template <typename F>
void for_chunks_on_fresh_threads(const Chunking& chunking, uint32_t threads, F f) {
  std::atomic<uint64_t> next{0};
  const auto work = [&](uint32_t thread) {
    for (uint64_t c; (c = next.fetch_add(1, std::memory_order_relaxed)) < chunking.chunks;) {
      f(thread, c, chunking.begin(c), chunking.end(c));
    }
  };
  if (threads < 2) {
    work(0);
  } else {
    detail::run_fresh(threads, work);
  }
}

}  // namespace zorv
