// The coefficients by which bits encode an integer range: start, 2 start, 4 start, ... with the
// last one cut down so that all of them add up to the width of the range.
#pragma once

#include <vector>

#include "core/coeff.h"

namespace zorv {

// With start 1 every value of 0 .. hi - lo is a sum of some of them; with start 2 every second
// one, which is what penalties that accept two neighbours need. Empty if hi is not above lo.
std::vector<coeff_t> encoding_series(const coeff_t& lo, const coeff_t& hi, const coeff_t& start);

}  // namespace zorv
