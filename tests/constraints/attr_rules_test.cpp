#include "core/attr_rules.h"

#include "constraints/declare.h"
#include "constraints/describe.h"
#include "core/simplify.h"

namespace zorv::test {
namespace {

// What becomes of tags is the model that random calls are held against; here are the texts.
TEST(Arithmetic, RefusesWhatWouldDropDeclaredConstraints) {
  const uint32_t y = fresh("y");
  const uint64_t head = y | uint64_t{kNoLiteral} << 32;
  const ExprImpl g = var(fresh("g"));
  const Handle declared = between(g, 0, 1), one = classic(var(y), g), plain{2 * var(y)};
  EXPECT_FATAL(zorv_expr_imul_var(declared, y), guard_text("*= var"));
  EXPECT_FATAL(zorv_expr_imul_term_direct(declared, Wire(2), head, nullptr), guard_text("*= term"));
  EXPECT_FATAL(zorv_expr_imul_expr(declared, plain), guard_text("*= expr"));
  EXPECT_FATAL(zorv_expr_imul_expr(plain, declared), guard_text("* expr"));
  EXPECT_FATAL(zorv_expr_imul_expr(declared, declared), guard_text("*= expr"));
  EXPECT_FATAL(zorv_expr_mul_expr(declared, plain), guard_text("* expr"));
  EXPECT_FATAL(zorv_expr_mul_expr(plain, declared), guard_text("* expr"));
  EXPECT_FATAL(zorv_expr_sqr(declared), guard_text("sqr"));
  EXPECT_FATAL(zorv_expr_idiv_int(declared, Wire(1)), guard_text("/="));
  EXPECT_FATAL(zorv_expr_idiv_int(declared, Wire(0)), guard_text("/="));  // looked at first
  EXPECT_FATAL(zorv_expr_idiv_int(one, Wire(0)), "Division by zero");
  EXPECT_FATAL(zorv_expr_imul_int(declared, Wire(0)), kZeroText);
  EXPECT_FATAL(zorv_expr_clone_mul_int(declared, Wire(0)), kZeroText);
  for (const auto& [a, b] : {std::pair(&one, &declared), std::pair(&declared, &one)}) {
    EXPECT_FATAL(zorv_expr_iadd_expr(*a, *b), kMixText);
    EXPECT_FATAL(zorv_expr_clone_add_expr(*a, *b), kMixText);
  }
  EXPECT_FATAL(zorv_expr_isub_expr(one, declared), kMixText);
  EXPECT_FATAL(zorv_expr_clone_sub_expr(one, declared), kMixText);
}

// Sharing ---------------------------------------------------------------------------------------

bool is_shared(const Handle& e) { return constraint_sum(attr_index(e.attr())).shared; }

class Sharing : public ::testing::Test {
 protected:
  const ExprImpl g = var(fresh("g")), h = var(fresh("h")), y = var(fresh("y"));

