#include "integer/binarize.h"

#include "constraints/describe.h"
#include "integer/int_var.h"
#include "reference/plain_rewrites.h"
#include "support/small_polynomials.h"

namespace zorv::test {
namespace {

// The series in another way than the library's: doubled while it fits, then what is left.
std::vector<coeff_t> plain_series(const coeff_t& range) {
  std::vector<coeff_t> series;
  coeff_t total = 0;
  for (coeff_t power = 1; total + power <= range; power *= 2) {
    series.push_back(power);
    total += power;
    if (power > range / 2) break;
  }
  if (total < range) series.push_back(range - total);
  return series;
}

TEST(EncodingOf, IsTheSeriesOverBitsOfItsOwn) {
  std::vector<std::pair<coeff_t, coeff_t>> ranges = {{-(coeff_t(1) << 64), coeff_t(1) << 130}};
  for (int r = 1; r < 70; ++r) ranges.push_back({r - 30, 2 * r - 30});
  for (const auto& [lo, hi] : ranges) {
    const uint64_t before = var_count();
    const uint32_t a = new_int_var("n", lo, hi);
    std::vector<coeff_t> series;
    for (const auto& [c, bit] : encoding_of(a)) {
      EXPECT_EQ(bit, before + series.size());
      EXPECT_STREQ(zorv_var_str(bit), ("n#" + std::to_string(series.size())).c_str());
      series.push_back(c);
    }
    EXPECT_EQ(series, plain_series(hi - lo)) << hi - lo;
    EXPECT_EQ(encoding_of(a), encoding_of(a | kNegationBit));
    EXPECT_EQ(var_count(), before + series.size());  // asked for again, made once
  }
  EXPECT_FATAL(encoding_of(fresh()), "binarize: not an integer variable index");
}

class Binarize : public ::testing::Test {
 protected:
  const uint32_t x_ = fresh("x"), y_ = fresh("y");
  const uint32_t a_ = new_int_var("a", -1, 1), b_ = new_int_var("b", 2, 3);
  const ExprImpl x = var(x_), y = var(y_), a = var(a_), b = var(b_);
};

TEST_F(Binarize, HoldsForEverySmallPolynomial) {
  const uint64_t seed = 19;
  Random random(seed);
  const auto bit = static_cast<uint32_t>(var_count());
  PlainMap bits;
  binarize(a + b);  // makes the bits, those of a first
  bits[a_] = var(bit) + var(bit + 1) - 1;
  bits[b_] = var(bit + 2) + 2;
  const uint64_t n = for_every_sum(
      products_of({x_, x_ | kNegationBit, a_, b_}, 3), 3, TroublesomePairs(random),
      [&](const ExprImpl& e) {
        const ExprImpl out = binarize(e);
        ASSERT_FALSE(has_int_atom(out));
        ASSERT_EQ(out.attr, kPlainAttr);
        ASSERT_TRUE(same_terms(
            out, has_int_atom(e) ? plain_substitute(e, bits, TermsOfDegree0::kStay) : e));
        for (uint64_t pattern = 0; pattern < 16; ++pattern) {
          Assignment values = values_of({x_, bit, bit + 1, bit + 2}, pattern);
          values[a_] = values[bit] + values[bit + 1] - 1;
          values[b_] = values[bit + 2] + 2;
          ASSERT_EQ(plain_value(out, values), plain_value(e, values)) << text(e);
        }
      });
  EXPECT_EQ(n, 1u + 35 + 35 * 36 / 2 + 35 * 36 * 37 / 6);
  report_proof("Binarize", n, seed);
}

TEST_F(Binarize, MultipliesOutInTheOrderOfTheLiterals) {
  const uint64_t shape[] = {2};
  const ExprImpl block = var(new_int_var_array("n", shape, 1, -3, 4) + 1);
  const ExprImpl c = var(new_int_var("c", 2, 7)), d = var(new_int_var("d", 0, 1));
  ExprImpl zero_terms = x + 0 * (y + a);  // 0*a is left
  ExprImpl of_degree_0 = d + 1;
  of_degree_0.list.append(TermImpl(4, VarList()));
  of_degree_0.list.append(TermImpl(5, VarList(x_, y_)));
  const struct {
    ExprImpl in;
    const char* out;
  } rows[] = {
      {block, "-3 +n[1]#0 +2*n[1]#1 +4*n[1]#2"},
      {c * y, "2*y +c#0*y +2*c#1*y +2*c#2*y"},
      {y * c, "2*y +y*c#0 +2*y*c#1 +2*y*c#2"},
      {3 * d * d, "3*d#0*d#0"},
      {d * b, "2*d#0 +d#0*b#0"},
      {of_degree_0, "1 +d#0 +4 +5*x*y"},  // a term without literals stays one
      {zero_terms, "x"},
  };
  for (const auto& row : rows) EXPECT_EQ(text(binarize(row.in)), row.out) << text(row.in);
}

TEST_F(Binarize, MakesBitsWhereAnAtomIsFirstMet) {
  const uint64_t before = var_count();
  ExprImpl unseen = b + a;
  unseen.list.terms[0].coeff = 0;
  binarize(unseen);
  EXPECT_EQ(var_count(), before + 1);  // b alone
  binarize(unseen * x + a);
  EXPECT_EQ(var_count(), before + 3);
  EXPECT_STREQ(zorv_var_str(static_cast<uint32_t>(before)), "b#0");
  EXPECT_STREQ(zorv_var_str(static_cast<uint32_t>(before + 2)), "a#1");
  binarize(a * b);
  EXPECT_EQ(var_count(), before + 3);
}

TEST_F(Binarize, CopiesWhatHoldsNoAtom) {
  const Handle varint = zorv_varintelem_create("v", Wire(0), Wire(3));
  const ExprImpl zero_terms = 0 * (y + x);
  const Handle copy = zorv_expr_binarize(varint);
  EXPECT_EQ(copy.polynomial(), varint.polynomial());
  EXPECT_EQ(copy.attr(), kPlainAttr);
  EXPECT_TRUE(same_terms(binarize(zero_terms), zero_terms));
}

TEST_F(Binarize, RefusesConstraintsThenUnknownAtoms) {
  const char* constraints =
      "binarize: constraint expressions are not supported — call expand_cons() first, then "
      "binarize the plain penalty form.";
  const Handle one = classic(x, y), sum = zorv_expr_clone_mul_int(one, Wire(2));
  for (const Handle& e : {between(var(kAtomBit | kIndexMask), 0, 1), clone(one), clone(sum)}) {
    EXPECT_FATAL(zorv_expr_binarize(e), constraints);
  }
  EXPECT_FATAL(binarize(a + var(kAtomBit | kIndexMask)), "binarize: unknown integer variable");
}

}  // namespace
}  // namespace zorv::test
