// The energy of an expression straight from what it states: its polynomial, its penalty, and each
// declared constraint by its body. No model takes part, so a model can be held against it. For
// tests only, and slow.
#pragma once

#include <algorithm>

#include "constraints/constraint_tables.h"
#include "core/attr_rules.h"
#include "reference/plain_poly.h"

namespace zorv::test {

inline coeff_t plain_violation(const ExprExpr& entry, const coeff_t& value) {
  const bool is_linear = max_degree(*entry.body) <= 1;
  // Models take allowed values only where the body is linear.
  std::vector<Interval> intervals = {{entry.lo, entry.hi}};
  if (is_linear && !entry.allowed.empty()) intervals = entry.allowed;
  std::vector<coeff_t> distances;
  for (const auto& [lo, hi] : intervals) {
    distances.push_back(std::max({coeff_t(lo - value), coeff_t(0), coeff_t(value - hi)}));
  }
  return *std::min_element(distances.begin(), distances.end());
}

inline coeff_t plain_energy(const ExprImpl& e, const Assignment& values) {
  coeff_t energy = plain_value(e, values);
  if (!carries_declared(e.attr)) return energy;
  const ConstraintSum sum = constraint_sum(attr_index(e.attr));
  for (const ConstraintItem& item : items_of(sum)) {
    const ExprExpr& entry = *item.constraint;
    coeff_t penalty = *item.weight;
    const coeff_t violation = plain_violation(entry, plain_value(*entry.body, values));
    for (int k = 0; k < entry.shape_k; ++k) penalty *= violation;
    energy += penalty;
  }
  if (has_remainder(sum)) energy += plain_value(remainder_of(sum), values);
  return energy;
}

}  // namespace zorv::test
