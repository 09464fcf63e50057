#include "common/binary_model.h"

#include <algorithm>

#include "common/literal.h"

namespace zorv::plugin {

namespace {

bool are_all_held(const uint32_t* literals, uint64_t degree, const uint64_t* words) {
  return std::all_of(literals, literals + degree, [=](uint32_t l) { return holds(l, words); });
}

}  // namespace

void TermList::append(const Coeff& coeff, const uint32_t* first, const uint32_t* last) {
  literals.insert(literals.end(), first, last);
  head.push_back(literals.size());
  coeffs.push_back(coeff);
}

BinaryModel::BinaryModel(uint64_t nvars, uint32_t max_degree, const ::coeff_t* constant,
                         const uint64_t* term_count, const uint32_t* const* term_vars,
                         const ::coeff_t* const* term_coeffs)
    : nvars(nvars), constant(as_coeffs(constant)) {
  for (uint32_t d = 0; d < max_degree; ++d) {
    terms.push_back({d + 1, term_count[d], term_vars[d], as_coeffs(term_coeffs[d])});
  }
}

void BinaryModel::add_constraint(const ::coeff_t* weight, const ::coeff_t* lo, const ::coeff_t* hi,
                                 const ::coeff_t* body_constant, uint64_t count,
                                 const uint32_t* vars, const ::coeff_t* coeffs) {
  BinaryConstraint constraint;
  constraint.weight = *as_coeffs(weight);
  constraint.allowed = {{*as_coeffs(lo), *as_coeffs(hi)}};
  constraint.body_constant = *as_coeffs(body_constant);
  constraint.linear_count = count;
  for (uint64_t i = 0; i < count; ++i) {
    constraint.body.append(as_coeffs(coeffs)[i], vars + i, vars + i + 1);
  }
  constraints.push_back(std::move(constraint));
}

void BinaryModel::add_constraint_nl(const ::coeff_t* weight, const ::coeff_t* lo,
                                    const ::coeff_t* hi, const ::coeff_t* body_constant,
                                    uint64_t count, const uint32_t* vars, const ::coeff_t* coeffs,
                                    uint64_t nl_count, const uint64_t* nl_head,
                                    const uint32_t* nl_vars, const ::coeff_t* nl_coeffs) {
  add_constraint(weight, lo, hi, body_constant, count, vars, coeffs);
  for (uint64_t t = 0; t < nl_count; ++t) {
    constraints.back().body.append(as_coeffs(nl_coeffs)[t], nl_vars + nl_head[t],
                                   nl_vars + nl_head[t + 1]);
  }
}

void BinaryModel::add_constraint_set(const ::coeff_t* weight, const ::coeff_t* lo,
                                     const ::coeff_t* hi, const ::coeff_t* body_constant,
                                     uint64_t count, const uint32_t* vars, const ::coeff_t* coeffs,
                                     uint64_t n_allowed, const ::coeff_t* allowed_lo,
                                     const ::coeff_t* allowed_hi) {
  add_constraint(weight, lo, hi, body_constant, count, vars, coeffs);
  if (n_allowed == 0) return;
  std::vector<Range<Coeff>>& allowed = constraints.back().allowed;
  allowed.clear();
  for (uint64_t i = 0; i < n_allowed; ++i) {
    allowed.emplace_back(as_coeffs(allowed_lo)[i], as_coeffs(allowed_hi)[i]);
  }
}

void BinaryModel::set_cons_shape(uint8_t shape_k, uint8_t shape_kind) {
  constraints.back().shape_k = shape_k;
  constraints.back().shape_kind = shape_kind;
}

void BinaryModel::set_remainder(const ::coeff_t* new_constant, uint64_t count, const uint64_t* head,
                                const uint32_t* vars, const ::coeff_t* coeffs) {
  has_remainder = true;
  remainder_constant = *as_coeffs(new_constant);
  remainder = TermList();
  for (uint64_t t = 0; t < count; ++t) {
    remainder.append(as_coeffs(coeffs)[t], vars + head[t], vars + head[t + 1]);
  }
}

Coeff body_value(const BinaryConstraint& constraint, const uint64_t* words) {
  Coeff sum = constraint.body_constant;
  constraint.body.for_each([&](const Coeff& coeff, const uint32_t* literals, uint64_t degree) {
    if (are_all_held(literals, degree, words)) sum += coeff;
  });
  return sum;
}

Coeff violation(const BinaryConstraint& constraint, const Coeff& body) {
  return distance_to_set(body, constraint.allowed);
}

Coeff energy_of(const BinaryModel& model, const uint64_t* words) {
  Coeff energy = *model.constant;
  model.for_each_term([&](const Coeff& coeff, const uint32_t* literals, uint64_t degree) {
    if (are_all_held(literals, degree, words)) energy += coeff;
  });
  return energy + tally_constraints(model, words).penalties;
}

ConstraintTally tally_constraints(const BinaryModel& model, const uint64_t* words) {
  ConstraintTally tally;
  for (const BinaryConstraint& constraint : model.constraints) {
    const Coeff distance = violation(constraint, body_value(constraint, words));
    tally.penalties += penalty(constraint.weight, distance, constraint.shape_k);
    if (!constraint.is_required()) continue;
    ++tally.required;
    if (distance != 0) ++tally.violated;
  }
  return tally;
}

BodyExtent<Coeff> body_extent(const BinaryConstraint& constraint) {
  const Coeff& start = constraint.body_constant;
  BodyExtent<Coeff> extent{{start, start}, magnitude(start)};
  constraint.body.for_each([&](const Coeff& coeff, const uint32_t*, uint64_t) {
    (coeff < 0 ? extent.range.first : extent.range.second) += coeff;
    extent.reach += magnitude(coeff);
  });
  return extent;
}

SearchBound<Coeff> search_bound(const BinaryModel& model) {
  SearchBound<Coeff> bound;
  model.for_each_term(
      [&](const Coeff& coeff, const uint32_t*, uint64_t) { bound.add_terms(magnitude(coeff)); });
  for (const BinaryConstraint& constraint : model.constraints) {
    const BodyExtent<Coeff> extent = body_extent(constraint);
    bound.add_constraint(constraint.weight, constraint.shape_k,
                         joined_within(constraint.allowed, extent.range), extent);
  }
  return bound;
}

}  // namespace zorv::plugin
