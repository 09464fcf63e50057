// The value of a polynomial under given values of its variables.
#pragma once

#include "core/expr.h"

namespace zorv {

// Literal i of `literals` has the value values[i], for i below n; a later one replaces an earlier
// one. A negated literal of the polynomial counts as 1 minus the value of its variable, whatever
// the variable means to the caller; a negated key is never looked for. Atoms take their value as
// it is. The tag is left aside. Aborts on a variable without a value, also in terms with a
// coefficient of 0.
coeff_t evaluate(const ExprImpl& e, const uint32_t* literals, const coeff_t* values, uint64_t n);

// The greatest common divisor of the constant and all coefficients; 0 if all of them are 0.
coeff_t coefficient_gcd(const ExprImpl& e);

}  // namespace zorv
