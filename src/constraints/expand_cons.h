// Declared constraints rewritten as penalty polynomials, for whoever knows no native constraints.
#pragma once

#include "core/expr.h"

namespace zorv {

// A polynomial that is 0 where lo <= f <= hi and positive elsewhere, its new slack variables set to
// their best: (f - lo)^2 for hi = lo, (f - lo)*(f - hi) for hi = lo + 1, and otherwise
// (f - s)*(f - s - 1) with a slack s over every second value of [lo, hi - 1]. Zero, that is, no
// penalty at all, for hi < lo. Not merged, plain tag. The tag of `f` is left aside.
ExprImpl between(const ExprImpl& f, const coeff_t& lo, const coeff_t& hi);

// The polynomial of `e` plus weight times penalty for each declared constraint, plus the free-form
// remainder. Not merged, plain tag; anything without declared constraints is only copied, and a
// VarInt stays one. Slack variables "{s0}", "{s1}" and so on are new on every call.
//
// A set of allowed values is expanded as its hull, and an equality of negative weight as a negative
// square; callers rely on both. Aborts on abs and relu terms, on constraints without bounds, and on
// a range of negative weight.
ExprImpl expand_cons(const ExprImpl& e);

}  // namespace zorv
