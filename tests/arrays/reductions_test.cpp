// Sums of arrays against plain loops, and one-hot rows.
#include "arrays/reductions.h"

#include "support/arrays.h"

namespace zorv::test {
namespace {

template <typename T, typename Position>
ExprImpl plain_sum(const Array<T>& a, uint64_t n, Position position) {
  ExprImpl sum;
  for (uint64_t j = 0; j < n; ++j) add_to(sum, a[position(j)]);
  return sum;
}

template <typename T>
ExprImpl plain_sum(const Array<T>& a) {
  return plain_sum(a, a.size(), [](uint64_t j) { return j; });
}

Handle sum_of(const Array<uint32_t>& a) { return zorv_array_var_sum(a); }
Handle sum_of(const Array<coeff_t>& a) { return zorv_array_int_sum(a); }
Handle sum_of(const Array<TermImpl>& a) { return zorv_array_term_sum(a); }
Handle sum_of(const Array<ExprImpl>& a) { return zorv_array_expr_sum(a); }
Array<ExprImpl> sums_along(const Array<uint32_t>& a, int k) {
  return zorv_array_var_vector_sum(a, k);
}
Array<ExprImpl> sums_along(const Array<coeff_t>& a, int k) {
  return zorv_array_int_vector_sum(a, k);
}
Array<ExprImpl> sums_along(const Array<TermImpl>& a, int k) {
  return zorv_array_term_vector_sum(a, k);
}
Array<ExprImpl> sums_along(const Array<ExprImpl>& a, int k) {
  return zorv_array_expr_vector_sum(a, k);
}

// The same by the export for elements that stand in no array.
template <typename Run>
std::vector<Handle> sums_of_run(const Run* run, int kind, const Shape& shape, int axis) {
  std::vector<zorv_expr*> out(element_count(without_axis(shape, static_cast<size_t>(axis))));
  zorv_array_vector_sum(run, kind, shape.data(), shape.size(), axis, out.data());
  return {out.begin(), out.end()};
}
std::vector<Handle> sums_of_run(const Array<uint32_t>& a, int axis) {
  return sums_of_run(zorv_array_var_data(a), 1, a.shape(), axis);
}
std::vector<Handle> sums_of_run(const Array<TermImpl>& a, int axis) {
  return sums_of_run(&unwrap(static_cast<zorv_array_term*>(a)).data[0], 2, a.shape(), axis);
}
std::vector<zorv_expr*> pointers_to(const Array<ExprImpl>& a) {
  std::vector<zorv_expr*> pointers;
  for (uint64_t i = 0; i < a.size(); ++i) pointers.push_back(zorv_array_expr_ref(a, i));
  return pointers;
}
std::vector<Handle> sums_of_run(const Array<ExprImpl>& a, int axis) {
  return sums_of_run(pointers_to(a).data(), 0, a.shape(), axis);
}
std::vector<Handle> sums_of_run(const Array<coeff_t>& a, int axis) {
  return sums_of_run(&a, 3, a.shape(), axis);  // there are no integers, there is no such kind
}

template <typename T>
void check_sums(const Array<T>& a) {
  const Handle sum = sum_of(a);
  ASSERT_TRUE(same_terms(unwrap(sum), plain_sum(a)));
  ASSERT_EQ(sum.attr(), kPlainAttr);
  for (size_t axis = 0; axis < a.shape().size(); ++axis) {
    const Shape rest = without_axis(a.shape(), axis);
    const uint64_t length = a.shape()[axis];
    const uint64_t stride = element_count(a.shape(), axis + 1, a.shape().size());
    const Array<ExprImpl> sums = sums_along(a, static_cast<int>(axis));
    const std::vector<Handle> of_run = sums_of_run(a, static_cast<int>(axis));
    ASSERT_EQ(sums.shape(), rest);
    for (uint64_t i = 0; i < sums.size(); ++i) {
      const uint64_t base = i / stride * stride * length + i % stride;
      const ExprImpl want = plain_sum(a, length, [=](uint64_t j) { return base + j * stride; });
      ASSERT_TRUE(same_terms(sums[i], want)) << "at " << i << " along " << axis;
      ASSERT_EQ(sums[i].attr, kPlainAttr);
      // A kind that does not exist adds nothing.
      const bool exists = !std::is_same_v<T, coeff_t>;
      ASSERT_TRUE(same_terms(unwrap(of_run[i]), exists ? want : ExprImpl()));
    }
  }
}

// The pool over and over, from a different element each time.
template <typename T>
void check_sums(const Pools& pools, const Shape& shape) {
  const std::vector<T>& elements = pools.of<T>();
  for (uint64_t from = 0; from < elements.size(); ++from) {
    check_sums(Array<T>(shape, [&](uint64_t i) { return elements[(from + i) % elements.size()]; }));
    if (element_count(shape) > 100) return;
  }
}

TEST(Sums, AgreeWithAPlainLoop) {
  const Pools pools = plain_pools();
  std::vector<Shape> shapes = kShapes;
  // Around the threshold, by the number of elements and by that of sums.
  for (const Shape& shape :
       {Shape{9'999}, Shape{10'000}, Shape{10'000, 2}, Shape{2, 10'001}, Shape{3, 3'334, 1}}) {
    shapes.push_back(shape);
  }
  for (const Shape& shape : shapes) {
    check_sums<uint32_t>(pools, shape);
    check_sums<coeff_t>(pools, shape);
    check_sums<TermImpl>(pools, shape);
    check_sums<ExprImpl>(pools, shape);
    if (HasFatalFailure()) return;
  }
}

TEST(Sums, OfNothingAreZero) {
  EXPECT_TRUE(same_terms(unwrap(Handle(zorv_array_sum(nullptr, 0))), ExprImpl()));
  const Array<TermImpl> zeros({3}, [](uint64_t) { return term_of(0, {1}); });
  EXPECT_STREQ(zorv_expr_str(sum_of(zeros)), "0");
}

// Long sums are made by several threads. They begin with terms that are not in the first slot.
TEST(Sums, OfPointersAreTheSameForAnyNumberOfThreads) {
  const Pools pools = plain_pools();
  const ExprImpl bulk = bulk_built(2, {term_of(5, {1}), term_of(0, {2})});
  for (const uint64_t n : {0, 1, 9'999, 10'000, 30'000}) {
    for (const uint64_t without_first : {0, 3, 20'000}) {
      const Array<ExprImpl> a({n}, [&](uint64_t i) {
        return i < without_first ? bulk : pools.exprs[i % pools.exprs.size()];
      });
      const Handle sum = zorv_array_sum(pointers_to(a).data(), n);
      ASSERT_TRUE(same_terms(unwrap(sum), plain_sum(a)));
      ASSERT_TRUE(same_terms(unwrap(sum_of(a)), unwrap(sum)));
    }
  }
}

// Tags ---------------------------------------------------------------------------------------

class SumTags : public ::testing::Test {
 protected:
  const uint32_t x = fresh("x"), y = fresh("y");
  const ExprImpl g = var(fresh("g")), h = var(fresh("h"));

  // p: plain, v: VarInt, c: one classic, s: a classic sum with a remainder, d: declared,
  // r: declared with a remainder, z: zero
  ExprImpl element(char kind) const {
    if (kind == 'p') return 2 * var(y);
    if (kind == 'v') return unwrap(Handle(zorv_varintelem_create("n", Wire(0), Wire(1))));
    if (kind == 'c') return unwrap(classic(var(x), g));
    if (kind == 'd') return unwrap(between(h, 0, 1));
    if (kind == 'z') return ExprImpl();
    Handle e = kind == 's' ? classic(var(x), h) : between(g, 0, 1);
    if (kind == 's') zorv_expr_iadd_var(e, y);
    if (kind == 'r') zorv_expr_iadd_expr(e, Handle(zorv_cons_mark(Handle(var(y)))));
    return unwrap(e);
  }
  std::vector<ExprImpl> elements(const std::string& kinds) const {
    std::vector<ExprImpl> made;
    for (const char kind : kinds) made.push_back(element(kind));
    return made;
  }
};

TEST_F(SumTags, DeclaredAndClassicDoNotMix) {
  const std::string message =
      "zorv::cons: cannot sum declared and classic penalty-style constraints in one array";
  for (const char* kinds : {"cd", "dc", "psvr"}) {
    const Array<ExprImpl> a(elements(kinds));
    EXPECT_FATAL(sum_of(a), message);
    EXPECT_FATAL(sums_along(a, 0), message);
    EXPECT_FATAL(sums_of_run(a, 0), message);
  }
}

TEST_F(SumTags, OfLongArraysAreInOrder) {
  const Array<ExprImpl> a({10'000}, [&](uint64_t i) {
    return i % 5'000 == 1 ? unwrap(classic(var(x), var(static_cast<uint32_t>(i)))) : var(y);
  });
  const Handle sum = sum_of(a);
  const ConstraintSum entry = constraint_sum(attr_index(sum.attr()));
  ASSERT_EQ(item_count(entry), 2u);
  EXPECT_EQ(text(*item_at(entry, 1).constraint->body), text(var(5'001)));
  EXPECT_EQ(remainder_of(entry).list.size(), 9'998u);
}

// One-hot rows -----------------------------------------------------------------------------------

TEST(OneHot, IsThePositionOfTheOnly1) {
  const coeff_t wide = coeff_t(1) << 64;
  const struct {
    std::vector<coeff_t> slice;
    int position;
  } rows[] = {{{0, 1, 0}, 1}, {{1}, 0},       {{0, 2, 0}, -1},  {{1, 1, 0}, -1},  {{0, 0, 0}, -1},
              {{}, -1},       {{0}, -1},      {{1, 1, -1}, -1}, {{1, -1, 0}, -1}, {{-1, 0, 1}, -1},
              {{2, -1}, -1},  {{0, 0, 1}, 2}, {{1, wide}, -1},  {{wide + 1}, -1}};
  for (const auto& row : rows) {
    const Array<coeff_t> a(row.slice);
    for (const int axis : {0, -1}) {
      const Array index = zorv_array_int_onehot_to_int(a, axis);
      ASSERT_EQ(index.shape(), Shape{1});
      EXPECT_EQ(index[0], row.position) << zorv_array_int_str(a);
    }
  }
}

TEST(OneHot, RunsAlongAnyAxis) {
  // Of shape (2, 3, 2), the ones at (0, 1, 0), (0, 2, 1), (1, 0, 0).
  const Array<coeff_t> a({2, 3, 2}, [](uint64_t i) { return i == 2 || i == 5 || i == 6; });
  const struct {
    int axis;
    Shape shape;
    std::vector<int> indices;
  } rows[] = {{0, {3, 2}, {1, -1, 0, -1, -1, 0}},
              {1, {2, 2}, {1, 2, 0, -1}},
              {2, {2, 3}, {-1, 0, 1, 0, -1, -1}}};
  for (const auto& row : rows) {
    for (const int axis : {row.axis, row.axis - 3}) {
      const Array indices = zorv_array_int_onehot_to_int(a, axis);
      ASSERT_EQ(indices.shape(), row.shape);
      for (uint64_t i = 0; i < indices.size(); ++i) EXPECT_EQ(indices[i], row.indices[i]);
    }
  }
  for (const int axis : {3, 5, -4, INT_MAX, INT_MIN}) {
    EXPECT_EQ(zorv_array_int_onehot_to_int(a, axis), nullptr) << axis;
  }
  const auto zero = [](uint64_t) { return 0; };
  EXPECT_EQ(zorv_array_int_onehot_to_int(Array<coeff_t>({}, zero), 0), nullptr);
  const Array none = zorv_array_int_onehot_to_int(Array<coeff_t>({0, 3}, zero), 0);
  ASSERT_EQ(none.shape(), Shape{3});
  for (uint64_t i = 0; i < 3; ++i) EXPECT_EQ(none[i], -1);
  EXPECT_EQ(Array(zorv_array_int_onehot_to_int(Array<coeff_t>({0, 3}, zero), 1)).size(), 0u);
}

// Unlike the array form this one looks at the sum of the row only.
TEST(OneHot, OfABlockTestsTheSumOfEachRow) {
  const int32_t most = INT32_MAX, least = INT32_MIN;
  const struct {
    Shape shape;
    std::vector<int32_t> bits, indices;
  } rows[] = {
      {{3}, {0, 1, 0}, {1}},
      {{3}, {1, 1, -1}, {1}},
      {{3}, {1, 1, 0}, {-1}},
      {{2}, {2, -1}, {-1}},             // adds up to 1 without any
      {{4}, {most, most, 2, 1}, {-1}},  // 1 only modulo 2^32
      {{4}, {1, least, most, 1}, {3}},
      {{2, 2}, {0, 1, 1, 0}, {1, 0}},
      {{2, 1, 2}, {0, 0, 1, 0}, {-1, 0}},
      {{2, 0}, {}, {-1, -1}},
      {{0, 2}, {}, {}},
      {{}, {1}, {}},
  };
  for (const auto& row : rows) {
    std::vector<int32_t> out(row.indices.size() + 1, 77);  // and one behind, left alone
    zorv_onehot_to_int(row.bits.data(), row.shape.data(), row.shape.size(), out.data());
    std::vector<int32_t> want = row.indices;
    want.push_back(77);
    EXPECT_EQ(out, want);
  }
}

}  // namespace
}  // namespace zorv::test
