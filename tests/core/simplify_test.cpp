#include "core/simplify.h"

#include "core/parallel.h"
#include "reference/plain_poly.h"
#include "support/random.h"
#include "support/support.h"

namespace zorv::test {
namespace {

struct Row {
  ExprImpl in;
  const char* out;
};

void expect_rows(const std::vector<Row>& rows, ExprImpl (*simplify)(const ExprImpl&)) {
  for (const Row& row : rows) {
    const ExprImpl out = simplify(row.in);
    EXPECT_EQ(text(out), row.out) << text(row.in);
    EXPECT_TRUE(is_canonical(out)) << text(row.in);
    EXPECT_EQ(out.attr, kPlainAttr);
  }
}

TEST(Simplify, MergesAndOrdersWithoutAlgebra) {
  const uint32_t a = fresh("x"), b = fresh("y"), c = fresh("z");
  const ExprImpl x = var(a), y = var(b), z = var(c), not_x = var(a | kNegationBit);
  expect_rows({{constant(0), "0"},
               {constant(7), "7"},
               {x + x, "2*x"},
               {x - x, "0"},
               {x - x + coeff_t(1), "1"},
               {x * y + z, "z +x*y"},     // lower degree first
               {y * x + x * y, "2*x*y"},  // literals sorted
               {x * x, "x*x"},            // no idempotence here
               {x * not_x + not_x, "~x +x*~x"},
               {0 * (x + y) + z, "z"},
               {z * y * x * z, "x*y*z*z"}},
              expr_simplify);
}

TEST(SimplifyAsBinary, AppliesTheRulesOfZeroAndOne) {
  const uint32_t a = fresh("x"), b = fresh("y"), c = fresh("z");
  const ExprImpl x = var(a), y = var(b), z = var(c);
  const ExprImpl nx = var(a | kNegationBit), ny = var(b | kNegationBit);
  expect_rows({{x * x, "x"},  // idempotent
               {nx, "1 -x"},  // a complement is 1 - x
               {nx + x, "1"},
               {3 * x - 3 * x, "0"},
               {x * nx, "0"},
               {nx * x, "0"},
               {nx * nx, "1 -x"},
               {x * ny, "x -x*y"},
               {nx * y, "y -x*y"},
               {2 * nx * ny, "2 -2*x -2*y +2*x*y"},
               {3 * nx * y * z, "3*~x*y*z"},  // kept from degree 3 on
               {y * z * nx, "~x*y*z"},
               {x * nx * y, "0"},
               {y * nx * x, "0"},
               {x * x * y, "x*y"},
               {x * x * nx, "0"},            // behind a run of equal literals
               {nx * nx * y * y, "y -x*y"},  // shrinks to degree 2 first
               {x * x * x, "x"},
               {nx * nx * nx, "1 -x"},
               {(x + y - coeff_t(1)) * (x + y - coeff_t(1)), "1 -x -y +2*x*y"}},
              expr_simplify_as_binary);
}

TEST(SimplifyAsBinary, KeepsPowersOfAtoms) {
  const uint32_t x = fresh("x"), a = kAtomBit | 0x1234567;
  const uint32_t nx = x | kNegationBit;
  const auto literals = [](std::vector<uint32_t> v) {
    return ExprImpl(TermImpl(2, VarList(v.data(), static_cast<uint32_t>(v.size()))));
  };
  const struct {
    ExprImpl in;
    PlainPoly out;
  } rows[] = {
      {literals({a}), {{{a}, 2}}},
      {literals({a, a}), {{{a, a}, 2}}},
      {literals({a, nx}), {{{a}, 2}, {{x, a}, -2}}},  // the extra term may be an atom
      {literals({a, x, a, x}), {{{x, a, a}, 2}}},
      {literals({a, x, a, nx}), {}},
      {literals({a, nx, a}), {{{nx, a, a}, 2}}},
  };
  for (const auto& row : rows) {
    const ExprImpl out = expr_simplify_as_binary(row.in);
    EXPECT_EQ(plain_poly(out), row.out);
    EXPECT_TRUE(is_canonical(out));
  }
}

// Random lists of n terms over few variables, so that most of them meet their like.
ExprImpl random_expr(Random& random, uint64_t n, uint32_t variables, uint32_t max_degree) {
  ExprImpl e(troublesome(random));
  for (uint64_t i = 0; i < n; ++i) {
    VarList vars;
    for (uint64_t d = below(random, max_degree + 1); d > 0; --d) {
      const auto v = static_cast<uint32_t>(below(random, variables));
      vars.append(below(random, 3) == 0 ? v | kNegationBit : v);
    }
    e.list.append(TermImpl(troublesome(random), std::move(vars)));
  }
  return e;
}

TEST(Simplify, AgreesWithThePlainMergeAtEverySize) {
  Random random(3);
  for (const uint64_t n : {1, 2, 3, 50, 9'998, 9'999, 10'000, 10'001, 30'000}) {
    for (const uint32_t max_degree : {1, 2, 5, 12}) {
      const ExprImpl e = random_expr(random, n, 12, max_degree);
      const ExprImpl simplified = expr_simplify(e);
      EXPECT_TRUE(is_canonical(simplified)) << n;
      EXPECT_TRUE(plain_poly(simplified) == plain_poly(e)) << n << " degree " << max_degree;
    }
  }
}

TEST(SimplifyAsBinary, KeepsTheValueUnderEveryAssignment) {
  Random random(4);
  for (int round = 0; round < 300; ++round) {
    const ExprImpl e = random_expr(random, 1 + below(random, 8), 4, 6);
    const ExprImpl simplified = expr_simplify_as_binary(e);
    EXPECT_TRUE(is_canonical(simplified)) << text(e);
    EXPECT_TRUE(plain_poly(expr_simplify_as_binary(simplified)) == plain_poly(simplified));
    for (uint32_t bits = 0; bits < 16; ++bits) {
      Assignment values;
      for (uint32_t v = 0; v < 4; ++v) values[v] = bits >> v & 1;
      ASSERT_EQ(plain_value(simplified, values), plain_value(e, values)) << text(e);
    }
  }
}

TEST(SimplifyAsBinary, IsTheSameAcrossTheParallelThreshold) {
  Random random(5);
  for (const uint64_t n : {9'999, 10'000, 40'000}) {
    const ExprImpl e = random_expr(random, n, 9, 5);
    // In small pieces, none of which goes parallel, and then put together.
    ExprImpl pieces(e.constant);
    for (uint64_t begin = 0; begin < e.list.size(); begin += 1'000) {
      ExprImpl piece;
      for (uint64_t i = begin; i < std::min(begin + 1'000, e.list.size()); ++i) {
        piece.list.append(e.list[i]);
      }
      add_poly(pieces, expr_simplify_as_binary(piece));
    }
    const ExprImpl whole = expr_simplify_as_binary(e);
    EXPECT_TRUE(is_canonical(whole));
    EXPECT_TRUE(plain_poly(whole) == plain_poly(pieces)) << n;
  }
}

// One run of equal terms that spans all segments, with neighbours on both sides.
TEST(MergeTerms, ARunAcrossSeamsIsAddedOnce) {
  const uint32_t x = fresh(), y = fresh(), z = fresh();
  for (const bool in_order : {true, false}) {
    for (const int step : {1, -1}) {
      const int n = 20'000;
      ExprImpl e;
      if (in_order) e.list.append(TermImpl(5, VarList(x)));
      for (int i = 0; i < n; ++i) e.list.append(TermImpl(i % 2 == 0 ? 1 : step, VarList(y)));
      e.list.append(TermImpl(7, VarList(z)));
      if (!in_order) e.list.append(TermImpl(5, VarList(x)));
      PlainPoly expected = {{{x}, 5}, {{z}, 7}};
      if (step == 1) expected[{y}] = n;  // otherwise the run comes to zero
      const ExprImpl simplified = expr_simplify(e);
      EXPECT_TRUE(plain_poly(simplified) == expected);
      EXPECT_TRUE(is_canonical(simplified));
    }
  }
}

TEST(MergeTerms, AllTermsMayCancel) {
  for (const uint32_t degree : {1, 2, 3, 20}) {
    ExprImpl e;
    for (uint32_t i = 0; i < 12'000; ++i) {
      VarList vars(i / 2 % 100);
      for (uint32_t d = 1; d < degree; ++d) vars.append(200 + d);
      e.list.append(TermImpl(i % 2 == 0 ? 3 : -3, std::move(vars)));
    }
    const ExprImpl simplified = expr_simplify(e);
    EXPECT_EQ(text(simplified), "0");
    EXPECT_EQ(simplified.list.terms, nullptr);
    EXPECT_EQ(text(expr_simplify(e - e)), "0");
  }
}

TEST(MergeTerms, SortsDescendingAndBulkLoadedTerms) {
  const uint32_t high = kMaxVariables - 30'000;  // keys of 31 bits
  for (const uint32_t base : {0u, high}) {
    ExprImpl e;
    for (uint32_t i = 25'000; i-- > 0;) {
      e.list.append(TermImpl(i + 1, VarList(base + i, base + i + 1)));
      e.list.append(TermImpl(i + 1, VarList(base + i + 2)));
    }
    const ExprImpl simplified = expr_simplify_as_binary(e);
    EXPECT_TRUE(is_canonical(simplified));
    EXPECT_EQ(simplified.list.size(), 50'000u);
    EXPECT_EQ(simplified.list[0].coeff, 1);
    EXPECT_EQ(simplified.list[0].vars, VarList(base + 2));
    EXPECT_EQ(simplified.list[49'999].vars, VarList(base + 24'999, base + 25'000));
  }
}

}  // namespace
}  // namespace zorv::test
