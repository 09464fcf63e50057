#include "constraints/constraint_tables.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "core/append_only_table.h"
#include "core/arithmetic.h"
#include "core/fatal.h"

namespace zorv {

namespace {

constexpr uint64_t kMaxEntries = uint64_t{kMaxConstraintIndex} + 1;

AppendOnlyTable<ExprExpr>& expr_expr_set() {
  static AppendOnlyTable<ExprExpr> table(kMaxEntries, "ExprExprSet: index overflow");
  return table;
}

AppendOnlyTable<ConstraintSum>& constraint_sum_set() {
  static AppendOnlyTable<ConstraintSum> table(kMaxEntries, "ConstraintSumSet: index overflow");
  return table;
}

template <typename Entry>
void check_index(const AppendOnlyTable<Entry>& table, uint32_t index, const char* bad_index) {
  if (index >= table.size()) fatal(bad_index);
}

// The smallest low and the largest high of a set that is not empty.
Interval hull(const std::vector<Interval>& allowed) {
  Interval ends = allowed.front();
  for (const auto& [low, high] : allowed) {
    ends.first = std::min(ends.first, low);
    ends.second = std::max(ends.second, high);
  }
  return ends;
}

}  // namespace

uint32_t add_expr_expr(ExprImpl body) {
  body.attr = kPlainAttr;
  ExprExpr entry;
  entry.body = std::make_unique<const ExprImpl>(std::move(body));
  return static_cast<uint32_t>(expr_expr_set().append(std::move(entry)));
}

const ExprExpr& expr_expr(uint32_t index, const char* bad_index) {
  check_index(expr_expr_set(), index, bad_index);
  return expr_expr_set()[index];
}

void set_bounds(uint32_t index, const coeff_t& lo, const coeff_t& hi) {
  check_index(expr_expr_set(), index, "ExprExprSet: set_bounds bad index");
  expr_expr_set().change(index, [&](ExprExpr& entry) {
    entry.lo = lo;
    entry.hi = hi;
    entry.has_bounds = true;
  });
}

void set_allowed(uint32_t index, std::vector<Interval> allowed) {
  check_index(expr_expr_set(), index, "ExprExprSet: set_allowed bad index");
  if (allowed.empty()) fatal("ExprExprSet: set_allowed empty set");
  expr_expr_set().change(index, [&](ExprExpr& entry) {
    std::tie(entry.lo, entry.hi) = hull(allowed);
    entry.has_bounds = true;
    entry.allowed = std::move(allowed);
  });
}

void set_penalty_shape(uint32_t index, uint8_t k, uint8_t kind) {
  check_index(expr_expr_set(), index, "ExprExprSet: set_penalty_shape bad index");
  expr_expr_set().change(index, [&](ExprExpr& entry) {
    entry.shape_k = k;
    entry.shape_kind = kind;
  });
}

void copy_metadata(uint32_t to, uint32_t from) {
  if (std::max(to, from) >= expr_expr_set().size()) return;
  expr_expr_set().change(to, [&](ExprExpr& entry) {
    const ExprExpr& source = expr_expr_set()[from];
    entry.has_bounds = source.has_bounds;
    entry.lo = source.lo;
    entry.hi = source.hi;
    entry.allowed = source.allowed;
    entry.shape_k = source.shape_k;
    entry.shape_kind = source.shape_kind;
  });
}

uint32_t add_constraint_sum(ConstraintSum sum) {
  return static_cast<uint32_t>(constraint_sum_set().append(std::move(sum)));
}

const ConstraintSum& constraint_sum(uint32_t index) {
  check_index(constraint_sum_set(), index, "ConstraintSumSet: bad index");
  return constraint_sum_set()[index];
}

void mark_sum_shared(uint32_t index) {
  check_index(constraint_sum_set(), index, "ConstraintSumSet: bad index");
  constraint_sum_set().change(index, [](ConstraintSum& sum) { sum.shared = true; });
}

bool append_to_sum(uint32_t index, SumParts parts) {
  check_index(constraint_sum_set(), index, "ConstraintSumSet: bad index");
  ConstraintSum* own = constraint_sum_set().change(
      index, [](ConstraintSum& sum) { return sum.shared ? nullptr : &sum; });
  if (own == nullptr) return false;
  // One expression names this sum, and its only writer is here, so the mutex is not needed any
  // more. It must not be held: a long remainder is copied by several threads.
  append_parts(*own, std::move(parts));
  return true;
}

SumParts parts_of(uint32_t attr) {
  if (is_expr_expr_attr(attr)) return {{{attr_index(attr), 1}}, nullptr};
  if (!is_sum_attr(attr)) return {};
  const ConstraintSum& sum = constraint_sum(attr_index(attr));
  return {sum.items, sum.remainder.get()};
}

void append_parts(ConstraintSum& sum, SumParts parts) {
  sum.items.insert(sum.items.end(), std::make_move_iterator(parts.items.begin()),
                   std::make_move_iterator(parts.items.end()));
  if (parts.remainder == nullptr) return;
  if (sum.remainder == nullptr) {
    sum.remainder = std::make_unique<ExprImpl>(plain_copy(*parts.remainder));
  } else {
    add_poly(*sum.remainder, *parts.remainder);
  }
}

}  // namespace zorv
