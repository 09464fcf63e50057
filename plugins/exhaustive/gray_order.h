// The order in which assignments are visited: the reflected Gray code, in which a step flips one
// variable and variable 0 flips most often. An assignment is one word here, variable i at bit i,
// and its rank is its place in that order, from 0. Ranks break ties of the energy, so that results
// depend neither on the number of threads nor on how a walk is cut into pieces.
#pragma once

#include <cstdint>

namespace zorv::plugin {

inline constexpr uint64_t state_of_rank(uint64_t rank) { return rank ^ (rank >> 1); }
inline constexpr uint64_t rank_of_state(uint64_t state) {
  for (int shift = 1; shift < 64; shift *= 2) state ^= state >> shift;
  return state;
}

}  // namespace zorv::plugin
