// VarInt values and degree reduction by the array, and the values of arrays on a solution.
#include "integer/degree_reduction.h"
#include "integer/varint.h"
#include "model/model_handles.h"
#include "support/arrays.h"

namespace zorv::test {
namespace {

TEST(VarIntArray, IsOneBlockOfBits) {
  const struct {
    Shape shape;
    int lo, hi;
    std::string text;
  } rows[] = {
      {{2}, 0, 5, "{n[0][0] +2*n[0][1] +2*n[0][2],n[1][0] +2*n[1][1] +2*n[1][2]}"},
      {{1, 2}, -1, 0, "{{-1 +n[0][0][0],-1 +n[0][1][0]}}"},  // a single bit has an axis, too
      {{2}, 4, 4, "{4,4}"},
      {{1, 1}, 3, 1, "{{3}}"},
      {{}, 0, 3, "{}"},
      {{0}, 0, 3, "{}"},
      {{2, 0}, 0, 3, "{{},{}}"},
  };
  for (const auto& row : rows) {
    const uint64_t before = var_count(), records = varint_record_count();
    const Array a = zorv_array_varint_create_uniform("n", row.shape.data(), row.shape.size(),
                                                     Wire(row.lo), Wire(row.hi));
    ASSERT_EQ(a.shape(), row.shape);
    EXPECT_EQ(zorv_array_expr_str(a), row.text);
    const uint64_t bits = a.size() == 0 ? 0 : varint_record(a[0].attr).vars.size();
    EXPECT_EQ(var_count(), before + a.size() * bits);
    ASSERT_EQ(varint_record_count(), records + a.size());
    for (uint64_t i = 0; i < a.size(); ++i) {
      ASSERT_EQ(a[i].attr, records + i);
      const VarIntRecord& record = varint_record(a[i].attr);
      EXPECT_EQ(record.element, i);
      EXPECT_EQ(record.min, row.lo);
      EXPECT_EQ(record.max, row.hi);
      EXPECT_EQ(record.name_index, varint_record(a[0].attr).name_index);
      ASSERT_EQ(record.vars.size(), bits);
      for (uint64_t k = 0; k < bits; ++k) EXPECT_EQ(record.vars[k], before + i * bits + k);
      ExprImpl polynomial = constant(row.lo);
      for (uint64_t k = 0; k < bits; ++k) {
        polynomial.list.append(term_of(record.coeffs[k], {record.vars[k]}));
      }
      EXPECT_TRUE(same_terms(a[i], polynomial));
    }
  }
  // The table of names has one entry for the array, with its shape.
  const uint64_t shape[] = {2, 2};
  const auto& names = VarRegistry::instance().int_arrays;
  const uint64_t before = names.size();
  const Array a = zorv_array_varint_create_uniform(nullptr, shape, 2, Wire(0), Wire(1));
  ASSERT_EQ(names.size(), before + 1);
  EXPECT_EQ(names[before].shape, Shape({2, 2}));
  EXPECT_EQ(zorv_expr_str(zorv_array_expr_ref(a, 3)), names[before].name + "[1][1][0]");
}

TEST(ArrayReduce, ReducesElementsInFlatOrder) {
  const uint32_t x = fresh("x"), y = fresh("y"), z = fresh("z");
  const ExprImpl xyz = var(x) * var(y) * var(z);
  const Handle declared = between(var(x), 0, 1);
  zorv_expr_iadd_expr(declared, borrow(-1 * xyz));
  const std::vector<ExprImpl> e = {xyz, var(x) * var(y) + 1, unwrap(declared), -2 * xyz};
  const Array<ExprImpl> a({2, 2}, [&](uint64_t i) { return e[i]; });
  auto next = static_cast<uint32_t>(var_count());
  const uint32_t first = next;
  const Array reduced = zorv_array_expr_reduce(a);  // does not mind what would be lost
  ASSERT_EQ(reduced.shape(), a.shape());
  for (uint64_t i = 0; i < 4; ++i) {
    EXPECT_TRUE(plain_poly(reduced[i]) == plain_reduce(e[i], next));
    EXPECT_EQ(reduced[i].attr, kPlainAttr);
  }
  ASSERT_EQ(next, first + 3);
  EXPECT_EQ(var_count(), next);
  const uint64_t number = std::stoull(std::string(zorv_var_str(first)).substr(2));
  for (uint64_t i = 0; i < 3; ++i) {
    EXPECT_EQ(zorv_var_str(first + static_cast<uint32_t>(i)),
              "{r" + std::to_string(number + i) + "}");
  }
}

}  // namespace
}  // namespace zorv::test
