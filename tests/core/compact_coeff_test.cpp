#include "core/compact_coeff.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/arithmetic.h"
#include "support/random.h"

namespace zorv::test {
namespace {

// Both sides of every border: of the small values, of one, two and three limbs.
std::vector<coeff_t> edges() {
  std::vector<coeff_t> values;
  for (const int power : {0, 1, 30, 31, 32, 61, 62, 63, 64, 65, 127, 128, 129, 192, 300}) {
    for (const int offset : {-2, -1, 0, 1, 2}) {
      values.push_back((coeff_t(1) << power) + offset);
      values.push_back(-values.back());
    }
  }
  return values;
}

void expect_value(const CompactCoeff& c, const coeff_t& value) {
  ASSERT_EQ(coeff_t(c), value);
  // One value, one form.
  ASSERT_EQ(c.is_small(), CompactCoeff::kLeastSmall <= value && value <= CompactCoeff::kMostSmall);
  ASSERT_EQ(c, CompactCoeff(value));
  ASSERT_EQ(is_zero(c), value == 0);
  ASSERT_EQ(is_one(c), value == 1);
  ASSERT_EQ(is_negative(c), value < 0);
}

TEST(CompactCoeff, CountsLikeUnboundedIntegersAroundEveryBorder) {
  const std::vector<coeff_t> values = edges();
  for (const coeff_t& a : values) {
    expect_value(CompactCoeff(a), a);
    expect_value(-CompactCoeff(a), -a);
    for (const coeff_t& b : values) {
      const CompactCoeff x = a, y = b;
      expect_value(x + y, a + b);
      expect_value(x - y, a - b);
      expect_value(x * y, a * b);
      ASSERT_EQ(x == y, a == b);
      expect_value((x + y) - y, a);  // back over the border
      coeff_t sum = a, difference = a, product = a;
      sum += y;
      difference -= y;
      product *= y;
      ASSERT_EQ(sum, a + b);
      ASSERT_EQ(difference, a - b);
      ASSERT_EQ(product, a * b);
      if (b == 0) continue;
      CompactCoeff quotient = x * y;
      ASSERT_TRUE(divide_exactly(quotient, y));
      expect_value(quotient, a);
      ASSERT_EQ(divide_exactly(quotient, y), a % b == 0);
    }
  }
}

TEST(CompactCoeff, TakesEveryBuiltInInteger) {
  expect_value(INT64_MAX, INT64_MAX);
  expect_value(INT64_MIN, INT64_MIN);
  expect_value(UINT64_MAX, UINT64_MAX);
  expect_value(uint32_t{0xFFFFFFFF}, 0xFFFFFFFF);
  expect_value(true, 1);
}

// Copies share what a large value stands in, and none of them sees what happens to another.
TEST(CompactCoeff, CopiesAreIndependent) {
  for (const coeff_t& value : edges()) {
    const CompactCoeff original = value;
    std::vector<CompactCoeff> copies(5, original);
    copies[0] += copies[0];
    copies[1] -= copies[1];
    copies[2] *= copies[2];
    copies[3].negate();
    CompactCoeff moved = std::move(copies[4]);
    expect_value(copies[4], 0);  // NOLINT(bugprone-use-after-move): a moved-from one is 0
    moved += 1;
    copies[4] = moved;
    copies[4] = *&copies[4];
    const coeff_t expected[] = {value * 2, 0, value * value, -value, value + 1};
    for (size_t i = 0; i < copies.size(); ++i) expect_value(copies[i], expected[i]);
    expect_value(original, value);
  }
}

}  // namespace
}  // namespace zorv::test
