// Path relinking (Glover, Laguna; for quadratic models Wang, Lu, Glover, Hao): from one elite
// towards another, always by the best of the flips that lead there, and back to the best
// assignment of the middle third of the way, which is as far from both as can be. A local search
// goes on from there.
#pragma once

#include <vector>

#include "easysolver/elite_pool.h"
#include "easysolver/walk.h"

namespace zorv::plugin::easy {

// Leaves the walk at the assignment in the middle. Both have as many variables as the walk.
template <typename Fields>
void relink(Walk<Fields>& walk, const std::vector<uint8_t>& from, const std::vector<uint8_t>& to) {
  using Energy = typename Walk<Fields>::Energy;
  auto& state = walk.state;
  state.move_to(from.data());
  std::vector<uint32_t> different;
  for (uint32_t i = 0; i < state.size(); ++i) {
    if (from[i] != to[i]) different.push_back(i);
  }
  const size_t distance = different.size();
  std::vector<uint32_t> path;
  size_t best_length = 0;
  Energy best = 0;
  while (path.size() < distance - distance / 3) {
    size_t choice = 0;
    Energy least = state.delta(different[0]);
    for (size_t k = 1; k < different.size(); ++k) {
      Energy delta = state.delta(different[k]);
      if (delta < least) least = std::move(delta), choice = k;
    }
    state.flip(different[choice]);
    path.push_back(different[choice]);
    if (walk.must_stop(different.size())) return;
    different[choice] = different.back();
    different.pop_back();
    if (path.size() < std::max<size_t>(1, distance / 3)) continue;
    if (best_length == 0 || state.energy() < best) {
      best = state.energy();
      best_length = path.size();
    }
  }
  while (path.size() > best_length) {
    state.flip(path.back());
    path.pop_back();
  }
}

}  // namespace zorv::plugin::easy
