#include "solvers/generator.h"

namespace zorv {

void Generator::refill() {
  uint64_t* const s = state_.data();
  for (uint32_t k = 0; k < kBlock - kShift; ++k) s[k] = twist(s[k], s[k + 1], s[k + kShift]);
  for (uint32_t k = kBlock - kShift; k < kBlock - 1; ++k) {
    s[k] = twist(s[k], s[k + 1], s[k - (kBlock - kShift)]);
  }
  s[kBlock - 1] = twist(s[kBlock - 1], s[0], s[kShift - 1]);
  for (uint32_t k = 0; k < kBlock; ++k) draws_[k] = temper(s[k]);
  next_ = 0;
}

}  // namespace zorv
