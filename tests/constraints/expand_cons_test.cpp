#include "constraints/expand_cons.h"

#include "constraints/describe.h"
#include "reference/plain_rewrites.h"
#include "support/small_polynomials.h"

namespace zorv::test {
namespace {

// Whether some values of the variables made since `before` bring the penalty to 0; it is never
// negative.
bool can_vanish(const ExprImpl& penalty, uint64_t before, Assignment values) {
  bool vanishes = false;
  const uint64_t slacks = var_count() - before;
  for (uint64_t bits = 0; bits < uint64_t{1} << slacks; ++bits) {
    for (uint64_t i = 0; i < slacks; ++i) {
      values[static_cast<uint32_t>(before + i)] = bits >> i & 1;
    }
    const coeff_t value = plain_value(penalty, values);
    EXPECT_GE(value, 0) << text(penalty);
    vanishes = vanishes || value == 0;
  }
  return vanishes;
}

TEST(Between, HoldsForEverySmallPolynomial) {
  const uint64_t seed = 22;
  Random random(seed);
  const std::vector<uint32_t> variables = fresh_block(3);
  std::vector<VarList> products = products_of(with_complements(variables), 3);
  std::erase_if(products, [](const VarList& p) { return !all_different(p); });
  const auto coefficient = [&] { return coeff_t(below(random, 9)) - 4; };
  int width = 0;
  const uint64_t n = for_every_sum(products, 2, coefficient, [&](const ExprImpl& f) {
    for (int k = 0; k < 3; ++k, width = (width + 1) % 11) {
      const coeff_t lo = coefficient(), hi = lo + width - 1;
      const uint64_t before = var_count();
      const ExprImpl penalty = zorv::between(f, lo, hi);
      auto next = static_cast<uint32_t>(before);
      ASSERT_TRUE(same_terms(penalty, plain_between(f, lo, hi, next)));
      ASSERT_EQ(next, var_count());
      for (uint64_t bits = 0; bits < 8; ++bits) {
        const Assignment values = values_of(variables, bits);
        const coeff_t value = plain_value(f, values);
        ASSERT_EQ(can_vanish(penalty, before, values), hi < lo || (lo <= value && value <= hi))
            << lo << " <= " << text(f) << " <= " << hi << " at " << bits;
      }
    }
  });
  EXPECT_EQ(n, 1u + 27 + 27 * 28 / 2);
  report_proof("Between, three ranges each", n, seed);
}

TEST(Between, DrawsASlackOnlyWhereItNeedsOne) {
  const ExprImpl f = var(fresh("f"));
  auto s = static_cast<uint32_t>(var_count());
  zorv::between(f, 0, 2);
  // What the counter stands at is the business of earlier calls.
  uint64_t n = std::stoull(std::string(zorv_var_str(s)).substr(2));
  EXPECT_EQ(zorv_var_str(s++), "{s" + std::to_string(n) + "}");
  const struct {
    int lo, hi;
    const char* out;  // %: the name of the slack; null where only the slack matters
    std::vector<std::string> elements;
  } rows[] = {
      {3, 2, "0", {}},
      {2, 2, "4 +f*f -4*f", {}},
      {2, 3, "6 -2*f -3*f +f*f", {}},
      {0, 2, "-f +% +f*f -f*% -%*f +%*%", {""}},
      {0, 3, nullptr, {""}},
      {0, 4, nullptr, {"[0]", "[1]"}},
      {-4, 1, nullptr, {"[0]", "[1]"}},
  };
  for (const auto& row : rows) {
    const std::string name = "{s" + std::to_string(n + 1) + "}";
    const std::string made = text(zorv::between(f, row.lo, row.hi));
    EXPECT_EQ(made, row.out == nullptr ? made : filled(row.out, name));
    for (const std::string& element : row.elements) EXPECT_EQ(zorv_var_str(s++), name + element);
    EXPECT_EQ(var_count(), s);
    n += row.elements.empty() ? 0 : 1;
  }
}

class ExpandCons : public ::testing::Test {
 protected:
  // The expansion, merged.
  static PlainPoly expanded(const Handle& e) {
    const Handle out = zorv_expr_expand_cons(e);
    EXPECT_EQ(out.attr(), kPlainAttr);
    return plain_poly(expr_of(out));
  }
  static const ExprImpl& expr_of(const zorv_expr* e) { return unwrap(e); }
  // A declared constraint.
  static Handle within(const ExprImpl& body, const coeff_t& lo, const coeff_t& hi) {
    return test::between(body, lo, hi);
  }
  static Handle times(const Handle& e, int weight) {
    return zorv_expr_clone_mul_int(e, Wire(weight));
  }
  static Handle sum(const Handle& a, const Handle& b) { return zorv_expr_clone_add_expr(a, b); }

