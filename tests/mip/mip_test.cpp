// Exported programs, solved by glpsol from both file formats, beside all points of their models.
// The writers and the reader are those of the example, and everything goes through the C++ header.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

#include "ilp_export/lp_writer.h"
#include "ilp_export/mps_writer.h"
#include "ilp_export/solution_reader.h"

namespace {

using namespace zorv;

using Optimum = std::optional<Integer>;  // none without a feasible point

std::string text_of(const Optimum& optimum) { return optimum ? optimum->str() : "infeasible"; }

bool holds(const Expr& e, const Sol& sol) {
  return !e.is_declared() || e.violation_count(sol) == 0;
}

// The next assignment of the model in the order of a counter; false after the last.
bool advance(const Model& model, Sol& sol) {
  for (uint64_t i = 0; i < model.var_count(); ++i) {
    sol.flip(model.var(i));
    if (sol[model.var(i)] == 1) return true;
  }
  for (uint64_t i = 0; i < model.int_var_count(); ++i) {
    const IntVar n = model.int_var(i);
    const auto [lo, hi] = n.bounds();
    const bool is_highest = sol[n] == hi;
    sol.set(n, is_highest ? lo : Integer(sol[n].to<int64_t>() + 1));
    if (!is_highest) return true;
  }
  return false;
}

Optimum least_energy(const Expr& e, const Model& model) {
  Sol sol(model);
  Optimum least;
  do {
    if (!holds(e, sol)) continue;
    const Integer energy = sol.comp_energy();
    if (!least || energy < *least) least = energy;
  } while (advance(model, sol));
  return least;
}

// A random expression that mostly has a program, over a few variables of each kind.
class RandomExpr {
 public:
  explicit RandomExpr(std::mt19937_64& random) : random_(random) {
    for (Var& x : x_) x = var();
    const int lo = small();
    parts_ = {x_[0], x_[1], x_[2], k_, n_, int_var(lo, lo + 1 + below(4))};
  }

  Expr draw() {
    Expr e = linear();
    for (int i = below(3); i > 0; --i) {
      const int lo = small() - 4;
      e += (1 + below(3)) * cons(lo <= linear() <= lo + below(9));
    }
    for (int i = below(3); i > 0; --i) e += cons(penalty());
    return e;
  }

 private:
  int below(int n) { return static_cast<int>(random_() % static_cast<uint64_t>(n)); }
  int small() { return below(7) - 3; }
  Expr linear() {
    Expr e = small();
    for (const Expr& part : parts_) {
      if (below(2) == 0) e += small() * part;
    }
    if (below(3) == 0) e += a_bit();  // now and then apart from its VarInt
    return e;
  }
  Var a_bit() { return n_.bit(static_cast<uint64_t>(below(static_cast<int>(n_.bit_count())))); }
  Term penalty() {
    std::vector<Var> factors;
    for (const Var x : x_) {
      if (below(2) == 0) factors.push_back(x);
    }
    if (factors.empty() || below(4) == 0) factors.push_back(a_bit());
    if (factors.size() > 2) factors[0] = ~factors[0];
    Term product = 1 + below(3);
    for (const Var x : factors) product *= x;
    return product;
  }

