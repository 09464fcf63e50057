// Polynomials of degree 2 with the same minima, by auxiliary variables.
//
// A term with a negative coefficient takes one auxiliary variable (Freedman and Drineas, 2005), one
// with a positive coefficient and degree d about log2(d) of them: the form of Ishikawa (2011) with
// the sum of his auxiliary variables written as a binary slack.
#pragma once

#include "arrays/array.h"
#include "core/expr.h"

namespace zorv {

// For every assignment of the variables of `e`, the minimum of the result over the auxiliary
// variables is the value of `e`. Each term of degree 3 or more has auxiliary variables of its own,
// "{r0}", "{r1}" and so on; nothing else is touched. Simplified as binary, plain tag. The tag of
// `e` is left aside, and an atom counts as if it were binary.
ExprImpl reduce_degree(const ExprImpl& e);

// Each element of an array, in flat order.
ArrayImpl<ExprImpl> reduce_degree(const ArrayImpl<ExprImpl>& a);

// The same for one expression, but aborts on declared constraints, which would be lost, and on
// atoms.
ExprImpl checked_reduce_degree(const ExprImpl& e);

}  // namespace zorv
