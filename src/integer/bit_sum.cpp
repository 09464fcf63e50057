#include "integer/bit_sum.h"

#include <numeric>

#include "core/var_registry.h"
#include "integer/series.h"

namespace zorv {

std::vector<uint32_t> new_bits(const std::string& name, uint64_t n) {
  std::vector<uint32_t> bits(n);
  if (n > 0) {
    std::iota(bits.begin(), bits.end(), n == 1 ? new_var(name) : new_var_array(name, &n, 1));
  }
  return bits;
}

BitSum new_slack(const std::string& name, const coeff_t& lo, const coeff_t& hi,
                 const coeff_t& start) {
  std::vector<coeff_t> series = encoding_series(lo, hi, start);
  std::vector<uint32_t> bits = new_bits(name, series.size());
  return {lo, std::move(series), std::move(bits)};
}

ExprImpl polynomial_of(const coeff_t& base, const std::vector<coeff_t>& coeffs,
                       const std::vector<uint32_t>& vars) {
  ExprImpl e(base);
  if (!vars.empty()) e.list.reserve(vars.size() - 1);
  for (size_t i = 0; i < vars.size(); ++i) e.list.append(TermImpl(coeffs[i], VarList(vars[i])));
  return e;
}

}  // namespace zorv
