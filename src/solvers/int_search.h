// The search for models with native integer variables: restarted simulated annealing with greedy
// descent, on independent threads that meet only at a shared best state and a pool of solutions.
//
// A move gives one variable a new value. Energies are exact throughout; doubles appear only where
// the annealing decides whether to accept a rise. With one thread, one seed and a target that is
// reached before the time runs out, every run makes the same draws and the same moves.
#pragma once

#include <atomic>
#include <cstdint>

#include "solvers/search_result.h"
#include "zorv/solver_abi.h"
#include "zorv/wire.h"

namespace zorv {

// Receives, and owns, a solution of a running search. Its result sets the timer: above 0 the new
// interval in seconds, exactly 0 switches it off, anything else leaves it. Events:
//   0  before the search starts, with all bits 0 and all integers at their lower bounds
//   1  a new best, on the thread that found it and under the lock of the search: be short, and
//      start no other search
//   2  a tick of the timer, which is off at the start; may run while another thread is in event 1
using UserCallback = double (*)(void* ctx, Sol* sol, uint32_t event);

inline constexpr uint32_t kEventStart = 0;
inline constexpr uint32_t kEventNewBest = 1;
inline constexpr uint32_t kEventTimer = 2;

// Hands out a state from outside, at most once to each consumer, or returns false. `consumer` is 0
// for the workers and 1 for the round thread.
//   words  [max(1, (bits + 63) / 64)], zero on entry     ints  [integer variables]
// Values must lie within the bounds of their variables.
using NextHint = bool (*)(void* ctx, uint32_t consumer, uint64_t* words, coeff_t* ints);

struct IntSearchOpts {
  double time_limit = 10.0;  // seconds
  bool has_target = false;
  coeff_t target_energy;  // valid if has_target
  uint64_t seed = 0;
  uint32_t threads = 1;
  uint64_t topk_sols = 0;  // size of the list of distinct best solutions
  bool has_best_energy_sols = false;
  uint64_t best_energy_cap = 0;  // 0: no cap
  bool enable_default_callback = false;
  const uint64_t* hint_bits = nullptr;  // the start of thread 0, with hint_ints; or null
  const coeff_t* hint_ints = nullptr;
  const char* solver_name = "EasySolver";               // begins all messages
  const std::atomic<uint8_t>* external_stop = nullptr;  // stops the search when not 0; may be null
  UserCallback callback = nullptr;
  void* callback_ctx = nullptr;
  ModelHandle model;  // what the Sol of a callback shares; needed only with a callback
  NextHint next_hint = nullptr;
  void* next_hint_ctx = nullptr;
  // A second source of states, which runs on a thread of its own: see solvers/round_thread.h. Off
  // unless both of the first two are set.
  void* round_handle = nullptr;
  decltype(&zorv_klb5_int_round2) round_fn = nullptr;
  decltype(&zorv_klb5_int_hint) round_hint_fn = nullptr;
  // Counts in unbounded integers even where machine integers suffice. The search makes the same
  // moves, only slower; set by tests and benchmarks that compare the two.
  bool force_wide_numbers = false;
};

// What solvers call: fills in the default seed and thread count, reads `params` (null or ended by
// a null key), checks the hint and searches. Without `hint_bits` the other hint arguments are not
// looked at. Aborts on a bad parameter and on a hint that does not fit the model.
SearchResult run_int_search(const ModelImpl& model, IntSearchOpts opts, const ParamPair* params,
                            const uint64_t* hint_bits, const coeff_t* hint_ints,
                            uint64_t hint_int_count);

// The search itself. The model must have at least one variable.
SearchResult easy_int_search(const ModelImpl& model, const IntSearchOpts& opts);

}  // namespace zorv
