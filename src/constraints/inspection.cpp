#include "constraints/inspection.h"

#include "constraints/sol_value.h"
#include "core/fatal.h"
#include "zorv/exact_range.h"

namespace zorv {

namespace {

// One item: a constraint, a free-form polynomial, or neither for a bad number.
struct Item {
  const ExprExpr* entry = nullptr;
  coeff_t weight = 1;
  const ExprImpl* free_form = nullptr;

  bool exists() const { return entry != nullptr || free_form != nullptr; }
};

Item item_of_sum(const ConstraintSum& sum, uint64_t i) {
  if (i < sum.items.size()) return {&expr_expr(sum.items[i].index), sum.items[i].weight, nullptr};
  if (i == sum.items.size()) return {nullptr, 1, sum.remainder.get()};
  return {};
}

Item item_at(const ExprImpl& e, uint64_t i) {
  if (is_sum_attr(e.attr)) return item_of_sum(constraint_sum(attr_index(e.attr)), i);
  if (i > 0) return {};
  if (is_expr_expr_attr(e.attr)) return {&expr_expr(attr_index(e.attr)), 1, nullptr};
  return {nullptr, 1, &e};
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
  const ConstraintSum& sum = constraint_sum(attr_index(e.attr));
  return sum.items.size() + (sum.remainder != nullptr ? 1 : 0);
}

ItemInfo item_info(const ExprImpl& e, uint64_t i) {
  Item item = item_at(e, i);
  if (!item.exists()) fatal("zorv_cons_item_info: bad item index");
  if (is_expr_expr_attr(e.attr) && !item.entry->has_bounds) item = {nullptr, 1, &e};
  if (item.free_form != nullptr) return {plain_copy(*item.free_form), 1, 0, 0, false};
  return {plain_copy(*item.entry->body), item.weight, item.entry->lo, item.entry->hi, true};
}

ItemValue item_eval(const ExprImpl& e, uint64_t i, const Sol& sol) {
  const Item item = item_at(e, i);
  if (!item.exists()) fatal("zorv_cons_item_eval: bad item index");
  if (item.free_form != nullptr) {
    const coeff_t value = polynomial_value(*item.free_form, sol);
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
  const ConstraintSum& sum = constraint_sum(attr_index(e.attr));
  uint64_t count = 0;
  for (const ConstraintItem& item : sum.items) count += is_violated(expr_expr(item.index), sol);
  if (sum.remainder != nullptr) count += !is_zero(polynomial_value(*sum.remainder, sol));
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
  const ConstraintSum& sum = constraint_sum(attr_index(e.attr));
  if (sum.items.size() != 1 || sum.remainder != nullptr) {
    fatal("body() requires exactly one constraint, but this value holds ", sum.items.size(),
          " constraint(s)", sum.remainder != nullptr ? " and a free-form penalty" : "",
          "; use violations(sol) instead.");
  }
  return *expr_expr(sum.items[0].index, kBadIndex).body;
}

coeff_t violation_of(const ExprExpr& entry, const coeff_t& value) {
  if (!entry.allowed.empty()) return distance_to_set(value, entry.allowed);
  return entry.has_bounds ? distance(value, entry.lo, entry.hi) : coeff_t(0);
}

}  // namespace zorv
