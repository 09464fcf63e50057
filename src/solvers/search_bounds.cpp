#include "solvers/search_bounds.h"

#include <algorithm>
#include <utility>

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

// Products of the ends of two intervals.
Interval product(const Interval& a, const Interval& b) {
  const auto [low, high] = std::minmax({coeff_t(a.first * b.first), coeff_t(a.first * b.second),
                                        coeff_t(a.second * b.first), coeff_t(a.second * b.second)});
  return {low, high};
}

Interval literal_range(const ModelImpl& model, uint32_t literal) {
  const uint32_t atom = index_of(literal);
  return is_atom(literal) ? Interval{model.int_lo[atom], model.int_hi[atom]} : Interval{0, 1};
}

void add_term_range(const ModelImpl& model, const coeff_t& coeff, const uint32_t* literals,
                    uint64_t degree, Interval& sum) {
  Interval range = literal_range(model, literals[0]);
  for (uint64_t k = 1; k < degree; ++k) range = product(range, literal_range(model, literals[k]));
  if (is_negative(coeff)) std::swap(range.first, range.second);
  sum.first += range.first * coeff;
  sum.second += range.second * coeff;
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

std::vector<Interval> penalty_intervals(const NativeCons& cons, const Interval& range) {
  std::vector<Interval> intervals = cons.allowed;
  if (intervals.empty()) intervals = {{cons.lo, cons.hi}};
  return joined_within(std::move(intervals), range);
}

bool fits_machine_integers(const ModelImpl& model) {
  SearchBound<coeff_t> bound;
  const std::vector<coeff_t> magnitudes = value_magnitudes(model);
  for (size_t j = 0; j < model.int_lo.size(); ++j) {
    bound.add_value(magnitudes[model.variables.size() + j] + model.int_hi[j] - model.int_lo[j]);
  }
  bound.add_terms(polynomial_reach(model, magnitudes));
  for (const NativeCons& cons : model.native_cons) {
    const BodyExtent<coeff_t> body{body_range(model, cons),
                                   body_reach(cons, magnitudes, model.variables.size())};
    bound.add_constraint(cons.weight, cons.shape_k, penalty_intervals(cons, body.range), body);
  }
  return bound.fits(kMachineBits);
}

}  // namespace zorv
