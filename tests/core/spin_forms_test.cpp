#include "core/spin_forms.h"

#include "constraints/describe.h"
#include "reference/plain_rewrites.h"
#include "support/small_polynomials.h"

namespace zorv::test {
namespace {

class SpinForms : public ::testing::Test {
 protected:
  const uint32_t a = fresh("x"), b = fresh("y"), c = fresh("z");
  const ExprImpl x = var(a), y = var(b), z = var(c), nx = var(a | kNegationBit);
  const ExprImpl atom = var(atom_literal(0));
  const ExprImpl with_zero_atom = x + 0 * (y + atom);  // 0*atom is left
};

TEST_F(SpinForms, RewriteEveryEdge) {
  using Rewrite = ExprImpl (*)(const ExprImpl&);
  const Rewrite spin = expr_simplify_as_spin, to_spin = binary_to_spin, to_binary = spin_to_binary;
  const struct {
    Rewrite rewrite;
    ExprImpl in;
    const char* out;
  } rows[] = {
      {spin, constant(-7), "-7"},
      {spin, x * x, "1"},
      {spin, x * x * x, "x"},
      {spin, x * x * x * x, "1"},
      {spin, nx * y, "-x*y"},
      {spin, nx * nx, "1"},
      {spin, z * y * nx, "-x*y*z"},
      {spin, with_zero_atom, "x"},  // what is 0 is not looked at
      {to_spin, constant(5), "5"},
      {to_spin, x, "1 +x"},
      {to_spin, x * y + 1, "5 +x +y +x*y"},
      {to_spin, x * x, "2 +2*x"},  // degree 2, though x*x is x
      {to_spin, x * nx, "0"},
      {to_spin, x + x * y - x * y, "2 +2*x"},        // terms that cancel count
      {to_spin, x + 0 * (y + y * y * z), "4 +4*x"},  // and those that are 0
      {to_binary, constant(5), "5"},
      {to_binary, x, "-1 +2*x"},
      {to_binary, x * y, "1 -2*x -2*y +4*x*y"},
      {to_binary, x * nx, "-1"},
      {to_binary, nx * y * z, "1 -2*x -2*y -2*z +4*x*y +4*x*z -4*y*z +8*~x*y*z"},
      {to_binary, binary_to_spin(x * y), "4*x*y"},  // the scale stays
  };
  for (const auto& row : rows) EXPECT_EQ(text(row.rewrite(row.in)), row.out) << text(row.in);
}

TEST_F(SpinForms, AgreeWithThePlainStepsAcrossTheParallelThreshold) {
  Random random(13);
  for (const uint64_t n : {9'999, 10'000, 30'000}) {
    for (const uint32_t block : {9u, 500'000u}) {  // the variables close together and far apart
      const std::vector<uint32_t> all = fresh_block(block);
      const std::vector<uint32_t> some = {all[0], all[1], all[2], all[block - 2], all[block - 1]};
      const ExprImpl e = random_sum(random, with_complements(some), n, 4);
      EXPECT_TRUE(plain_poly(expr_simplify_as_spin(e)) == plain_as_spin(e)) << n;
      if (n > 10'000) continue;
      EXPECT_TRUE(plain_poly(binary_to_spin(e)) == plain_binary_to_spin(e)) << n;
      EXPECT_TRUE(plain_poly(spin_to_binary(e)) == plain_spin_to_binary(e)) << n;
    }
  }
}

TEST_F(SpinForms, OnlyDifferentVariablesMakeATermLarge) {
  const std::vector<uint32_t> same(300, a), different = fresh_block(64);
  const ExprImpl power(TermImpl(1, VarList(same.data(), 300)));
  const ExprImpl large(TermImpl(1, VarList(different.data(), 64)));
  EXPECT_TRUE(plain_poly(binary_to_spin(power)) ==
              (PlainPoly{{{}, coeff_t(1) << 299}, {{a}, coeff_t(1) << 299}}));
  EXPECT_EQ(text(spin_to_binary(power)), "1");
  EXPECT_THROW(binary_to_spin(large), std::bad_alloc);
  EXPECT_THROW(spin_to_binary(large), std::bad_alloc);
}

TEST_F(SpinForms, RefuseDeclaredConstraintsThenAtoms) {
  ExprImpl declared = atom;
  declared.attr = between(x, 0, 1).attr();
  const std::string of_spin =
      "native integer variables (int_var) are not supported (spin semantics do not apply to "
      "integer atoms).";
  EXPECT_FATAL(binary_to_spin(declared), guard_text("binary_to_spin"));
  EXPECT_FATAL(spin_to_binary(declared), guard_text("spin_to_binary"));
  for (const ExprImpl& e : {x * atom, with_zero_atom}) {  // also where the term is 0
    EXPECT_FATAL(binary_to_spin(e), "binary_to_spin: " + of_spin);
    EXPECT_FATAL(spin_to_binary(e), "spin_to_binary: " + of_spin);
  }
  EXPECT_FATAL(expr_simplify_as_spin(x + y * atom * z),
               "simplify_as_spin(): native integer variables (int_var) are not supported (spin "
               "rules do not apply to integer atoms).");
}

}  // namespace
}  // namespace zorv::test
