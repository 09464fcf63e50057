// BinaryModel: a model as it arrives through the functions of a solver library, and what it says
// about an assignment, straight from the definition and exactly.
//
// The energy of an assignment is the constant, plus all terms, plus the penalty of each constraint:
// its weight times the violation of its intervals to the power shape_k.
#pragma once

#include <cstdint>
#include <vector>

#include "common/coeff.h"
#include "zorv/exact_range.h"

namespace zorv::plugin {

// Terms of one degree: term t has the literals literals[t * degree] .. [t * degree + degree - 1].
struct TermTable {
  uint32_t degree;
  uint64_t count;
  const uint32_t* literals;  // the caller's, good as long as the handle
  const Coeff* coeffs;       // likewise
};

// Terms of any degrees, copied: term t has the literals literals[head[t]] .. [head[t + 1] - 1].
struct TermList {
  std::vector<uint64_t> head{0};
  std::vector<uint32_t> literals;
  std::vector<Coeff> coeffs;

  uint64_t size() const { return coeffs.size(); }
  void append(const Coeff& coeff, const uint32_t* first, const uint32_t* last);
  // visit(coeff, literals, degree) for each term.
  template <typename Visit>
  void for_each(const Visit& visit) const {
    for (size_t t = 0; t < coeffs.size(); ++t) {
      visit(coeffs[t], literals.data() + head[t], head[t + 1] - head[t]);
    }
  }
};

struct BinaryConstraint {
  Coeff weight;                       // may be negative
  std::vector<Range<Coeff>> allowed;  // at least one; as they came, so ends may be crossed
  Coeff body_constant;
  TermList body;                        // the linear part first
  uint64_t linear_count = 0;            // how many of its terms have one literal and came as such
  uint8_t shape_k = 2, shape_kind = 0;  // exponent; 0 a requirement, 1 an objective term

  bool is_linear() const { return linear_count == body.size(); }
  bool is_required() const { return shape_kind == 0; }
};

struct BinaryModel {
  uint64_t nvars = 0;
  const Coeff* constant = nullptr;
  std::vector<TermTable> terms;  // by degree, which starts at 1
  std::vector<BinaryConstraint> constraints;
  // The terms that are a penalty, if there are any: part of `terms` already.
  bool has_remainder = false;
  Coeff remainder_constant;
  TermList remainder;

  // The functions of a library with the same arguments end in these.
  BinaryModel(uint64_t nvars, uint32_t max_degree, const ::coeff_t* constant,
              const uint64_t* term_count, const uint32_t* const* term_vars,
              const ::coeff_t* const* term_coeffs);
  void add_constraint(const ::coeff_t* weight, const ::coeff_t* lo, const ::coeff_t* hi,
                      const ::coeff_t* body_constant, uint64_t count, const uint32_t* vars,
                      const ::coeff_t* coeffs);
  void add_constraint_nl(const ::coeff_t* weight, const ::coeff_t* lo, const ::coeff_t* hi,
                         const ::coeff_t* body_constant, uint64_t count, const uint32_t* vars,
                         const ::coeff_t* coeffs, uint64_t nl_count, const uint64_t* nl_head,
                         const uint32_t* nl_vars, const ::coeff_t* nl_coeffs);
  void add_constraint_set(const ::coeff_t* weight, const ::coeff_t* lo, const ::coeff_t* hi,
                          const ::coeff_t* body_constant, uint64_t count, const uint32_t* vars,
                          const ::coeff_t* coeffs, uint64_t n_allowed, const ::coeff_t* allowed_lo,
                          const ::coeff_t* allowed_hi);
  void set_cons_shape(uint8_t shape_k, uint8_t shape_kind);  // of the constraint added last
  void set_remainder(const ::coeff_t* remainder_constant, uint64_t count, const uint64_t* head,
                     const uint32_t* vars, const ::coeff_t* coeffs);

  // visit(coeff, literals, degree) for each term of the polynomial.
  template <typename Visit>
  void for_each_term(const Visit& visit) const {
    for (const TermTable& table : terms) {
      for (uint64_t t = 0; t < table.count; ++t) {
        visit(table.coeffs[t], table.literals + t * table.degree, uint64_t{table.degree});
      }
    }
  }
};

// What a model says about an assignment; `words` has words_for(nvars) of them.
Coeff body_value(const BinaryConstraint& constraint, const uint64_t* words);
Coeff violation(const BinaryConstraint& constraint, const Coeff& body);
Coeff energy_of(const BinaryModel& model, const uint64_t* words);

struct ConstraintTally {
  Coeff penalties;        // of all constraints, objective terms included
  uint64_t required = 0;  // constraints that ask for something: shape_kind 0
  uint64_t violated = 0;  // of those, the ones that do not hold
};
ConstraintTally tally_constraints(const BinaryModel& model, const uint64_t* words);

// Between what values a body can lie, by interval arithmetic.
BodyExtent<Coeff> body_extent(const BinaryConstraint& constraint);
// How large the numbers of a search on the model can get. The constant is left aside, so that a
// search which adds it at the end alone is not made slow by a large one.
SearchBound<Coeff> search_bound(const BinaryModel& model);

}  // namespace zorv::plugin
