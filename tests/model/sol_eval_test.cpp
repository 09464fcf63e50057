#include "model/compiled.h"

namespace zorv::test {
namespace {

// x = 1, y = 0, a = 3, b = 0; neither `absent` nor `absent_atom` is in the model.
class SolEval : public ::testing::Test {
 protected:
  const uint32_t x = fresh(), absent = fresh(), y = fresh();
  const uint32_t a = zorv_new_int_var("a", Wire(0), Wire(9));
  const uint32_t absent_atom = zorv_new_int_var("n", Wire(1), Wire(9));
  const uint32_t b = zorv_new_int_var("b", Wire(0), Wire(9));
  const Model m{var(x) + var(y) + var(a) + var(b)};
  const Solution sol{m};

  SolEval() {
    zorv_sol_set(sol, x, 1);
    zorv_sol_set_int(sol, a, Wire(3));
  }
  static ExprImpl no(uint32_t literal) { return var(literal | kNegationBit); }
};

TEST_F(SolEval, ValueOfAPolynomial) {
  const uint32_t late = fresh();
  const struct {
    ExprImpl e;
    int value;
  } rows[] = {
      {constant(-4), -4},
      {5 * var(x) + 7 * var(y) + coeff_t(1), 6},
      {5 * no(x) + 7 * no(y), 7},
      {var(x) * var(x) * no(y) * var(a), 3},
      {var(a) * var(a) * var(a) - coeff_t(1), 26},
      {var(a) * var(b), 0},
      {var(a) * var(y), 0},
      // A term with something that the model lacks is left out, negated or not.
      {8 * var(absent) + 2 * no(absent) + coeff_t(1), 1},
      {8 * no(late) + no(absent) * var(x), 0},
      {8 * var(absent_atom) + var(absent_atom) * var(a) + var(x), 1},
      {var(atom_literal(kIndexMask - 1)), 0},
  };
  for (const auto& row : rows) EXPECT_EQ(sol.eval(row.e), row.value) << text(row.e);
}

TEST_F(SolEval, DeclaredConstraintsAddTheirPenalties) {
  const ExprImpl classic = classic_constraint(2 * var(x), var(y));
  set_expr_expr_bounds(classic, 9, 9);
  const struct {
    ExprImpl e;
    int value;
  } rows[] = {
      {with(var(x), {cons_between(var(a), 0, 1)}), 1 + 4},
      {clone_mul_int(abs_term(var(y) - 5, 1), -3), -15},
      {cons_mark(var(a) - 10), -7},  // a remainder has a sign
      {with(constant(100), {cons_mark(no(x) + 1), cons_between(var(a), 0, 1)}), 105},
      {cons_equal(var(a), {{0, 1}, {8, 8}}), 4},
      // A term of higher degree, where the model would know the bounds alone.
      {cons_equal(var(a) * var(a), {{0, 5}, {20, 30}}), 16},
      {abs_term(var(a) * var(a), 1), 9},
      {classic, 2},
      {clone_mul_int(classic, 4), 8},
      {cons_mark(classic), 81},
      {cons_mark(classic_constraint(var(x), var(x))), 0},  // without bounds nothing is violated
      {cons_between(var(absent) + 2, 0, 0), 4},
  };
  for (const auto& row : rows) EXPECT_EQ(sol.eval(row.e), row.value);
}

TEST_F(SolEval, BodiesOfHigherDegreeCanDifferFromTheModel) {
  const ExprImpl e = cons_equal(var(x) * var(y), {{1, 1}, {5, 5}});
  const Model model(e);
  const Solution at(model);
  zorv_sol_set(at, x, 1);
  zorv_sol_set(at, y, 1);
  const ExprImpl gap = cons_equal(2 * var(x) * var(y), {{1, 1}, {5, 5}});
  const Model gap_model(gap);
  const Solution inside(gap_model);
  zorv_sol_set_from_sol(inside, at);
  EXPECT_EQ(inside.compute(), 0);  // 2 lies between 1 and 5
  EXPECT_EQ(inside.eval(gap), 1);  // but is neither
}

}  // namespace
}  // namespace zorv::test
