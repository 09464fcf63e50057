// Making constraints, and reading them back.
#include <algorithm>

#include "capi/handles.h"
#include "constraints/declare.h"
#include "constraints/inspection.h"
#include "core/attr_rules.h"

namespace zorv {

namespace {

std::vector<Interval> read_intervals(const CoeffWire* lows, const CoeffWire* highs, uint64_t n) {
  std::vector<Interval> intervals(n);
  for (uint64_t i = 0; i < n; ++i) intervals[i] = {read_wire(lows + i), read_wire(highs + i)};
  return intervals;
}

void write_intervals(const std::vector<Interval>& intervals, CoeffWire* lows, CoeffWire* highs,
                     uint64_t capacity) {
  const uint64_t n = std::min<uint64_t>(intervals.size(), capacity);
  for (uint64_t i = 0; i < n; ++i) {
    write_wire(intervals[i].first, lows + i);
    write_wire(intervals[i].second, highs + i);
  }
}

}  // namespace

extern "C" {

zorv_expr* zorv_cons_mark(const zorv_expr* e) { return wrap(cons_mark(unwrap(e))); }

zorv_expr* zorv_cons_between(const zorv_expr* e, const CoeffWire* lo, const CoeffWire* hi) {
  return wrap(cons_between(unwrap(e), read_wire(lo), read_wire(hi)));
}

zorv_expr* zorv_cons_equal(const zorv_expr* e, const CoeffWire* lows, const CoeffWire* highs,
                           uint64_t n) {
  return wrap(cons_equal(unwrap(e), read_intervals(lows, highs, n)));
}

zorv_expr* zorv_abs_term(const zorv_expr* f, uint32_t k) { return wrap(abs_term(unwrap(f), k)); }

zorv_expr* zorv_relu_term(const zorv_expr* f, uint32_t k) { return wrap(relu_term(unwrap(f), k)); }

zorv_expr* zorv_exprexprelem_create(const zorv_expr* penalty, const zorv_expr* body) {
  return wrap(classic_constraint(unwrap(penalty), unwrap(body)));
}

zorv_expr* zorv_exprexprelem_clone(const zorv_expr* e) { return wrap(ExprImpl(unwrap(e))); }

void zorv_exprexprelem_destroy(zorv_expr* e) { destroy(e); }

void zorv_exprexpr_set_bounds(const zorv_expr* e, const CoeffWire* lo, const CoeffWire* hi) {
  set_expr_expr_bounds(unwrap(e), read_wire(lo), read_wire(hi));
}

int zorv_exprexpr_get_bounds(const zorv_expr* e, CoeffWire* lo, CoeffWire* hi) {
  const ExprExpr* entry = bounds_of(unwrap(e));
  if (entry == nullptr) return 0;
  write_wire(entry->lo, lo);
  write_wire(entry->hi, hi);
  return 1;
}

void zorv_exprexpr_set_allowed(const zorv_expr* e, const CoeffWire* lows, const CoeffWire* highs,
                               uint64_t n) {
  set_expr_expr_allowed(unwrap(e), read_intervals(lows, highs, n));
}

int zorv_expr_is_declared(const zorv_expr* e) { return carries_declared(unwrap(e).attr); }

int zorv_expr_has_body(const zorv_expr* e) { return has_body(unwrap(e)); }

int zorv_expr_all_objective_only(const zorv_expr* e) { return all_objective_only(unwrap(e).attr); }

uint64_t zorv_cons_item_count(const zorv_expr* e) { return item_count(unwrap(e)); }

int zorv_cons_item_info(const zorv_expr* e, uint64_t i, zorv_expr** body, CoeffWire* weight,
                        CoeffWire* lo, CoeffWire* hi) {
  ItemInfo info = item_info(unwrap(e), i);
  *body = wrap(std::move(info.body));
  write_wire(info.weight, weight);
  write_wire(info.lo, lo);
  write_wire(info.hi, hi);
  return info.is_bounded;
}

int zorv_cons_item_eval(const zorv_expr* e, uint64_t i, const zorv_sol* sol, CoeffWire* value,
                        CoeffWire* lo, CoeffWire* hi, CoeffWire* violation, CoeffWire* weight) {
  const ItemValue item = item_eval(unwrap(e), i, unwrap(sol));
  write_wire(item.value, value);
  write_wire(item.lo, lo);
  write_wire(item.hi, hi);
  write_wire(item.violation, violation);
  write_wire(item.weight, weight);
  return 1;
}

int zorv_cons_item_shape(const zorv_expr* e, uint64_t i, uint32_t* k, uint32_t* kind) {
  const ItemShape shape = item_shape(unwrap(e), i);
  *k = shape.k;
  *kind = shape.kind;
  return shape.is_recorded;
}

uint64_t zorv_cons_item_allowed(const zorv_expr* e, uint64_t i, CoeffWire* lows, CoeffWire* highs,
                                uint64_t capacity) {
  const std::vector<Interval>& allowed = item_allowed(unwrap(e), i);
  write_intervals(allowed, lows, highs, capacity);
  return allowed.size();
}

uint64_t zorv_cons_violation_count(const zorv_expr* e, const zorv_sol* sol) {
  return violation_count(unwrap(e), unwrap(sol));
}

const zorv_expr* zorv_exprexprelem_get_body(const zorv_expr* e) {
  return borrow(only_body(unwrap(e)));
}

}  // extern "C"

}  // namespace zorv
