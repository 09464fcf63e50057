#include "integer/reachable_bounds.h"

#include "integer/int_var.h"
#include "support/support.h"

namespace zorv::test {
namespace {

TEST(ReachableBounds, AddUpTheIntervalsOfTheSimplifiedTerms) {
  const ExprImpl x = var(fresh()), y = var(fresh()), z = var(fresh());
  const ExprImpl not_x = var(x.list.first.vars[0] | kNegationBit);
  const ExprImpl a = var(new_int_var("a", -3, 2)), b = var(new_int_var("b", -5, 4));
  const ExprImpl c = var(new_int_var("c", 2, 6));
  const coeff_t wide = coeff_t(1) << 100;
  const struct {
    ExprImpl e;
    coeff_t lo, hi;
  } rows[] = {
      {constant(5), 5, 5},
      {3 * x - 2 * y + 1, -1, 4},
      {x + x - 2 * x, 0, 0},  // merged first
      {2 * x * x, 0, 2},      // x*x is x
      {4 * not_x, 0, 4},      // 4 - 4 x
      {-7 * not_x * y * z, -7, 0},
      {a, -3, 2},
      {-2 * a + 1, -3, 7},
      {a * b, -12, 15},  // corners 15, -12, -10, 8
      {-1 * a * b, -15, 12},
      {a * a, -6, 9},  // each factor counts on its own
      {a * x, -3, 2},
      {c * x, 0, 6},
      {c * b * a, -72, 90},
      {wide * a * b, -12 * wide, 15 * wide},
      {a - a * x + c, -3 - 2 + 2, 2 + 3 + 6},  // terms are not seen together
  };
  for (const auto& row : rows) {
    const ReachableBounds bounds = reachable_bounds(row.e);
    EXPECT_EQ(bounds.lo, row.lo) << text(row.e);
    EXPECT_EQ(bounds.hi, row.hi) << text(row.e);
  }
}

TEST(ReachableBounds, RefusesAnUnknownAtom) {
  const ExprImpl unknown = var(atom_literal(kIndexMask));
  EXPECT_FATAL(reachable_bounds(unknown), "reachable bounds: unknown integer variable");
}

}  // namespace
}  // namespace zorv::test
