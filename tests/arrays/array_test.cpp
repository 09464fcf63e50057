// What random calls of arrays do not come to: many elements, none, and extents that do not fit.
#include "support/arrays.h"

namespace zorv::test {
namespace {

// The exports that every kind has.
template <typename T>
struct Exports;
#define ZORV_EXPORTS(K, T)                                  \
  template <>                                               \
  struct Exports<T> {                                       \
    static constexpr auto clone = zorv_array_##K##_clone;   \
    static constexpr auto view = zorv_array_##K##_view;     \
    static constexpr auto concat = zorv_array_##K##_concat; \
  };
ZORV_EXPORTS(var, uint32_t)
ZORV_EXPORTS(int, coeff_t)
ZORV_EXPORTS(term, TermImpl)
ZORV_EXPORTS(expr, ExprImpl)
#undef ZORV_EXPORTS

// An element that tells its number. An expression has a tag too, which copies must keep.
template <typename T>
T numbered(uint64_t i) {
  const auto literal = static_cast<uint32_t>(i);
  if constexpr (std::is_same_v<T, uint32_t>) return literal;
  if constexpr (std::is_same_v<T, coeff_t>) return coeff_t(i) << 150;
  if constexpr (std::is_same_v<T, TermImpl>) return term_of(i + 1, {literal, 0, 1});
  if constexpr (std::is_same_v<T, ExprImpl>) {
    ExprImpl e = 3 * var(literal) + var(1) * var(literal) + i;
    e.attr = literal;
    return e;
  }
}

template <typename T>
class Arrays : public ::testing::Test {
 protected:
  static Array<T> numbers(const Shape& shape) { return {shape, numbered<T>}; }

  // `array` has this shape, and the elements with these numbers.
  static void expect(const Array<T>& array, const Shape& shape, const std::vector<uint64_t>& want) {
    ASSERT_EQ(array.shape(), shape);
    ASSERT_EQ(unwrap(static_cast<typename Array<T>::Raw*>(array)).strides,
              row_major_strides(shape));
    ASSERT_EQ(array.size(), want.size());
    for (uint64_t i = 0; i < want.size(); ++i) {
      const T element = numbered<T>(want[i]);
      ASSERT_TRUE(same_value(array[i], element)) << "at " << i;
      ASSERT_EQ(tag_of(array[i]), tag_of(element));
    }
  }
};
using Kinds = ::testing::Types<uint32_t, coeff_t, TermImpl, ExprImpl>;
TYPED_TEST_SUITE(Arrays, Kinds);

// One and the same code runs in order below the threshold and on several threads above it.
TYPED_TEST(Arrays, AreCopiedDeeply) {
  using X = Exports<TypeParam>;
  for (const Shape& shape : {Shape{}, Shape{2, 3}, Shape{2, 0}, Shape{9'999}, Shape{100, 100}}) {
    const Array<TypeParam> a = this->numbers(shape);
    Array<TypeParam> copy = X::clone(a);
    std::vector<uint64_t> all(a.size());
    for (uint64_t i = 0; i < all.size(); ++i) all[i] = i;
    this->expect(copy, shape, all);
    if (a.size() > 0) a[0] = numbered<TypeParam>(5);
    this->expect(copy, shape, all);
  }
}

TYPED_TEST(Arrays, ViewOfNothingReadsNothing) {
  using X = Exports<TypeParam>;
  const Array<TypeParam> empty = this->numbers({2, 0});
  const uint64_t lo[] = {1, 0}, hi[] = {2, 0};
  const struct {
    std::vector<uint8_t> drop;
    Shape shape;
  } rows[] = {{{0, 0}, {1, 0}}, {{1, 0}, {0}}, {{0, 1}, {1}}, {{1, 1}, {}}, {{}, {}}, {{0}, {1}}};
  for (const auto& row : rows) {
    const Array<TypeParam> a = X::view(empty, lo, hi, row.drop.data(), row.drop.size());
    ASSERT_EQ(a.shape(), row.shape);
    for (uint64_t i = 0; i < a.size(); ++i) EXPECT_TRUE(same_value(a[i], TypeParam()));
  }
}

TYPED_TEST(Arrays, ConcatTakesTurnsBehindTheAxis) {
  using X = Exports<TypeParam>;
  const struct {
    Shape a, b;
    int axis;
    Shape shape;
    std::vector<uint64_t> from_both;  // elements of `b` plus 100
  } rows[] = {
      {{2}, {3}, 0, {5}, {0, 1, 100, 101, 102}},
      {{2, 2}, {1, 2}, 0, {3, 2}, {0, 1, 2, 3, 100, 101}},
      {{2, 2}, {2, 1}, 1, {2, 3}, {0, 1, 100, 2, 3, 101}},
      {{2, 1, 2}, {2, 1, 2}, 1, {2, 2, 2}, {0, 1, 100, 101, 2, 3, 102, 103}},
      // Only an empty result has nothing to take.
      {{0, 3}, {2, 3}, 0, {2, 3}, {100, 101, 102, 103, 104, 105}},
      {{2, 2}, {2, 0}, 1, {2, 2}, {0, 1, 2, 3}},
      {{2, 0}, {3, 0}, 0, {5, 0}, {}},
      {{0}, {0}, 0, {0}, {}},
      // The other axes are those of the first array.
      {{1, 2}, {1, 7}, 0, {2, 2}, {0, 1, 100, 101}},
  };
  for (const auto& row : rows) {
    const Array<TypeParam> b = {row.b, [](uint64_t i) { return numbered<TypeParam>(100 + i); }};
    this->expect(X::concat(this->numbers(row.a), b, row.axis), row.shape, row.from_both);
  }
}

TEST(ArrayRecords, AreFilledWithAConstant) {
  const coeff_t wide = coeff_t(1) << 130;
  for (const Shape& shape : {Shape{}, Shape{2, 3}, Shape{0}, Shape{9'999}, Shape{10'000}}) {
    const size_t rank = shape.size();
    const uint32_t x = 3 | kNegationBit;
    const Array ints = zorv_array_expr_create_constant_int(shape.data(), rank, Wire(wide));
    const Array vars = zorv_array_expr_create_constant_var(shape.data(), rank, x);
    const Array zeros = zorv_array_int_create_zero(shape.data(), rank);
    const Array none = zorv_array_expr_create_zero(shape.data(), rank);
    ASSERT_EQ(ints.shape(), shape);
    ASSERT_EQ(vars.shape(), shape);
    for (uint64_t i = 0; i < element_count(shape); ++i) {
      ASSERT_TRUE(same_terms(ints[i], constant(wide)));
      ASSERT_TRUE(same_terms(vars[i], var(x)));
      ASSERT_EQ(zeros[i], 0);
      ASSERT_TRUE(same_terms(none[i], ExprImpl()));
    }
  }
}

}  // namespace
}  // namespace zorv::test
