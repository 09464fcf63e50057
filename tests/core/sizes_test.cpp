// Sizes beyond any memory are refused as such, and never pass for the small ones that they wrap to.
#include "core/sizes.h"

#include "arrays/einsum.h"
#include "core/substitute.h"
#include "support/small_polynomials.h"

namespace zorv::test {
namespace {

TEST(Sizes, EndBelow2To63) {
  constexpr uint64_t kMost = INT64_MAX;
  EXPECT_EQ(size_product(kMost, 1), kMost);
  EXPECT_EQ(size_product(uint64_t{1} << 31, uint64_t{1} << 31), uint64_t{1} << 62);
  EXPECT_THROW(size_product(uint64_t{1} << 32, uint64_t{1} << 31), std::bad_alloc);
  EXPECT_THROW(size_product(uint64_t{1} << 32, uint64_t{1} << 32), std::bad_alloc);
  EXPECT_EQ(size_sum(kMost - 1, 1), kMost);
  EXPECT_THROW(size_sum(kMost, 1), std::bad_alloc);
  EXPECT_THROW(size_sum(kMost, UINT64_MAX - 1), std::bad_alloc);
}

// In bytes these come to 48 modulo 2^64.
TEST(Sizes, OfBlocksAreCheckedInBytes) {
  TermList list;
  EXPECT_THROW(list.allocate_slots((uint64_t{1} << 60) + 2), std::bad_alloc);
  EXPECT_THROW(list.reserve((uint64_t{1} << 60) + 1), std::bad_alloc);
  EXPECT_THROW(ArrayImpl<TermImpl>({(uint64_t{1} << 60) + 1}), std::bad_alloc);
}

TEST(Sizes, OfProductsAreCheckedInTerms) {
  // 2^64 terms, from 64 factors of two terms each.
  std::vector<uint32_t> variables = fresh_block(64);
  const ExprImpl two = var(variables[0]) + var(variables[1]);
  const ExprImpl product(TermImpl(1, VarList(variables.data(), 64)));
  const std::vector<const ExprImpl*> twos(64, &two);
  EXPECT_THROW(replace(product, Substitution(variables.data(), twos.data(), 64)), std::bad_alloc);

  // 2^64 combinations of labels, from one array four times.
  const auto a = make_array<uint32_t>({uint64_t{1} << 16}, [&](uint64_t) { return variables[0]; });
  const EinsumInput input = {static_cast<uint32_t>(ElementKind::kVar), &a};
  EXPECT_THROW(einsum_expr("i,j,k,l->", {input, input, input, input}, 0), std::bad_alloc);
  const auto none = make_array<uint32_t>({0}, [](uint64_t) { return 0; });
  EXPECT_EQ(einsum_expr("i,j,k,l,m->", {input, input, input, input, {input.kind, &none}}, 0)[0]
                .list.size(),
            0u);
}

}  // namespace
}  // namespace zorv::test
