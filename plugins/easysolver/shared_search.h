// What the threads of a search share: the best solution, the lists, and when to end.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>

#include "common/binary_model.h"
#include "common/solution_list.h"

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

  // Takes an assignment, as bytes of 0 and 1, of that energy. Any thread may call.
  void offer(const Coeff& energy, const uint8_t* x);
  // The energy up to which offers can still matter: below the best, or of the lists. Locks.
  bool is_wanted(const Coeff& energy);

  bool keeps_lists() const { return params_.topk_sols != 0 || params_.has_best_energy_sols; }
  // After the search.
  const Solution& best() const { return best_; }
  SolutionList take_list() { return pool_.take(); }

 private:
  void become_best(const Coeff& energy, const std::vector<uint64_t>& bits, double tts);

  const BinaryModel& model_;
  const SearchParams& params_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  const double time_limit_;
  std::atomic<bool> stop_ = false;
  std::mutex mutex_;  // guards the rest
  bool has_best_ = false;
  Solution best_;
  SolutionPool pool_;
};

}  // namespace zorv::plugin::easy
