// The same polynomial read over 0/1 and over -1/+1 variables, rewritten from one to the other.
//
// Both abort on declared constraints, then on integer atoms, and return the plain tag. A term of d
// different variables becomes 2^d terms.
#pragma once

#include "core/expr.h"

namespace zorv {

// x = (s + 1) / 2. To stay among integers the result is 2^D times the value of `e`, D being the
// highest degree of a term as it stands, unmerged ones and those with a coefficient of 0 included.
// Simplified as spin.
ExprImpl binary_to_spin(const ExprImpl& e);

// s = 2*x - 1, with no scale. Simplified as binary.
ExprImpl spin_to_binary(const ExprImpl& e);

}  // namespace zorv
