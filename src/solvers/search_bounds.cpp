#include "solvers/search_bounds.h"

#include <algorithm>

#include "constraints/violation.h"

namespace zorv {

namespace {

// |coeff| times the magnitudes of `literals`. Magnitudes are at least 1, so the bound holds for
// every partial product too.
coeff_t term_reach(const coeff_t& coeff, const uint32_t* literals, uint64_t degree,
                   const std::vector<coeff_t>& magnitudes, uint64_t bit_count) {
  coeff_t reach = abs(coeff);
  for (uint64_t k = 0; k < degree; ++k) {
    if (is_atom(literals[k])) reach *= magnitudes[flat_index(literals[k], bit_count)];
  }
  return reach;
}

coeff_t polynomial_reach(const ModelImpl& model, const std::vector<coeff_t>& magnitudes) {
  coeff_t reach = abs(model.constant);
  for (uint32_t degree = 1; degree <= model.max_degree; ++degree) {
    const auto& coeffs = model.term_coeffs[degree - 1];
    const uint32_t* literals = model.term_vars[degree - 1].data();
    for (size_t t = 0; t < coeffs.size(); ++t, literals += degree) {
      reach += term_reach(coeffs[t], literals, degree, magnitudes, model.variables.size());
    }
  }
  return reach;
}

coeff_t largest_end(const std::vector<Interval>& intervals) {
  coeff_t largest;
  for (const Interval& interval : intervals) {
    largest = std::max({largest, coeff_t(abs(interval.first)), coeff_t(abs(interval.second))});
  }
  return largest;
}

coeff_t violation_reach(const std::vector<Interval>& intervals, const Interval& range,
                        const coeff_t& reach) {
  if (has_crossed_ends(intervals)) return largest_end(intervals) * 2 + reach;
  coeff_t farthest =
      std::max(distance_to_set(range.first, intervals), distance_to_set(range.second, intervals));
  for (size_t k = 0; k + 1 < intervals.size(); ++k) {
    const coeff_t half_gap = (intervals[k + 1].first - intervals[k].second) / 2;
    const coeff_t middle = intervals[k].second + half_gap;
    if (range.first <= middle && middle <= range.second) farthest = std::max(farthest, half_gap);
  }
  return farthest;
}

// Products of the ends of two intervals.
Interval product(const Interval& a, const Interval& b) {
  const auto [low, high] = std::minmax({coeff_t(a.first * b.first), coeff_t(a.first * b.second),
                                        coeff_t(a.second * b.first), coeff_t(a.second * b.second)});
  return {low, high};
}

void add_term_range(const ModelImpl& model, const coeff_t& coeff, const uint32_t* literals,
                    uint64_t degree, Interval& sum) {
  Interval range{coeff, coeff};
  for (uint64_t k = 0; k < degree; ++k) {
    const uint32_t atom = index_of(literals[k]);
    range = product(range, is_atom(literals[k]) ? Interval{model.int_lo[atom], model.int_hi[atom]}
                                                : Interval{0, 1});
  }
  sum.first += range.first;
  sum.second += range.second;
}

}  // namespace

std::vector<coeff_t> value_magnitudes(const ModelImpl& model) {
  std::vector<coeff_t> magnitudes(model.variables.size(), 1);
  for (size_t j = 0; j < model.int_lo.size(); ++j) {
    magnitudes.push_back(
        std::max({coeff_t(1), coeff_t(abs(model.int_lo[j])), coeff_t(abs(model.int_hi[j]))}));
  }
  return magnitudes;
}

coeff_t body_reach(const NativeCons& cons, const std::vector<coeff_t>& magnitudes,
                   uint64_t bit_count) {
  coeff_t reach = abs(cons.body_constant);
  for (size_t k = 0; k < cons.vars.size(); ++k) {
    reach += term_reach(cons.coeffs[k], &cons.vars[k], 1, magnitudes, bit_count);
  }
  for (size_t t = 0; t < cons.nl_coeffs.size(); ++t) {
    reach += term_reach(cons.nl_coeffs[t], cons.nl_vars.data() + cons.nl_head[t],
                        cons.nl_head[t + 1] - cons.nl_head[t], magnitudes, bit_count);
  }
  return reach;
}

Interval body_range(const ModelImpl& model, const NativeCons& cons) {
  Interval sum{cons.body_constant, cons.body_constant};
  for (size_t k = 0; k < cons.vars.size(); ++k) {
    add_term_range(model, cons.coeffs[k], &cons.vars[k], 1, sum);
  }
  for (size_t t = 0; t < cons.nl_coeffs.size(); ++t) {
    add_term_range(model, cons.nl_coeffs[t], cons.nl_vars.data() + cons.nl_head[t],
                   cons.nl_head[t + 1] - cons.nl_head[t], sum);
  }
  return sum;
}

bool has_crossed_ends(const std::vector<Interval>& intervals) {
  return std::any_of(intervals.begin(), intervals.end(),
                     [](const Interval& interval) { return interval.second < interval.first; });
}

std::vector<Interval> penalty_intervals(const NativeCons& cons, const Interval& range) {
  std::vector<Interval> intervals = cons.allowed;
  if (intervals.empty()) intervals = {{cons.lo, cons.hi}};
  if (has_crossed_ends(intervals)) return intervals;

  std::sort(intervals.begin(), intervals.end());
  std::vector<Interval> joined;
  for (auto& [low, high] : intervals) {
    low = std::max(low, std::min(high, range.first));
    high = std::min(high, std::max(low, range.second));
    if (!joined.empty() && low <= joined.back().second) {
      joined.back().second = std::max(joined.back().second, high);
    } else {
      joined.emplace_back(low, high);
    }
  }
  return joined;
}

bool fits_machine_integers(const ModelImpl& model) {
  const coeff_t limit = coeff_t(1) << kMachineBits;
  const std::vector<coeff_t> magnitudes = value_magnitudes(model);
  for (size_t j = 0; j < model.int_lo.size(); ++j) {
    const coeff_t range = model.int_hi[j] - model.int_lo[j];
    if (magnitudes[model.variables.size() + j] + range > limit) return false;
  }
  coeff_t energy_reach = polynomial_reach(model, magnitudes);
  for (const NativeCons& cons : model.native_cons) {
    const coeff_t reach = body_reach(cons, magnitudes, model.variables.size());
    const Interval range = body_range(model, cons);
    const std::vector<Interval> intervals = penalty_intervals(cons, range);
    const coeff_t weight = abs(cons.weight);
    // A move changes a body by up to twice its reach before the sum is back within it.
    if (weight > limit || reach * 3 > limit || largest_end(intervals) + reach > limit) return false;
    energy_reach += penalty(weight, violation_reach(intervals, range, reach), cons.shape_k);
  }
  return energy_reach * 2 <= limit;
}

}  // namespace zorv
