#include "solvers/solution_pool.h"

#include <algorithm>

namespace zorv {

void SolutionPool::offer(StateKeeper& keeper, const coeff_t& energy, double tts, uint64_t most) {
  if (holds_candidate(keeper)) return;
  const KeptState kept = KeptState::of(keeper);
  const auto place =
      std::upper_bound(entries_.begin(), entries_.end(), energy,
                       [](const coeff_t& e, const PoolEntry& entry) { return e < entry.energy; });
  entries_.insert(place, {energy, tts, keeper.hash(), kept});
  by_hash_.emplace(keeper.hash(), kept);
  if (most != 0 && entries_.size() > most) drop_last();
}

void SolutionPool::clear() {
  by_hash_.clear();
  for (PoolEntry& entry : entries_) entry.kept.release();
  entries_.clear();
}

bool SolutionPool::holds_candidate(const StateKeeper& keeper) const {
  const auto [begin, end] = by_hash_.equal_range(keeper.hash());
  return std::any_of(begin, end,
                     [&](const auto& known) { return known.second.is_candidate(keeper); });
}

void SolutionPool::drop_last() {
  PoolEntry& last = entries_.back();
  auto [known, end] = by_hash_.equal_range(last.hash);
  while (known->second != last.kept) ++known;
  by_hash_.erase(known);
  last.kept.release();
  entries_.pop_back();
}

}  // namespace zorv
