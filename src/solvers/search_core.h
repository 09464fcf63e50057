// IntSearchCore: what the threads of one search share.
//
// Thread rules
//   1. The model, the options, the start time and the tables that workers read never change while
//      the search runs.
//   2. `mutex` guards the best state, its energy and time, the pool, and the state keepers. Workers
//      take it at the start of each round, around the copy of the best state, and around submit,
//      which they reach only with a new record of their own or a tie that somebody asked for.
//   3. Stop marks, totals and the timer interval are atomics that guard nothing else.
//   4. Event 1 of the callback runs under the mutex, the other events outside of it.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "solvers/int_search.h"
#include "solvers/solution_pool.h"
#include "solvers/state_keeper.h"
#include "zorv/engine/mutex.h"

namespace zorv {

// Keeps what one thread writes off the cache lines that others read.
inline constexpr size_t kCacheLine = 64;

class IntSearchCore {
 public:
  // Starts the clock.
  IntSearchCore(const ModelImpl& model, const IntSearchOpts& opts);

  double elapsed_seconds() const;
  bool time_is_up() const { return elapsed_seconds() >= opts.time_limit; }
  bool stop_requested() const {
    return (stop.load(std::memory_order_relaxed) |
            external_stop_.load(std::memory_order_relaxed)) != 0;
  }

  // The single gate to the best state, the pool, the progress line, the callback and the stop
  // mark: offers the state in which the source of `keeper` stands.
  void submit(StateKeeper& keeper, const coeff_t& energy) ZORV_REQUIRES(mutex);
  // Whether keepers have to hash: where the pool looks for states that it has.
  bool needs_hashes() const { return opts.topk_sols != 0 || opts.has_best_energy_sols; }
  StateKeeper& add_keeper(std::unique_ptr<StateKeeper> keeper) ZORV_EXCLUDES(mutex);
  // The best state, if there is one: binary variables as 0 and 1, then the integer variables.
  std::vector<coeff_t> read_best() const ZORV_REQUIRES(mutex) { return best_.read(); }

  void fire_start_event();
  // Fires a timer event if one is due. For the calling thread of the search alone.
  void serve_timer();

  // Never change during the search.
  const ModelImpl& model;
  const IntSearchOpts& opts;

  mutable Mutex mutex;
  bool has_best ZORV_GUARDED_BY(mutex) = false;
  coeff_t best_energy ZORV_GUARDED_BY(mutex);
  double best_tts ZORV_GUARDED_BY(mutex) = 0.0;
  SolutionPool pool ZORV_GUARDED_BY(mutex);

  // Written once, read by every worker on every step.
  alignas(kCacheLine) std::atomic<uint8_t> stop{0};

  // Totals; each worker adds its own at its end.
  alignas(kCacheLine) std::atomic<uint64_t> rounds{0};
  std::atomic<uint64_t> proposals{0};

 private:
  // `state` may be null: the Sol then has no bits, and its integers are at their lower bounds.
  void fire_event(uint32_t event, const coeff_t& energy, const std::vector<coeff_t>* state,
                  double tts);

  std::vector<std::unique_ptr<StateKeeper>> keepers_ ZORV_GUARDED_BY(mutex);
  KeptState best_ ZORV_GUARDED_BY(mutex);
  const std::chrono::steady_clock::time_point start_;
  const std::atomic<uint8_t>& external_stop_;
  std::atomic<double> timer_interval_{0.0};  // seconds, 0: off
  double last_tick_ = 0.0;                   // of the calling thread
};

// A whole state, split into what results and solutions hold.
std::vector<uint64_t> words_of(const ModelImpl& model, const std::vector<coeff_t>& state);
std::vector<coeff_t> ints_of(const ModelImpl& model, const std::vector<coeff_t>& state);

}  // namespace zorv
