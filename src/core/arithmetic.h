// The algebra of polynomials and terms. Nothing here merges equal terms, looks at a tag or sets
// one: results carry the plain tag, changes in place leave the tag alone. A negated literal is a
// literal like any other.
//
// Products are fills, by index, of a block whose size is known: one allocation, no growth, and an
// order of terms that never depends on the number of threads.
#pragma once

#include "core/expr.h"

namespace zorv {

// a times b, literals of `a` first; in place `b` may be `a`.
TermImpl mul(const TermImpl& a, const TermImpl& b);
void imul(TermImpl& a, const TermImpl& b);
TermImpl negated(const TermImpl& t);
// Divides if there is no remainder, and tells whether it did. The divisor is not 0.
bool divide_exactly(coeff_t& dividend, const coeff_t& divisor);
bool divide_exactly(CompactCoeff& dividend, const CompactCoeff& divisor);
// Aborts on 0 and on a remainder.
void idiv(TermImpl& t, const CompactCoeff& divisor);

// In this order: a.constant times the terms of b, b.constant times the terms of a (each only if
// the constant is not 0), then a_0*b_0, a_0*b_1, ... with the literals of `a` first.
ExprImpl mul(const ExprImpl& a, const ExprImpl& b);
// For each term i: t_i*t_i, then 2*constant*t_i if the constant is not 0, then 2*t_i*t_j, j > i.
ExprImpl sqr(const ExprImpl& e);
// e.constant * t if the constant is not 0, then each term times t, literals of the term first.
ExprImpl mul_term(const ExprImpl& e, const TermImpl& t);
ExprImpl mul_var(const ExprImpl& e, uint32_t literal);

// Terms whose product is 0 stay as they are, with a coefficient of 0; only `first` is freed.
void imul_int(ExprImpl& e, const CompactCoeff& factor);
void negate(ExprImpl& e);
// Aborts on 0 and on a remainder; the constant is tested first.
void idiv_int(ExprImpl& e, const CompactCoeff& divisor);

// a + b: `first` of b appended, its entries copied behind with one reservation. May alias.
void add_poly(ExprImpl& a, const ExprImpl& b);
// a - b: b's terms negated and appended one at a time; a - a keeps twice the terms. May alias.
void sub_poly(ExprImpl& a, const ExprImpl& b);

}  // namespace zorv
