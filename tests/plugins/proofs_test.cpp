// Proofs of optimality through the library as it is installed: the solver library for binary models
// and the enumeration of models with integer variables say the same of the same model.
#include <random>

#include "solver_libraries/routes.h"

namespace zorv::test {
namespace {

using Wrapper = Owned<zorv_exhaustive_wrapper, zorv_exhaustive_wrapper_destroy>;

class RandomEnergies {
 public:
  explicit RandomEnergies(uint64_t seed) : random_(seed) {
    for (uint32_t& v : variables_) v = zorv_new_var("x");
  }

  // Terms of up to five variables, ranges of linear and other bodies, allowed values, shapes.
  Expr make() {
    Expr e = sum(12, 5);
    e = plus(std::move(e), times(weight(4), between(sum(5, 1), number(2) - 2, number(2) + 2)));
    e = plus(std::move(e), times(weight(4), between(sum(4, 3), -2, 1)));
    e = plus(std::move(e), times(weight(4), either(sum(4, 1), number(3), number(5))));
    e = plus(std::move(e), times(weight(3), zorv_abs_term(sum(3, 1), 1)));
    return plus(std::move(e), times(weight(3), zorv_relu_term(sum(3, 1), 2)));
  }

 private:
  int64_t number(int64_t most) { return static_cast<int64_t>(random_() % (2 * most + 1)) - most; }
  int64_t weight(int64_t most) {  // never 0, which constraints do not take
    const int64_t drawn = number(most);
    return drawn != 0 ? drawn : most;
  }
  Expr sum(size_t count, uint64_t most_factors) {
    std::vector<Term> terms;
    while (terms.size() < count) {
      terms.push_back({number(9), {}});
      for (uint64_t d = 1 + random_() % most_factors; d > 0; --d) {
        // Bodies have none.
        const bool is_complement = most_factors > 3 && random_() % 4 == 0;
        const uint32_t variable = variables_[random_() % 9];
        terms.back().literals.push_back(is_complement ? variable | 0x80000000u : variable);
      }
    }
    return Expr(zorv_expr_simplify_as_binary(poly(number(9), terms)));
  }

  std::mt19937_64 random_;
  uint32_t variables_[9];
};

TEST(Proofs, OfBinaryModelsAgreeWithThoseOfIntegerModels) {
  Int lo(0), hi(1);
  const CoeffWire bounds[] = {lo.wire(), hi.wire()};
  const uint32_t n = zorv_new_int_var("n", &bounds[0], &bounds[1]);
  const ParamPair all_best[] = {{"best_energy_sols", "0"}, {nullptr, nullptr}};
  const auto search = [&](const Expr& e) {
    const Model model = compiled(e);
    return Result(
        zorv_exhaustive_wrapper_search(Wrapper(zorv_exhaustive_wrapper_create(model)), all_best));
  };
  RandomEnergies energies(3);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE("seed 3, round " + std::to_string(round));
    const Expr e = energies.make();
    const Result binary = search(e), integer = search(plus(poly(0, {{1, {n}}}), e));
    EXPECT_EQ(fact(binary, "complete"), "1");
    EXPECT_EQ(std::stoull(fact(binary, "states")) * 2, std::stoull(fact(integer, "states")));
    EXPECT_EQ(written(zorv_easy_solver_result_energy, binary.get()),
              written(zorv_easy_solver_result_energy, integer.get()));
    EXPECT_EQ(*zorv_easy_solver_result_bits(binary), *zorv_easy_solver_result_bits(integer));
    const uint64_t count = zorv_easy_solver_result_topk_count(integer);
    ASSERT_EQ(zorv_easy_solver_result_topk_count(binary), count);
    for (uint64_t i = 0; i < count; ++i) {
      EXPECT_EQ(*zorv_easy_solver_result_topk_bits(binary, i),
                *zorv_easy_solver_result_topk_bits(integer, i));
    }
  }
}

TEST(Proofs, TakeARemainderForWhatTheTermsHold) {
  const uint32_t a = zorv_new_var("a"), b = zorv_new_var("b");
  const Model model = compiled(
      plus(poly(-3, {{1, {a}}, {-4, {a, b}}}), times(5, zorv_cons_mark(poly(0, {{1, {b}}})))));
  const Wrapper solver(zorv_exhaustive_wrapper_create(model));
  const Result result(zorv_exhaustive_wrapper_search(solver, nullptr));
  EXPECT_EQ(written(zorv_easy_solver_result_energy, result.get()), -3);
}

}  // namespace
}  // namespace zorv::test
