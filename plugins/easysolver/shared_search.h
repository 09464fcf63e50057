// What the threads of a search share: the best solution, the lists, and when to end.
#pragma once

#include <atomic>
#include <chrono>

#include "common/binary_model.h"
#include "common/solution_list.h"
#include "zorv/engine/mutex.h"

namespace zorv::plugin::easy {

class SharedSearch {
 public:
  SharedSearch(const BinaryModel& model, const SearchParams& params);

  bool must_stop() const { return stop_.load(std::memory_order_relaxed); }
  // The only reading of the clock that a search acts on: whether to go on.
  bool time_is_up() {
    if (must_stop()) return true;
    if (seconds() < time_limit_) return false;
    stop_.store(true, std::memory_order_relaxed);
    return true;
  }
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

  // Takes an assignment, as bytes of 0 and 1, of that energy. Any thread may call. Once the target
  // is met, no assignment that violates a requirement takes the place of the one that meets it.
  void offer(const Coeff& energy, const uint8_t* x);
  // The energy up to which offers can still matter: below the best, or of the lists.
  bool is_wanted(const Coeff& energy);

  bool keeps_lists() const { return params_.topk_sols != 0 || params_.has_best_energy_sols; }
  // The best so far; there must have been an offer.
  Solution best();
  SolutionList take_list();

 private:
  void become_best(Solution solution) ZORV_REQUIRES(mutex_);
  bool is_allowed(const std::vector<uint64_t>& bits) const;

  const BinaryModel& model_;
  const SearchParams& params_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  const double time_limit_;
  std::atomic<bool> stop_ = false;
  Mutex mutex_;
  bool has_best_ ZORV_GUARDED_BY(mutex_) = false;
  bool is_target_met_ ZORV_GUARDED_BY(mutex_) = false;
  Solution best_ ZORV_GUARDED_BY(mutex_);
  SolutionPool pool_ ZORV_GUARDED_BY(mutex_);
};

}  // namespace zorv::plugin::easy
