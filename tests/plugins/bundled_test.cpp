// Both libraries through the library that loads them: what one proves to be the best, the other one
// finds, and a solution made by hand of its values has the same energy.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>

#include "zorv/zorv.hpp"

namespace {

using namespace zorv;

void expect_same_energy_by_hand(const Model& model, const Sol& sol) {
  Sol copy(model);
  copy.set(sol);
  EXPECT_FALSE(copy.is_energy_valid());
  EXPECT_EQ(copy.comp_energy(), sol.energy());
}

Result heuristic(const Model& model, const Integer& target, const char* threads = "1") {
  return EasySolver(model).search(
      {{"target_energy", target}, {"time_limit", 20}, {"seed", 3}, {"threads", threads}});
}

// Reads the files of the folders maxcut, qubo and qap of the instances that come with the bench.
class Reader {
 public:
  explicit Reader(const std::string& path) : file_(ZORV_INSTANCES "/" + path) {
    size_ = static_cast<uint64_t>(number());
    count_ = number();
  }

  Expr max_cut() {
    Expr cut;
    const auto x = var_array("x", {size_});
    for (; count_ > 0; --count_) {
      const Var a = x[uint64_t(number()) - 1], b = x[uint64_t(number()) - 1];
      cut += number() * (a + b - 2 * a * b);
    }
    return -cut;
  }
  Expr qubo() {
    Expr energy;
    const auto x = var_array("x", {size_});
    for (; count_ > 0; --count_) {
      const uint64_t i = uint64_t(number()) - 1, j = uint64_t(number()) - 1;
      energy += (i == j ? 1 : 2) * number() * (x[i] * x[j]);
    }
    return energy;
  }
  Expr assignment() {
    const auto x = var_array("x", {size_, size_});
    const auto flows = matrix(), distances = matrix();
    Expr cost;
    for (uint64_t i = 0; i < size_; ++i) {
      Expr row, column;
      for (uint64_t k = 0; k < size_; ++k) {
        row += x[i][k];
        column += x[k][i];
        for (uint64_t j = 0; j < size_; ++j) {
          for (uint64_t l = 0; l < size_; ++l) {
            cost += flows[i][j] * distances[k][l] * (x[i][k] * x[j][l]);
          }
        }
      }
      cost += 500 * cons(row == 1) + 500 * cons(column == 1);
    }
    return cost;
  }

 private:
  int64_t number() {
    int64_t value = 0;
    EXPECT_TRUE(file_ >> value);
    return value;
  }
  std::vector<std::vector<int64_t>> matrix() {
    std::vector<std::vector<int64_t>> rows(size_, std::vector<int64_t>(size_));
    for (auto& row : rows) {
      for (int64_t& entry : row) entry = number();
    }
    return rows;
  }

  std::ifstream file_;
  uint64_t size_;
  int64_t count_;
};

TEST(BundledLibraries, SolveTheInstancesOfTheBench) {
  const struct {
    const char* path;
    Expr (Reader::*read)();
    int64_t optimum;  // by a program of its own
  } instances[] = {{"maxcut/cut24.txt", &Reader::max_cut, -94},
                   {"qubo/dense24.sparse", &Reader::qubo, -4258},
                   {"qap/walk5.dat", &Reader::assignment, 275}};
  for (const auto& instance : instances) {
    SCOPED_TRACE(instance.path);
    Reader reader(instance.path);
    const Model model((reader.*instance.read)());
    const Result proof = ExhaustiveSolver(model).search();
    EXPECT_EQ(proof.info("complete"), "1");
    EXPECT_EQ(proof.sol.energy(), instance.optimum);
    const Result found = heuristic(model, instance.optimum, "2");
    EXPECT_EQ(found.sol.energy(), instance.optimum);
    expect_same_energy_by_hand(model, found.sol);
  }
}

TEST(BundledLibraries, AgreeOnModelsWithConstraints) {
  std::mt19937_64 random(11);
  const auto number = [&](int most) { return int(random() % unsigned(2 * most + 1)) - most; };
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    const auto x = var_array("x", {12});
    const auto some = [&](int terms, int factors) {
      Expr e;
      for (; terms > 0; --terms) {
        Expr product(number(9));
        for (int k = factors; k > 0; --k) product *= x[random() % 12];
        e += product;
      }
      return e;
    };
    Expr energy = some(30, 2) + some(5, 4);
    energy += 1000 * cons(some(8, 1) <= 3);
    energy += 20 * cons(-2 <= some(6, 3) <= 4);
    energy += 3 * abs(some(5, 1));
    const Model model(energy);
    const Sol best = ExhaustiveSolver(model).search().sol;
    const Result found = heuristic(model, best.energy());
    // A target counts only where no constraint is violated; else time would have to decide.
    if (energy.violation_count(best) == 0) {
      EXPECT_EQ(found.sol.energy(), best.energy());
    }
    expect_same_energy_by_hand(model, found.sol);
  }
}

// The heuristic's own way with integers, in bits, against the enumeration of them.
TEST(BundledLibraries, SearchInIntegersWhereThatIsAskedFor) {
  const IntVar n = int_var("n", -7, 12), m = int_var("m", 0, 20);
  const Var x = var("x");
  const Expr energy = n * n - 3 * n * m + m * m * x + 40 * x + 500 * cons(2 * n + m <= 25);
  const Model model(energy);
  const Integer least = ExhaustiveSolver(model).search().sol.energy();
  setenv("ZORV_INT_UNIFIED", "1", 1);
  const Result found = heuristic(model, least);
  unsetenv("ZORV_INT_UNIFIED");
  EXPECT_EQ(found.sol.energy(), least);
  EXPECT_NE(found.info("numbers"), "");  // which the library's own search does not tell
  EXPECT_EQ(energy.violation_count(found.sol), 0u);
  expect_same_energy_by_hand(model, found.sol);
}

}  // namespace
