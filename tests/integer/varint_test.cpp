#include "integer/varint.h"

#include <numeric>
#include <thread>

#include "capi/handles.h"
#include "support/support.h"

namespace zorv::test {
namespace {

const char* const kNotAVarInt =
    "VarInt accessor called on a value that is not a VarInt (plain Expr or ExprExpr).";

// A VarInt made by the export.
class VarInt {
 public:
  VarInt(const char* name, const coeff_t& lo, const coeff_t& hi)
      : handle_(zorv_varintelem_create(name, Wire(lo), Wire(hi))) {}
  explicit VarInt(zorv_expr* handle) : handle_(handle) {}
  VarInt(const VarInt&) = delete;
  VarInt& operator=(const VarInt&) = delete;
  ~VarInt() { zorv_varintelem_destroy(handle_); }

  operator zorv_expr*() const { return handle_; }
  std::string str() const { return zorv_expr_str(handle_); }
  coeff_t min() const {
    Wire w;
    return zorv_varintelem_min(handle_, w.out()), w.value();
  }
  coeff_t max() const {
    Wire w;
    return zorv_varintelem_max(handle_, w.out()), w.value();
  }

 private:
  zorv_expr* handle_;
};

TEST(VarInt, IsItsLowerBoundPlusWeightedBits) {
  EXPECT_EQ(VarInt("n", 0, 5).str(), "n[0] +2*n[1] +2*n[2]");
  EXPECT_EQ(VarInt("m", -3, 4).str(), "-3 +m[0] +2*m[1] +4*m[2]");
  EXPECT_EQ(VarInt("b", 0, 1).str(), "b");  // a single bit bears the name itself
  EXPECT_EQ(VarInt("c", 7, 8).str(), "7 +c");
}

TEST(VarInt, EachCreationDrawsAtMostOneGeneratedName) {
  const auto counter = [] { return std::stoull(std::string(zorv_auto_var_name()).substr(1)); };
  const auto generated = [](uint64_t i) { return "{" + std::to_string(i) + "}"; };
  const uint64_t start = counter();
  const VarInt several(nullptr, 0, 3), one("", 0, 1), none(nullptr, 0, 0), named("n", 0, 3);
  const uint32_t bit = fresh("bit");
  const VarInt own(zorv_varintelem_create_with_vars(nullptr, Wire(0), Wire(1), Wire(1), &bit, 1));
  EXPECT_STREQ(zorv_var_str(zorv_varintelem_var(several, 0)),
               (generated(start + 1) + "[0]").c_str());
  EXPECT_EQ(zorv_var_str(zorv_varintelem_var(one, 0)), generated(start + 2));
  EXPECT_EQ(counter(), start + 5);
}

TEST(VarInt, SurvivesCopiesAndSimplificationButNoArithmetic) {
  const VarInt n("n", 0, 5);
  const uint32_t attr = zorv_expr_attr(n);
  for (zorv_expr* copy : {zorv_varintelem_clone(n), zorv_expr_clone(n), zorv_expr_simplify(n),
                          zorv_expr_simplify_as_binary(n)}) {
    EXPECT_EQ(zorv_expr_attr(copy), attr);
    EXPECT_EQ(zorv_varintelem_var_count(copy), 3u);
    zorv_varintelem_destroy(copy);
  }
  const VarInt changed(zorv_varintelem_clone(n));
  zorv_expr_iadd_int(changed, Wire(1));
  EXPECT_FATAL(changed.min(), kNotAVarInt);
}

TEST(VarInt, AccessorsRefuseOtherValues) {
  const VarInt plain(zorv_expr_create());
  Wire w;
  EXPECT_FATAL(plain.min(), kNotAVarInt);
  EXPECT_FATAL(plain.max(), kNotAVarInt);
  EXPECT_FATAL(zorv_varintelem_var_count(plain), kNotAVarInt);
  EXPECT_FATAL(zorv_varintelem_var(plain, 0), kNotAVarInt);
  EXPECT_FATAL(zorv_varintelem_coeff(plain, 0, w.out()), kNotAVarInt);
  EXPECT_FATAL(zorv_varintelem_decompose(plain, Wire(0), nullptr, nullptr), kNotAVarInt);
  EXPECT_FATAL(varint_record(kExprExprTag), kNotAVarInt);
  EXPECT_FATAL(varint_record(kMaxVarIntIndex),
               "VarInt accessor called on a value that is no longer a VarInt "
               "(e.g. after vi += 1, vi.sqr()).");
}

TEST(VarInt, SeveralThreadsMakeAndReadValuesAtOnce) {
  constexpr int kThreads = 4, kEach = 300;
  const uint64_t before = varint_record_count();
  std::vector<int> wrong(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &wrong] {
      std::vector<ExprImpl> values;
      for (int i = 0; i < kEach; ++i) values.push_back(make_varint("n", t, t + 4 + i));
      for (int i = 0; i < kEach; ++i) {
        const VarIntRecord& record = varint_record(values[i].attr);
        wrong[t] += record.min != t || record.max != t + 4 + i ||
                    record.vars[0] != values[i].list.first.vars[0];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::accumulate(wrong.begin(), wrong.end(), 0), 0);
  EXPECT_EQ(varint_record_count(), before + kThreads * kEach);
}

}  // namespace
}  // namespace zorv::test
