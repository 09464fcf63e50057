#include "model/compiled.h"

namespace zorv::test {
namespace {

class ModelQuery : public ::testing::Test {
 protected:
  const uint32_t x = fresh(), unused = fresh(), y = fresh();
  const uint32_t a = zorv_new_int_var("a", Wire(-5), Wire(coeff_t(1) << 70));
};

TEST_F(ModelQuery, FindsVariables) {
  const Model m(var(x) + var(y) + var(a));
  const uint32_t late = fresh();
  const struct {
    uint32_t literal, index;
  } rows[] = {{x, 0},
              {y, 1},
              {y | kNegationBit, 1},
              {unused, kNoLiteral},
              {late, kNoLiteral},
              {a, kNoLiteral},  // lies beyond the map of binary variables
              {kNoLiteral, kNoLiteral}};
  for (const auto& row : rows) {
    EXPECT_EQ(zorv_model_var_index(m, row.literal), row.index);
    EXPECT_EQ(zorv_model_has(m, row.literal), row.index == kNoLiteral ? 0 : 1);
  }
  EXPECT_EQ(zorv_model_var_count(m), 2u);
  EXPECT_EQ(zorv_model_var(m, 1), y);
  EXPECT_EQ(zorv_model_has(Model(constant(1)), x), 0);
}

TEST_F(ModelQuery, DegreeZeroHasNoTables) {
  const Model m(var(x) * var(y) + coeff_t(4));
  EXPECT_EQ(zorv_model_term_count(m, 0), 0u);
  EXPECT_EQ(zorv_model_term_vars(m, 0), nullptr);
  EXPECT_EQ(zorv_model_coeff_array(m, 0), nullptr);
  EXPECT_EQ(zorv_model_term_count(m, 1), 0u);
  EXPECT_EQ(zorv_model_term_count(m, 2), 1u);
  Wire out(99);
  zorv_model_coeff_at(m, 2, 0, out.out());
  EXPECT_EQ(out.value(), 1);
}

TEST_F(ModelQuery, TellsAtomsAndTheirBounds) {
  const Model m(var(a));
  Wire lo, hi;
  zorv_model_int_var_bounds(m, 0, lo.out(), hi.out());
  EXPECT_EQ(lo.value(), -5);
  EXPECT_EQ(hi.value(), coeff_t(1) << 70);
  EXPECT_EQ(zorv_model_int_var_count(m), 1u);
  EXPECT_EQ(zorv_model_int_var_orig(m, 0), a);
  EXPECT_FATAL(zorv_model_int_var_orig(m, 1), "zorv_model_int_var_orig: index out of range");
  EXPECT_FATAL(zorv_model_int_var_bounds(m, 1, lo.out(), hi.out()),
               "zorv_model_int_var_bounds: index out of range");
}

TEST_F(ModelQuery, TellsNegatedLiterals) {
  const ExprImpl product = var(x | kNegationBit) * var(unused) * var(y);
  EXPECT_EQ(zorv_model_has_negated_literals(Model(product)), 1);
  EXPECT_EQ(zorv_model_has_negated_literals(Model(var(x) * var(unused) * var(y))), 0);
  EXPECT_EQ(zorv_model_has_negated_literals(Model(constant(1))), 0);
}

TEST_F(ModelQuery, ClonesShareOneModel) {
  zorv_model* original = zorv_model_create(borrow(var(x)));
  const Model clone(zorv_model_clone(original));
  EXPECT_EQ(zorv_model_term_vars(original, 1), zorv_model_term_vars(clone, 1));
  zorv_model_destroy(original);
  EXPECT_EQ(term_tables(clone), "0 | 1*x0");
  zorv_model_destroy(nullptr);
}

TEST_F(ModelQuery, ASolutionIsAModelHandle) {
  const Model m(var(x) + var(y));
  zorv_sol* sol = zorv_sol_create(m);
  const zorv_model* lent = zorv_sol_model(sol);
  EXPECT_EQ(static_cast<const void*>(lent), static_cast<const void*>(sol));
  EXPECT_EQ(zorv_model_term_vars(lent, 1), zorv_model_term_vars(m, 1));
  const Model clone(zorv_model_clone(lent));
  const Solution other(lent);
  zorv_sol_destroy(sol);
  EXPECT_EQ(term_tables(clone), "0 | 1*x0 1*x1");
  EXPECT_EQ(zorv_sol_model_var(other, 1), y);
}

TEST_F(ModelQuery, EvaluatesThePolynomialAlone) {
  const ExprImpl e =
      with(5 * var(x) + 3 * var(x | kNegationBit) * var(unused) * var(y) + coeff_t(1),
           {cons_between(var(x), 7, 7), cons_mark(2 * var(y))});
  const Model m(e);
  for (uint64_t bits = 0; bits < 8; ++bits) {
    const coeff_t vx = bits & 1, vu = bits >> 1 & 1, vy = bits >> 2 & 1;
    Wire out;
    zorv_model_eval(m, &bits, out.out());
    EXPECT_EQ(out.value(), 5 * vx + 3 * (1 - vx) * vu * vy + 1 + 2 * vy);
    EXPECT_EQ(full_energy(*m, &bits, nullptr), out.value() + (7 - vx) * (7 - vx));
  }
  const Model integer(var(a));
  const uint64_t bits = 0;
  Wire out;
  EXPECT_FATAL(zorv_model_eval(integer, &bits, out.out()),
               "Model eval: native integer variables (int_var) are not supported yet.");
}

}  // namespace
}  // namespace zorv::test
