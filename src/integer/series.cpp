#include "integer/series.h"

#include <algorithm>

namespace zorv {

std::vector<coeff_t> encoding_series(const coeff_t& lo, const coeff_t& hi, const coeff_t& start) {
  std::vector<coeff_t> series;
  coeff_t rest = hi - lo;
  for (coeff_t power = start; rest > 0; power *= 2) {
    series.push_back(std::min(power, rest));
    rest -= power;
  }
  return series;
}

}  // namespace zorv
