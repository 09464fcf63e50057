#include "constraints/declare.h"

#include "constraints/describe.h"
#include "integer/int_var.h"

namespace zorv::test {
namespace {

class Declare : public ::testing::Test {
 protected:
  const ExprImpl x = var(fresh("x")), y = var(fresh("y"));
  const Handle declared = between(x + y, 0, 1);
  const Handle one = classic(x, y);
  const Handle varint = zorv_varintelem_create("n", Wire(1), Wire(2));
};

TEST_F(Declare, MarkOfADeclaredExpressionDropsItsObjective) {
  const Handle e = plain_copy(x);
  zorv_expr_iadd_expr(e, declared);
  const Handle marked = zorv_cons_mark(e);
  EXPECT_EQ(marked.attr(), e.attr());
  EXPECT_EQ(marked.polynomial(), "0");
  zorv_expr_iadd_expr(marked, between(y, 0, 1));
  EXPECT_EQ(describe(e), "declared 1[x +y]");
}

TEST_F(Declare, AFreeFormPenaltyIsNoTermOfTheObjective) {
  const Handle abs = zorv_abs_term(borrow(x), 1);
  EXPECT_EQ(zorv_expr_all_objective_only(abs), 1);
  zorv_expr_iadd_expr(abs, Handle(zorv_cons_mark(borrow(x))));
  EXPECT_EQ(zorv_expr_all_objective_only(abs), 0);
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
