#include "integer/int_var.h"

#include "core/int_atoms.h"
#include "support/support.h"
#include "zorv/zorv.h"

namespace zorv::test {
namespace {

uint32_t new_atoms(const char* name, std::vector<uint64_t> shape, const coeff_t& lo,
                   const coeff_t& hi) {
  return zorv_new_int_var_array(name, shape.data(), shape.size(), Wire(lo), Wire(hi));
}

// Runs `check`, which may empty the registries, in a process of its own.
#define EXPECT_IN_FRESH_REGISTRY(check) \
  EXPECT_EXIT((zorv_var_reset(), std::exit((check) ? 0 : 1)), ::testing::ExitedWithCode(0), "")

TEST(IntVar, NamelessCallsDrawOneGeneratedNameEach) {
  const uint32_t binary = zorv_new_var(nullptr);
  const uint32_t single = zorv_new_int_var(nullptr, Wire(0), Wire(1));
  const uint32_t block = new_atoms("", {4}, 0, 1);
  const uint32_t last = zorv_new_int_var("", Wire(0), Wire(1));
  const uint64_t n = std::stoull(std::string(zorv_var_str(binary)).substr(1));
  const auto generated = [](uint64_t i) { return "{" + std::to_string(i) + "}"; };
  EXPECT_EQ(zorv_var_str(single), generated(n + 1));
  EXPECT_EQ(zorv_var_str(block + 3), generated(n + 2) + "[3]");
  EXPECT_EQ(zorv_var_str(last), generated(n + 3));
}

TEST(IntVar, BitWidthCountsHalvings) {
  const struct {
    coeff_t lo, hi;
    uint64_t width;
  } rows[] = {{0, 1, 1},  {0, 2, 2},    {0, 3, 2}, {0, 4, 3}, {-3, 2, 3},
              {0, 7, 3},  {0, 8, 4},    {5, 5, 1}, {6, 5, 1}, {0, (coeff_t(1) << 64) - 1, 64},
              {-1, 0, 1}, {0, 1023, 10}};
  for (const auto& row : rows) EXPECT_EQ(bit_width(row.lo, row.hi), row.width) << row.hi;

  const uint64_t used = zorv_used_var_count();
  zorv_new_int_var("ten bits", Wire(0), Wire(1023));
  new_atoms("three bits each", {2, 2}, -3, 2);
  zorv_new_var("one more");
  EXPECT_EQ(zorv_used_var_count(), used + 10 + 4 * 3 + 1);
}

TEST(IntVar, RefusesBoundsThatDoNotAscend) {
  EXPECT_FATAL(zorv_new_int_var("a", Wire(3), Wire(3)),
               "int_var: bounds must satisfy lo < hi (got lo = 3, hi = 3)");
  EXPECT_FATAL(new_atoms("a", {2}, 1, coeff_t("-18446744073709551616")),
               "int_var: bounds must satisfy lo < hi (got lo = 1, hi = -18446744073709551616)");
}

TEST(IntVar, RefusesLiteralsThatNameNoAtom) {
  const char* text = "zorv_int_var_bounds: not an integer variable index";
  Wire lo, hi;
  EXPECT_FATAL(zorv_int_var_bounds(fresh(), lo.out(), hi.out()), text);
  const auto next = atom_literal(static_cast<uint32_t>(zorv_int_var_count()));
  EXPECT_FATAL(zorv_int_var_bounds(next, lo.out(), hi.out()), text);
}

TEST(IntVar, TheIndexSpaceEndsBeforeTheLastIndex) {
  const char* text = "int_var: integer variable index space exhausted";
  EXPECT_IN_FRESH_REGISTRY(new_atoms("all", {kMaxVariables}, 0, 1) == kAtomBit &&
                           zorv_int_var_count() == kMaxVariables);
  EXPECT_FATAL((zorv_var_reset(), new_atoms("too many", {uint64_t{1} << 30}, 0, 1)), text);
  EXPECT_FATAL(new_atoms("nearly 2^64", {~uint64_t{0}}, 0, 1), text);
  EXPECT_FATAL((zorv_var_reset(), new_atoms("all", {kMaxVariables}, 0, 1),
                zorv_new_int_var("one more", Wire(0), Wire(1))),
               text);
}

TEST(IntVar, ResetForgetsEveryAtomAndItsBits) {
  const uint32_t old = new_atoms("old", {300}, 0, 100);
  EXPECT_IN_FRESH_REGISTRY(
      zorv_int_var_count() == 0 && zorv_used_var_count() == 0 &&
      std::string(zorv_var_str(old)) == "?" &&
      zorv_new_int_var("new", Wire(0), Wire(1)) == kAtomBit && encoding_of(kAtomBit).size() == 1 &&
      (zorv_var_reset(), zorv_var_count()) == 0 &&
      zorv_new_int_var("newer", Wire(0), Wire(3)) == kAtomBit &&
      encoding_of(kAtomBit).size() == 2 && std::string(zorv_var_str(1)) == "newer#1");
}

}  // namespace
}  // namespace zorv::test
