// Threads with problems of their own: each gets what it gets alone, though all of them make
// variables and constraints in the same tables.
#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "zorv/zorv.hpp"

namespace {

using namespace zorv;

// States and solves a problem with everything that has a name or an entry in a table; returns what
// can be read of it.
std::string problem() {
  const Var x = var("x");
  const auto y = var_array("y", {2, 3});
  const IntVar n = int_var("n", 0, 9);
  const auto m = int_var_array("m", {2}, -3, 3);
  const VarInt v("v", 0, 10);
  const auto w = var_int_array("w", {2}, 1, 5);

  std::ostringstream out;
  const Expr e = 3 * x * ~y[1][2] + n * m[1] + v - w[0];
  out << simplify_as_binary(e) << y << w << "\n";
  out << simplify_as_binary(binarize(sqr(e))) << "\n";  // makes the bits of n and m
  out << reduce(x * y[0][0] * y[0][1] * y[0][2] - 2 * x * y[0][0] * y[1][0]).term_count() << "\n";
  out << v.min() << v.max() << w[1].max() << upper_bound(n * m[1] + x) << "\n";

  const Expr rules = 50 * cons(n + m[0] <= 1) + 20 * cons(y[0][0] + 2 * y[1][2] == 1);
  const Model model(n * n - 8 * n + 2 * m[0] * x - 5 * x + y[0][1] + rules);
  const Params params = {{"target_energy", -27}, {"seed", 1}, {"threads", 1}, {"time_limit", 60}};
  const Sol best = EasySolver(model).search(params).sol;
  out << best.energy() << best[x] << best[n] << best[m[0]] << rules.violation_count(best);
  return out.str();
}

TEST(ConcurrentProblems, AreStatedAndSolvedAsIfAlone) {
  const std::string alone = problem();
  const Var named = var("named");
  std::atomic<int> wrong{0};
  std::atomic<bool> stop{false};
  std::thread reader([&] {
    while (!stop) wrong += str(named) != "named";
  });
  std::vector<std::thread> threads;
  for (int t = 0; t < 6; ++t) {
    threads.emplace_back([&] {
      for (int round = 0; round < 30; ++round) wrong += problem() != alone;
    });
  }
  for (std::thread& thread : threads) thread.join();
  stop = true;
  reader.join();
  EXPECT_EQ(wrong, 0) << alone;
}

}  // namespace
