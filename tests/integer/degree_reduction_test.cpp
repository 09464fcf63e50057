#include "integer/degree_reduction.h"

#include "constraints/describe.h"
#include "reference/plain_rewrites.h"
#include "support/small_polynomials.h"

namespace zorv::test {
namespace {

// The auxiliary variables of a result are those that its making left behind.
std::vector<uint32_t> variables_since(uint64_t before) {
  std::vector<uint32_t> made;
  for (uint64_t v = before; v < var_count(); ++v) made.push_back(static_cast<uint32_t>(v));
  return made;
}

coeff_t minimum_over(const std::vector<uint32_t>& variables, const ExprImpl& e, Assignment values) {
  std::optional<coeff_t> least;
  for (uint64_t bits = 0; bits < uint64_t{1} << variables.size(); ++bits) {
    for (size_t i = 0; i < variables.size(); ++i) values[variables[i]] = bits >> i & 1;
    const coeff_t value = plain_value(e, values);
    if (!least || value < *least) least = value;
  }
  return *least;
}

void expect_the_plain_steps(const ExprImpl& e, const ExprImpl& out, uint64_t before) {
  auto next = static_cast<uint32_t>(before);
  ASSERT_TRUE(plain_poly(out) == plain_reduce(e, next)) << text(e) << "\n became\n " << text(out);
  ASSERT_EQ(next, var_count());
  ASSERT_TRUE(is_canonical(out));
  ASSERT_LE(max_degree(out), 2u);
  ASSERT_EQ(out.attr, kPlainAttr);
}

void expect_proven(const ExprImpl& e, const std::vector<uint32_t>& variables) {
  const uint64_t before = var_count();
  const ExprImpl out = checked_reduce_degree(e);
  const std::vector<uint32_t> made = variables_since(before);
  ASSERT_NO_FATAL_FAILURE(expect_the_plain_steps(e, out, before));
  for (uint64_t bits = 0; bits < uint64_t{1} << variables.size(); ++bits) {
    const Assignment values = values_of(variables, bits);
    ASSERT_EQ(minimum_over(made, out, values), plain_value(e, values)) << text(e) << " at " << bits;
  }
}

TEST(ReduceDegree, HoldsForEverySmallPolynomial) {
  const uint64_t seed = 20;
  Random random(seed);
  const std::vector<uint32_t> variables = fresh_block(3);
  std::vector<VarList> products = products_of(with_complements(variables), 3);
  std::erase_if(products, [](const VarList& p) { return !all_different(p); });
  const uint64_t n = for_every_sum(products, 3, TroublesomePairs(random),
                                   [&](const ExprImpl& e) { expect_proven(e, variables); });
  EXPECT_EQ(n, 1u + 27 + 27 * 28 / 2 + 27 * 28 * 29 / 6);
  report_proof("ReduceDegree", n, seed);
}

TEST(ReduceDegree, HoldsForEveryDegree) {
  const size_t auxiliaries[] = {0, 0, 0, 1, 1, 2, 2, 2, 2, 3, 3};
  const std::vector<uint32_t> all = fresh_block(10);
  for (uint32_t degree = 0; degree <= 10; ++degree) {
    std::vector<uint32_t> literals(all.begin(), all.begin() + degree);
    for (const int c : {1, -1, 6, -3}) {
      if (degree > 1) literals[degree / 2] ^= kNegationBit;
      const uint64_t before = var_count();
      expect_proven(ExprImpl(TermImpl(c, VarList(literals.data(), degree))),
                    {all.begin(), all.begin() + degree});
      const size_t expected = c > 0 ? auxiliaries[degree] : degree > 2 ? 1 : 0;
      EXPECT_EQ(var_count() - before, expected) << c << " at degree " << degree;
    }
  }
}

TEST(ReduceDegree, HoldsForLargerOnesAtRandom) {
  const uint64_t seed = 21;
  Random random(seed);
  const std::vector<uint32_t> variables = fresh_block(8),
                              few(variables.begin(), variables.end() - 3);
  for (uint64_t round = 0; round < 300 && !::testing::Test::HasFatalFailure(); ++round) {
    const ExprImpl e = random_sum(random, with_complements(variables), 12, 12);
    const uint64_t before = var_count();
    expect_the_plain_steps(e, reduce_degree(e), before);
    if (round < 30) expect_proven(random_sum(random, with_complements(few), 3, 6), few);
  }
  report_proof("ReduceDegree, larger", 330, seed);
}

TEST(ReduceDegree, NamesItsVariablesByOneCounter) {
  const ExprImpl a = var(fresh("a")), b = var(fresh("b")), c = var(fresh("c")), d = var(fresh("d"));
  const ExprImpl e = var(fresh("e")), not_b = var(b.list.first.vars[0] | kNegationBit);
  auto w = static_cast<uint32_t>(var_count());
  reduce_degree(a * b * c);
  // What the counter stands at is the business of earlier calls.
  uint64_t n = std::stoull(std::string(zorv_var_str(w)).substr(2));
  EXPECT_EQ(zorv_var_str(w++), "{r" + std::to_string(n++) + "}");
  const struct {
    ExprImpl in;
    const char* out;  // %: the name of the next auxiliary variable
    std::vector<std::string> elements;
  } rows[] = {
      {constant(7) + a * b + a * a - 2 * b, "7 +a -2*b +a*b", {}},
      {a * b * c - a * b * c + c, "c", {}},  // cancelled before anything is made
      {a * a * b + a * not_b, "a", {}},
      {-2 * a * b * c + 5, "5 +4*% -2*a*% -2*b*% -2*c*%", {""}},
      {a * b * c, "% +a*b +a*c -a*% +b*c -b*% -c*%", {""}},
      {d * a * b * c * e - a * b * c, nullptr, {"", "+[0]", "[1]"}},  // in canonical order
  };
  for (const auto& row : rows) {
    const std::string made = text(reduce_degree(row.in));
    const std::string name = "{r" + std::to_string(n) + "}";
    EXPECT_EQ(made, row.out == nullptr ? made : filled(row.out, name));
    for (std::string element : row.elements) {
      if (element[0] == '+') element.erase(0, 1), ++n;
      EXPECT_EQ(zorv_var_str(w++), "{r" + std::to_string(n) + "}" + element);
    }
    n += row.elements.empty() ? 0 : 1;
    EXPECT_EQ(var_count(), w);
  }
}

TEST(ReduceDegree, RefusesDeclaredConstraintsThenAtoms) {
  const ExprImpl x = var(fresh("x")), y = var(fresh("y")), atom = var(atom_literal(0));
  Handle declared = between(x, 0, 1);
  zorv_expr_iadd_var(declared, atom_literal(0));
  EXPECT_FATAL(zorv_expr_reduce(declared),
               guard_text("reduce (declared constraints would be dropped; reduce the objective "
                          "before adding zorv::cons parts)"));
  for (const ExprImpl& e : {x * atom, x + 0 * (y + atom)}) {
    EXPECT_FATAL(checked_reduce_degree(e),
                 "reduce: native integer variables (int_var) are not supported (Ishikawa/Freedman "
                 "quadratization assumes 0/1 variables).");
  }
  EXPECT_EQ(Handle(zorv_expr_reduce(classic(x * x, y))).polynomial(), "x");
}

}  // namespace
}  // namespace zorv::test
