// Making constraints. Every function returns a new expression.
//
// A declared constraint keeps body, bounds and weight as data and adds no terms: its expression has
// an empty polynomial. A classic one is a penalty polynomial with a record of what it stands for.
#pragma once

#include "constraints/constraint_tables.h"

namespace zorv {

// Declares `e`: a constrained expression becomes the declared sum of its constraints, a plain
// polynomial the requirement that it comes to zero. An already declared sum is named once more.
ExprImpl cons_mark(const ExprImpl& e);
// lo <= e <= hi, with weight 1. Aborts if `e` carries declared constraints.
ExprImpl cons_between(const ExprImpl& e, const coeff_t& lo, const coeff_t& hi);
// `e` lies in one of the intervals. Aborts likewise, and on an empty set.
ExprImpl cons_equal(const ExprImpl& e, std::vector<Interval> allowed);
// What is required of `body`, declared with weight 1.
ExprImpl declared_constraint(const ExprImpl& body, Requirement requirement);
// |f|^k and max(f, 0)^k as objective terms. Both abort if `f` carries declared constraints and
// unless k is 1 or 2; relu_term also on an atom that the registry does not know.
ExprImpl abs_term(const ExprImpl& f, uint32_t k);
ExprImpl relu_term(const ExprImpl& f, uint32_t k);

// A copy of `penalty` that names a new entry with a copy of `body`, without bounds. Aborts if
// either carries declared constraints.
ExprImpl classic_constraint(const ExprImpl& penalty, const ExprImpl& body);
// Both abort unless `e` is a single constraint; a sum of one item is none.
void set_expr_expr_bounds(const ExprImpl& e, const coeff_t& lo, const coeff_t& hi);
void set_expr_expr_allowed(const ExprImpl& e, std::vector<Interval> allowed);
// The entry with the bounds of a single constraint; null if `e` is none or has no bounds.
const ExprExpr* bounds_of(const ExprImpl& e);

// Whether `e` is one constraint and nothing else.
bool has_body(const ExprImpl& e);
// Whether `e` is a declared sum of abs and relu terms alone, at least one.
bool all_objective_only(uint32_t attr);

}  // namespace zorv
