#include "constraints/inspection.h"

#include "constraints/describe.h"

namespace zorv::test {
namespace {

void info(const Handle& e, uint64_t i) {
  zorv_expr* body = nullptr;
  Wire weight, lo, hi;
  zorv_cons_item_info(e, i, &body, weight.out(), lo.out(), hi.out());
}

// A model with x = y = 1 and n = 5, and constraints whose bodies have known values there.
class Inspection : public ::testing::Test {
 protected:
  const ExprImpl x = var(fresh("x")), y = var(fresh("y"));
  const uint32_t atom = zorv_new_int_var("n", Wire(-10), Wire(10));
  const ExprImpl n = var(atom);
  zorv_model* const model = zorv_model_create(borrow(x + y + n));
  zorv_sol* const sol = zorv_sol_create(model);

  Inspection() {
    for (const ExprImpl* v : {&x, &y}) zorv_sol_set(sol, v->list.first.vars[0], 1);
    zorv_sol_set_int(sol, atom, Wire(5));
  }
  ~Inspection() override {
    zorv_sol_destroy(sol);
    zorv_model_destroy(model);
  }

  // The violation of an item.
  coeff_t eval(const Handle& e, uint64_t i = 0) const {
    Wire out[5];
    zorv_cons_item_eval(e, i, sol, out[0].out(), out[1].out(), out[2].out(), out[3].out(),
                        out[4].out());
    return out[3].value();
  }
  uint64_t violations(const Handle& e) const { return zorv_cons_violation_count(e, sol); }

