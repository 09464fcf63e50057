#include "constraints/declare.h"

#include <algorithm>

#include "core/attr_rules.h"
#include "core/fatal.h"

namespace zorv {

namespace {

ExprImpl named(uint32_t attr) {
  ExprImpl e;
  e.attr = attr;
  return e;
}

ExprImpl declared_sum(const SumParts& parts) {
  return named(kSumTag | add_constraint_sum(parts, true));
}

void check_expr_expr(const ExprImpl& e, const char* message) {
  if (!is_expr_expr_attr(e.attr)) fatal(message);
}

}  // namespace

ExprImpl cons_mark(const ExprImpl& e) {
  if (carries_declared(e.attr)) {
    mark_shared(e.attr);
    return named(e.attr);
  }
  if (is_constraint_attr(e.attr)) return declared_sum(parts_of(e.attr));
  return declared_sum(penalty_part(plain_copy(e)));
}

ExprImpl cons_between(const ExprImpl& e, const coeff_t& lo, const coeff_t& hi) {
  refuse_declared(e.attr, "cons(body, ...) on declared constraints");
  return declared_constraint(e, within(lo, hi));
}

ExprImpl cons_equal(const ExprImpl& e, std::vector<Interval> allowed) {
  refuse_declared(e.attr, "cons(body, equal=...) on declared constraints");
  if (allowed.empty()) fatal("zorv_cons_equal: empty allowed-value set");
  return declared_constraint(e, one_of(std::move(allowed)));
}

ExprImpl declared_constraint(const ExprImpl& body, Requirement requirement) {
  SumParts parts;
  append_constraint(parts, plain_copy(body), std::move(requirement), 1);
  return declared_sum(parts);
}

ExprImpl classic_constraint(const ExprImpl& penalty, const ExprImpl& body) {
  refuse_declared(penalty.attr, "== / <= (comparing declared constraints)");
  refuse_declared(body.attr, "== / <= (comparing declared constraints)");
  ExprImpl e = plain_copy(penalty);
  e.attr = kExprExprTag | add_expr_expr(plain_copy(body));
  return e;
}

void set_expr_expr_bounds(const ExprImpl& e, const coeff_t& lo, const coeff_t& hi) {
  check_expr_expr(e, "zorv_exprexpr_set_bounds: not an ExprExpr");
  set_bounds(attr_index(e.attr), lo, hi);
}

void set_expr_expr_allowed(const ExprImpl& e, std::vector<Interval> allowed) {
  check_expr_expr(e, "zorv_exprexpr_set_allowed: not an ExprExpr");
  set_allowed(attr_index(e.attr), std::move(allowed));
}

const ExprExpr* bounds_of(const ExprImpl& e) {
  if (!is_expr_expr_attr(e.attr)) return nullptr;
  const ExprExpr& entry = expr_expr(attr_index(e.attr), "ExprExprSet: get_bounds bad index");
  return entry.has_bounds ? &entry : nullptr;
}

bool has_body(const ExprImpl& e) {
  if (is_expr_expr_attr(e.attr)) return true;
  if (!is_sum_attr(e.attr)) return false;
  const ConstraintSum sum = constraint_sum(attr_index(e.attr));
  return item_count(sum) == 1 && !has_remainder(sum);
}

bool all_objective_only(uint32_t attr) {
  if (!carries_declared(attr)) return false;
  const ConstraintSum sum = constraint_sum(attr_index(attr));
  if (has_remainder(sum)) return false;
  const std::vector<ConstraintItem> items = items_of(sum);
  return !items.empty() && std::all_of(items.begin(), items.end(), [](const ConstraintItem& item) {
    return item.constraint->shape_kind != 0;
  });
}

}  // namespace zorv