  const ExprImpl x = var(fresh("x")), y = var(fresh("y"));
};

TEST_F(ExpandCons, AddsWeightTimesPenaltyToTheObjective) {
  const ExprImpl f = 2 * x + y, not_y = var(y.list.first.vars[0] | kNegationBit);
  Handle e(7 * x * y + 3);
  zorv_expr_iadd_expr(e, times(within(f, 0, 4), 3));
  zorv_expr_iadd_expr(e, within(not_y, 1, 2));
  zorv_expr_iadd_expr(e, times(within(f, 5, 1), 2));  // nothing to keep
  zorv_expr_iadd_expr(e, times(Handle(zorv_cons_mark(borrow(x - 1))), -2));
  zorv_expr_iadd_expr(e, times(within(f, 1, 1), -5));
  auto next = static_cast<uint32_t>(var_count());
  const ExprImpl plain = 7 * x * y + 3 + 3 * plain_between(f, 0, 4, next) +
                         plain_between(not_y, 1, 2, next) + (-5) * sqr(f - 1) +
                         (-2) * (x - 1);  // the free-form penalty comes last
  EXPECT_TRUE(same_terms(expand_cons(expr_of(e)), plain));
  EXPECT_EQ(next, var_count());
  EXPECT_TRUE(expanded(e) != plain_poly(plain));  // new slack variables every time
  EXPECT_EQ(var_count(), next + 2);
  EXPECT_EQ(expanded(times(within(x, 1, 1), 2)), plain_poly(2 * sqr(x - 1)));
}

TEST_F(ExpandCons, CopiesWhatDeclaresNothing) {
  const Handle one = classic(x * x, y);
  const struct {
    Handle e;
    const char* tag;
  } rows[] = {{Handle(x + x), "plain"},
              {clone(one), "plain"},
              {times(one, 2), "plain"},
              {Handle(zorv_varintelem_create("n", Wire(1), Wire(4))), "varint"}};
  const uint64_t before = var_count();
  for (const auto& row : rows) {
    const Handle out = zorv_expr_expand_cons(row.e);
    EXPECT_EQ(describe(out), row.tag);
    EXPECT_TRUE(same_terms(expr_of(out), expr_of(row.e)));
  }
  EXPECT_EQ(var_count(), before);
  const Handle declared = sum(Handle(x + y), within(x, 0, 1));  // a range of its polynomial alone
  EXPECT_TRUE(same_terms(zorv::between(expr_of(declared), 1, 1), sqr(x + y - 1)));
}

// Callers rely on the two below; neither must be repaired.
TEST_F(ExpandCons, TakesASetOfAllowedValuesAsItsHull) {
  const Wire one(1), five(5);
  const CoeffWire values[] = {*static_cast<const CoeffWire*>(five),
                              *static_cast<const CoeffWire*>(one)};
  const ExprImpl body = x + 2 * y + 1;  // reaches 1 to 4
  const Handle e = zorv_cons_equal(borrow(body), values, values, 2);
  auto next = static_cast<uint32_t>(var_count());
  EXPECT_TRUE(same_terms(expand_cons(expr_of(e)), plain_between(body, 1, 5, next)));
}

TEST_F(ExpandCons, AnEqualityMayHaveANegativeWeightAndARangeMayNot) {
  EXPECT_EQ(expanded(times(within(x, 1, 1), -3)), plain_poly(-3 * sqr(x - 1)));
  for (const int hi : {0, 2, 9}) {  // also one of no penalty at all, and one without slack
    EXPECT_FATAL(zorv_expr_expand_cons(times(within(x, 1, hi), -1)),
                 "expand_cons: a one-sided/range constraint carries a NEGATIVE weight; its "
                 "slack-based penalty form is only valid for positive weights. Keep the expression "
                 "in cons() form and use a bundled solver.");
  }
}

TEST_F(ExpandCons, RefusesMissingBoundsThenShapes) {
  const Handle boundless = zorv_cons_mark(classic(x, y));
  const char* no_bounds = "expand_cons: constraint carries no bounds";
  const char* shape =
      "expand_cons: zorv::abs/relu terms have no classic penalty form (|f|^k is not a polynomial)";
  const Handle abs = zorv_abs_term(borrow(x), 2);  // bounds 0 and 0, yet no equality
  EXPECT_FATAL(zorv_expr_expand_cons(boundless), no_bounds);
  EXPECT_FATAL(zorv_expr_expand_cons(times(boundless, -1)), no_bounds);
  EXPECT_FATAL(zorv_expr_expand_cons(abs), shape);
  EXPECT_FATAL(zorv_expr_expand_cons(times(Handle(zorv_relu_term(borrow(x - 1), 1)), -1)), shape);
  EXPECT_FATAL(zorv_expr_expand_cons(sum(abs, boundless)), shape);  // in the order of the items
}

// x becomes y + 1 wherever declared constraints lie; what classic tags name is left behind.
TEST_F(ExpandCons, ReplaceRewritesWhatIsDeclaredAndDropsOtherTags) {
  const uint32_t key = x.list.first.vars[0];
  const Handle y_plus_1(y + 1);
  zorv_expr* const exprs[] = {y_plus_1};
  const auto replaced = [&](const Handle& e) {
    const std::string before = describe(e);
    Handle out = zorv_expr_replace(e, &key, exprs, 1);
    EXPECT_EQ(describe(e), before);
    return out;
  };
  const Handle abs = zorv_abs_term(borrow(3 * x), 1), one = classic(x * x, x);
  Handle declared(x * y);
  zorv_expr_iadd_expr(declared, times(within(x + y, 2, 8), -4));
  zorv_expr_iadd_expr(declared, abs);
  zorv_expr_iadd_expr(declared, Handle(zorv_cons_mark(borrow(x - 5))));
  const Handle out = replaced(declared);
  EXPECT_EQ(describe(out), "declared -4[1 +y +y] 1[3 +3*y] rest [-4 +y]");
  EXPECT_EQ(out.polynomial(), "y +y*y");
  const ConstraintSum sum = constraint_sum(attr_index(out.attr()));
  EXPECT_EQ(item_at(sum, 0).constraint->lo, 2);
  EXPECT_EQ(item_at(sum, 0).constraint->hi, 8);
  EXPECT_EQ(item_at(sum, 1).constraint->shape_kind, 1);

  const Handle bits = zorv_varintelem_create("n", Wire(0), Wire(1));
  for (const Handle& e : {clone(one), times(one, 2), clone(bits)}) {
    EXPECT_EQ(replaced(e).attr(), kPlainAttr);
  }
  EXPECT_EQ(replaced(one).polynomial(), "1 +y +y +y*y");
}

}  // namespace
}  // namespace zorv::test
