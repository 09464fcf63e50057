#include "core/arithmetic.h"

#include <atomic>

#include "core/fatal.h"
#include "core/parallel.h"

namespace zorv {

namespace {

// Applies f to the coefficient of every term, `first` only if it is a term.
template <typename F>
void for_each_coeff(TermList& list, F f) {
  if (list.has_first()) f(list.first.coeff);
  par_for(list.count, [&](uint64_t i) { f(list.terms[i].coeff); });
}

void check_divisor(const CompactCoeff& divisor) {
  if (is_zero(divisor)) fatal("Division by zero");
}

}  // namespace

bool divide_exactly(coeff_t& dividend, const coeff_t& divisor) {
  coeff_t quotient, remainder;
  boost::multiprecision::divide_qr(dividend, divisor, quotient, remainder);
  if (!is_zero(remainder)) return false;
  dividend = std::move(quotient);
  return true;
}

bool divide_exactly(CompactCoeff& dividend, const CompactCoeff& divisor) {
  if (dividend.is_small() && divisor.is_small()) {
    if (dividend.small() % divisor.small() != 0) return false;
    dividend = dividend.small() / divisor.small();
    return true;
  }
  auto quotient = coeff_t(dividend);
  if (!divide_exactly(quotient, coeff_t(divisor))) return false;
  dividend = std::move(quotient);
  return true;
}

TermImpl mul(const TermImpl& a, const TermImpl& b) { return product(a, b); }

void imul(TermImpl& a, const TermImpl& b) {
  a.coeff *= b.coeff;
  a.vars.append(b.vars);
}

TermImpl negated(const TermImpl& t) {
  TermImpl copy = t;
  negate(copy.coeff);
  return copy;
}

void idiv(TermImpl& t, const CompactCoeff& divisor) {
  check_divisor(divisor);
  if (!divide_exactly(t.coeff, divisor)) fatal("Indivisible division in Term");
}

void imul_int(ExprImpl& e, const CompactCoeff& factor) {
  e.constant *= factor;
  for_each_coeff(e.list, [&](CompactCoeff& c) { c *= factor; });
}

void negate(ExprImpl& e) {
  negate(e.constant);
  for_each_coeff(e.list, [](CompactCoeff& c) { negate(c); });
}

void idiv_int(ExprImpl& e, const CompactCoeff& divisor) {
  check_divisor(divisor);
  if (!divide_exactly(e.constant, divisor)) fatal("Indivisible division in Expr constant");
  std::atomic<bool> indivisible{false};
  for_each_coeff(e.list, [&](CompactCoeff& c) {
    if (!divide_exactly(c, divisor)) indivisible.store(true, std::memory_order_relaxed);
  });
  if (indivisible) fatal("Indivisible division in Expr term");
}

void add_poly(ExprImpl& a, const ExprImpl& b) {
  if (&a == &b) return add_poly(a, plain_copy(b));
  a.constant += b.constant;
  const bool first_fills_slot = b.list.has_first() && !a.list.has_first();
  a.list.reserve(b.list.size() - (first_fills_slot ? 1 : 0));
  if (b.list.has_first()) a.list.append(b.list.first);
  a.list.append_entries(b.list);
}

void sub_poly(ExprImpl& a, const ExprImpl& b) {
  if (&a == &b) return sub_poly(a, plain_copy(b));
  a.constant -= b.constant;
  b.list.for_each([&](const TermImpl& t) { a.list.append(negated(t)); });
}

}  // namespace zorv
