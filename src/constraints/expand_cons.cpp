#include "constraints/expand_cons.h"

#include <atomic>
#include <string>

#include "constraints/constraint_tables.h"
#include "core/arithmetic.h"
#include "core/attr_rules.h"
#include "core/fatal.h"
#include "integer/bit_sum.h"

namespace zorv {

namespace {

std::string slack_name() {
  static std::atomic<uint32_t> counter{0};
  return "{s" + std::to_string(counter++) + "}";
}

ExprImpl minus(const ExprImpl& f, const coeff_t& c) {
  ExprImpl difference = plain_copy(f);
  difference.constant -= c;
  return difference;
}

ExprImpl square_of_difference(const ExprImpl& f, const coeff_t& c) { return sqr(minus(f, c)); }

ExprImpl penalty_of(const ConstraintItem& item) {
  const ExprExpr& entry = *item.constraint;
  if (!entry.has_bounds) fatal("expand_cons: constraint carries no bounds");
  if (entry.shape_kind != 0) {
    fatal(
        "expand_cons: zorv::abs/relu terms have no classic penalty form (|f|^k is not a "
        "polynomial)");
  }
  if (entry.lo == entry.hi) return square_of_difference(*entry.body, entry.lo);
  if (*item.weight < 0) {
    fatal(
        "expand_cons: a one-sided/range constraint carries a NEGATIVE weight; its slack-based "
        "penalty form is only valid for positive weights. Keep the expression in cons() form and "
        "use a bundled solver.");
  }
  return between(*entry.body, entry.lo, entry.hi);
}

}  // namespace

ExprImpl between(const ExprImpl& f, const coeff_t& lo, const coeff_t& hi) {
  const coeff_t width = hi - lo;
  if (width < 0) return ExprImpl();
  if (width == 0) return square_of_difference(f, lo);
  if (width == 1) return mul(minus(f, lo), minus(f, hi));
  // A product of neighbouring integers is 0 at two values, so the slack takes steps of 2.
  const BitSum slack = new_slack(slack_name(), lo, hi - 1, 2);
  ExprImpl distance = plain_copy(f);
  sub_poly(distance, polynomial_of(slack.base, slack.coeffs, slack.vars));
  return mul(distance, minus(distance, 1));
}

ExprImpl expand_cons(const ExprImpl& e) {
  if (is_varint_attr(e.attr)) return e;
  ExprImpl expanded = plain_copy(e);
  if (!carries_declared(e.attr)) return expanded;
  const ConstraintSum sum = constraint_sum(attr_index(e.attr));
  for (const ConstraintItem& item : items_of(sum)) {
    ExprImpl penalty = penalty_of(item);
    if (!is_one(*item.weight)) imul_int(penalty, *item.weight);
    add_poly(expanded, penalty);
  }
  if (has_remainder(sum)) add_poly(expanded, remainder_of(sum));
  return expanded;
}

}  // namespace zorv
