// Values and other forms of expressions through the exports: what crosses the boundary, and how.
#include <vector>

#include "constraints/describe.h"

namespace zorv::test {
namespace {

class ExprForms : public ::testing::Test {
 protected:
  template <typename Export, typename... Args>
  static coeff_t written(Export read, const Args&... args) {
    Wire out(coeff_t(1) << 200);  // a block that the export has to free
    read(args..., out.out());
    return out.value();
  }

  const uint32_t x = zorv_new_var("x"), y = zorv_new_var("y"), absent = zorv_new_var("z");
  const uint32_t a = zorv_new_int_var("a", Wire(-2), Wire(5));
  const coeff_t wide = coeff_t(1) << 100;
};

TEST_F(ExprForms, EvalMapTakesPointersToRecords) {
  const ExprImpl e = 3 * var(x | kNegationBit) + wide * var(y) * var(a) + 1;
  const Wire zero(0), one(1), seven(-7);
  const uint32_t vars[] = {x, y, a, x};
  const CoeffWire* const values[] = {one, one, seven, zero};  // the second x counts
  EXPECT_EQ(written(zorv_expr_eval_map, borrow(e), vars, values, 4), 4 - 7 * wide);
  EXPECT_EQ(written(zorv_expr_eval_map, borrow(constant(5)), nullptr, nullptr, 0), 5);
  Wire out;
  EXPECT_FATAL(zorv_expr_eval_map(borrow(e), vars, values, 2, out.out()),
               "eval: variable not found in mapping");
  EXPECT_FATAL(zorv_expr_eval_map(between(var(x), 0, 1), nullptr, nullptr, 0, out.out()),
               guard_text("eval with a variable map (evaluate against a Sol instead)"));
}

// Callers rely on it: a variable that the model does not have is 0, and so is its complement.
TEST_F(ExprForms, EvalWithModelCountsAMissingVariableAsZeroNegatedOrNot) {
  zorv_model* m = zorv_model_create(borrow(var(x) + var(y)));
  const uint32_t nx = x | kNegationBit, not_absent = absent | kNegationBit;
  const struct {
    ExprImpl e;
    coeff_t at[4];  // by the bits x + 2*y
  } rows[] = {
      {constant(5), {5, 5, 5, 5}},
      {var(x) + wide * var(x) * var(y) - 3, {-3, -2, -3, wide - 2}},
      {4 * var(nx) * var(y), {0, 0, 4, 0}},
      {var(absent) + 8 * var(not_absent) + var(nx) * var(not_absent) + 1, {1, 1, 1, 1}},
      {var(kIndexMask) + var(kIndexMask | kNegationBit) + var(y), {0, 0, 1, 1}},
      {0 * (var(y) + var(absent)) + var(x), {0, 1, 0, 1}},
  };
  for (const auto& row : rows) {
    for (uint64_t bits = 0; bits < 4; ++bits) {
      EXPECT_EQ(written(zorv_expr_eval_with_model, borrow(row.e), m, &bits), row.at[bits])
          << text(row.e) << " at " << bits;
    }
  }
  Handle declared = between(var(x), 0, 1);
  zorv_expr_iadd_var(declared, a);
  const uint64_t bits = 0;
  Wire out;
  EXPECT_FATAL(zorv_expr_eval_with_model(declared, m, &bits, out.out()),
               guard_text("eval_with_model (evaluate against a Sol instead)"));
  EXPECT_FATAL(zorv_expr_eval_with_model(borrow(var(x) * var(a)), m, &bits, out.out()),
               "eval_with_model: native integer variables (int_var) are not supported yet (bit "
               "assignments cannot value integer atoms).");
  zorv_model_destroy(m);
}

TEST_F(ExprForms, GcdAndBoundsAreWrittenOut) {
  const struct {
    ExprImpl e;
    coeff_t gcd, low, high;
  } rows[] = {
      {ExprImpl(), 0, 0, 0},
      {constant(-6), 6, -6, -6},
      {6 * wide * var(x) + 4 * wide, 2 * wide, 4 * wide, 10 * wide},
      {2 * var(x) - 3 * var(y) + 1, 1, -2, 3},
      {var(x | kNegationBit) - var(a), 1, -5, 3},
  };
  for (const auto& [e, gcd, low, high] : rows) {
    EXPECT_EQ(written(zorv_expr_gcd, borrow(e)), gcd) << text(e);
    EXPECT_EQ(written(zorv_expr_neg_sum, borrow(e)), low) << text(e);
    EXPECT_EQ(written(zorv_expr_pos_sum, borrow(e)), high) << text(e);
  }
}

}  // namespace
}  // namespace zorv::test
