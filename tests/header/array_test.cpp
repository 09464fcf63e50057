// Arrays: elements and slices, arithmetic against loops over elements, sums and contractions.
#include <gtest/gtest.h>

#include <sstream>

#include "zorv/zorv.hpp"

namespace {

using namespace zorv;

TEST(Array, IsMadeOfBracesContainersAndZeros) {
  const Array<Integer, 2> a = {{1, 2, 3}, {4, 5, 6}};
  EXPECT_EQ(str(a), "{{1,2,3},{4,5,6}}");
  EXPECT_EQ(str(Array<Integer, 2>::from(std::vector<std::vector<long>>{{1}, {2}})), "{{1},{2}}");
  EXPECT_EQ(str(Array<Expr, 1>{var("x") + 1, 3}), "{1 +x,3}");
  EXPECT_EQ(str(Array<Term, 2>::zeros({1, 2})), "{{0,0}}");
  EXPECT_EQ((Array<Integer, 2>{{}, {}}.shape()), (Shape<2>{2, 0}));
  EXPECT_EQ(str(var_array("x", {2, 1})), "{{x[0][0]},{x[1][0]}}");
  EXPECT_EQ(var_int_array("k", {2}, 0, 5)[1].max(), 5);
  EXPECT_EQ(str(int_var_array("n", a.shape(), 0, 5)[1][2]), "n[1][2]");
}

TEST(Array, RowsOfDifferentLengthsThrow) {
  using Rows = std::vector<std::vector<int>>;
  for (const Rows& rows : {Rows{{1, 2}, {3}}, Rows{{}, {1, 2}}, Rows{{1, 2}, {}}}) {
    EXPECT_THROW((Array<Integer, 2>::from(rows)), std::invalid_argument);
  }
  for (const std::vector<Rows>& blocks :
       {std::vector<Rows>{{}, {{1}}}, {{{}}, {{1}}}, {{{1}}, {}}, {{{}, {1}}}}) {
    EXPECT_THROW((Array<Integer, 3>::from(blocks)), std::invalid_argument);
  }
  EXPECT_THROW((Array<Integer, 2>{{}, {1, 2}}), std::invalid_argument);
}

TEST(Array, AxesCountFromBothEndsAndOthersThrow) {
  const Array<Integer, 2> a = {{0, 1, 0}, {1, 0, 0}};
  for (const int axis : {0, 1}) {
    EXPECT_EQ(str(sum(a, axis - 2)), str(sum(a, axis)));
    EXPECT_EQ(str(concat(a, a, axis - 2)), str(concat(a, a, axis)));
    EXPECT_EQ(str(onehot_to_int(a, axis - 2)), str(onehot_to_int(a, axis)));
  }
  for (const int axis : {-3, 2, std::numeric_limits<int>::min()}) {
    EXPECT_THROW(sum(a, axis), std::out_of_range);
    EXPECT_THROW(concat(a, a, axis), std::out_of_range);
    EXPECT_THROW(onehot_to_int(a, axis), std::out_of_range);
  }
  EXPECT_THROW(concat(a, Array<Integer, 2>{{1, 2}}, 0), std::invalid_argument);
  EXPECT_THROW(a[2].array(), std::out_of_range);
  EXPECT_THROW(a[all][3], std::out_of_range);
  EXPECT_THROW(a[range(1, 3)].array(), std::out_of_range);
  EXPECT_THROW(a[0][range(2, 1)], std::out_of_range);
  EXPECT_THROW(cons(sum(a, 1) == (Array<Integer, 1>{1})), std::invalid_argument);
}

TEST(Array, IndicesSlicesAndRangesPickElements) {
  const Array<Integer, 3> a = {{{0, 1}, {10, 11}, {20, 21}}, {{100, 101}, {110, 111}, {120, 121}}};
  EXPECT_EQ(a[1][2][0], 120);
  EXPECT_EQ(str(a[1]), "{{100,101},{110,111},{120,121}}");
  EXPECT_EQ(str(a[1][2]), "{120,121}");
  EXPECT_EQ(str(a[all][2][1]), "{21,121}");
  EXPECT_EQ(str(a[all][range(1, 3)][0]), "{{10,20},{110,120}}");
  EXPECT_EQ(str(a[0][all][1]), "{1,11,21}");
  EXPECT_EQ(str(a[range(1, 2)]), "{{{100,101},{110,111},{120,121}}}");
  EXPECT_EQ(str(a[range(0, 0)][1]), "{}");
  const Array<Integer, 2> middle = a[all][1];
  EXPECT_EQ(str(middle), "{{10,11},{110,111}}");

  std::string flat;
  for (const auto& matrix : a) {
    for (const auto& row : matrix) {
      for (const Integer& element : row) flat += str(element) + " ";
    }
  }
  EXPECT_EQ(flat, "0 1 10 11 20 21 100 101 110 111 120 121 ");
  EXPECT_EQ(str(concat(middle, middle, 1)), "{{10,11,10,11},{110,111,110,111}}");
}

TEST(Array, ElementsOfExpressionsAreChangedInPlace) {
  const Var x = var("x"), y = var("y");
  auto e = Array<Expr, 2>::zeros({2, 2});
  e[0][1] += 3 * x;
  e[0][1] *= y;
  e[1][0] = e[0][1];
  e[1][0] -= 1;
  e[1][1] = 7;
  for (auto&& element : e[1]) EXPECT_FALSE(element->has(var("z")));
  const Array<Expr, 2> copy = e;
  e[1][1] = x;
  EXPECT_EQ(str(copy), "{{0,3*x*y},{-1 +3*x*y,7}}");
  EXPECT_EQ(str(e[1][1].get()), "x");
  EXPECT_EQ(e[0][1]->max_degree(), 2u);

  auto m = Array<Integer, 1>::zeros({2});
  m.set({1}, 5);
  EXPECT_EQ(str(m), "{0,5}");
  auto x2 = var_array("x", {2, 3});
  x2.set({1, 0}, ~x);
  EXPECT_EQ(str(x2[1]), "{~x,x[1][1],x[1][2]}");
}

// Every pair of kinds of arrays, and of an array with a scalar, gives what its elements give.
template <typename A, typename B>
void expect_elementwise(const A& a, const B& b) {
  const auto element = [](const auto& value, uint64_t i) {
    if constexpr (detail::ArrayLike<decltype(value)>) {
      return detail::to_array(value).flat(i);
    } else {
      return value;
    }
  };
  const auto text = [](const auto& value) {
    if constexpr (std::same_as<std::remove_cvref_t<decltype(value)>, Integer>) {
      return str(value);
    } else {
      return str(simplify(value));
    }
  };
  const auto plus = a + b;
  const auto minus = a - b;
  const auto times = a * b;
  for (uint64_t i = 0; i < plus.size(); ++i) {
    const Expr p = element(a, i), q = element(b, i);
    EXPECT_EQ(text(plus.flat(i)), text(p + q));
    EXPECT_EQ(text(minus.flat(i)), text(p - q));
    EXPECT_EQ(text(times.flat(i)), text(p * q));
  }
}

TEST(ArrayArithmetic, IsThatOfTheElements) {
  const auto x = var_array("x", {2, 3});
  const auto n = int_var_array("n", {2, 3}, 0, 5);
  const Array<Integer, 2> k = {{1, -2, 3}, {0, 5, -6}};
  const Array<Term, 2> t = k * x;
  const Array<Expr, 2> e = t + n - 1;
  const auto check_row = [&](const auto& a) {
    expect_elementwise(a, x);
    expect_elementwise(a, n);
    expect_elementwise(a, k);
    expect_elementwise(a, t);
    expect_elementwise(a, e);
    expect_elementwise(a, x[0][0]);
    expect_elementwise(a, -3);
    expect_elementwise(a, 2 * x[1][2] * n[0][0]);
    expect_elementwise(a, x[0][1] + 4);
    expect_elementwise(-7, a);
    expect_elementwise(x[0][0], a);
    expect_elementwise(2 * x[0][0], a);
    expect_elementwise(x[0][1] - 4, a);
  };
  check_row(x);
  check_row(n);
  check_row(k);
  check_row(t);
  check_row(e);
  expect_elementwise(x[0], e[1]);

  auto changed = e;
  changed += x;
  changed *= k;
  changed -= 2;
  EXPECT_EQ(str(simplify(changed)), str(simplify((e + x) * k - 2)));
  auto integers = k;
  integers += k;
  integers *= 3;
  EXPECT_EQ(str(integers / 2), "{{3,-6,9},{0,15,-18}}");
  EXPECT_EQ(str(-k), "{{-1,2,-3},{0,-5,6}}");
  EXPECT_EQ(str((~x)[1]), "{~x[1][0],~x[1][1],~x[1][2]}");
  EXPECT_EQ(str(sqr(x + 0)[0][1]), "x[0][1]*x[0][1]");
  const auto other = Array<Integer, 2>::zeros({3, 2});
  EXPECT_EXIT(x + other, ::testing::KilledBySignal(SIGABRT), "^zorv: ");
}

TEST(ArraySums, AddUpAllOrAlongAnAxis) {
  const auto x = var_array("x", {2, 2});
  EXPECT_EQ(str(sum(x)), "x[0][0] +x[0][1] +x[1][0] +x[1][1]");
  EXPECT_EQ(str(sum(x, 0)), "{x[0][0] +x[1][0],x[0][1] +x[1][1]}");
  EXPECT_EQ(str(sum(x[all][1])), "x[0][1] +x[1][1]");
  const Array<Integer, 2> k = {{0, 0, 1}, {1, 1, 0}};
  EXPECT_EQ(str(sum(k)), "3");
  EXPECT_EQ(str(onehot_to_int(k)), "{2,-1}");
}

TEST(Einsum, ChoosesItsResultByRankAndElements) {
  const Array<Integer, 2> a = {{1, 2}, {3, 4}};
  const auto x = var_array("x", {2, 2});
  const Array<Integer, 2> product = einsum<2>("ij,jk->ik", a, a);
  EXPECT_EQ(str(product), "{{7,10},{15,22}}");
  const Integer trace = einsum<0>("ii->", a);
  EXPECT_EQ(trace, 5);
  const Expr dot = einsum<0>("ij,ij->", a, x);
  EXPECT_EQ(str(dot), "x[0][0] +2*x[0][1] +3*x[1][0] +4*x[1][1]");
  const Array<Expr, 1> rows = einsum<1>("ij->i", x);
  EXPECT_EQ(str(rows[1]), "x[1][0] +x[1][1]");
  EXPECT_EQ(str(einsum<1>("i,i->i", a[1], x[all][0])), "{3*x[0][0],4*x[1][0]}");
}

}  // namespace
