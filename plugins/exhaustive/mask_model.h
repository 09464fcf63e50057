// MaskModel: a model of at most 62 variables in one number type, with terms as masks of variables.
#pragma once

#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "common/binary_model.h"
#include "common/literal.h"
#include "exhaustive/gray_order.h"
#include "exhaustive/lanes.h"

namespace zorv::plugin {

// coeff where the variables in `ones` are all 1 and those in `zeros` all 0, else 0.
template <typename Number>
struct MaskTerm {
  Number coeff;
  uint64_t ones, zeros;

  uint32_t degree() const { return static_cast<uint32_t>(std::popcount(ones | zeros)); }
};
template <typename Number>
using MaskTerms = std::vector<MaskTerm<Number>>;
template <typename Number>
Number value_of(const MaskTerms<Number>& terms, uint64_t state) {
  Number sum = 0;
  for (const MaskTerm<Number>& term : terms) {
    if ((state & (term.ones | term.zeros)) == term.ones) sum += term.coeff;
  }
  return sum;
}

template <typename Number>
struct MaskConstraint {
  PenaltyRule<Number> rule;
  MaskTerms<Number> body;
};

template <typename Number>
struct MaskModel {
  uint32_t variables;
  MaskTerms<Number> objective;  // without the model's constant
  std::vector<MaskConstraint<Number>> constraints;
};

template <typename Number>
Number energy_of(const MaskModel<Number>& model, uint64_t state) {
  Number energy = value_of(model.objective, state);
  for (const MaskConstraint<Number>& c : model.constraints) {
    const Number nearest = distance_to_set(value_of(c.body, state), c.rule.intervals);
    energy += penalty(c.rule.weight, nearest, c.rule.is_squared ? 2 : 1);
  }
  return energy;
}

template <typename Number>
void append_term(MaskTerms<Number>& terms, const Coeff& coeff, const uint32_t* literals,
                 uint64_t degree) {
  MaskTerm<Number> term{static_cast<Number>(coeff), 0, 0};
  for (uint64_t i = 0; i < degree; ++i) {
    (is_complement(literals[i]) ? term.zeros : term.ones) |= uint64_t{1}
                                                             << variable_of(literals[i]);
  }
  const bool is_ever_one = (term.ones & term.zeros) == 0;
  if (is_ever_one && term.coeff != 0) terms.push_back(std::move(term));
}

template <typename Number>
MaskConstraint<Number> make_mask_constraint(const BinaryConstraint& from) {
  MaskConstraint<Number> made{{static_cast<Number>(from.weight), {}, from.shape_k != 1}, {}};
  for (const auto& [low, high] : joined_within(from.allowed, body_extent(from).range)) {
    made.rule.intervals.emplace_back(static_cast<Number>(low), static_cast<Number>(high));
  }
  append_term(made.body, from.body_constant, nullptr, 0);
  from.body.for_each([&](const Coeff& coeff, const uint32_t* literals, uint64_t degree) {
    append_term(made.body, coeff, literals, degree);
  });
  return made;
}

template <typename Number>
MaskModel<Number> make_mask_model(const BinaryModel& model) {
  MaskModel<Number> made{static_cast<uint32_t>(model.nvars), {}, {}};
  model.for_each_term([&](const Coeff& coeff, const uint32_t* literals, uint64_t degree) {
    append_term(made.objective, coeff, literals, degree);
  });
  for (const BinaryConstraint& constraint : model.constraints) {
    if (constraint.weight == 0) continue;
    made.constraints.push_back(make_mask_constraint<Number>(constraint));
  }
  return made;
}

// A part of all assignments: the leading variables are fixed, the `walked` lowest ones are walked
// in Gray order, from state_of_rank(number << walked) on.
struct Segment {
  uint32_t walked;
  uint64_t number;

  uint64_t fixed_bits() const { return state_of_rank(number) << walked; }
  // Every other segment begins at the end of the order of its variables and goes back, which is
  // the way onwards with the highest of them turned round.
  uint64_t turned_bits() const { return (number & 1) != 0 ? uint64_t{1} << walked >> 1 : 0; }
};

// The term as a walk of the segment sees it; false if it is 0 throughout.
template <typename Number>
bool restrict_term(const Segment& segment, MaskTerm<Number>& term) {
  const uint64_t walked = (uint64_t{1} << segment.walked) - 1;
  const uint64_t fixed = segment.fixed_bits();
  if ((term.ones & ~walked & ~fixed) != 0 || (term.zeros & fixed) != 0) return false;
  term.ones &= walked;
  term.zeros &= walked;
  if (((term.ones | term.zeros) & segment.turned_bits()) != 0) {
    term.ones ^= segment.turned_bits();
    term.zeros ^= segment.turned_bits();
  }
  return true;
}

}  // namespace zorv::plugin