  std::mt19937_64& random_;
  Var x_[3];
  VarInt k_{-1, 3}, n_{-2, 3};
  std::vector<Expr> parts_;
};

class Glpsol : public ::testing::Test {
 protected:
  Glpsol() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zorv_mip_XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) folder_ = pattern;
  }
  ~Glpsol() override { std::filesystem::remove_all(folder_); }

  // The energy of the point that glpsol finds.
  Optimum solve(const std::string& format, void (*write)(const Ilp&, std::ostream&), const Ilp& ilp,
                const Expr& e) const {
    const std::string in = folder_ / "program", out = folder_ / "solution";
    std::ofstream file(in);
    write(ilp, file);
    file.close();
    std::filesystem::remove(out);
    const std::string log = folder_ / "log";
    const std::string command = "glpsol " + format + " " + in + " -w " + out + " >" + log + " 2>&1";
    if (std::system(command.c_str()) != 0) {
      std::ifstream lines(log);
      throw std::runtime_error(command + "\n" +
                               std::string(std::istreambuf_iterator<char>(lines), {}));
    }
    const auto values = read_solution(out, ilp.column_count());
    if (!values) return std::nullopt;
    const Sol sol = decode(ilp, *values);
    EXPECT_TRUE(holds(e, sol));
    return sol.energy();
  }

  void compare(const std::string& name, const Expr& e) const {
    const Model model(e);
    const Ilp ilp(model);
    const Optimum by_mps = solve("--freemps", write_mps, ilp, e);
    const Optimum by_lp = solve("--lp", write_lp, ilp, e);
    const Optimum by_enumeration = least_energy(e, model);
    std::cout << name << ": " << ilp.column_count() << " columns, " << ilp.row_count()
              << " rows, optimum " << text_of(by_mps) << " by MPS, " << text_of(by_lp) << " by LP, "
              << text_of(by_enumeration) << " by enumeration\n";
    EXPECT_EQ(text_of(by_mps), text_of(by_enumeration)) << name;
    EXPECT_EQ(text_of(by_lp), text_of(by_enumeration)) << name;
  }

  std::filesystem::path folder_;
};

TEST_F(Glpsol, SolvesModelsOfEveryKind) {
  const Var x = var(), y = var(), z = var(), w = var();
  const VarInt k("k", -7, 3), n("n", 0, 5);
  const IntVar a = int_var("a", -9, -2), b = int_var("b", -3, 4);
  const Integer big("1180591620717411303424");
  const Expr profit = -60 * x - 100 * y - 120 * z - 30 * w;

  const struct {
    const char* name;
    Expr e;
  } rows[] = {
      {"knapsack", profit + cons(10 * x + 20 * y + 30 * z + 7 * w <= 50)},
      {"no rows", profit + 7},
      {"constant", -5},
      {"two-sided row", 10 * x + w + 2 * z + cons(9 <= 3 * x + 5 * y + 6 * z + 9 * w - 1 <= 12)},
      {"equation", 4 * x + 3 * y + 2 * z + w + cons(2 * x + 3 * y + 4 * z + 5 * w == 8)},
      {"not both", profit + cons(x * y + 2 * (y * z) + 5 * w)},
      {"a complement", 9 * z - 5 * x - 7 * y + cons(x * y * ~z)},
      {"VarInt", 4 * k - 5 * x + cons(-10 <= 3 * k + 2 * x <= -2)},
      {"two VarInts", 3 * k - 2 * n + x + cons(2 <= k + n <= 4)},
      {"a VarInt that stays bits", cons(n.bit(1) * x) - n - 2 * x},
      {"negative atom", 2 * b - a + cons(-3 <= 2 * a + 5 * b <= 100)},
      {"all together",
       2 * a - 3 * b + 5 * k - 8 * x - 9 * y + cons(x * y) + cons(-2 <= a + b + k + 4 * x <= -1)},
      {"beyond 64 bits", big - big * x - 3 * (big * y) + cons(x * y)},
      {"infeasible", cons(x + y == 2) + cons(x * y)},
      {"infeasible in integers", x + cons(2 * a + 4 * b == 3)},
      {"empty interval", x + cons(2 <= x + y + z <= 1)},
      {"infeasible without entries", x + cons(4 <= Expr(3) <= 9)},
  };
  for (const auto& row : rows) ASSERT_NO_FATAL_FAILURE(compare(row.name, row.e));
}

TEST_F(Glpsol, SolvesRandomModels) {
  const uint64_t seed = std::random_device()();
  std::cout << "seed " << seed << "\n";
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937_64 random(seed);
  for (int solved = 0; solved < 12;) {
    const Expr e = RandomExpr(random).draw();
    try {
      ASSERT_NO_FATAL_FAILURE(compare("random " + std::to_string(solved + 1), e));
      ++solved;
    } catch (const std::domain_error&) {
      continue;  // not every draw is linear
    }
  }
}

}  // namespace
