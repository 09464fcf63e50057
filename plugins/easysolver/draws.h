// A table of -log(u) for uniform u: times the temperature, how far a flip may raise the energy. It
// is read in windows that begin anywhere, and a part of it is renewed before every sweep, so that
// rare draws come to all variables. A logarithm for each trial would cost more than the trial.
#pragma once

#include <cmath>
#include <vector>

#include "easysolver/kernels.h"
#include "easysolver/random.h"

namespace zorv::plugin::easy {

class Draws {
 public:
  static constexpr uint32_t kWindow = 4096;

  explicit Draws(Random& random) : table_(2 * kWindow + kBlock) {
    for (float& draw : table_) draw = fresh(random);
  }

  void renew(Random& random) {
    for (uint32_t k = 0; k < kRenewed; ++k) {
      table_[next_] = fresh(random);
      next_ = (next_ + 1) % table_.size();
    }
  }
  float draw(Random& random) const { return table_[random.below(table_.size())]; }
  const float* window(Random& random) const { return &table_[random.below(kWindow)]; }

 private:
  static constexpr uint32_t kRenewed = 16;
  static float fresh(Random& random) { return static_cast<float>(-std::log(random.unit())); }

  std::vector<float> table_;
  size_t next_ = 0;
};

}  // namespace zorv::plugin::easy
