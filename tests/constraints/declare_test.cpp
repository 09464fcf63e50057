#include "constraints/declare.h"

#include "constraints/describe.h"
#include "integer/int_var.h"

namespace zorv::test {
namespace {

const ExprExpr& entry_of(const Handle& declared, size_t i = 0) {
  return *item_at(constraint_sum(attr_index(declared.attr())), i).constraint;
}

class Declare : public ::testing::Test {
 protected:
  const ExprImpl x = var(fresh("x")), y = var(fresh("y"));
  const Handle declared = between(x + y, 0, 1);
  const Handle one = classic(x, y);
  const Handle varint = zorv_varintelem_create("n", Wire(1), Wire(2));
};

TEST_F(Declare, BetweenIsDataBesideAnEmptyPolynomial) {
  EXPECT_EQ(declared.polynomial(), "0");
  EXPECT_EQ(describe(declared), "declared 1[x +y]");
  EXPECT_EQ(zorv_expr_is_declared(declared), 1);
  EXPECT_TRUE(entry_of(declared).has_bounds);
  EXPECT_EQ(entry_of(declared).lo, 0);
  EXPECT_EQ(entry_of(declared).hi, 1);
  EXPECT_TRUE(entry_of(declared).allowed.empty());
  EXPECT_EQ(entry_of(between(x, 8, -8)).hi, -8);  // nothing asks for lo <= hi

  // Classic bodies lend their polynomial alone.
  const Handle of_classic = zorv_cons_between(one, Wire(0), Wire(5));
  EXPECT_EQ(describe(of_classic), "declared 1[x]");
  EXPECT_EQ(entry_of(of_classic).body->attr, kPlainAttr);
}

TEST_F(Declare, EqualTakesIntervalsInTheGivenOrder) {
  const Wire five(5), six(6), minus(-2);
  const CoeffWire lows[] = {*static_cast<const CoeffWire*>(five),
                            *static_cast<const CoeffWire*>(minus)};
  const CoeffWire highs[] = {*static_cast<const CoeffWire*>(six),
                             *static_cast<const CoeffWire*>(minus)};
  const Handle set = zorv_cons_equal(borrow(x), lows, highs, 2);
  EXPECT_EQ(describe(set), "declared 1[x]");
  EXPECT_EQ(entry_of(set).allowed, (std::vector<Interval>{{5, 6}, {-2, -2}}));
  EXPECT_EQ(entry_of(set).lo, -2);
  EXPECT_EQ(entry_of(set).hi, 6);
}

TEST_F(Declare, MarkTurnsAnythingIntoADeclaredSum) {
  const Handle classic_sum = clone(one);
  zorv_expr_imul_int(classic_sum, Wire(7));
  zorv_expr_iadd_var(classic_sum, x.list.first.vars[0]);
  const struct {
    Handle e;
    const char* expected;
  } rows[] = {
      {zorv_cons_mark(borrow(x - 1)), "declared rest [-1 +x]"},
      {zorv_cons_mark(varint), "declared rest [1 +n]"},
      {zorv_cons_mark(one), "declared 1[y]"},
      {zorv_cons_mark(classic_sum), "declared 7[y] rest [x]"},
      {zorv_cons_mark(declared), "declared 1[x +y]"},
      {zorv_cons_mark(borrow(ExprImpl())), "declared rest [0]"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(describe(row.e), row.expected);
    EXPECT_EQ(row.e.polynomial(), "0");
    EXPECT_EQ(zorv_expr_is_declared(row.e), 1);
  }
}

TEST_F(Declare, MarkOfADeclaredExpressionDropsItsObjective) {
  const Handle e = plain_copy(x);
  zorv_expr_iadd_expr(e, declared);
  const Handle marked = zorv_cons_mark(e);
  EXPECT_EQ(marked.attr(), e.attr());
  EXPECT_EQ(marked.polynomial(), "0");
  zorv_expr_iadd_expr(marked, between(y, 0, 1));
  EXPECT_EQ(describe(e), "declared 1[x +y]");
}

TEST_F(Declare, ClassicConstraintKeepsThePenaltyAsItsPolynomial) {
  EXPECT_EQ(one.polynomial(), "x");
  EXPECT_EQ(describe(one), "one [y]");
  EXPECT_EQ(zorv_expr_is_declared(one), 0);
  const Handle nested = zorv_exprexprelem_create(one, varint);
  EXPECT_EQ(describe(nested), "one [1 +n]");
  EXPECT_EQ(zorv_exprexprelem_get_body(nested), borrow(*expr_expr(attr_index(nested.attr())).body));
  EXPECT_EQ(zorv_expr_attr(zorv_exprexprelem_get_body(nested)), kPlainAttr);
}

TEST_F(Declare, BoundsOfASingleConstraint) {
  Wire lo, hi;
  EXPECT_EQ(zorv_exprexpr_get_bounds(one, lo.out(), hi.out()), 0);  // none recorded yet
  EXPECT_EQ(zorv_exprexpr_get_bounds(declared, lo.out(), hi.out()), 0);
  EXPECT_EQ(zorv_exprexpr_get_bounds(varint, lo.out(), hi.out()), 0);
  zorv_exprexpr_set_bounds(one, Wire(-4), Wire(9));
  ASSERT_EQ(zorv_exprexpr_get_bounds(one, lo.out(), hi.out()), 1);
  EXPECT_EQ(lo.value(), -4);
  EXPECT_EQ(hi.value(), 9);
  zorv_exprexpr_set_allowed(one, Wire(2), Wire(3), 1);
  ASSERT_EQ(zorv_exprexpr_get_bounds(clone(one), lo.out(), hi.out()), 1);
  EXPECT_EQ(lo.value(), 2);
  EXPECT_EQ(hi.value(), 3);
}

TEST_F(Declare, BodyAndObjectiveQuestions) {
  const Handle abs = zorv_abs_term(borrow(x), 1), rest = zorv_cons_mark(borrow(x));
  const Handle two = clone(declared), with_rest = clone(declared);
  zorv_expr_iadd_expr(two, abs);
  zorv_expr_iadd_expr(with_rest, rest);
  const Handle abs_and_objective = clone(abs), abs_and_rest = clone(abs);
  zorv_expr_iadd_var(abs_and_objective, fresh());
  zorv_expr_iadd_expr(abs_and_rest, rest);
  const Handle classic_sum = zorv_expr_clone_mul_int(one, Wire(2));
  const struct {
    const Handle& e;
    int has_body, objective_only;
  } rows[] = {
      {Handle(plain_copy(x)), 0, 0},
      {varint, 0, 0},
      {one, 1, 0},
      {classic_sum, 1, 0},
      {declared, 1, 0},
      {two, 0, 0},
      {with_rest, 0, 0},
      {rest, 0, 0},
      {abs, 1, 1},
      {abs_and_objective, 1, 1},
      {abs_and_rest, 0, 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(zorv_expr_has_body(row.e), row.has_body) << describe(row.e);
    EXPECT_EQ(zorv_expr_all_objective_only(row.e), row.objective_only) << describe(row.e);
  }
  EXPECT_FALSE(all_objective_only(kSumTag | add_constraint_sum({}, true)));
}

TEST_F(Declare, RefusesDeclaredBodies) {
  const zorv_expr* plain = borrow(x);
  const std::string comparing = guard_text("== / <= (comparing declared constraints)");
  const std::string shaped = guard_text("abs/relu body carrying declared constraints");
  EXPECT_FATAL(zorv_cons_between(declared, Wire(0), Wire(1)),
               guard_text("cons(body, ...) on declared constraints"));
  EXPECT_FATAL(zorv_cons_equal(declared, nullptr, nullptr, 0),
               guard_text("cons(body, equal=...) on declared constraints"));
  EXPECT_FATAL(zorv_exprexprelem_create(declared, plain), comparing);
  EXPECT_FATAL(zorv_exprexprelem_create(plain, declared), comparing);
  EXPECT_FATAL(zorv_abs_term(declared, 3), shaped);
  EXPECT_FATAL(zorv_relu_term(declared, 3), shaped);
}

TEST_F(Declare, RefusesWhatNamesNoSingleEntry) {
  const Handle sum_of_one = zorv_expr_clone_mul_int(one, Wire(1));
  for (const Handle* e : {&declared, &sum_of_one, &varint}) {
    EXPECT_FATAL(zorv_exprexpr_set_bounds(*e, Wire(0), Wire(1)),
                 "zorv_exprexpr_set_bounds: not an ExprExpr");
    EXPECT_FATAL(zorv_exprexpr_set_allowed(*e, nullptr, nullptr, 0),
                 "zorv_exprexpr_set_allowed: not an ExprExpr");
  }
  EXPECT_FATAL(zorv_exprexpr_set_allowed(one, nullptr, nullptr, 0),
               "ExprExprSet: set_allowed empty set");
  EXPECT_FATAL(zorv_cons_equal(borrow(x), nullptr, nullptr, 0),
               "zorv_cons_equal: empty allowed-value set");
}

TEST_F(Declare, AbsAndReluChooseTheirBounds) {
  const ExprImpl a = var(new_int_var("a", -3, 5));
  const struct {
    Handle term;
    int lo, k;
  } rows[] = {
      {zorv_abs_term(borrow(x - 1), 2), 0, 2},
      {zorv_abs_term(borrow(x * y), 1), 0, 1},
      {zorv_relu_term(borrow(x + y - 1), 1), -1, 1},
      {zorv_relu_term(borrow(constant(5)), 2), 0, 2},  // a lowest value above 0 counts as 0
      {zorv_relu_term(borrow(2 * a - 4 * x), 1), -10, 1},
      {zorv_relu_term(one, 2), 0, 2},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.term.polynomial(), "0");
    EXPECT_EQ(zorv_expr_is_declared(row.term), 1);
    const ExprExpr& entry = entry_of(row.term);
    EXPECT_TRUE(entry.has_bounds);
    EXPECT_EQ(entry.lo, row.lo) << describe(row.term);
    EXPECT_EQ(entry.hi, 0);
    EXPECT_EQ(entry.shape_k, row.k);
    EXPECT_EQ(entry.shape_kind, 1);
    EXPECT_EQ(entry.body->attr, kPlainAttr);
  }
}

TEST_F(Declare, AbsAndReluRefuseOtherExponents) {
  const ExprImpl unknown = var(atom_literal(kIndexMask));
  EXPECT_FATAL(zorv_abs_term(borrow(x), 0), "zorv::abs: the exponent k must be 1 or 2 (got 0)");
  EXPECT_FATAL(zorv_relu_term(borrow(x), 3), "zorv::relu: the exponent k must be 1 or 2 (got 3)");
  EXPECT_FATAL(zorv_relu_term(borrow(unknown), 0xFFFFFFFFu),
               "zorv::relu: the exponent k must be 1 or 2 (got -1)");
  EXPECT_FATAL(zorv_relu_term(borrow(unknown), 1), "reachable bounds: unknown integer variable");
}

}  // namespace
}  // namespace zorv::test
