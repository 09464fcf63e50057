// Operations of one array, and division by an integer.
#pragma once

#include "arrays/array.h"
#include "core/substitute.h"

namespace zorv {

// Negated elements, always as expressions. The tags of expressions are scaled by -1.
ArrayImpl<ExprImpl> negate(const ArrayImpl<uint32_t>& a);
ArrayImpl<ExprImpl> negate(const ArrayImpl<coeff_t>& a);
ArrayImpl<ExprImpl> negate(const ArrayImpl<TermImpl>& a);
ArrayImpl<ExprImpl> negate(const ArrayImpl<ExprImpl>& a);

// The complement of each literal.
ArrayImpl<uint32_t> invert(const ArrayImpl<uint32_t>& a);

// Terms coeffs[i] times vars[i] with the shape of `coeffs`; the shapes are not compared.
ArrayImpl<TermImpl> coefficients_times(const ArrayImpl<coeff_t>& coeffs,
                                       const ArrayImpl<uint32_t>& vars);

// replace() on each element, in place.
void replace_elements(ArrayImpl<ExprImpl>& a, const Substitution& substitution);

// Truncated quotients; a divisor of 0 is the division error of coeff_t.
void divide(ArrayImpl<coeff_t>& a, const coeff_t& divisor);
// Exact quotients. Abort on 0, before any element is touched, and on a remainder.
void divide(ArrayImpl<TermImpl>& a, const coeff_t& divisor);
void divide(ArrayImpl<ExprImpl>& a, const coeff_t& divisor);

// Elements cut down to 32 bits: what is out of range becomes the nearest value in it.
//   out  [a.size]
void saturate(const ArrayImpl<coeff_t>& a, int32_t* out);

}  // namespace zorv