  Handle declared_g() const { return between(g, 0, 1); }
  // A sum of which no copy was made.
  Handle classic_sum() const {
    Handle sum = classic(y, g);
    zorv_expr_imul_int(sum, Wire(2));
    return sum;
  }
};

TEST_F(Sharing, AnUnsharedSumIsExtendedItself) {
  const Handle declared = declared_g(), sum = classic_sum();
  const uint32_t attr = declared.attr(), sum_attr = sum.attr();
  zorv_expr_iadd_expr(declared, between(h, 0, 1));
  EXPECT_EQ(declared.attr(), attr);
  EXPECT_EQ(describe(attr), "declared 1[g] 1[h]");
  zorv_expr_iadd_expr(sum, classic(y, h));
  zorv_expr_iadd_var(sum, y.list.first.vars[0]);
  EXPECT_EQ(sum.attr(), sum_attr);
  EXPECT_EQ(describe(sum_attr), "classic 2[g] 1[h] rest [y]");
}

TEST_F(Sharing, ACopyAndItsSourceNeverChangeEachOther) {
  for (const bool change_copy : {false, true}) {
    const Handle source = declared_g(), copy = clone(source);
    EXPECT_TRUE(is_shared(source));
    const Handle& changed = change_copy ? copy : source;
    const Handle& other = change_copy ? source : copy;
    zorv_expr_iadd_expr(changed, between(h, 0, 1));
    EXPECT_EQ(describe(changed), "declared 1[g] 1[h]");
    EXPECT_EQ(describe(other), "declared 1[g]");
    EXPECT_FALSE(is_shared(changed));  // its sum is new
  }
}

TEST_F(Sharing, EveryWayOfCopyingMarksTheSum) {
  const Handle a = declared_g(), b = declared_g(), c = declared_g(), d = declared_g();
  ExprImpl assigned = var(fresh());
  assigned = unwrap(a);
  EXPECT_TRUE(is_shared(a));
  const Handle marked = zorv_cons_mark(b);
  EXPECT_EQ(marked.attr(), b.attr());
  EXPECT_TRUE(is_shared(b));
  const Handle taken = zorv_expr_create();
  zorv_expr_iadd_expr(taken, c);
  EXPECT_EQ(taken.attr(), c.attr());
  EXPECT_TRUE(is_shared(c));
  const ExprImpl moved = std::move(unwrap(d));
  EXPECT_FALSE(constraint_sum(attr_index(moved.attr)).shared);
}

TEST_F(Sharing, AddingAnExpressionToItselfDoublesItsConstraints) {
  const Handle declared = declared_g(), sum = classic_sum();
  zorv_expr_iadd_var(sum, y.list.first.vars[0]);
  zorv_expr_iadd_expr(declared, declared);
  zorv_expr_iadd_expr(sum, sum);
  EXPECT_EQ(describe(declared), "declared 1[g] 1[g]");
  EXPECT_EQ(describe(sum), "classic 2[g] 2[g] rest [y +y]");
  const Handle difference = declared_g();
  zorv_expr_isub_expr(difference, difference);
  EXPECT_EQ(describe(difference), "declared 1[g] -1[g]");
}

TEST_F(Sharing, ASumMayTakeInItsOwnParts) {
  const Handle sum = classic_sum();
  zorv_expr_iadd_var(sum, y.list.first.vars[0]);
  ASSERT_TRUE(append_to_sum(attr_index(sum.attr()), parts_of(sum.attr())));
  EXPECT_EQ(describe(sum), "classic 2[g] 2[g] rest [y +y]");
}

TEST_F(Sharing, PlainOperandsOfDeclaredConstraintsChangeAtMostTheNumber) {
  const Handle e = declared_g(), copy = clone(e), plain = plain_copy(y);
  const uint32_t attr = e.attr();
  zorv_expr_iadd_var(e, y.list.first.vars[0]);
  EXPECT_EQ(e.attr(), attr);
  zorv_expr_iadd_expr(e, plain);  // the shared sum refuses, also when there is nothing to add
  EXPECT_NE(e.attr(), attr);
  EXPECT_EQ(describe(e), "declared 1[g]");
}

// Zero polynomials ------------------------------------------------------------------------------

class ZeroPolynomials : public Sharing {};

TEST_F(ZeroPolynomials, OnlyAnEmptyPlainLeftSideTakesATagOver) {
  const Handle constraint = classic(y, g),
               zero_varint = zorv_varintelem_create("n", Wire(0), Wire(0));
  Handle zero = zorv_expr_create();
  zorv_expr_iadd_expr(zero, constraint);
  EXPECT_EQ(zero.attr(), constraint.attr());

  zorv_expr_iadd_expr(zero_varint, constraint);
  EXPECT_EQ(describe(zero_varint), "classic 1[g] rest [0]");
  zero = zorv_expr_create();
  const Handle sum = zorv_expr_clone_add_expr(zero, constraint);
  EXPECT_EQ(describe(sum), "classic 1[g] rest [0]");
  EXPECT_EQ(zorv_expr_has_body(sum), 0);
  EXPECT_EQ(zorv_cons_item_count(sum), 2u);
}

TEST_F(ZeroPolynomials, AnEntryWithCoefficientZeroIsNoEmptySide) {
  const Handle zeroed = var(fresh("a")) + var(fresh("b"));
  zorv_expr_imul_int(zeroed, Wire(0));
  zorv_expr_iadd_expr(zeroed, classic(y, g));
  EXPECT_EQ(describe(zeroed).substr(0, 18), "classic 1[g] rest ");
}

TEST_F(ZeroPolynomials, AZeroRemainderIsStillARemainder) {
  const Handle constraint = classic(y, g);
  zorv_expr_iadd_expr(constraint, Handle(zorv_expr_create()));
  EXPECT_EQ(describe(constraint), "classic 1[g] rest [0]");

  const Handle cancelled = classic(y, g);
  zorv_expr_iadd_expr(cancelled, Handle(plain_copy(y - y)));
  const Handle simplified = zorv_expr_simplify(cancelled);
  EXPECT_EQ(describe(simplified), "classic 1[g] rest [0]");
}

// The rules themselves --------------------------------------------------------------------------

TEST(Simplification, CarriesBoundsSetAndShapeToNewEntries) {
  const ExprImpl x = var(fresh("x")), y = var(fresh("y"));
  const Handle set = zorv_abs_term(borrow(x * x + y + x), 1);
  const Handle source = 5 * y;
  zorv_expr_iadd_expr(source, set);
  zorv_expr_iadd_expr(source, between(y + y, -3, 8));
  zorv_expr_iadd_expr(source, Handle(zorv_cons_mark(borrow(x * x + x))));
  const Handle simplified = zorv_expr_simplify_as_binary(source);
  EXPECT_EQ(describe(source), "declared 1[x*x +y +x] 1[y +y] rest [x*x +x]");
  EXPECT_EQ(describe(simplified), "declared 1[2*x +y] 1[2*y] rest [2*x]");

  const ConstraintSum old_sum = constraint_sum(attr_index(source.attr()));
  const ConstraintSum new_sum = constraint_sum(attr_index(simplified.attr()));
  for (size_t i = 0; i < 2; ++i) {
    const ExprExpr& before = *item_at(old_sum, i).constraint;
    const ExprExpr& after = *item_at(new_sum, i).constraint;
    EXPECT_NE(&before, &after);
    EXPECT_TRUE(is_canonical(*after.body));
    EXPECT_TRUE(after.has_bounds);
    EXPECT_EQ(after.lo, before.lo);
    EXPECT_EQ(after.hi, before.hi);
    EXPECT_EQ(after.shape_k, before.shape_k);
    EXPECT_EQ(after.shape_kind, before.shape_kind);
  }
  EXPECT_FALSE(new_sum.shared);
}

TEST(Simplification, GivesASingleConstraintAnEntryOfItsOwn) {
  const ExprImpl x = var(fresh("x"));
  const Handle source = classic(x + x, x + x - 1);
  zorv_exprexpr_set_allowed(source, Wire(4), Wire(6), 1);
  const Handle simplified = zorv_expr_simplify(source);
  EXPECT_EQ(simplified.polynomial(), "2*x");
  EXPECT_EQ(describe(simplified), "one [-1 +2*x]");
  zorv_exprexpr_set_bounds(simplified, Wire(-9), Wire(9));
  const ExprExpr& old_entry = expr_expr(attr_index(source.attr()));
  EXPECT_EQ(old_entry.hi, 6);
  EXPECT_EQ(expr_expr(attr_index(simplified.attr())).allowed, old_entry.allowed);
}

TEST(Scale, WeightsAndRemaindersAreExact) {
  const ExprImpl g = var(fresh("g")), z = var(fresh("z"));
  const coeff_t big = (coeff_t(1) << 130) + 1;
  const Handle e = between(g, 0, 1);
  zorv_expr_iadd_expr(e, Handle(zorv_cons_mark(borrow(z))));
  zorv_expr_imul_int(e, Wire(-big));
  zorv_expr_imul_int(e, Wire(big));
  const std::string square = coeff_t(big * big).str();
  EXPECT_EQ(describe(e), "declared -" + square + "[g] rest [-" + square + "*z]");
}

TEST(Scale, ByZeroDropsObjectiveTermsAlone) {
  const ExprImpl f = var(fresh("f"));
  const Handle e = zorv_abs_term(borrow(f), 1);
  zorv_expr_iadd_expr(e, Handle(zorv_relu_term(borrow(f), 2)));
  const Handle nothing = zorv_expr_clone_mul_int(e, Wire(0));
  EXPECT_EQ(describe(nothing), "plain");
  const Handle with_rest = clone(e);
  zorv_expr_iadd_expr(with_rest, Handle(zorv_cons_mark(borrow(f))));
  EXPECT_FATAL(zorv_expr_imul_int(with_rest, Wire(0)), kZeroText);
  zorv_expr_iadd_expr(e, between(f, 0, 1));
  EXPECT_FATAL(zorv_expr_imul_int(e, Wire(0)), kZeroText);
}

TEST(Combine, AnAbsentPolynomialAddsNothing) {
  const Handle one = classic(var(fresh()), var(fresh("g")));
  EXPECT_EQ(describe(combine(one.attr(), nullptr, kPlainAttr, nullptr, false)), "classic 1[g]");
  EXPECT_EQ(describe(combine(kPlainAttr, nullptr, one.attr(), nullptr, false)), "classic 1[g]");
  EXPECT_EQ(combine(kPlainAttr, nullptr, 7, nullptr, true), kPlainAttr);
}

}  // namespace
}  // namespace zorv::test
