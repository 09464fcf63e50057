// Solutions whose bits fill several words, or none.
#include "model/model_handles.h"

namespace zorv::test {
namespace {

TEST(SolWords, HoldABitForEachVariable) {
  for (const uint64_t n : {1u, 63u, 64u, 65u, 128u, 130u}) {
    const uint32_t base = new_var_array("x", &n, 1);
    ExprImpl e;
    for (uint32_t i = 0; i < n; ++i) e.list.append(term(i + 1, {base + i}));
    const Model m = compiled(e);
    const Solution sol = zorv_sol_create(m);
    EXPECT_EQ(unwrap(sol).bits.size(), n <= 64 ? 1u : n <= 128 ? 2u : 3u) << n;

    // One bit at a time, so that no other one may be touched or read.
    for (uint32_t i = 0; i < n; ++i) {
      zorv_sol_set(sol, base + i, 1);
      ASSERT_EQ(written(zorv_sol_compute_energy, sol), i + 1);
      ASSERT_EQ(written(zorv_model_eval, m, zorv_sol_bits(sol)), i + 1);
      zorv_sol_flip(sol, base + i);
    }
    zorv_sol_set(sol, base + static_cast<uint32_t>(n) - 1, 1);
    EXPECT_EQ(zorv_sol_bits(sol)[(n - 1) / 64], uint64_t{1} << (n - 1) % 64) << n;
  }
}

TEST(SolWords, CopyingNoValueAlsoMakesTheEnergyInvalid) {
  const Solution to = zorv_sol_create(compiled(var(fresh())));
  const Solution nothing = zorv_sol_create(compiled(constant(3)));
  EXPECT_EQ(zorv_sol_bits(nothing), nullptr);
  zorv_sol_set_from_sol(to, nothing);
  EXPECT_EQ(zorv_sol_energy_valid(to), 0);
}

}  // namespace
}  // namespace zorv::test
