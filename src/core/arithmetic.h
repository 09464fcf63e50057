// The algebra of polynomials and terms. Nothing here merges equal terms, looks at a tag or sets
// one: results carry the plain tag, changes in place leave the tag alone. Products are index
// addressed fills of a block of known size, so the order of their terms never depends on threads.
#pragma once

#include "core/expr.h"

namespace zorv {

// Coefficients multiplied, literals of `a` then of `b`.
TermImpl mul(const TermImpl& a, const TermImpl& b);
TermImpl negated(const TermImpl& t);
// Aborts on 0 and on a remainder.
void idiv(TermImpl& t, const coeff_t& divisor);

// (na*b terms if b has a constant ...) see arithmetic_mul.cpp for the order of terms.
ExprImpl mul(const ExprImpl& a, const ExprImpl& b);
ExprImpl sqr(const ExprImpl& e);
ExprImpl mul_term(const ExprImpl& e, const TermImpl& t);
ExprImpl mul_var(const ExprImpl& e, uint32_t literal);

void imul_int(ExprImpl& e, const coeff_t& factor);
void negate(ExprImpl& e);
// Aborts on 0 and on a remainder; the constant is tested first.
void idiv_int(ExprImpl& e, const coeff_t& divisor);

// a + b: `first` of b appended, its entries copied behind with one exact reservation. May alias.
void add_poly(ExprImpl& a, const ExprImpl& b);
// a - b: b's terms negated and appended one at a time. a - a keeps twice the terms. May alias.
void sub_poly(ExprImpl& a, const ExprImpl& b);

// `n` terms from flat arrays behind `e.terms`, never into `first`; equal terms stay apart.
//   coeffs [n], degrees [n], literals [sum of degrees] term after term, copied unsorted
void append_bulk(ExprImpl& e, uint64_t n, const struct CoeffWire* coeffs, const uint32_t* degrees,
                 const uint32_t* literals);

}  // namespace zorv
