#include "solvers/solution_pool.h"

#include <algorithm>

namespace zorv {

// A linear scan: only records and ties of single threads come this far.
bool SolutionPool::holds(const std::vector<coeff_t>& state) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const PoolEntry& entry) { return entry.state == state; });
}

void SolutionPool::offer_top_k(uint64_t k, const std::vector<coeff_t>& state, const coeff_t& energy,
                               double tts) {
  if (k == 0 || holds(state)) return;
  if (entries_.size() >= k && energy >= entries_.back().energy) return;
  const auto place =
      std::upper_bound(entries_.begin(), entries_.end(), energy,
                       [](const coeff_t& e, const PoolEntry& entry) { return e < entry.energy; });
  entries_.insert(place, {energy, state, tts});
  if (entries_.size() > k) entries_.pop_back();
}

void SolutionPool::offer_tie(uint64_t cap, const std::vector<coeff_t>& state, const coeff_t& energy,
                             double tts) {
  if (cap != 0 && entries_.size() >= cap) return;
  if (!holds(state)) entries_.push_back({energy, state, tts});
}

void SolutionPool::restart(const std::vector<coeff_t>& state, const coeff_t& energy, double tts) {
  entries_.clear();
  entries_.push_back({energy, state, tts});
}

}  // namespace zorv
