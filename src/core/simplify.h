// The canonicalisers. All return a new expression with the plain tag and leave the argument alone.
#pragma once

#include "core/attr_rules.h"
#include "core/expr.h"

namespace zorv {

// Merges equal terms and applies no algebra of variables: x*x keeps degree 2.
ExprImpl expr_simplify(const ExprImpl& e);

// Reads variables as 0/1: x*x = x, x*~x = 0, and ~x = 1 - x in terms that have degree 1 or 2 after
// that. Terms of degree 3 and more keep their negated literals. Atoms are not idempotent: a*a
// stays.
ExprImpl expr_simplify_as_binary(const ExprImpl& e);

// Reads variables as -1/+1: s*s = 1 and ~s = -s, so that no negated literal is left. Aborts on an
// atom in a term whose coefficient is not 0.
ExprImpl expr_simplify_as_spin(const ExprImpl& e);

// The result of `simplify` with the argument's tag carried over by rewritten_attr.
ExprImpl simplify_with_attr(const ExprImpl& e, const Rewrite& simplify);

}  // namespace zorv
