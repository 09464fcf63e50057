// From a model to results and back, on models that the library solves by itself.
#include <gtest/gtest.h>

#include "zorv/zorv.hpp"

namespace {

using namespace zorv;

// Two integers and a bit; the least energy is -17, at n = 4, m = -3, x = 1.
struct Problem {
  Var x = var("x");
  IntVar n = int_var("n", 0, 9);
  IntVar m = int_var("m", -3, 3);
  Expr rules = 50 * cons(n + m <= 1);
  Expr objective = n * n - 8 * n + 2 * m * x + 5 * x * m * m * 0 + 5 - 5 * x + rules;
};

Integer least_energy(const Model& model) { return ExhaustiveSolver(model).search().sol.energy(); }

TEST(Model, TellsWhatItHolds) {
  const Problem p;
  const Model model(p.objective);
  EXPECT_EQ(model.var_count(), 1u);
  EXPECT_TRUE(same(model.var(0), p.x) && model.has(p.x));
  EXPECT_EQ(model.int_var_count(), 2u);
  EXPECT_TRUE(same(model.int_var(0), p.n) && model.has(p.n) && model.has(p.m));
  EXPECT_FALSE(model.has(int_var(0, 1)) || model.has(var()));
  EXPECT_EQ(model.max_degree(), 2u);
  EXPECT_EQ(model.cons_count(), 1u);
  EXPECT_EQ((p.rules + cons(p.x)).cons_count(), 2u);
  EXPECT_EQ((p.x + p.n).cons_count(), 0u);
  EXPECT_EQ(Expr(VarInt(0, 3)).cons_count(), 0u);
  EXPECT_EQ(model.constant(), 5);
  EXPECT_EXIT(Model::from_simplified(p.x * p.x + 1), ::testing::KilledBySignal(SIGABRT), "^zorv: ");
}

TEST(Sol, HoldsValuesAndComputesOnRequest) {
  const Problem p;
  Sol sol(Model(p.objective));
  EXPECT_EQ(sol.energy(), 5 - 0);
  sol.set(p.n, 4);
  sol.set(p.m, -3);
  sol.flip(p.x);
  EXPECT_FALSE(sol.is_energy_valid());
  EXPECT_EQ(sol.comp_energy(), 16 - 32 - 6 + 5 - 5);
  EXPECT_EQ(sol[p.x], 1);
  EXPECT_EQ(sol[~p.x], 0);
  EXPECT_EQ(sol[p.n], 4);
  EXPECT_EQ(sol[p.n * p.m], -12);
  const Sol copy = sol;
  sol.set(p.n, 0);
  EXPECT_EQ(copy[p.n], 4);
  EXPECT_EQ(copy.tts(), -1.0);
  sol.set(copy);
  EXPECT_EQ(sol[p.n], 4);
  EXPECT_EQ(sol.model().var_count(), 1u);
  EXPECT_EXIT(sol.set(p.n, 10), ::testing::KilledBySignal(SIGABRT), "^zorv: ");
}

TEST(Params, AreTextsThatReadBackAsTheirValues) {
  const Params params = {{"a", "2.5"},
                         {"b", std::string("x")},
                         {"c", true},
                         {"d", -7},
                         {"e", Integer("18446744073709551616")},
                         {"f", 1e-9},
                         {"g", 2.5f}};
  const char* texts[] = {"2.5", "x", "true", "-7", "18446744073709551616"};
  for (size_t i = 0; i < std::size(texts); ++i) EXPECT_EQ(params[i].value, texts[i]);
  EXPECT_EQ(std::stod(params[5].value), 1e-9);
  EXPECT_EQ(std::stod(params[6].value), 2.5);
}

TEST(EasySolver, FindsTheOptimumAndTellsAboutTheSearch) {
  const Problem p;
  const Model model(p.objective);
  const Integer least = least_energy(model);
  EasySolver solver(model);
  const Params params = {
      {"target_energy", least}, {"seed", 5}, {"threads", 1}, {"time_limit", 20.5}};
  const Result first = solver.search(params), second = solver.search(params);
  EXPECT_EQ(first.sol.energy(), least);
  EXPECT_EQ(Sol(first.sol).comp_energy(), least);
  EXPECT_EQ(p.rules.violation_count(first.sol), 0u);
  EXPECT_EQ(first.info("engine"), "integer-cpu");
  EXPECT_EQ(first.info("proposals"), second.info("proposals"));
  EXPECT_EQ(first.info("no such fact"), "");
  EXPECT_TRUE(first.sols.empty());

  // A search from the optimum is there at once, even with no time.
  const IntVar k = int_var("k", 0, 1000000);
  const Model no_bits(sqr(k - 777));
  Sol start(no_bits);
  start.set(k, 777);
  EasySolver other(no_bits);
  EXPECT_EQ(other.search({{"time_limit", 0}, {"threads", 1}}, start).sol[k], 777);
  const Result hinted =
      solver.search({{"time_limit", 0}, {"threads", 1}, {"best_energy_sols", true}}, first.sol);
  EXPECT_EQ(hinted.sol.energy(), least);
  ASSERT_FALSE(hinted.sols.empty());
  EXPECT_EQ(hinted.sols[0].energy(), least);
  EXPECT_EXIT(solver.search({{"no_such_parameter", 1}}), ::testing::KilledBySignal(SIGABRT),
              "no_such_parameter");
}

TEST(Solvers, RefuseAHintOfOtherVariables) {
  const auto x = var_array("x", {70});
  const auto n = int_var_array("n", {3}, 0, 9);
  const Model bits(sum(x) * sum(x)), both(sum(x) + sum(n)), again(sum(x) - sum(n));
  EasySolver easy(bits), easy_int(both);
  KLB5Solver klb5(both);
  const Sol wrong[] = {Sol(Model(x[0] + x[1])), Sol(Model(sum(var_array("y", {70})))),
                       Sol(Model(sum(x) + n[0])), Sol(Model(sum(x) + sum(n) + int_var(0, 1)))};
  for (const Sol& hint : wrong) {
    EXPECT_THROW(easy.search({}, hint), std::invalid_argument);
    EXPECT_THROW(easy_int.search({}, hint), std::invalid_argument);
    EXPECT_THROW(klb5.search({}, hint), std::invalid_argument);
    EXPECT_THROW(klb5.hint(hint), std::invalid_argument);
  }
  const Params params = {{"time_limit", 0}, {"threads", 1}};
  EXPECT_EQ(easy_int.search(params, Sol(again)).sol.energy(), 0);
  klb5.hint(Sol(again));
  EXPECT_EQ(klb5.search(params, Sol(both)).sol.energy(), 0);
}

TEST(KLB5Solver, CallsBackAndStopsOnRequest) {
  const Problem p;
  const Model model(p.objective);
  const Integer least = least_energy(model);
  KLB5Solver solver(model);
  std::vector<Integer> bests;
  bool has_started = false;
  solver.set_callback([&](const Sol& sol, Event event) {
    if (event == Event::kStart) has_started = true;
    if (event == Event::kBest) bests.push_back(Sol(sol).comp_energy());
    if (!bests.empty() && bests.back() == least) solver.terminate();
    return -1.0;
  });
  const Result result = solver.search({{"threads", 1}, {"time_limit", 60}, {"seed", 1}});
  EXPECT_TRUE(has_started);
  ASSERT_FALSE(bests.empty());
  EXPECT_EQ(bests.back(), least);
  EXPECT_EQ(result.sol.energy(), least);
  solver.clear_callback();
  const size_t calls = bests.size();
  solver.search({{"threads", 1}, {"time_limit", 0.01}}, result.sol);
  EXPECT_EQ(bests.size(), calls);
}

TEST(Ilp, ReadsAPointBackAsASolution) {
  const Var x = var("x");
  const IntVar n = int_var("n", 0, 9);
  const VarInt k("k", 2, 12);
  const Expr rules = 100 * cons(n + 5 * x + k >= 7);
  const Model model(3 * n - 2 * x + k + rules);
  const Ilp ilp(model);
  ASSERT_EQ(ilp.column_count(), 3u);
  ASSERT_EQ(ilp.row_count(), 1u);
  std::vector<Integer> values;
  for (uint64_t c = 0; c < ilp.column_count(); ++c) {
    values.push_back(ilp.column(c).is_integer ? ilp.column(c).lo : ilp.column(c).hi);
  }
  const Sol sol = ilp.solution(values);  // x = 1, n = 0, k = 2
  EXPECT_EQ(sol[x], 1);
  EXPECT_EQ(sol[k], 2);
  EXPECT_EQ(sol.energy(), 0);
  Integer objective = ilp.constant();
  const Ilp::Row row = ilp.row(0);
  EXPECT_EQ(row.entries.size(), 3u);
  EXPECT_TRUE(row.lo.has_value());
  EXPECT_FALSE(row.hi.has_value());
  EXPECT_THROW(Ilp(Model(x * var() + n)), std::domain_error);
}

}  // namespace
