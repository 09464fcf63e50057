#include "core/substitute.h"

#include "reference/plain_rewrites.h"
#include "support/small_polynomials.h"

namespace zorv::test {
namespace {

// From pairs of a literal and an expression.
template <typename Pairs>
Substitution substitution_of(const Pairs& pairs) {
  std::vector<uint32_t> literals;
  std::vector<const ExprImpl*> exprs;
  for (const auto& [literal, e] : pairs) {
    literals.push_back(literal);
    exprs.push_back(&e);
  }
  return Substitution(literals.data(), exprs.data(), literals.size());
}

void expect_the_plain_steps(const ExprImpl& e, const PlainMap& map) {
  const Substitution substitution = substitution_of(map);
  for (const auto degree_0 : {TermsOfDegree0::kJoinConstant, TermsOfDegree0::kStay}) {
    ASSERT_TRUE(
        same_terms(substitute(e, substitution, degree_0), plain_substitute(e, map, degree_0)))
        << text(e).substr(0, 2000);
  }
}

class Substitute : public ::testing::Test {
 protected:
  const std::vector<uint32_t> v = fresh_block(3);
  const uint32_t b = fresh("p"), far_away = fresh_block(60'000).back();
  const uint32_t atom = atom_literal(7);
  const ExprImpl x = var(v[0]), y = var(v[1]), z = var(v[2]), p = var(b), q = var(far_away);
  const uint32_t not_x = v[0] | kNegationBit, not_y = v[1] | kNegationBit;
  const coeff_t big = (coeff_t(1) << 64) + 1;
  const std::vector<PlainMap> maps = {
      {},
      {{v[0], p + 1}, {not_y, constant(2) - 3 * p* q}},  // x and ~y, but neither ~x nor y
      {{v[0], x* y - big}, {v[1], x}, {not_x, q + q}},   // what is put in is not replaced again
      {{v[1], constant(-5)}, {v[2], constant(0)}, {not_x, big* p}, {v[0], p - x + 2}},
      {{v[0], p - 3 + 0 * (p + q)}, {not_y, q + 0 * (q + p)}},
      {{v[0], 0 * (p + 1) + q}, {v[1], 0 * (p + q + x)}},  // a free first slot before others
  };
};

TEST_F(Substitute, HoldsForEverySmallPolynomial) {
  const uint64_t seed = 14;
  Random random(seed);
  uint64_t i = 0;
  Assignment values = {{b, 7}, {far_away, -(coeff_t(1) << 65)}};
  const uint64_t n = for_every_sum(
      products_of(with_complements(v), 3), 3, TroublesomePairs(random), [&](const ExprImpl& e) {
        const PlainMap& map = maps[i % maps.size()];
        const uint64_t bits = i++ / maps.size();
        ASSERT_NO_FATAL_FAILURE(expect_the_plain_steps(e, map));
        for (size_t k = 0; k < v.size(); ++k) values[v[k]] = bits >> k & 1;
        const auto value_of = [&](uint32_t literal) {
          const auto found = map.find(literal);
          return plain_value(found == map.end() ? var(literal) : found->second, values);
        };
        const ExprImpl out = replace(e, substitution_of(map));
        ASSERT_EQ(plain_value(out, values), plain_value_by(e, value_of)) << text(e);
      });
  EXPECT_EQ(n, 105'995u);
  report_proof("Substitute", n, seed);
}

TEST_F(Substitute, LongExpressionsKeepTheOrderOfOneByOne) {
  Random random(15);
  std::vector<uint32_t> literals = with_complements(v);
  literals.insert(literals.end(), {b, far_away, atom});
  for (const uint64_t n : {9'999, 10'000, 10'001, 25'000}) {
    for (PlainMap map : maps) {
      if (n % 2 == 0) map[atom] = constant(-3) + p;
      if (n % 3 == 0) map[far_away] = q * q + 1;  // keys too far apart for a table
      const ExprImpl e = random_sum(random, literals, n, 4);
      ASSERT_NO_FATAL_FAILURE(expect_the_plain_steps(e, map)) << n;
    }
  }
}

TEST_F(Substitute, MultipliesOutFromTheLeftAndMergesNothing) {
  const ExprImpl X = var(fresh("x")), Y = var(fresh("y")), Z = var(fresh("z"));
  const auto lit = [](const ExprImpl& e) { return e.list.first.vars[0]; };
  const uint32_t not_X = lit(X) | kNegationBit;
  ExprImpl of_degree_0 = X + 1;
  of_degree_0.list.append(TermImpl(4, VarList()));
  const struct {
    ExprImpl in;
    std::vector<std::pair<uint32_t, ExprImpl>> map;
    const char* out;
  } rows[] = {
      {2 * X * Z + 3, {{lit(X), Y + 1}}, "3 +2*z +2*y*z"},
      {2 * Z * X + 3, {{lit(X), Y + 1}}, "3 +2*z +2*z*y"},
      {Z * Y * X + X - X, {}, "z*y*x +x -x"},
      {var(not_X) + X, {{lit(X), Y}}, "~x +y"},  // a key leaves its complement alone
      {var(not_X) + X, {{not_X, Y}}, "y +x"},
      {X * Y, {{lit(X), Y}, {lit(X), Z}}, "z*y"},  // the later of two equal keys
      {X * X, {{lit(X), X - 1}}, "1 -x -x +x*x"},
      {X + Y, {{lit(X), constant(0)}, {lit(Y), constant(-2)}}, "-2"},
      {X + 0 * (X + Y) + Z, {{lit(Y), Z}}, "x +z"},
      {of_degree_0, {}, "5 +x"},
  };
  for (const auto& row : rows) {
    const ExprImpl before = row.in;
    EXPECT_EQ(text(replace(row.in, substitution_of(row.map))), row.out) << text(row.in);
    EXPECT_TRUE(same_terms(row.in, before));
  }
  EXPECT_EQ(text(substitute(of_degree_0, substitution_of(PlainMap()), TermsOfDegree0::kStay)),
            "1 +x +4");
}

// Keys of all four kinds, close together, far apart, and around the ends of what is stored.
TEST(LiteralMap, FindsWhatAnOrdinaryMapFinds) {
  Random random(16);
  const std::vector<uint64_t> values(400);
  for (const uint32_t spread : {1u, 50u, 100'000u, kIndexMask}) {
    for (int round = 0; round < 20; ++round) {
      std::map<uint32_t, const uint64_t*> expected;
      std::vector<uint32_t> keys;
      for (uint64_t n = below(random, values.size()); keys.size() < n;) {
        const auto kind = static_cast<uint32_t>(below(random, 4)) << 30;
        keys.push_back(kind | (static_cast<uint32_t>(below(random, spread)) + 1));
        expected[keys.back()] = &values[keys.size() - 1];
      }
      const LiteralMap<uint64_t> map(keys.data(), keys.size(),
                                     [&](uint64_t i) { return &values[i]; });
      keys.insert(keys.end(), {0, kAtomBit, kNegationBit, kNoLiteral, kIndexMask});
      for (const uint32_t key : keys) {
        for (const uint32_t asked : {key - 1, key, key + 1, key ^ kNegationBit, key ^ kAtomBit}) {
          const auto found = expected.find(asked);
          ASSERT_EQ(map.find(asked), found == expected.end() ? nullptr : found->second) << asked;
        }
      }
    }
  }
}

}  // namespace
}  // namespace zorv::test
