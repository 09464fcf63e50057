#include "core/arithmetic.h"

#include "core/bulk.h"
#include "core/simplify.h"
#include "reference/plain_poly.h"
#include "support/random.h"
#include "support/support.h"
#include "zorv/zorv.h"

namespace zorv::test {
namespace {

// Every term written out, slot by slot, the constant first.
std::string slots(const ExprImpl& e) {
  std::string line = coeff_t(e.constant).str();
  for (uint64_t i = 0; i < e.list.size(); ++i) {
    line += " | ";
    append_text(line, e.list[i]);
  }
  return line;
}
// What Boost gets wrong does not compile for coefficients, in templates neither.
template <typename T, typename Use>
constexpr bool compiles(Use) {
  return std::invocable<Use, T&>;
}
#define COMPILES(T, use) compiles<T>([](auto& c) -> decltype(use) { return use; })
#define REFUSED(use) static_assert(COMPILES(int64_t, use) && !COMPILES(coeff_t, use))
REFUSED(++c);
REFUSED(c++);
REFUSED(c >> 1);
REFUSED((c + c) >> size_t{1});
REFUSED(c >>= 1);
static_assert(COMPILES(coeff_t, c += 1) && COMPILES(coeff_t, c <<= 1));

TEST(Arithmetic, LaysProductsOutInAFixedOrder) {
  const uint32_t a = fresh("x"), b = fresh("y"), c = fresh("z");
  const ExprImpl x = var(a), y = var(b), z = var(c);
  const TermImpl t(2, VarList(c));
  EXPECT_EQ(slots((x + coeff_t(1)) * (x + coeff_t(1))), "1 | x | x | x*x");
  EXPECT_EQ(slots((x + 2 * y + coeff_t(3)) * (z + coeff_t(5))),
            "15 | 3*z | 5*x | 10*y | x*z | 2*y*z");
  EXPECT_EQ(slots(sqr(x + y + coeff_t(3))), "9 | x*x | 6*x | 2*x*y | y*y | 6*y");
  EXPECT_EQ(slots(sqr(x + y)), "0 | x*x | 2*x*y | y*y");
  EXPECT_EQ(slots(mul_term(x + y + coeff_t(3), t)), "0 | 6*z | 2*x*z | 2*y*z");
  EXPECT_EQ(slots(mul_var(x + y + coeff_t(3), c)), "0 | 3*z | x*z | y*z");
  EXPECT_EQ(slots(mul_var(x * y + x, c)), "0 | x*y*z | x*z");
  EXPECT_EQ(slots(constant(0) * (x + y)), "0");
  EXPECT_EQ(slots(constant(3) * (x + y)), "0 | 3*x | 3*y");
  EXPECT_EQ(slots(sqr(constant(-4))), "16");
}

// A product with a coefficient of 0 in slot 0 leaves the slot free; the others move up by one.
TEST(Arithmetic, ZeroCoefficientsStayUntilSimplified) {
  const uint32_t a = fresh("x"), b = fresh("y");
  ExprImpl e = var(a) + var(b) + coeff_t(2);
  imul_int(e, 0);
  EXPECT_EQ(slots(e), "0 | 0*y");
  EXPECT_EQ(text(expr_simplify(e)), "0");
  e.list.append(TermImpl(4, VarList(a)));  // the free slot comes first again
  EXPECT_EQ(slots(e), "0 | 4*x | 0*y");
  ExprImpl zero;
  zero.list.append(TermImpl(0, VarList(a, b)));
  EXPECT_EQ(zero.list.size(), 0u);
  zero.list.append(TermImpl(1, VarList(b)));
  EXPECT_EQ(slots(zero), "0 | y");
}

TEST(Arithmetic, OperandsMayAlias) {
  const uint32_t a = fresh("x"), b = fresh("y");
  ExprImpl e = var(a) + 2 * var(b) + coeff_t(3);
  add_poly(e, e);
  EXPECT_EQ(slots(e), "6 | x | 2*y | x | 2*y");
  sub_poly(e, e);
  EXPECT_EQ(e.list.size(), 8u);
  EXPECT_EQ(text(expr_simplify(e)), "0");
  zorv_term* t = zorv_term_create_var_var(Wire(-3), a, b);
  EXPECT_EQ(zorv_term_mul_term_move(t, t), t);
  EXPECT_STREQ(zorv_term_str(t), "9*x*y*x*y");
  zorv_term_destroy(t);
  zorv_expr* f = zorv_expr_create_add_var_var(a, b);
  for (int i = 0; i < 6; ++i) zorv_expr_iadd_term(f, zorv_expr_term_at(f, 1));
  EXPECT_STREQ(zorv_expr_str(f), "x +y +y +y +y +y +y +y");
  zorv_expr_imul_expr(f, f);
  EXPECT_EQ(zorv_expr_term_count(f), 64u);
  zorv_expr_destroy(f);
}

TEST(Arithmetic, DividesExactlyOrAborts) {
  const uint32_t a = fresh("x");
  const auto divided = [](ExprImpl e, int c) { return idiv_int(e, c), slots(e); };
  EXPECT_EQ(divided(-4 * var(a) + coeff_t(6), 2), "3 | -2*x");
  EXPECT_EQ(divided(-4 * var(a) + coeff_t(6), -2), "-3 | 2*x");
  EXPECT_FATAL(divided(2 * var(a) + coeff_t(3), 2), "Indivisible division in Expr constant");
  EXPECT_FATAL(divided(3 * var(a) + coeff_t(3), 2), "Indivisible division in Expr constant");
  EXPECT_FATAL(divided(3 * var(a) + coeff_t(2), 2), "Indivisible division in Expr term");
  EXPECT_FATAL(divided(var(a) * var(a) - 3 * var(a), 2), "Indivisible division in Expr term");
  EXPECT_FATAL(divided(constant(0), 0), "Division by zero");
  TermImpl t(-4, VarList(a));
  idiv(t, 2);
  EXPECT_EQ(t.coeff, -2);
  EXPECT_FATAL(idiv(t, 3), "Indivisible division in Term");
  EXPECT_FATAL(idiv(t, 0), "Division by zero");
}

// Sums and products of random polynomials, with coefficients around the limb borders, against the
// same done on values; small operands, and operands large enough for threads.
TEST(Arithmetic, AgreesWithArithmeticOnValues) {
  Random random(6);
  for (const uint64_t n : {0, 1, 2, 5, 160}) {
    for (int round = 0; round < (n == 160 ? 2 : 40); ++round) {
      const auto poly = [&](uint64_t terms) {
        ExprImpl e(below(random, 2) == 0 ? coeff_t(0) : troublesome(random));
        for (uint64_t i = 0; i < terms; ++i) {
          VarList vars;
          for (uint64_t d = below(random, 4); d > 0; --d) {
            vars.append(static_cast<uint32_t>(below(random, 5)));
          }
          e.list.append(TermImpl(troublesome(random), std::move(vars)));
        }
        return e;
      };
      const ExprImpl a = poly(n), b = poly(n + below(random, 3));
      const coeff_t c = troublesome(random);
      Assignment values;
      for (uint32_t v = 0; v < 5; ++v) values[v] = troublesome(random);
      const coeff_t x = plain_value(a, values), y = plain_value(b, values);
      const auto value = [&](const ExprImpl& e) { return plain_value(e, values); };
      EXPECT_EQ(value(a + b), coeff_t(x + y));
      EXPECT_EQ(value(a - b), coeff_t(x - y));
      EXPECT_EQ(value(a * b), coeff_t(x * y));
      EXPECT_EQ(value(sqr(a)), coeff_t(x * x));
      EXPECT_EQ(value(c * a), coeff_t(c * x));
      EXPECT_EQ(value(mul_var(a, 3)), coeff_t(x * values[3]));
      EXPECT_EQ(value(mul_term(a, TermImpl(c, VarList(1, 2)))),
                coeff_t(x * c * values[1] * values[2]));
      EXPECT_TRUE(plain_poly(sqr(a)) == plain_poly(a * a));
    }
  }
}

TEST(Arithmetic, LongListsKeepTheirOrder) {
  for (const uint32_t n : {9'999u, 10'000u, 25'000u}) {
    ExprImpl e(2);
    for (uint32_t i = 0; i < n; ++i) e.list.append(TermImpl(i + 1, VarList(i)));
    imul_int(e, 6);
    negate(e);
    idiv_int(e, -3);
    const ExprImpl copy = e;
    const ExprImpl times = mul_var(copy, n);
    const ExprImpl product = copy * (var(n) + coeff_t(1));
    ASSERT_EQ(product.list.size(), 2 * n + 1u);
    for (uint32_t i = 0; i < n; ++i) {
      ASSERT_EQ(copy.list[i].coeff, 2 * (i + 1));
      ASSERT_EQ(times.list[i + 1].vars, VarList(i, n));
      ASSERT_EQ(product.list[i + 1].vars, VarList(i));
      ASSERT_EQ(product.list[n + 1 + i].vars, VarList(i, n));
    }
  }
}

TEST(Bulk, LoadsBehindTheEntriesAndNeverIntoTheFirstSlot) {
  const uint32_t a = fresh("x"), b = fresh("y"), c = fresh("z");
  uint64_t limbs[] = {1, 2, 3};
  const CoeffWire coeffs[] = {
      {1, 1, limbs}, {-1, 1, limbs + 1}, {0, 0, nullptr}, {1, 1, limbs + 2}};
  const uint32_t degrees[] = {0, 3, 1, 2};
  const uint32_t literals[] = {c, b, a, a, b, a};
  zorv_expr* e = zorv_expr_create_from_bulk(Wire(5), 4, coeffs, degrees, literals);
  EXPECT_STREQ(zorv_expr_str(e), "5 +1 -2*z*y*x +0*x +3*y*x");
  EXPECT_EQ(zorv_expr_term_count(e), 4u);
  zorv_expr_iadd_var(e, c);  // fills the free slot in front
  EXPECT_STREQ(zorv_expr_str(e), "5 +z +1 -2*z*y*x +0*x +3*y*x");
  zorv_expr_iadd_terms_bulk(e, Wire(-5), 0, nullptr, nullptr, nullptr);
  EXPECT_STREQ(zorv_expr_str(e), "z +1 -2*z*y*x +0*x +3*y*x");
  EXPECT_EQ(zorv_expr_term_count_degree(e, 0), 1u);
  EXPECT_EQ(zorv_expr_term_count_degree(e, 1), 2u);
  EXPECT_EQ(zorv_expr_max_degree(e), 3u);
  zorv_expr_destroy(e);

  const uint32_t n = 20'000;
  std::vector<uint64_t> numbers(n);
  std::vector<CoeffWire> many(n);
  std::vector<uint32_t> many_degrees(n), many_literals;
  for (uint32_t i = 0; i < n; ++i) {
    numbers[i] = i + 1;
    many[i] = {1, 1, &numbers[i]};
    many_degrees[i] = i % 5;
    for (uint32_t d = 0; d < i % 5; ++d) many_literals.push_back(i + d);
  }
  ExprImpl loaded;
  append_bulk(loaded, n, many.data(), many_degrees.data(), many_literals.data());
  for (uint32_t i = 0; i < n; ++i) {
    ASSERT_EQ(loaded.list[i].coeff, i + 1);
    ASSERT_EQ(loaded.list[i].vars.degree(), i % 5);
    if (i % 5 == 4) {
      ASSERT_EQ(loaded.list[i].vars[3], i + 3);
    }
  }
}

}  // namespace
}  // namespace zorv::test
