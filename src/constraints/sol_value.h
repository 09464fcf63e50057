// What the inspection of constraints has to ask about a solution; defined in model/sol_eval.cpp.
#pragma once

#include "core/expr.h"

namespace zorv {

struct Sol;

// The value of the polynomial of `e`, its tag left aside. A binary variable that the model does not
// have counts as 0 whether negated or not, and a term with an unknown atom adds nothing.
coeff_t polynomial_value(const ExprImpl& e, const Sol& sol);

}  // namespace zorv
