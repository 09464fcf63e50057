// Arithmetic with the tag rules: the polynomial step of core/arithmetic.h, and what becomes of the
// constraints that an expression carries.
//
// The rules are uneven on purpose, and callers rely on each of them: adding a variable or a term
// in place feeds it to the constraints, while subtracting the same operand, or adding a variable
// to a copy, only keeps declared constraints and drops classic ones; and only adding the integer 0
// to a copy keeps a classic tag.
#pragma once

#include "core/expr.h"
#include "zorv/wire.h"

namespace zorv {

// e + c and e - c. Declared constraints are kept, any other tag is cleared.
void iadd_int(ExprImpl& e, const coeff_t& c);
void isub_int(ExprImpl& e, const coeff_t& c);
// e + term, where a classic constraint takes the term into its remainder.
void iadd_term(ExprImpl& e, TermImpl term);
// e + term and e - term, where declared constraints are kept and any other tag is cleared.
void iadd_term_keeping_declared(ExprImpl& e, TermImpl term);
void isub_term(ExprImpl& e, const TermImpl& term);
// e + k + n terms from flat arrays, see core/bulk.h; declared constraints are kept likewise.
void iadd_bulk(ExprImpl& e, const coeff_t& k, uint64_t n, const CoeffWire* coeffs,
               const uint32_t* degrees, const uint32_t* literals);
void iadd_expr(ExprImpl& a, const ExprImpl& b);
void isub_expr(ExprImpl& a, const ExprImpl& b);

ExprImpl clone_add_int(const ExprImpl& e, const coeff_t& c);
ExprImpl clone_sub_int(const ExprImpl& e, const coeff_t& c);
ExprImpl clone_add_term_keeping_declared(const ExprImpl& e, const TermImpl& term);
ExprImpl clone_add_term(const ExprImpl& e, const TermImpl& term);
ExprImpl clone_sub_term(const ExprImpl& e, const TermImpl& term);
ExprImpl clone_add_expr(const ExprImpl& a, const ExprImpl& b);
ExprImpl clone_sub_expr(const ExprImpl& a, const ExprImpl& b);
ExprImpl clone_mul_int(const ExprImpl& e, const coeff_t& c);

// Products. All but the first refuse declared constraints, the left operand's before the right's.
void imul_int_tagged(ExprImpl& e, const coeff_t& c);
void imul_var(ExprImpl& e, uint32_t literal);
void imul_term(ExprImpl& e, const TermImpl& term);
void imul_expr(ExprImpl& a, const ExprImpl& b);
ExprImpl mul_expr(const ExprImpl& a, const ExprImpl& b);
ExprImpl sqr_expr(const ExprImpl& e);
void idiv_int_tagged(ExprImpl& e, const coeff_t& c);
void negate_tagged(ExprImpl& e);

}  // namespace zorv
