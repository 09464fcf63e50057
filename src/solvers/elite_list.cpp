#include "solvers/elite_list.h"

#include <algorithm>

namespace zorv {

void EliteList::offer(const coeff_t& energy, const std::vector<coeff_t>& state, Breed breed) {
  const bool is_known = std::any_of(entries_.begin(), entries_.end(),
                                    [&](const EliteEntry& entry) { return entry.state == state; });
  if (is_known || (entries_.size() >= kRoom && energy >= entries_.back().energy)) return;
  const auto place =
      std::upper_bound(entries_.begin(), entries_.end(), energy,
                       [](const coeff_t& e, const EliteEntry& entry) { return e < entry.energy; });
  entries_.insert(place, {energy, state, breed});
  if (entries_.size() > kRoom) entries_.pop_back();
}

}  // namespace zorv
