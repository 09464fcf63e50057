#include "constraints/constraint_tables.h"

#include <numeric>
#include <thread>

#include "constraints/declare.h"
#include "constraints/describe.h"

namespace zorv::test {
namespace {

TEST(ExprExprSet, StoresThePlainBody) {
  ExprImpl body = var(fresh("x"));
  body.attr = 3;
  const ExprExpr& entry = expr_expr(add_expr_expr(body));
  EXPECT_EQ(text(*entry.body), "x");
  EXPECT_EQ(entry.body->attr, kPlainAttr);
  EXPECT_FALSE(entry.has_bounds);
  EXPECT_EQ(entry.shape_k, 2);
  EXPECT_EQ(entry.shape_kind, 0);
}

TEST(ExprExprSet, AllowedValuesSetTheHull) {
  const uint32_t i = add_expr_expr(ExprImpl());
  const std::vector<Interval> allowed = {{3, 4}, {-7, -7}, {0, 9}, {12, 11}};
  set_allowed(i, allowed);
  EXPECT_TRUE(expr_expr(i).has_bounds);
  EXPECT_EQ(expr_expr(i).lo, -7);
  EXPECT_EQ(expr_expr(i).hi, 11);
  EXPECT_EQ(expr_expr(i).allowed, allowed);  // in the given order, an empty interval too
  set_bounds(i, -1, 1);
  EXPECT_EQ(expr_expr(i).lo, -1);
  EXPECT_EQ(expr_expr(i).allowed, allowed);
}

// Equal constraints are stored once, which must not tie them together.
TEST(ExprExprSet, AChangeReachesTheSumsThatNameTheEntryAndNothingElse) {
  const ExprImpl x = var(fresh("x")), y = var(fresh("y"));
  const Handle a = classic(y, x), b = classic(y, x);
  for (const Handle* e : {&a, &b}) zorv_exprexpr_set_bounds(*e, Wire(0), Wire(1));
  const Handle sum = zorv_expr_clone_add_expr(a, b), declared = zorv_cons_mark(sum);
  const Handle simplified = zorv_expr_simplify(sum);
  zorv_exprexpr_set_bounds(a, Wire(0), Wire(7));
  const auto highest = [](const Handle& e) {
    coeff_t hi = 0;
    for (const ConstraintItem& item : items_of(parts_of(e.attr())))
      hi = hi * 10 + item.constraint->hi;
    return hi;
  };
  EXPECT_EQ(highest(a), 7);
  EXPECT_EQ(highest(b), 1);
  EXPECT_EQ(highest(sum), 71);
  EXPECT_EQ(highest(declared), 71);
  EXPECT_EQ(highest(simplified), 11);
}

TEST(ConstraintTables, WhatIsBuiltTwiceIsStoredOnceUnderNewNumbers) {
  const ExprImpl x = var(fresh("x")), y = var(fresh("y"));
  const auto build = [&] {
    Handle sum = between(x, 0, 1);
    sum = zorv_expr_clone_add_expr(sum, between(x + y + x, 0, 2));
    zorv_expr_imul_int(sum, Wire(3));
    sum = zorv_expr_clone_add_expr(sum, Handle(zorv_cons_mark(borrow(x * y))));
    zorv_expr_iadd_expr(sum, sum);
    return Handle(zorv_expr_simplify_as_binary(sum));
  };
  const Handle once = build();
  const ConstraintTableSizes before = constraint_table_sizes();
  const Handle again = build();
  ConstraintTableSizes expected = before;
  expected.expr_exprs += 2 + 4;  // two made, four rewritten
  expected.sums +=
      2 + 1 + 1 + 1 + 1 + 1 + 1;  // two, their sum, scaled, mark, sum, doubled, rewritten
  EXPECT_EQ(constraint_table_sizes(), expected);
  EXPECT_EQ(describe(again), describe(once));
  EXPECT_EQ(again.attr(), kSumTag | (expected.sums - 1));
  EXPECT_EQ(classic(x, y).attr(), kExprExprTag | expected.expr_exprs);
}

// Its first slot is free though it has terms, so a later sum fills the slot.
TEST(ConstraintTables, RemaindersAddUpAsTheirPolynomialsWould) {
  ExprImpl bulk;
  const ExprImpl x = var(fresh("x")), y = var(fresh("y"));
  bulk.list.reserve(1);
  bulk.list.append_entries((x + x).list);
  for (const ExprImpl& left : {x, ExprImpl(2), bulk}) {
    SumParts right = joined(penalty_part(bulk), penalty_part(y));
    EXPECT_EQ(text(remainder_of(right)), text(bulk + y));
    EXPECT_EQ(text(remainder_of(joined(penalty_part(left), right))), text(left + (bulk + y)));
    right = scaled(right, 5);
    EXPECT_EQ(text(remainder_of(joined(right, right))), text(5 * (bulk + y) + 5 * (bulk + y)));
  }
}

TEST(ConstraintTables, RefuseIndicesBeyondTheirEnd) {
  const uint32_t bad = kMaxConstraintIndex, good = add_expr_expr(ExprImpl());
  EXPECT_FATAL(expr_expr(bad), "ExprExprSet: meta bad index");
  EXPECT_FATAL(expr_expr(bad, "ExprExprSet: get_bounds bad index"),
               "ExprExprSet: get_bounds bad index");
  EXPECT_FATAL(set_bounds(bad, 0, 1), "ExprExprSet: set_bounds bad index");
  EXPECT_FATAL(set_allowed(bad, {{0, 1}}), "ExprExprSet: set_allowed bad index");
  EXPECT_FATAL(set_allowed(good, {}), "ExprExprSet: set_allowed empty set");
  EXPECT_FATAL(constraint_sum(bad), "ConstraintSumSet: bad index");
  EXPECT_FATAL(mark_sum_shared(bad), "ConstraintSumSet: bad index");
  EXPECT_FATAL(append_to_sum(bad, {}), "ConstraintSumSet: bad index");
}

// Threads build sums of their own, copy one that all of them read, and look at what they built.
TEST(ConstraintTables, SeveralThreadsBuildConstraintsAtOnce) {
  constexpr int kThreads = 4, kEach = 200;
  const Handle common = between(var(fresh("c")), 0, 1);
  const uint32_t x = fresh("x");
  std::vector<int> wrong(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      const Handle sum = clone(common);
      for (int i = 0; i < kEach; ++i) {
        zorv_expr_iadd_expr(sum, between(coeff_t(i + 1) * var(x), t, t + i));
        wrong[t] += describe(classic(var(x), var(x))) != "one [x]";
      }
      const std::vector<ConstraintItem> items = items_of(constraint_sum(attr_index(sum.attr())));
      wrong[t] += items.size() != kEach + 1;
      for (int i = 0; i < kEach; ++i) {
        const ExprExpr& entry = *items[i + 1].constraint;
        wrong[t] += entry.lo != t || entry.hi != t + i || entry.body->list.first.coeff != i + 1;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::accumulate(wrong.begin(), wrong.end(), 0), 0);
  EXPECT_EQ(describe(common), "declared 1[c]");
}

}  // namespace
}  // namespace zorv::test
