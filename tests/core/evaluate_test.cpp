#include "core/evaluate.h"

#include <utility>

#include "support/small_polynomials.h"

namespace zorv::test {
namespace {

using Pairs = std::vector<std::pair<uint32_t, coeff_t>>;

coeff_t value_at(const ExprImpl& e, const Pairs& pairs) {
  std::vector<uint32_t> literals;
  std::vector<coeff_t> values;
  for (const auto& [literal, value] : pairs) {
    literals.push_back(literal);
    values.push_back(value);
  }
  return evaluate(e, literals.data(), values.data(), literals.size());
}

const char* const kMissing = "eval: variable not found in mapping";

class Evaluate : public ::testing::Test {
 protected:
  const uint32_t a = fresh("x"), b = fresh("y"), n = atom_literal(3);
  const uint32_t na = a | kNegationBit;
  const ExprImpl x = var(a), y = var(b), nx = var(na), m = var(n);
  const coeff_t big = coeff_t(1) << 130;
};

TEST_F(Evaluate, ReadsComplementsAsOneMinusTheValue) {
  const struct {
    ExprImpl e;
    Pairs at;
    coeff_t value;
  } rows[] = {
      {constant(5), {}, 5},
      {3 * nx + 1, {{a, 1}}, 1},
      {3 * nx + 1, {{a, 0}}, 4},
      {3 * nx + 1, {{a, -1}}, 7},  // 1 - x for whatever x may be
      {x * nx, {{a, big}}, big * (1 - big)},
      {x + x, {{a, 2}, {a, 9}}, 18},            // the later of two values
      {nx, {{a, 4}, {na, 100}}, -3},            // a negated key is never looked for
      {2 * m * m * x, {{n, -7}, {a, 3}}, 294},  // an atom is a key of its own
      {x * y, {{a, 0}, {b, big}}, 0},
  };
  for (const auto& row : rows) EXPECT_EQ(value_at(row.e, row.at), row.value) << text(row.e);
}

TEST_F(Evaluate, WantsAValueForEveryVariable) {
  ExprImpl zero_terms = x + y;
  imul_int(zero_terms, 0);  // 0*y is left
  EXPECT_EQ(value_at(zero_terms, {{b, 1}}), 0);
  EXPECT_FATAL(value_at(zero_terms, {{a, 1}}), kMissing);
  EXPECT_FATAL(value_at(x, {}), kMissing);
  EXPECT_FATAL(value_at(nx, {{na, 1}}), kMissing);
  EXPECT_FATAL(value_at(m, {{index_of(n), 1}}), kMissing);
  EXPECT_FATAL(value_at(x * y, {{a, 0}}), kMissing);  // also behind a 0
  ExprImpl many;
  for (int i = 0; i < 20'000; ++i) many.list.append(TermImpl(1, VarList(b)));
  EXPECT_FATAL(value_at(many, {{a, 1}}), kMissing);  // once, whatever the threads find
}

TEST_F(Evaluate, AgreesWithThePlainValueAtEverySize) {
  Random random(17);
  std::vector<uint32_t> variables = fresh_block(4);
  for (const bool is_scattered : {false, true}) {
    if (is_scattered) variables = {0x3FFFFFF0u, 5u, atom_literal(0), atom_literal(kIndexMask)};
    std::vector<uint32_t> literals = variables;
    for (const uint32_t v : variables) literals.push_back(is_atom(v) ? v : v | kNegationBit);
    for (const uint64_t terms : {0, 1, 40, 9'999, 10'000, 30'001}) {
      const ExprImpl e = random_sum(random, literals, terms, 6);
      Assignment values;
      for (const uint32_t v : variables) values[v] = troublesome(random);
      EXPECT_EQ(value_at(e, {values.begin(), values.end()}), plain_value(e, values)) << terms;
    }
  }
}

TEST_F(Evaluate, GcdTakesInTheConstantAndEveryCoefficient) {
  EXPECT_EQ(coefficient_gcd(0 * (x + y)), 0);
  EXPECT_EQ(coefficient_gcd(0 * (x + y) - 5), 5);
  Random random(18);
  for (int round = 0; round < 200; ++round) {
    const coeff_t factor = troublesome(random);
    const ExprImpl e = factor * random_sum(random, {a, b}, below(random, 4), 2);
    coeff_t p = abs(coeff_t(e.constant));
    e.list.for_each([&](const TermImpl& t) {
      for (coeff_t q = abs(coeff_t(t.coeff)); q != 0;) p = std::exchange(q, coeff_t(p % q));
    });
    EXPECT_EQ(coefficient_gcd(e), p) << text(e);
  }
}

}  // namespace
}  // namespace zorv::test
