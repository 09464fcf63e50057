// Exported programs, solved by glpsol from both file formats, beside all points of their models.
// The writers and the reader are those of the example.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>

#include "ilp_export/lp_writer.h"
#include "ilp_export/mps_writer.h"
#include "ilp_export/solution_reader.h"
#include "model/ilp_models.h"

namespace zorv::test {
namespace {

using Optimum = std::optional<coeff_t>;  // none without a feasible point

std::string text_of(const Optimum& optimum) { return optimum ? optimum->str() : "infeasible"; }

bool holds(const zorv_expr* e, const zorv_sol* sol) {
  return unwrap(e).attr == kPlainAttr || zorv_cons_violation_count(e, sol) == 0;
}

Optimum least_energy(const zorv_expr* e, const zorv_model* m) {
  const Solution sol = zorv_sol_create(m);
  Optimum least;
  do {
    if (!holds(e, sol)) continue;
    const coeff_t energy = written(zorv_sol_compute_energy, sol);
    if (!least || energy < *least) least = energy;
  } while (advance(sol, m));
  return least;
}

class Glpsol : public ::testing::Test {
 protected:
  Glpsol() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zorv_mip_XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) folder_ = pattern;
  }
  ~Glpsol() override { std::filesystem::remove_all(folder_); }

  // The energy of the point that glpsol finds.
  Optimum solve(const std::string& format, void (*write)(const zorv_ilp*, std::ostream&),
                const zorv_ilp* ilp, const zorv_expr* e, const zorv_model* m) const {
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
    const auto values = read_solution(out, zorv_ilp_ncols(ilp));
    if (!values) return std::nullopt;
    const auto sol = decode(m, ilp, *values);
    EXPECT_TRUE(holds(e, sol.get()));
    return written(zorv_sol_compute_energy, sol.get());
  }

  void compare(const std::string& name, const zorv_expr* raw) const {
    const Handle e = zorv_expr_simplify_as_binary(raw);
    const Model m = zorv_model_create(e);
    const Ilp ilp = zorv_model_ilp_build(m);
    ASSERT_NE(ilp, nullptr) << zorv_ilp_last_error();
    const Optimum by_mps = solve("--freemps", write_mps, ilp, e, m);
    const Optimum by_lp = solve("--lp", write_lp, ilp, e, m);
    const Optimum by_enumeration = least_energy(e, m);
    std::cout << name << ": " << zorv_ilp_ncols(ilp) << " columns, " << zorv_ilp_nrows(ilp)
              << " rows, optimum " << text_of(by_mps) << " by MPS, " << text_of(by_lp) << " by LP, "
              << text_of(by_enumeration) << " by enumeration\n";
    EXPECT_EQ(by_mps, by_enumeration) << name;
    EXPECT_EQ(by_lp, by_enumeration) << name;
  }

  std::filesystem::path folder_;
};

TEST_F(Glpsol, SolvesModelsOfEveryKind) {
  const ExprImpl x = var(fresh()), y = var(fresh()), z = var(fresh()), w = var(fresh());
  const ExprImpl not_z = var(z.list.first.vars[0] | kNegationBit);
  const ExprImpl k = make_varint("k", -7, 3), n = make_varint("n", 0, 5);
  const ExprImpl a = var(new_int_var("a", -9, -2)), b = var(new_int_var("b", -3, 4));
  const coeff_t big = coeff_t(1) << 70;
  const ExprImpl profit = -60 * x - 100 * y - 120 * z - 30 * w;

  const struct {
    const char* name;
    Handle e;
  } rows[] = {
      {"knapsack", plus(between(10 * x + 20 * y + 30 * z + 7 * w, 0, 50), profit)},
      {"no rows", profit + 7},
      {"constant", constant(-5)},
      {"two-sided row",
       plus(between(3 * x + 5 * y + 6 * z + 9 * w - 1, 9, 12), 10 * x + w + 2 * z)},
      {"equation", plus(between(2 * x + 3 * y + 4 * z + 5 * w, 8, 8), 4 * x + 3 * y + 2 * z + w)},
      {"not both", plus(declared(x * y + 2 * (y * z) + 5 * w), profit)},
      {"a complement", plus(declared(x * y * not_z), 9 * z - 5 * x - 7 * y)},
      {"VarInt", plus(between(3 * k + 2 * x, -10, -2), 4 * k - 5 * x)},
      {"two VarInts", plus(between(k + n, 2, 4), 3 * k - 2 * n + x)},
      {"a VarInt that stays bits",
       plus(declared(var(varint_record(n.attr).vars[1]) * x), -1 * n - 2 * x)},
      {"negative atom", plus(between(2 * a + 5 * b, -3, 100), -1 * a + 2 * b)},
      {"all together", plus(plus(between(a + b + k + 4 * x, -2, -1), declared(x * y)),
                            2 * a - 3 * b + 5 * k - 8 * x - 9 * y)},
      {"beyond 64 bits", plus(declared(x * y), -1 * big * x - 3 * big * y + big)},
      {"infeasible", plus(between(x + y, 2, 2), declared(x * y))},
      {"infeasible in integers", plus(between(2 * a + 4 * b, 3, 3), x)},
      {"empty interval", plus(between(x + y + z, 2, 1), x)},
      {"infeasible without entries", plus(between(constant(3), 4, 9), x)},
  };
  for (const auto& row : rows) ASSERT_NO_FATAL_FAILURE(compare(row.name, row.e));
}

TEST_F(Glpsol, SolvesRandomModels) {
  const uint64_t seed = std::random_device()();
  std::cout << "seed " << seed << "\n";
  SCOPED_TRACE("seed " + std::to_string(seed));
  Random random(seed);
  for (int solved = 0; solved < 12;) {
    const Handle e = RandomExpr(random).draw();
    if (Ilp(zorv_model_ilp_build(model_of(e))) == nullptr) continue;
    ASSERT_NO_FATAL_FAILURE(compare("random " + std::to_string(++solved), e));
  }
}

}  // namespace
}  // namespace zorv::test