  // Two constraints, weights 3 and -1, and the remainder x - 3.
  Handle three_items() const {
    Handle e = between(x + y, 0, 1);
    zorv_expr_imul_int(e, Wire(3));
    zorv_expr_isub_expr(e, between(n, 5, 7));
    zorv_expr_iadd_expr(e, Handle(zorv_cons_mark(borrow(x - 3))));
    zorv_expr_iadd_int(e, Wire(100));  // objective, no item
    return e;
  }
  static Handle set_of(const ExprImpl& body, const std::vector<Interval>& allowed) {
    std::vector<CoeffWire> lows(allowed.size(), CoeffWire{0, 0, nullptr}), highs = lows;
    for (size_t i = 0; i < allowed.size(); ++i) {
      write_wire(allowed[i].first, &lows[i]);
      write_wire(allowed[i].second, &highs[i]);
    }
    zorv_expr* e = zorv_cons_equal(borrow(body), lows.data(), highs.data(), allowed.size());
    for (size_t i = 0; i < allowed.size(); ++i) std::free(lows[i].limbs), std::free(highs[i].limbs);
    return e;
  }
};

TEST_F(Inspection, ViolationIsTheDistanceToTheNearestAllowedValue) {
  const struct {
    std::vector<Interval> allowed;
    int violation;
  } rows[] = {
      {{{5, 5}}, 0},         {{{0, 10}}, 0},        {{{6, 9}}, 1},
      {{{-3, 2}}, 3},        {{{0, 1}, {8, 9}}, 3}, {{{0, 3}, {8, 9}}, 2},
      {{{9, 9}, {4, 5}}, 0}, {{{7, 8}, {1, 2}}, 2}, {{{8, 2}}, 3},  // an empty interval, from below
  };
  for (const auto& row : rows) {
    const Handle e = set_of(n, row.allowed);
    EXPECT_EQ(eval(e), row.violation) << row.allowed[0].first;
    EXPECT_EQ(violations(e), row.violation != 0 ? 1u : 0u);
  }
}

TEST_F(Inspection, CountsRequirementsThatDoNotHold) {
  const Handle unbounded = classic(x, n), missed = classic(x, n),
               objective = zorv_abs_term(borrow(n), 1);
  zorv_exprexpr_set_bounds(missed, Wire(0), Wire(4));
  EXPECT_EQ(violations(three_items()), 2u);  // one item and the remainder
  EXPECT_EQ(violations(between(n, 5, 5)), 0u);
  EXPECT_EQ(violations(unbounded), 0u);
  EXPECT_EQ(violations(Handle(zorv_expr_clone_mul_int(unbounded, Wire(2)))), 0u);
  EXPECT_EQ(violations(missed), 1u);
  EXPECT_EQ(violations(objective), 0u);
  zorv_expr_iadd_expr(objective, Handle(zorv_relu_term(borrow(n), 2)));
  EXPECT_EQ(violations(objective), 0u);
  EXPECT_EQ(violations(Handle(zorv_cons_mark(borrow(n - 5)))), 0u);
}

TEST_F(Inspection, AllowedSetsAreCopiedUpToTheCapacity) {
  const std::vector<Interval> allowed = {{1, 2}, {5, 5}, {-9, -7}};
  const Handle set = set_of(n, allowed), one = classic(x, y);
  const Handle items = three_items();
  zorv_exprexpr_set_allowed(one, Wire(4), Wire(6), 1);
  EXPECT_EQ(zorv_cons_item_allowed(set, 0, nullptr, nullptr, 0), 3u);
  EXPECT_EQ(zorv_cons_item_allowed(set, 1, nullptr, nullptr, 0), 0u);
  EXPECT_EQ(zorv_cons_item_allowed(one, 77, nullptr, nullptr, 0), 1u);  // any number will do
  EXPECT_EQ(zorv_cons_item_allowed(items, 0, nullptr, nullptr, 9), 0u);
  EXPECT_EQ(zorv_cons_item_allowed(items, 2, nullptr, nullptr, 9), 0u);
  EXPECT_EQ(zorv_cons_item_allowed(Handle(plain_copy(x)), 0, nullptr, nullptr, 9), 0u);

  CoeffWire lows[4] = {}, highs[4] = {};
  for (const uint64_t capacity : {2, 4}) {
    EXPECT_EQ(zorv_cons_item_allowed(set, 0, lows, highs, capacity), 3u);
    for (uint64_t i = 0; i < std::min<uint64_t>(capacity, 3); ++i) {
      EXPECT_EQ(read_wire(&lows[i]), allowed[i].first);
      EXPECT_EQ(read_wire(&highs[i]), allowed[i].second);
    }
    EXPECT_EQ(lows[capacity == 2 ? 2 : 3].limbs, nullptr);  // nothing beyond is touched
  }
  for (int i = 0; i < 4; ++i) std::free(lows[i].limbs), std::free(highs[i].limbs);
}

TEST_F(Inspection, TheOnlyBodyIsLentByTheTable) {
  const Handle one = classic(x, y), declared = between(x + y, 0, 1);
  const zorv_expr* body = zorv_exprexprelem_get_body(one);
  for (int i = 0; i < 500; ++i) between(x, 0, i);
  EXPECT_EQ(zorv_exprexprelem_get_body(one), body);  // the table grew and did not move it
  EXPECT_STREQ(zorv_expr_str(body), "y");
  EXPECT_STREQ(zorv_expr_str(zorv_exprexprelem_get_body(declared)), "x +y");
}

TEST_F(Inspection, OnlyBodySaysWhatTheValueHolds) {
  const char* plain_text =
      "ExprExpr body access on a value that is not an ExprExpr (plain Expr, VarInt or constraint "
      "sum).";
  const Handle two = between(x, 0, 1), rest = zorv_cons_mark(borrow(x));
  zorv_expr_iadd_expr(two, between(y, 0, 1));
  EXPECT_FATAL(zorv_exprexprelem_get_body(borrow(x)), plain_text);
  EXPECT_FATAL(zorv_exprexprelem_get_body(Handle(zorv_varintelem_create("v", Wire(0), Wire(1)))),
               plain_text);
  EXPECT_FATAL(zorv_exprexprelem_get_body(two),
               "body() requires exactly one constraint, but this value holds 2 constraint(s); use "
               "violations(sol) instead.");
  EXPECT_FATAL(zorv_exprexprelem_get_body(rest),
               "body() requires exactly one constraint, but this value holds 0 constraint(s) and a "
               "free-form penalty; use violations(sol) instead.");
  EXPECT_FATAL(zorv_exprexprelem_get_body(three_items()),
               "body() requires exactly one constraint, but this value holds 2 constraint(s) and a "
               "free-form penalty; use violations(sol) instead.");
  ExprImpl gone;
  gone.attr = kExprExprTag | kMaxConstraintIndex;
  EXPECT_FATAL(zorv_exprexprelem_get_body(borrow(gone)),
               "ExprExpr body access on a value that is no longer an ExprExpr (e.g. after ee += 1, "
               "ee.sqr()).");
}

TEST_F(Inspection, RefusesBadItemNumbersAndMissingBounds) {
  const Handle one = classic(x, y), items = three_items(), no_rest = between(x, 0, 1);
  const Handle one_in_sum = zorv_expr_clone_mul_int(one, Wire(2));
  EXPECT_FATAL(info(one, 1), "zorv_cons_item_info: bad item index");
  EXPECT_FATAL(info(items, 3), "zorv_cons_item_info: bad item index");
  EXPECT_FATAL(info(no_rest, 1), "zorv_cons_item_info: bad item index");
  EXPECT_FATAL(eval(Handle(plain_copy(x)), 1), "zorv_cons_item_eval: bad item index");
  EXPECT_FATAL(eval(no_rest, 1), "zorv_cons_item_eval: bad item index");
  EXPECT_FATAL(eval(one), "violations: constraint has no recorded bounds");
  EXPECT_FATAL(eval(one_in_sum), "violations: constraint has no recorded bounds");
  EXPECT_FATAL(violations(Handle(plain_copy(x))), "cons(sol): expression carries no constraints");
}

}  // namespace
}  // namespace zorv::test
