// Random input with a bias to trouble.
#pragma once

#include <cstdint>
#include <random>

#include "core/coeff.h"

namespace zorv::test {

using Random = std::mt19937_64;

inline uint64_t below(Random& random, uint64_t n) { return random() % n; }

// 0, small numbers, powers of two and their neighbours around the limb borders, and plain draws of
// up to three limbs; either sign.
inline coeff_t troublesome(Random& random) {
  static const int kExponents[] = {1, 8, 31, 32, 53, 62, 63, 64, 65, 127, 128, 129, 191};
  coeff_t value;
  switch (below(random, 4)) {
    case 0:
      value = below(random, 4);
      break;
    case 1:
      value = (coeff_t(1) << kExponents[below(random, std::size(kExponents))]) +
              static_cast<int>(below(random, 3)) - 1;
      break;
    case 2:
      value = random() >> below(random, 64);
      break;
    default:
      for (uint64_t limbs = 1 + below(random, 3); limbs > 0; --limbs) {
        value = (value << 64) + random();
      }
  }
  return below(random, 2) == 0 ? value : coeff_t(-value);
}

}  // namespace zorv::test
