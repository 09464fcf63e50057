// The rewrites of the core on all small polynomials, and on larger ones at random: same value under
// every assignment, and term by term what the plain steps give.
#include "core/spin_forms.h"
#include "reference/plain_rewrites.h"
#include "support/small_polynomials.h"

namespace zorv::test {
namespace {

struct Rewrite {
  const char* name;
  ExprImpl (*apply)(const ExprImpl&);
  PlainPoly (*plain)(const ExprImpl&);
  Reading before, after;
  bool is_scaled;    // by 2 for each degree of the longest term as it stands
  size_t terms = 3;  // of the polynomials that are all tried
};

const Rewrite kRewrites[] = {
    {"Simplify", expr_simplify, plain_poly, Reading::kBinary, Reading::kBinary, false},
    {"AsBinary", expr_simplify_as_binary, plain_as_binary, Reading::kBinary, Reading::kBinary,
     false},
    {"AsSpin", expr_simplify_as_spin, plain_as_spin, Reading::kSpin, Reading::kSpin, false},
    {"BinaryToSpin", binary_to_spin, plain_binary_to_spin, Reading::kBinary, Reading::kSpin, true},
    {"SpinToBinary", spin_to_binary, plain_spin_to_binary, Reading::kSpin, Reading::kBinary, false},
    {"ThereAndBack", [](const ExprImpl& e) { return spin_to_binary(binary_to_spin(e)); },
     [](const ExprImpl& e) { return plain_spin_to_binary(binary_to_spin(e)); }, Reading::kBinary,
     Reading::kBinary, true, 2},
};

class RewriteProof : public ::testing::TestWithParam<Rewrite> {
 protected:
  // The assignments that everything is tried on; bit i of a pattern stands for variables[i].
  void use(const std::vector<uint32_t>& variables, const std::vector<uint64_t>& patterns) {
    for (const uint64_t bits : patterns) {
      before_.push_back(values_of(variables, bits, GetParam().before));
      after_.push_back(values_of(variables, bits, GetParam().after));
    }
  }

  void expect_proven(const ExprImpl& e, bool compare_terms) const {
    const Rewrite& rewrite = GetParam();
    const ExprImpl out = rewrite.apply(e);
    ASSERT_TRUE(is_canonical(out)) << text(e);
    ASSERT_EQ(out.attr, kPlainAttr);
    ASSERT_TRUE(!compare_terms || plain_poly(out) == rewrite.plain(e))
        << text(e) << "\n  became\n  " << text(out);
    const uint32_t doublings = rewrite.is_scaled ? max_degree(e) : 0;
    for (size_t i = 0; i < before_.size(); ++i) {
      ASSERT_EQ(plain_value(out, after_[i], rewrite.after),
                coeff_t(plain_value(e, before_[i], rewrite.before) << doublings))
          << text(e) << " at " << i;
    }
  }

 private:
  std::vector<Assignment> before_, after_;
};

TEST_P(RewriteProof, HoldsForEverySmallPolynomial) {
  const uint64_t seed = 11;
  Random random(seed);
  const std::vector<uint32_t> variables = fresh_block(3);
  use(variables, {0, 1, 2, 3, 4, 5, 6, 7});
  // The values alone leave little freedom to the terms, so the slow steps run for some only.
  uint64_t i = 0;
  const uint64_t n = for_every_sum(products_of(with_complements(variables), 3), GetParam().terms,
                                   TroublesomePairs(random),
                                   [&](const ExprImpl& e) { expect_proven(e, ++i % 8 == 0); });
  EXPECT_EQ(n, 1u + 84 + 84 * 85 / 2 + (GetParam().terms < 3 ? 0 : 84 * 85 * 86 / 6));
  report_proof(GetParam().name, n, seed);
}

TEST_P(RewriteProof, HoldsForLargerOnesAtRandom) {
  const uint64_t seed = 12, rounds = 1000;
  Random random(seed);
  std::vector<uint32_t> variables = fresh_block(7);
  variables.push_back(fresh_block(40'000).back());  // far away from the others
  use(variables, {0, 0xFF, 0x0F, 0x55, 0xB2, 0x7E, 0x81, 0xE4});
  for (uint64_t round = 0; round < rounds && !HasFatalFailure(); ++round) {
    const ExprImpl e = random_sum(random, with_complements(variables), below(random, 13), 6);
    expect_proven(e, true);
  }
  report_proof(std::string(GetParam().name) + ", larger", rounds, seed);
}

INSTANTIATE_TEST_SUITE_P(Core, RewriteProof, ::testing::ValuesIn(kRewrites),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace zorv::test
