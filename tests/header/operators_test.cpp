// Every pair of kinds of operands under every operator, held against integer arithmetic on all
// assignments of the variables.
#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <tuple>

#include "zorv/zorv.hpp"

namespace {

using boost::multiprecision::cpp_int;
using namespace zorv;

const Var x = var("x"), y = var("y");
const IntVar n = int_var("n", -2, 3);
const VarInt v("v", -1, 2);  // two bits

struct Point {
  int x, y, n, v;

  std::vector<Assignment> assignments() const {
    const int rest = v + 1;  // 1 and 2 are the coefficients of the bits
    return {{::x, x}, {::y, y}, {::n, n}, {::v.bit(0), rest % 2}, {::v.bit(1), rest / 2}};
  }
};

std::vector<Point> all_points() {
  std::vector<Point> points;
  for (int i = 0; i < 96; ++i) points.push_back({i % 2, i / 2 % 2, i / 4 % 6 - 2, i / 24 - 1});
  return points;
}

// An operand and what it is worth at a point.
template <typename Make, typename Value>
struct Kind {
  const char* name;
  Make make;  // a fresh operand, of the type and value category under test
  Value value;
};
template <typename Make, typename Value>
Kind(const char*, Make, Value) -> Kind<Make, Value>;

Array<Expr, 1> elements = Array<Expr, 1>::zeros({2});
const Expr kept = 2 * x * y - n + 3;

const auto kinds = std::make_tuple(
    Kind{"int", [] { return -3; }, [](const Point&) { return -3; }},
    Kind{"uint64", [] { return uint64_t{1} << 12; }, [](const Point&) { return 1 << 12; }},
    Kind{"Integer", [] { return Integer(5); }, [](const Point&) { return 5; }},
    Kind{"cpp_int", [] { return cpp_int(-2); }, [](const Point&) { return -2; }},
    Kind{"Var", [] { return x; }, [](const Point& p) { return p.x; }},
    Kind{"~Var", [] { return ~y; }, [](const Point& p) { return 1 - p.y; }},
    Kind{"IntVar", [] { return n; }, [](const Point& p) { return p.n; }},
    Kind{"Term", [] { return -4 * x * n; }, [](const Point& p) { return -4 * p.x * p.n; }},
    Kind{"long Term", [] { return 2 * x * y * n * ~x * ~y * n; },
         [](const Point& p) { return 2 * p.x * p.y * p.n * (1 - p.x) * (1 - p.y) * p.n; }},
    Kind{"Expr", [] { return x + n - 2; }, [](const Point& p) { return p.x + p.n - 2; }},
    Kind{"const Expr&", []() -> const Expr& { return kept; },
         [](const Point& p) { return 2 * p.x * p.y - p.n + 3; }},
    Kind{"ExprRef", [] { return (elements[1] = 3 * y - 1, elements[1]); },
         [](const Point& p) { return 3 * p.y - 1; }},
    Kind{"VarInt", []() -> const VarInt& { return v; }, [](const Point& p) { return p.v; }},
    Kind{"Comparison", [] { return n == 1; },
         [](const Point& p) { return (p.n - 1) * (p.n - 1); }});

template <typename E, typename Value>
void expect_value(const E& e, const Value& value, const std::string& what) {
  for (const Point& p : all_points()) {
    ASSERT_EQ(eval(e, p.assignments()), Integer(value(p)))
        << what << " at " << p.x << p.y << " " << p.n << " " << p.v;
  }
}

template <typename A, typename B>
void check_pair(const A& a, const B& b) {
  const std::string names = std::string(a.name) + " and " + b.name;
  using MadeA = decltype(a.make());
  using MadeB = decltype(b.make());
  if constexpr (detail::Operands<MadeA, MadeB>) {
    expect_value(
        a.make() + b.make(), [&](const Point& p) { return a.value(p) + b.value(p); }, names + " +");
    expect_value(
        a.make() - b.make(), [&](const Point& p) { return a.value(p) - b.value(p); }, names + " -");
    expect_value(
        a.make() * b.make(), [&](const Point& p) { return a.value(p) * b.value(p); }, names + " *");
    Expr e = a.make();
    e += b.make();
    e *= b.make();
    e -= a.make();
    expect_value(
        e, [&](const Point& p) { return (a.value(p) + b.value(p)) * b.value(p) - a.value(p); },
        names + " in place");
  }
}

TEST(Operators, EveryPairOfOperandsComputesWhatIntegersDo) {
  std::apply(
      [](const auto&... a) {
        const auto check_row = [](const auto& left) {
          std::apply([&](const auto&... b) { (check_pair(left, b), ...); }, kinds);
        };
        (check_row(a), ...);
      },
      kinds);
  expect_value(
      kept, [](const Point& p) { return 2 * p.x * p.y - p.n + 3; }, "an operand changed");
}

TEST(Operators, SignsAndExactDivision) {
  EXPECT_EQ(str(-x), "-x");
  EXPECT_EQ(str(-(2 * x * y)), "-2*x*y");
  EXPECT_EQ(str(-(x - 2)), "2 -x");
  EXPECT_EQ(str(+x), "x");
  EXPECT_EQ(str((6 * x - 4) / 2), "-2 +3*x");
  EXPECT_EQ(str(6 * x * y / Integer(-3)), "-2*x*y");
  EXPECT_EXIT((6 * x - 3) / 2, ::testing::KilledBySignal(SIGABRT), "^zorv: ");
}

TEST(Operators, CoefficientsGrowBeyondEveryBuiltInType) {
  const Integer big("1000000000000000000000000000000");
  EXPECT_EQ(str(2 * big * x), str(x * big * 2));
  EXPECT_EQ(str(big * x * -1000 * y), "-1000000000000000000000000000000000*x*y");
  EXPECT_EQ(str(INT64_MAX * x * 2), "18446744073709551614*x");
  EXPECT_EQ(str(INT64_MIN * x * -1), "9223372036854775808*x");
  EXPECT_EQ(str((big * x + UINT64_MAX) * y), "18446744073709551615*y +" + big.str() + "*x*y");
}

TEST(Operators, TermsKeepLiteralsBeyondTheirInnerRoom) {
  Term term = 1;
  std::string text;
  for (int degree = 1; degree <= 20; ++degree) {
    term *= x;
    text += text.empty() ? "x" : "*x";
    const Term copy = term;
    EXPECT_EQ(str(copy), text);
    EXPECT_EQ(str(Expr(copy)), text);
  }
  term *= term;
  EXPECT_EQ(term.degree(), 40u);
}

TEST(Expr, TellsItsPartsAndComesApartIntoTerms) {
  const Expr e = 7 + 3 * x * y - ~x + n * n * y;
  EXPECT_EQ(e.constant(), 7);
  EXPECT_EQ(e.term_count(), 3u);
  EXPECT_EQ(e.term_count(2), 1u);
  EXPECT_EQ(e.max_degree(), 3u);
  EXPECT_TRUE(e.has(n) && e.has(x) && e.has_int_vars());
  std::vector<Term> terms;
  for (const Term& term : e.terms()) terms.push_back(term);
  EXPECT_EQ(str(e.constant() + sum(terms)), str(e));
}

TEST(Expr, RewritesAsTheLibraryDoes) {
  const Expr e = sqr(x + y - 1);
  EXPECT_EQ(str(simplify(e)), "1 -2*x -2*y +x*x +2*x*y +y*y");
  EXPECT_EQ(str(simplify_as_binary(e)), "1 -x -y +2*x*y");
  EXPECT_EQ(str(simplify_as_spin(e)), "3 -2*x -2*y +2*x*y");
  EXPECT_EQ(str(spin_to_binary(binary_to_spin(3 * x))), "6*x");  // twice the value, for one degree
  EXPECT_EQ(str(replace(x * y, {{x, y + 2}})), "2*y +y*y");
  EXPECT_EQ(gcd(6 * x - 9 * y + 12), 3);
  EXPECT_EQ(lower_bound(2 * x - 3 * n), -9);
  EXPECT_EQ(upper_bound(2 * x - 3 * n), 8);
  EXPECT_LE(reduce(x * y * var() * var()).max_degree(), 2u);
  EXPECT_FALSE(binarize(2 * n).has_int_vars());
}

TEST(Sum, OfARangeIsThatOfALoop) {
  const std::vector<Var> vars = {x, y, ~x};
  const std::vector<Term> terms = {2 * x, 3 * x * y * y, -5};
  const std::vector<Expr> exprs = {x + 1, 2 * y, cons(n == 3)};
  EXPECT_EQ(str(sum(vars)), "x +y +~x");
  EXPECT_EQ(str(sum(terms)), str(2 * x + 3 * x * y * y - 5));
  EXPECT_EQ(str(sum(exprs)), "1 +x +2*y");
  EXPECT_TRUE(sum(exprs).is_declared());
  EXPECT_EQ(str(sum(std::vector<IntVar>{})), "0");
}

TEST(VarInt, TellsHowItIsMade) {
  EXPECT_EQ(v.min(), -1);
  EXPECT_EQ(v.max(), 2);
  ASSERT_EQ(v.bit_count(), 2u);
  EXPECT_EQ(v.coeff(1), 2);
  EXPECT_EQ(str(v), "-1 +v[0] +2*v[1]");
  EXPECT_EQ(n.bounds().first, -2);
  EXPECT_EQ(n.bounds().second, 3);
}

}  // namespace
