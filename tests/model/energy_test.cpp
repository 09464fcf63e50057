#include "integer/int_var.h"
#include "model/compiled.h"
#include "reference/plain_energy.h"
#include "support/random.h"

namespace zorv::test {
namespace {

// One body value and what it costs, for each shape and set.
TEST(Energy, PenaltyOfABodyValue) {
  const uint32_t atom = zorv_new_int_var("s", Wire(-100), Wire(100));
  const ExprImpl s = var(atom);
  const std::vector<Interval> gaps = {{1, 2}, {5, 5}};
  const struct {
    ExprImpl e;
    int value;
    int energy;
  } rows[] = {
      {cons_between(s, 0, 4), 0, 0},
      {cons_between(s, 0, 4), 4, 0},
      {cons_between(s, 0, 4), -1, 1},
      {cons_between(s, 0, 4), 7, 9},
      {clone_mul_int(cons_between(s, 0, 4), 3), 8, 48},
      {clone_mul_int(abs_term(s, 1), 3), -4, 12},
      {clone_mul_int(abs_term(s, 2), 3), -4, 48},
      {clone_mul_int(cons_between(s, 0, 0), -2), 3, -18},  // a reward for violation
      {relu_term(s - 10, 1), 13, 3},
      {relu_term(s - 10, 1), -50, 0},
      {cons_equal(s, gaps), 1, 0},
      {cons_equal(s, gaps), 3, 1},
      {cons_equal(s, gaps), 4, 1},
      {cons_equal(s, gaps), 8, 9},
      {cons_equal(s, gaps), -2, 9},
      {cons_equal(s, {{5, 5}, {1, 2}}), 3, 1},  // the nearest one, wherever it stands
      {cons_between(2 * s * s - 1, 0, 10), 3, 49},
  };
  for (const auto& row : rows) {
    const Model m(row.e);
    const Solution sol(m);
    zorv_sol_set_int(sol, atom, Wire(row.value));
    EXPECT_EQ(sol.compute(), row.energy) << "at " << row.value;
    EXPECT_EQ(sol.eval(row.e), row.energy) << "at " << row.value;
  }
}

// Random expressions over a few variables, with constraints of all kinds.
class RandomExpressions {
 public:
  explicit RandomExpressions(Random& random) : random_(random) {
    for (int i = 0; i < 5; ++i) binaries_.push_back(fresh());
    atoms_ = {zorv_new_int_var("a", Wire(-3), Wire(4)),
              zorv_new_int_var("b", Wire(-(coeff_t(1) << 90)), Wire(coeff_t(1) << 140))};
  }

  ExprImpl draw() {
    ExprImpl e = polynomial(5, kNegated | kAtoms);
    for (uint64_t n = below(random_, 4); n > 0; --n) {
      iadd_expr(e, clone_mul_int(constraint(), troublesome(random_) * 2 + 1));
    }
    return e;
  }

  Assignment assignment() {
    Assignment values;
    for (const uint32_t v : binaries_) values[v] = below(random_, 2);
    for (const uint32_t a : atoms_) {
      const IntVarGroup& group = int_var_bounds(a);
      const coeff_t ends[] = {group.lo, group.hi, group.lo + 1, 0, 2};
      values[a] = ends[below(random_, 5)];
    }
    return values;
  }

 private:
  enum { kNegated = 1, kAtoms = 2 };

  ExprImpl literal(int kinds) {
    if ((kinds & kAtoms) != 0 && below(random_, 4) == 0) return var(atoms_[below(random_, 2)]);
    const uint32_t v = binaries_[below(random_, binaries_.size())];
    return var((kinds & kNegated) != 0 && below(random_, 2) == 0 ? v | kNegationBit : v);
  }

  ExprImpl polynomial(uint64_t max_degree, int kinds) {
    ExprImpl sum = constant(troublesome(random_));
    for (uint64_t n = below(random_, 7); n > 0; --n) {
      ExprImpl product = constant(troublesome(random_));
      for (uint64_t d = below(random_, max_degree + 1); d > 0; --d) {
        product = product * literal(kinds);
      }
      sum = sum + product;
    }
    return sum;
  }

  ExprImpl constraint() {
    const coeff_t low = troublesome(random_);
    const coeff_t high = low + below(random_, 5);
    switch (below(random_, 5)) {
      case 0:
        return cons_between(polynomial(1, kNegated | kAtoms), low, high);
      case 1:  // in nonlinear bodies negated literals may survive, which no model takes
        return cons_between(polynomial(4, kAtoms), low, high);
      case 2:
        return cons_equal(polynomial(1, kNegated | kAtoms), {{low, high}, {-high, -low}, {0, 0}});
      case 3:
        return abs_term(polynomial(1, kNegated | kAtoms), 1 + below(random_, 2));
      default:
        return cons_mark(polynomial(3, kNegated));
    }
  }

  Random& random_;
  std::vector<uint32_t> binaries_, atoms_;
};

TEST(Energy, AgreesWithTheDefinition) {
  const uint64_t seed = 2026;
  SCOPED_TRACE(seed);
  Random random(seed);
  RandomExpressions expressions(random);
  for (int round = 0; round < 300; ++round) {
    const ExprImpl e = expressions.draw();
    const ExprImpl simplified = binary(e);
    const Model m(simplified);
    const Solution sol(m);
    for (int k = 0; k < 5; ++k) {
      const Assignment values = expressions.assignment();
      for (const uint32_t v : m->variables) {
        zorv_sol_set(sol, v, static_cast<int>(values.at(v)));
      }
      for (const uint32_t a : m->int_atoms) {
        zorv_sol_set_int(sol, atom_literal(a), Wire(values.at(atom_literal(a))));
      }
      ASSERT_EQ(sol.compute(), plain_energy(e, values)) << "round " << round << ": " << text(e);
      ASSERT_EQ(sol.eval(simplified), sol->energy) << "round " << round << ": " << text(e);
    }
  }
}

TEST(Energy, OfAFreshSolutionIsComputed) {
  const uint32_t x = fresh(), atom = zorv_new_int_var("n", Wire(-3), Wire(3));
  const struct {
    ExprImpl e;
    int energy;
  } rows[] = {{constant(9), 9},
              {var(x) + coeff_t(1), 1},
              {2 * var(atom) + var(x), -6},
              {cons_between(var(atom) + var(x), 0, 0), 9}};
  for (const auto& row : rows) {
    const Model m(row.e);
    EXPECT_EQ(Solution(m)->energy, row.energy);
  }
}

}  // namespace
}  // namespace zorv::test
