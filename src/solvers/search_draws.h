// The random draws of one worker, and the two questions that the annealing asks of a draw.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "solvers/generator.h"

namespace zorv {

// Workers of one search draw from unrelated sequences.
inline Generator worker_generator(uint64_t seed, uint32_t thread) {
  return Generator(seed ^ (thread + uint64_t{1}) * 0x9E3779B97F4A7C15u);
}

// A draw as a number in [0, 1). The halves convert exactly and their sum is rounded once, so this
// is the draw converted as a whole, without the branch on its top bit that the latter costs.
inline double uniform(uint64_t draw) {
  const double whole =
      static_cast<double>(draw >> 32) * 0x1p32 + static_cast<double>(draw & 0xFFFFFFFF);
  const double u = whole * 0x1p-64;
  return u < 1.0 ? u : 0x1.fffffffffffffp-1;
}

// Whether a rise of the energy by `delta` is accepted: uniform(draw) < exp(-delta / temperature).
inline bool accepts_rise(uint64_t draw, double delta, double temperature) {
  return uniform(draw) < std::exp(-delta / temperature);
}

// The same answer, mostly without the exponential. A draw that is not 0 and has z leading zero
// bits is at least 2^-(z+1) as a number in [0, 1), so a delta of (z+1) ln 2 temperatures or more
// is refused. The table holds (z+1) ln 2, a little enlarged, so that rounding here and in the
// exponential cannot matter.
class RiseTest {
 public:
  RiseTest() {
    for (int zeros = 0; zeros < 64; ++zeros) refused_from_[zeros] = (zeros + 1) * 0.693147181;
    refused_from_[64] = std::numeric_limits<double>::infinity();
  }
  bool operator()(uint64_t draw, double delta, double temperature) const {
    if (delta > temperature * refused_from_[std::countl_zero(draw)]) return false;
    return accepts_rise(draw, delta, temperature);
  }

 private:
  double refused_from_[65];
};

}  // namespace zorv
