// Making arrays, taking them apart, and their elements.
#include "support/arrays.h"
#include "support/random.h"

namespace zorv::test {
namespace {

// The exports that every kind has.
template <typename T>
struct Exports;
#define ZORV_EXPORTS(K, T)                                      \
  template <>                                                   \
  struct Exports<T> {                                           \
    static constexpr auto create = zorv_array_##K##_create;     \
    static constexpr auto clone = zorv_array_##K##_clone;       \
    static constexpr auto destroy = zorv_array_##K##_destroy;   \
    static constexpr auto size = zorv_array_##K##_size;         \
    static constexpr auto ndim = zorv_array_##K##_ndim;         \
    static constexpr auto shape = zorv_array_##K##_shape;       \
    static constexpr auto shape_at = zorv_array_##K##_shape_at; \
    static constexpr auto subarray = zorv_array_##K##_subarray; \
    static constexpr auto view = zorv_array_##K##_view;         \
    static constexpr auto concat = zorv_array_##K##_concat;     \
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

TYPED_TEST(Arrays, AreMadeOfZeros) {
  using X = Exports<TypeParam>;
  const struct {
    Shape shape;
    uint64_t size;
    std::vector<uint64_t> strides;
  } rows[] = {
      {{}, 1, {}},
      {{0}, 0, {1}},
      {{4}, 4, {1}},
      {{2, 3}, 6, {3, 1}},
      {{3, 0}, 0, {0, 1}},
      {{0, 3}, 0, {3, 1}},
      {{4, 1, 2}, 8, {2, 2, 1}},
      {{2, 0, 3}, 0, {0, 3, 1}},
      {{10'000}, 10'000, {1}},
  };
  for (const auto& row : rows) {
    const size_t rank = row.shape.size();
    const Array<TypeParam> a = X::create(row.shape.data(), rank);
    EXPECT_EQ(X::size(a), row.size);
    ASSERT_EQ(X::ndim(a), rank);
    for (size_t k = 0; k < rank; ++k) {
      EXPECT_EQ(X::shape(a)[k], row.shape[k]);
      EXPECT_EQ(X::shape_at(a, static_cast<int>(k)), row.shape[k]);
    }
    EXPECT_EQ(unwrap(static_cast<typename Array<TypeParam>::Raw*>(a)).strides, row.strides);
    for (uint64_t i = 0; i < row.size; ++i) {
      ASSERT_TRUE(same_value(a[i], TypeParam()));
      ASSERT_EQ(tag_of(a[i]), kPlainAttr);
    }
  }
  X::destroy(nullptr);
}

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

TYPED_TEST(Arrays, SubarrayIsASliceOfTheFirstAxis) {
  using X = Exports<TypeParam>;
  EXPECT_EQ(X::subarray(this->numbers({}), 0), nullptr);
  this->expect(X::subarray(this->numbers({4}), 3), {}, {3});
  this->expect(X::subarray(this->numbers({3, 2}), 1), {2}, {2, 3});
  this->expect(X::subarray(this->numbers({2, 2, 2}), 1), {2, 2}, {4, 5, 6, 7});
  this->expect(X::subarray(this->numbers({2, 0}), 1), {0}, {});
}

TYPED_TEST(Arrays, ViewAgreesWithAPlainWalk) {
  using X = Exports<TypeParam>;
  const uint64_t seed = 31;
  SCOPED_TRACE("seed " + std::to_string(seed));
  Random random(seed);
  for (int round = 0; round < 200; ++round) {
    Shape shape(below(random, 4));
    for (uint64_t& extent : shape) extent = 1 + below(random, 4);
    const bool is_long = round == 0;  // enough for several threads
    if (is_long) shape = {101, 101};
    const size_t n = is_long ? 2 : below(random, shape.size() + 1);
    std::vector<uint64_t> lo(n, 1), hi(shape.begin(), shape.begin() + n);
    std::vector<uint8_t> drop(n, 0);
    for (size_t k = 0; !is_long && k < n; ++k) {
      drop[k] = static_cast<uint8_t>(below(random, 3) == 0 ? 1 + below(random, 255) : 0);
      lo[k] = below(random, shape[k]);
      hi[k] = drop[k] != 0 ? 1'000 : lo[k] + below(random, shape[k] - lo[k] + 1);
    }
    Shape kept;
    std::vector<uint64_t> want = {0};  // flat positions, one axis at a time
    for (size_t k = 0; k < shape.size(); ++k) {
      const uint64_t from = k < n ? lo[k] : 0;
      const uint64_t to = k < n && drop[k] == 0 ? hi[k] : from + 1;
      if (k < n && drop[k] == 0) kept.push_back(to - from);
      std::vector<uint64_t> longer;
      for (const uint64_t prefix : want) {
        for (uint64_t i = from; i < to; ++i) longer.push_back(prefix * shape[k] + i);
      }
      want = longer;
    }
    this->expect(X::view(this->numbers(shape), lo.data(), hi.data(), drop.data(), n), kept, want);
    if (this->HasFatalFailure()) return;
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

std::vector<ExprImpl> four_expressions() {
  const uint32_t x = fresh("x");
  return {var(x) - 1, ExprImpl(), constant(-2), 3 * var(x) * var(x | kNegationBit)};
}

TEST(ArrayText, NestsBracesWithoutBlanks) {
  const uint64_t block_shape[] = {2, 2};
  const Array v = zorv_array_var_create_named("v", block_shape, 2);
  EXPECT_STREQ(zorv_array_var_str(v), "{{v[0][0],v[0][1]},{v[1][0],v[1][1]}}");
  EXPECT_STREQ(zorv_array_var_str(Array(zorv_array_var_invert(v))),
               "{{~v[0][0],~v[0][1]},{~v[1][0],~v[1][1]}}");
  const std::vector<ExprImpl> e = four_expressions();
  EXPECT_STREQ(zorv_array_expr_str(Array<ExprImpl>({2, 1, 2}, [&](auto i) { return e[i]; })),
               "{{{-1 +x,0}},{{-2,3*x*~x}}}");
  const Array<TermImpl> terms({term_of(-1, {v[0]}), term_of(0, {}), term_of(0, {v[1]})});
  EXPECT_STREQ(zorv_array_term_str(terms), "{-v[0][0],0,0*v[0][1]}");
  const std::pair<Shape, const char*> rows[] = {
      {{}, "{}"}, {{0}, "{}"}, {{2, 0}, "{{},{}}"}, {{0, 2}, "{}"}, {{1, 1, 1}, "{{{-7}}}"}};
  for (const auto& [shape, line] : rows) {
    EXPECT_STREQ(zorv_array_int_str(Array<coeff_t>(shape, [](auto) { return -7; })), line);
  }
  // Each kind has a buffer of its own.
  const char* of_terms = zorv_array_term_str(terms);
  zorv_array_int_str(Array<coeff_t>({1}, [](auto) { return 5; }));
  EXPECT_STREQ(of_terms, "{-v[0][0],0,0*v[0][1]}");
}

TEST(ArrayElements, AreReadAndWrittenByFlatPosition) {
  const std::vector<ExprImpl> e = four_expressions();
  const Array<ExprImpl> exprs(e);
  const Handle copy = zorv_array_expr_get(exprs, 3);
  zorv_expr_iadd_int(copy, Wire(1));
  EXPECT_TRUE(same_terms(exprs[3], e[3]));  // a copy
  zorv_expr_iadd_int(zorv_array_expr_ref(exprs, 3), Wire(1));
  EXPECT_TRUE(same_terms(exprs[3], unwrap(copy)));  // the element itself
  zorv_array_expr_set(exprs, 3, zorv_array_expr_ref(exprs, 3));
  EXPECT_TRUE(same_terms(exprs[3], unwrap(copy)));
  zorv_array_expr_set(exprs, 0, copy);
  EXPECT_TRUE(same_terms(exprs[0], unwrap(copy)));

  const uint32_t literals[] = {4, 5, 6 | kNegationBit};
  const uint64_t three = 3;
  const Array vars = zorv_array_var_create_data(literals, &three, 1);
  zorv_array_var_set(vars, 1, 9);
  EXPECT_EQ(zorv_array_var_get(vars, 1), 9u);
  EXPECT_EQ(zorv_array_var_data(vars)[2], literals[2]);
  EXPECT_EQ(literals[1], 5u);

  const Wire wide(-(coeff_t(1) << 200)), seven(7);
  const CoeffWire records[] = {*wide, *seven, *wide};
  const Array ints = zorv_array_int_create_data(records, &three, 1);
  zorv_array_int_set(ints, 0, seven);
  const coeff_t values[] = {7, 7, wide.value()};
  for (uint64_t i = 0; i < 3; ++i) {
    Wire out(coeff_t(1) << 100);  // a block that the export has to free
    zorv_array_int_get(ints, i, out.out());
    EXPECT_EQ(out.value(), values[i]);
  }

  const TermImpl t = term_of(3, {1, 2, 3, 4}), u = term_of(-1, {});
  zorv_term* handles[] = {wrap(TermImpl(t)), wrap(TermImpl(u)), nullptr};
  handles[2] = handles[0];
  const Array terms = zorv_array_term_create_data(handles, &three, 1);
  zorv_array_term_set(terms, 2, handles[1]);
  zorv_array_term_set(terms, 0, borrow(terms[0]));
  zorv_term_destroy(handles[0]), zorv_term_destroy(handles[1]);
  const TermImpl* const want[] = {&t, &u, &u};
  for (uint64_t i = 0; i < 3; ++i) {
    zorv_term* got = zorv_array_term_get(terms, i);
    EXPECT_TRUE(same_value(unwrap(got), *want[i]));
    zorv_term_destroy(got);
  }
}

TEST(ArrayElements, KeepTheirTagsUnlessAskedForThePolynomial) {
  const Handle e = classic(var(fresh("x")), var(fresh("g")));
  const Handle v = zorv_varintelem_create("n", Wire(0), Wire(5));
  zorv_expr* const handles[] = {e, v};
  const uint64_t two = 2;
  const Array a = zorv_array_expr_create_data(handles, &two, 1);
  const Array<ExprImpl> copies[] = {Array(zorv_array_expr_clone(a)),
                                    Array(zorv_array_expr_from_expr(a)),
                                    Array(zorv_array_expr_clone_subview(a, 0, 1))};
  for (const Array<ExprImpl>& copy : copies) {
    for (uint64_t i = 0; i < 2; ++i) {
      EXPECT_EQ(Handle(zorv_array_expr_get(copy, i)).attr(), unwrap(handles[i]).attr);
      for (const auto polynomial : {zorv_array_varint_get_expr, zorv_array_exprexpr_get_penalty}) {
        const Handle plain = polynomial(copy, i);
        EXPECT_EQ(plain.attr(), kPlainAttr);
        EXPECT_TRUE(same_terms(unwrap(plain), unwrap(handles[i])));
      }
    }
  }
  zorv_array_expr_set(a, 0, v);
  EXPECT_EQ(a[0].attr, v.attr());
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

TEST(ArrayRecords, OfNewVariablesAreOneBlock) {
  const uint64_t before = var_count();
  const uint64_t shape[] = {2, 3};
  const Array named = zorv_array_var_create_named("block", shape, 2);
  for (uint64_t i = 0; i < 6; ++i) EXPECT_EQ(named[i], before + i);
  EXPECT_STREQ(zorv_var_str(named[5]), "block[1][2]");
  const Array unnamed = zorv_array_var_create_unnamed(shape, 1);
  EXPECT_EQ(unnamed[1], before + 7);
  const std::string name = zorv_var_str(unnamed[0]);
  EXPECT_EQ(name.front(), '{');
  EXPECT_EQ(name.substr(name.size() - 4), "}[0]");
  const Array single = zorv_array_var_create_named("single", nullptr, 0);
  EXPECT_EQ(single[0], before + 8);
  EXPECT_STREQ(zorv_var_str(single[0]), "single");
  EXPECT_EQ(var_count(), before + 9);
}

TEST(ArrayRecords, HaveTailsAsBlocks) {
  const Array<coeff_t> a({2, 3, 2}, [](uint64_t i) { return i; });
  const struct {
    uint64_t offset, tail;
    Shape shape;
  } rows[] = {{0, 3, {2, 3, 2}}, {6, 2, {3, 2}}, {4, 1, {2}}, {11, 0, {}}};
  for (const auto& row : rows) {
    const Array block = zorv_array_int_clone_subview(a, row.offset, row.tail);
    ASSERT_EQ(block.shape(), row.shape);
    for (uint64_t i = 0; i < block.size(); ++i) EXPECT_EQ(block[i], row.offset + i);
  }
}

TEST(ArrayRecords, OfIntegersAreCutDownTo32Bits) {
  const coeff_t two_31 = coeff_t(1) << 31, wide = coeff_t(1) << 200;
  const std::vector<std::pair<coeff_t, int32_t>> rows = {{0, 0},
                                                         {-1, -1},
                                                         {two_31 - 1, INT32_MAX},
                                                         {two_31, INT32_MAX},
                                                         {wide, INT32_MAX},
                                                         {-two_31, INT32_MIN},
                                                         {-two_31 - 1, INT32_MIN},
                                                         {-wide, INT32_MIN},
                                                         {two_31 * 2, INT32_MAX},
                                                         {1 - two_31, INT32_MIN + 1}};
  const Array<coeff_t> a({rows.size()}, [&](uint64_t i) { return rows[i].first; });
  std::vector<int32_t> out(rows.size(), 99);
  zorv_array_int_to_ints(a, out.data());
  for (size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(out[i], rows[i].second) << rows[i].first;
}

}  // namespace
}  // namespace zorv::test
