#include "integer/series.h"

#include <numeric>

#include "support/support.h"

namespace zorv::test {
namespace {

using Series = std::vector<coeff_t>;

// reachable[s] tells whether some of the coefficients add up to s.
std::vector<bool> subset_sums(const Series& series, size_t total) {
  std::vector<bool> reachable(total + 1);
  reachable[0] = true;
  for (const coeff_t& c : series) {
    const auto step = static_cast<size_t>(c);
    for (size_t s = total; s >= step; --s) reachable[s] = reachable[s] || reachable[s - step];
  }
  return reachable;
}

TEST(EncodingSeries, DoublesAndCutsTheLastCoefficientDown) {
  const struct {
    int lo, hi, start;
    Series series;
  } rows[] = {
      {0, 0, 1, {}},         {5, 2, 1, {}},           {0, 1, 1, {1}},
      {0, 2, 1, {1, 1}},     {0, 3, 1, {1, 2}},       {0, 5, 1, {1, 2, 2}},
      {-3, 4, 1, {1, 2, 4}}, {0, 8, 1, {1, 2, 4, 1}}, {-10, 0, 1, {1, 2, 4, 3}},
      {0, 1, 2, {1}},        {0, 2, 2, {2}},          {0, 3, 2, {2, 1}},
      {7, 11, 2, {2, 2}},    {0, 6, 2, {2, 4}},       {0, 0, 2, {}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(encoding_series(row.lo, row.hi, row.start), row.series) << row.lo << " " << row.hi;
  }
}

TEST(EncodingSeries, ReachesEveryValueAndNothingBeyond) {
  for (size_t r = 1; r <= 130; ++r) {
    const std::vector<bool> reached = subset_sums(encoding_series(0, r, 1), r);
    for (size_t s = 0; s <= r; ++s) ASSERT_TRUE(reached[s]) << s << " of " << r;
  }
}

TEST(EncodingSeries, StartingAtTwoLeavesNoTwoNeighboursOut) {
  for (size_t r = 1; r <= 130; ++r) {
    const std::vector<bool> reached = subset_sums(encoding_series(0, r, 2), r);
    ASSERT_TRUE(reached[r]);
    for (size_t s = 1; s <= r; ++s) ASSERT_TRUE(reached[s] || reached[s - 1]) << s << " of " << r;
  }
}

TEST(EncodingSeries, WideRangesAddUpExactly) {
  const coeff_t lo = -(coeff_t(1) << 90), hi = (coeff_t(1) << 130) + 12345;
  const Series series = encoding_series(lo, hi, 1);
  EXPECT_EQ(series.size(), 131u);
  EXPECT_EQ(std::accumulate(series.begin(), series.end(), coeff_t(0)), hi - lo);
}

}  // namespace
}  // namespace zorv::test
