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

TEST_F(ExprForms, CompCoeffsWritesARecordForEachCoefficient) {
  const struct {
    coeff_t lo, hi;
    std::vector<coeff_t> series;
  } rows[] = {{4, 4, {}}, {5, 4, {}}, {-3, 4, {1, 2, 4}}, {0, 10, {1, 2, 4, 3}}};
  for (const auto& row : rows) {
    ASSERT_EQ(zorv_comp_coeffs_count(Wire(row.lo), Wire(row.hi)), row.series.size());
    std::vector<CoeffWire> out(row.series.size() + 1, CoeffWire{7, 0, nullptr});
    for (size_t i = 0; i < row.series.size(); ++i) write_wire(wide * wide, &(out[i] = {}));
    zorv_comp_coeffs(Wire(row.lo), Wire(row.hi), out.data());
    for (size_t i = 0; i < row.series.size(); ++i) {
      EXPECT_EQ(read_wire(&out[i]), row.series[i]);
      std::free(out[i].limbs);
    }
    EXPECT_EQ(out.back().sign, 7);  // nothing behind them
  }
  EXPECT_EQ(zorv_comp_coeffs_count(Wire(-wide * wide), Wire(wide)), 201u);
}

TEST_F(ExprForms, EveryRewriteReturnsANewHandle) {
  const Handle e(2 * var(x) * var(y) * var(x) + var(y) * var(a));
  const Handle binary(2 * var(x) * var(y) * var(x) + var(y | kNegationBit));
  const Handle two(constant(2));
  zorv_expr* const exprs[] = {two};
  const struct {
    Handle out;
    const char* text;
  } rows[] = {
      {zorv_expr_simplify(e), "y*a +2*x*x*y"},
      {zorv_expr_simplify_as_binary(e), "2*x*y +y*a"},
      {zorv_expr_simplify_as_spin(binary), "y"},
      {zorv_expr_binary_to_spin(binary), "8 +4*x +4*x*y"},
      {zorv_expr_spin_to_binary(binary), "-1 +2*y"},
      {zorv_expr_replace(e, &y, exprs, 1), "4*x*x +2*a"},
      {zorv_expr_binarize(e), "2*x*y*x -2*y +y*a#0 +2*y*a#1 +4*y*a#2"},
      {zorv_expr_reduce(binary), "1 -y +2*x*y"},
      {zorv_expr_expand_cons(between(var(x), 1, 1)), "1 +x*x -2*x"},
      {zorv_between(borrow(var(x)), Wire(1), Wire(0)), "0"},
  };
  for (const auto& row : rows) EXPECT_STREQ(zorv_expr_str(row.out), row.text);
  EXPECT_STREQ(zorv_expr_str(e), "2*x*y*x +y*a");
}

}  // namespace
}  // namespace zorv::test
