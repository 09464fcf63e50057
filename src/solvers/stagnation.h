// Stagnation: for how many looks in a row a best energy has not improved.
#pragma once

#include <cstdint>

#include "core/coeff.h"

namespace zorv {

class Stagnation {
 public:
  void note(const coeff_t& best_energy) {
    const bool stands_still = has_seen_ && best_energy >= last_seen_;
    rounds_ = stands_still ? rounds_ + 1 : 0;
    has_seen_ = true;
    last_seen_ = best_energy;
  }
  uint64_t rounds() const { return rounds_; }

 private:
  bool has_seen_ = false;
  coeff_t last_seen_;
  uint64_t rounds_ = 0;
};

}  // namespace zorv
