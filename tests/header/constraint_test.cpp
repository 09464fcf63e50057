// Comparisons, what becomes of them, and what solutions make of them.
#include <gtest/gtest.h>

#include <sstream>

#include "zorv/zorv.hpp"

namespace {

using namespace zorv;

std::pair<Integer, Integer> ends(const auto& comparison) {
  return {comparison.lo(), comparison.hi()};
}

TEST(Comparison, KeepsItsEndsWhicheverWayItIsWritten) {
  const Var x = var("x");
  const IntVar n = int_var("n", 0, 9);
  const Expr f = 2 * n - x;  // -1 to 18
  using Ends = std::pair<Integer, Integer>;
  EXPECT_EQ(ends(f == 3), Ends(3, 3));
  EXPECT_EQ(ends(3 == f), Ends(3, 3));
  EXPECT_EQ(ends(1 <= f), Ends(1, 18));
  EXPECT_EQ(ends(f >= 1), Ends(1, 18));
  EXPECT_EQ(ends(f <= 4), Ends(-1, 4));
  EXPECT_EQ(ends(4 >= f), Ends(-1, 4));
  EXPECT_EQ(ends(1 <= f <= 4), Ends(1, 4));
  EXPECT_EQ(ends(4 >= f >= 1), Ends(1, 4));
  EXPECT_EQ(ends(n <= x), Ends(-1, 0));  // n - x <= 0
  EXPECT_EQ(str((n <= x).body()), "n -x");
  EXPECT_EQ(ends(n == x), Ends(0, 0));
}

TEST(Comparison, DeclaringMakesNoVariables) {
  const auto x = var_array("x", {9});
  const uint64_t before = var_count();
  const Expr rules = cons(sum(x) <= 4) + 3 * cons(1 <= sum(x) <= 7) + cons(x == 0);
  EXPECT_EQ(var_count(), before);
  EXPECT_EQ(Model(rules).cons_count(), 11u);
  EXPECT_EQ(str(rules), "0");
  const Expr penalty = sum(x) <= 4;
  EXPECT_GT(var_count(), before);
  EXPECT_FALSE(penalty.is_declared());
}

// The least value over the slack variables of a penalty is 0 exactly where the constraint holds.
TEST(Comparison, AsPenaltyIsZeroWhereItHolds) {
  const auto x = var_array("x", {4});
  const ExprExpr constraint = 1 <= 2 * x[0] + x[1] + x[2] + x[3] <= 3;
  EXPECT_EQ(str(constraint.body()), "2*x[0] +x[1] +x[2] +x[3]");
  const Model model(constraint);
  for (int state = 0; state < 16; ++state) {
    Sol sol(model);
    for (uint64_t i = 0; i < 4; ++i) sol.set(x.flat(i), state >> i & 1);
    Integer least = sol[constraint];
    for (uint64_t slacks = 1; slacks < uint64_t{1} << (model.var_count() - 4); ++slacks) {
      for (uint64_t s = 4; s < model.var_count(); ++s) {
        sol.set(model.var(s), slacks >> (s - 4) & 1);
      }
      least = std::min(least, sol[constraint]);
    }
    const Integer value = sol[constraint.body()];
    EXPECT_EQ(least == 0, 1 <= value && value <= 3) << state;
    EXPECT_EQ(constraint.get().violation_count(sol), least == 0 ? 0u : 1u);
  }
}

TEST(Cons, CountsTheSquareOfTheDistanceTimesTheWeight) {
  const IntVar n = int_var("n", -10, 20);
  const struct {
    Expr declared;
    int (*energy)(int);
  } rows[] = {
      {5 * cons(1 <= n <= 4),
       [](int v) { return v < 1   ? 5 * (1 - v) * (1 - v)
                          : v > 4 ? 5 * (v - 4) * (v - 4)
                                  : 0; }},
      {cons(n == 3), [](int v) { return (v - 3) * (v - 3); }},
      {cons(n, equal({1, {4, 7}})),
       [](int v) {
         const int d = v <= 2 ? v - 1 : v < 4 ? 4 - v : v <= 7 ? 0 : v - 7;
         return d * d;
       }},
      {3 * abs(n - 2), [](int v) { return 3 * std::abs(v - 2); }},
      {relu(2 * n - 2, 2), [](int v) { return v > 1 ? (2 * v - 2) * (2 * v - 2) : 0; }},
      {n * n + 2 * cons((n == 3).classic()), [](int v) { return v * v + 2 * (v - 3) * (v - 3); }},
  };
  for (const auto& row : rows) {
    const Model model(row.declared);
    for (int value = -10; value <= 20; ++value) {
      Sol sol(model);
      sol.set(n, value);
      EXPECT_EQ(sol.comp_energy(), row.energy(value)) << &row - rows << " at " << value;
      EXPECT_EQ(sol[row.declared], row.energy(value));
    }
  }
}

TEST(Cons, OfAPolynomialIsAPenaltyAsItStands) {
  const auto x = var_array("x", {3});
  const Expr forbidden = 7 * cons(x[0] * x[1]) + cons(x[0] * x[1] + x[1] * x[2]);
  Sol sol{Model(forbidden)};
  EXPECT_EQ(forbidden.violation_count(sol), 0u);
  for (const Var v : x) sol.set(v, 1);
  EXPECT_EQ(sol.comp_energy(), 9);
  EXPECT_EQ(forbidden.violation_count(sol), 1u);
}

TEST(Violations, ListWhatDoesNotHold) {
  const IntVar n = int_var("n", 0, 20);
  const Var x = var("x");
  const Expr rules = 5 * cons(1 <= n <= 4) + cons(x == 1) + abs(n - 3) + cons(n, equal({7, 9}));
  Sol sol(Model(n + x + rules));
  sol.set(n, 6);
  const std::vector<Violation> broken = rules.violations(sol);
  ASSERT_EQ(broken.size(), 3u);
  EXPECT_EQ(rules.violation_count(sol), 3u);
  std::ostringstream out;
  out << broken[0];
  EXPECT_EQ(out.str(), "constraint 0: 6 is not in 1..4, off by 2");
  EXPECT_EQ(broken[0].weight, 5);
  EXPECT_EQ(broken[1].value, 0);
  EXPECT_EQ(broken[2].item, 3u);  // the absolute value before it is no requirement
  EXPECT_EQ(broken[2].violation, 1);
  out.str("");
  out << broken[2];
  EXPECT_EQ(out.str(), "constraint 3: 6 is not in 7, 9, off by 1");
  sol.set(n, 4);
  sol.set(x, 1);
  EXPECT_EQ(rules.violations(sol).size(), 1u);

  // A polynomial among classic constraints is a penalty, which is to be 0.
  const Expr classic = (n == 6) + 2 * x;
  EXPECT_EQ(classic.violations(sol).size(), 2u);
  EXPECT_EXIT((n + x).violations(sol), ::testing::KilledBySignal(SIGABRT), "^zorv: ");
}

TEST(ArrayConstraints, AreThoseOfTheElements) {
  const auto n = int_var_array("n", {2, 3}, 0, 9);
  const Array<Integer, 1> row_sum = {4, 5};
  const struct {
    Expr declared;
    uint64_t count;
    int violated;  // with all variables 0
  } rows[] = {
      {cons(sum(n, 1) == row_sum), 2, 2},
      {cons(sum(n, 0) <= 7), 3, 0},
      {cons(1 <= n <= 3), 6, 6},
      {cons(0 <= sum(n, 1) <= row_sum), 2, 0},
      {cons(7 >= n >= 1), 6, 6},
      {cons(n[0] >= 1), 3, 3},
      {cons(n[all][1], equal({0, 5})), 2, 0},
      {cons(3 == n[1]), 3, 3},
      {cons((sum(n, 1) == row_sum).classic()), 2, 2},
  };
  for (const auto& row : rows) {
    const Model model(row.declared);
    EXPECT_EQ(model.cons_count(), row.count) << &row - rows;
    EXPECT_EQ(row.declared.violation_count(Sol(model)), static_cast<uint64_t>(row.violated))
        << &row - rows;
  }
  const Array<ExprExpr, 1> penalties = (sum(n, 1) == row_sum).classic();
  EXPECT_EQ(str(penalties[1].body()), "n[1][0] +n[1][1] +n[1][2]");
  EXPECT_EQ(Sol(Model(penalties[1]))[penalties[1]], 25);
}

}  // namespace
