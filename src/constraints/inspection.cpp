#include "constraints/inspection.h"

#include "constraints/sol_value.h"
#include "core/fatal.h"
#include "zorv/exact_range.h"

namespace zorv {

namespace {

// One item: a constraint, the free-form polynomial, or neither for a bad number.
struct Item {
  const ExprExpr* entry = nullptr;
  coeff_t weight = 1;
  bool is_free_form = false;
};

Item item_of_sum(const ConstraintSum& sum, uint64_t i) {
  const uint64_t count = item_count(sum);
  if (i >= count) return {nullptr, 1, i == count && has_remainder(sum)};
  const ConstraintItem item = item_at(sum, i);
  return {item.constraint, *item.weight, false};
}

Item item_at(const ExprImpl& e, uint64_t i) {
  if (is_sum_attr(e.attr)) return item_of_sum(constraint_sum(attr_index(e.attr)), i);
  if (i > 0) return {};
  if (is_expr_expr_attr(e.attr)) return {&expr_expr(attr_index(e.attr)), 1, false};
  return {nullptr, 1, true};
}

// The item, which must exist.
Item checked_item_at(const ExprImpl& e, uint64_t i, const char* message) {
  Item item = item_at(e, i);
  if (item.entry == nullptr && !item.is_free_form) fatal(message);
  return item;
}

// What the one free-form item asks to come to zero, and what that comes to.
ExprImpl free_form_of(const ExprImpl& e) {
  return is_sum_attr(e.attr) ? remainder_of(constraint_sum(attr_index(e.attr))) : plain_copy(e);
}

coeff_t remainder_on(const ConstraintSum& sum, const Sol& sol) {
  return remainder_value(sum, [&](const ExprImpl& part) { return polynomial_value(part, sol); });
}

coeff_t free_form_value(const ExprImpl& e, const Sol& sol) {
  return is_sum_attr(e.attr) ? remainder_on(constraint_sum(attr_index(e.attr)), sol)
                             : polynomial_value(e, sol);
}

const ExprExpr* entry_at(const ExprImpl& e, uint64_t i) {
  return item_at(e, is_expr_expr_attr(e.attr) ? 0 : i).entry;
}

bool is_violated(const ExprExpr& entry, const Sol& sol) {
  if (!entry.has_bounds || entry.shape_kind != 0) return false;
  return !is_zero(violation_of(entry, polynomial_value(*entry.body, sol)));
}

}  // namespace

uint64_t item_count(const ExprImpl& e) {
  if (!is_sum_attr(e.attr)) return 1;
  const ConstraintSum sum = constraint_sum(attr_index(e.attr));
  return item_count(sum) + (has_remainder(sum) ? 1 : 0);
}

ItemInfo item_info(const ExprImpl& e, uint64_t i) {
  const Item item = checked_item_at(e, i, "zorv_cons_item_info: bad item index");
  if (item.is_free_form) return {free_form_of(e), 1, 0, 0, false};
  const ExprExpr& entry = *item.entry;
  if (is_expr_expr_attr(e.attr) && !entry.has_bounds) return {plain_copy(e), 1, 0, 0, false};
  return {plain_copy(*entry.body), item.weight, entry.lo, entry.hi, true};
}

ItemValue item_eval(const ExprImpl& e, uint64_t i, const Sol& sol) {
  const Item item = checked_item_at(e, i, "zorv_cons_item_eval: bad item index");
  if (item.is_free_form) {
    const coeff_t value = free_form_value(e, sol);
    return {value, 0, 0, value, 1};
  }
  const ExprExpr& entry = *item.entry;
  if (!entry.has_bounds) fatal("violations: constraint has no recorded bounds");
  const coeff_t value = polynomial_value(*entry.body, sol);
  return {value, entry.lo, entry.hi, violation_of(entry, value), item.weight};
}

ItemShape item_shape(const ExprImpl& e, uint64_t i) {
  const ExprExpr* entry = entry_at(e, i);
  if (entry == nullptr || !entry->has_bounds) return {};
  return {entry->shape_k, entry->shape_kind, true};
}

const std::vector<Interval>& item_allowed(const ExprImpl& e, uint64_t i) {
  static const std::vector<Interval> kNone;
  const ExprExpr* entry = entry_at(e, i);
  return entry == nullptr ? kNone : entry->allowed;
}

uint64_t violation_count(const ExprImpl& e, const Sol& sol) {
  if (!is_constraint_attr(e.attr)) fatal("cons(sol): expression carries no constraints");
  if (is_expr_expr_attr(e.attr)) return is_violated(expr_expr(attr_index(e.attr)), sol);
  const ConstraintSum sum = constraint_sum(attr_index(e.attr));
  uint64_t count = 0;
  for (const ConstraintItem& item : items_of(sum)) count += is_violated(*item.constraint, sol);
  if (has_remainder(sum)) count += !is_zero(remainder_on(sum, sol));
  return count;
}

const ExprImpl& only_body(const ExprImpl& e) {
  constexpr const char* kBadIndex =
      "ExprExpr body access on a value that is no longer an ExprExpr "
      "(e.g. after ee += 1, ee.sqr()).";
  if (is_expr_expr_attr(e.attr)) return *expr_expr(attr_index(e.attr), kBadIndex).body;
  if (!is_sum_attr(e.attr)) {
    fatal(
        "ExprExpr body access on a value that is not an ExprExpr "
        "(plain Expr, VarInt or constraint sum).");
  }
  const ConstraintSum sum = constraint_sum(attr_index(e.attr));
  if (item_count(sum) != 1 || has_remainder(sum)) {
    fatal("body() requires exactly one constraint, but this value holds ", item_count(sum),
          " constraint(s)", has_remainder(sum) ? " and a free-form penalty" : "",
          "; use violations(sol) instead.");
  }
  return *item_at(sum, 0).constraint->body;
}

coeff_t violation_of(const ExprExpr& entry, const coeff_t& value) {
  if (!entry.allowed.empty()) return distance_to_set(value, entry.allowed);
  return entry.has_bounds ? distance(value, entry.lo, entry.hi) : coeff_t(0);
}

}  // namespace zorv
