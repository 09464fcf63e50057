// EliteList: the best states that candidates for GPU rounds are bred from, each with the way in
// which it came about, so that ways that work are chosen again.
#pragma once

#include <cstdint>
#include <vector>

#include "core/coeff.h"

namespace zorv {

// How a candidate is made; kFound marks states that somebody else found.
enum class Breed : uint8_t { kFound = 0, kFresh = 1, kBest = 2, kPerturbed = 3, kCrossed = 4 };

struct EliteEntry {
  coeff_t energy;
  std::vector<coeff_t> state;  // binary variables as 0 and 1, then the integer variables
  Breed breed;
};

class EliteList {
 public:
  // By energy, and among equals by arrival.
  const std::vector<EliteEntry>& entries() const { return entries_; }

  // Takes a state that is new, if there is room or it beats the last one, which then goes.
  void offer(const coeff_t& energy, const std::vector<coeff_t>& state, Breed breed);

 private:
  static constexpr size_t kRoom = 10;

  std::vector<EliteEntry> entries_;
};

}  // namespace zorv
