#include "core/tagged_arithmetic.h"

#include <utility>

#include "core/arithmetic.h"
#include "core/attr_rules.h"
#include "core/bulk.h"

namespace zorv {

namespace {

uint32_t kept_if_declared(uint32_t attr) { return carries_declared(attr) ? attr : kPlainAttr; }

// The polynomial of `e` under another tag.
ExprImpl copy_with_attr(const ExprImpl& e, uint32_t attr) {
  ExprImpl copy = e;
  copy.attr = attr;
  return copy;
}

bool is_empty_plain(const ExprImpl& e) {
  return e.attr == kPlainAttr && is_zero(e.constant) && !e.list.has_first() && e.list.count == 0;
}

uint32_t attr_of_sum_in_place(const ExprImpl& a, const ExprImpl& b) {
  if (!is_constraint_attr(a.attr) && !is_constraint_attr(b.attr)) return kPlainAttr;
  if (is_empty_plain(a)) {
    mark_shared(b.attr);
    return b.attr;
  }
  return combine(a.attr, &a, b.attr, &b, is_constraint_attr(a.attr));
}

uint32_t attr_of_difference(const ExprImpl& a, const ExprImpl& b) {
  if (!carries_declared(b.attr)) return kept_if_declared(a.attr);
  return combine(a.attr, &a, scale(b.attr, -1), nullptr, is_constraint_attr(a.attr));
}

}  // namespace

void iadd_int(ExprImpl& e, const coeff_t& c) {
  e.attr = kept_if_declared(e.attr);
  e.constant += c;
}

void isub_int(ExprImpl& e, const coeff_t& c) {
  e.attr = kept_if_declared(e.attr);
  e.constant -= c;
}

void iadd_term(ExprImpl& e, TermImpl term) {
  if (!is_constraint_attr(e.attr)) {
    e.attr = kPlainAttr;
  } else if (!carries_declared(e.attr)) {
    const ExprImpl operand{TermImpl(term)};
    e.attr = combine(e.attr, nullptr, kPlainAttr, &operand, true);
  }
  e.list.append(std::move(term));
}

void iadd_term_keeping_declared(ExprImpl& e, TermImpl term) {
  e.attr = kept_if_declared(e.attr);
  e.list.append(std::move(term));
}

void isub_term(ExprImpl& e, const TermImpl& term) { iadd_term_keeping_declared(e, negated(term)); }

void iadd_bulk(ExprImpl& e, const coeff_t& k, uint64_t n, const CoeffWire* coeffs,
               const uint32_t* degrees, const uint32_t* literals) {
  iadd_int(e, k);
  append_bulk(e, n, coeffs, degrees, literals);
}

void iadd_expr(ExprImpl& a, const ExprImpl& b) {
  if (&a == &b) return iadd_expr(a, ExprImpl(b));
  a.attr = attr_of_sum_in_place(a, b);
  add_poly(a, b);
}

void isub_expr(ExprImpl& a, const ExprImpl& b) {
  if (&a == &b) return isub_expr(a, ExprImpl(b));
  a.attr = attr_of_difference(a, b);
  sub_poly(a, b);
}

ExprImpl clone_add_int(const ExprImpl& e, const coeff_t& c) {
  const bool keeps = is_zero(c) && is_constraint_attr(e.attr);
  ExprImpl sum = copy_with_attr(e, keeps ? e.attr : kept_if_declared(e.attr));
  sum.constant += c;
  return sum;
}

ExprImpl clone_sub_int(const ExprImpl& e, const coeff_t& c) {
  ExprImpl difference = copy_with_attr(e, kept_if_declared(e.attr));
  difference.constant -= c;
  return difference;
}

ExprImpl clone_add_term_keeping_declared(const ExprImpl& e, const TermImpl& term) {
  ExprImpl sum = copy_with_attr(e, kept_if_declared(e.attr));
  sum.list.append(term);
  return sum;
}

ExprImpl clone_add_term(const ExprImpl& e, const TermImpl& term) {
  const ExprImpl operand{TermImpl(term)};
  ExprImpl sum = copy_with_attr(e, combine(e.attr, &e, kPlainAttr, &operand, false));
  sum.list.append(term);
  return sum;
}

ExprImpl clone_sub_term(const ExprImpl& e, const TermImpl& term) {
  return clone_add_term_keeping_declared(e, negated(term));
}

ExprImpl clone_add_expr(const ExprImpl& a, const ExprImpl& b) {
  ExprImpl sum = copy_with_attr(a, combine(a.attr, &a, b.attr, &b, false));
  add_poly(sum, b);
  return sum;
}

ExprImpl clone_sub_expr(const ExprImpl& a, const ExprImpl& b) {
  ExprImpl difference = a;
  isub_expr(difference, b);
  return difference;
}

ExprImpl clone_mul_int(const ExprImpl& e, const coeff_t& c) {
  ExprImpl product = copy_with_attr(e, scale(e.attr, c));
  imul_int(product, c);
  return product;
}

void imul_int_tagged(ExprImpl& e, const coeff_t& c) {
  e.attr = scale(e.attr, c);
  imul_int(e, c);
}

void imul_var(ExprImpl& e, uint32_t literal) {
  refuse_declared(e.attr, "*= var");
  e = mul_var(e, literal);
}

void imul_term(ExprImpl& e, const TermImpl& term) {
  refuse_declared(e.attr, "*= term");
  e = mul_term(e, term);
}

void imul_expr(ExprImpl& a, const ExprImpl& b) {
  refuse_declared(a.attr, "*= expr");
  refuse_declared(b.attr, "* expr");
  a = mul(a, b);
}

ExprImpl mul_expr(const ExprImpl& a, const ExprImpl& b) {
  refuse_declared(a.attr, "* expr");
  refuse_declared(b.attr, "* expr");
  return mul(a, b);
}

ExprImpl sqr_expr(const ExprImpl& e) {
  refuse_declared(e.attr, "sqr");
  return sqr(e);
}

void idiv_int_tagged(ExprImpl& e, const coeff_t& c) {
  refuse_declared(e.attr, "/=");
  e.attr = kPlainAttr;
  idiv_int(e, c);
}

void negate_tagged(ExprImpl& e) {
  e.attr = carries_declared(e.attr) ? scale(e.attr, -1) : kPlainAttr;
  negate(e);
}

}  // namespace zorv
