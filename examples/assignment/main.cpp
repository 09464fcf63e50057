// A quadratic assignment problem stated with arrays: x[i][j] says that office i is in building j,
// each row and each column of x holds one 1, and one einsum is the whole cost. All layouts of the
// small instance are then tried, each as an assignment of the model, and the best one is printed.
#include <algorithm>
#include <iostream>
#include <numeric>

#include "campus.h"
#include "common/zorv_handles.h"

namespace {

using VarArray = std::unique_ptr<zorv_array_var, Destroy<zorv_array_var_destroy>>;
using IntArray = std::unique_ptr<zorv_array_int, Destroy<zorv_array_int_destroy>>;
using ExprArray = std::unique_ptr<zorv_array_expr, Destroy<zorv_array_expr_destroy>>;

IntArray matrix(const std::vector<int64_t>& entries, uint64_t size) {
  const uint64_t shape[] = {size, size};
  IntArray array(zorv_array_int_create(shape, 2));
  for (uint64_t i = 0; i < entries.size(); ++i) {
    zorv_array_int_set(array.get(), i, Coeff(entries[i]));
  }
  return array;
}

// Along each axis of x exactly one variable is 1, as declared constraints.
void add_one_hot(zorv_expr* energy, const zorv_array_var* x, int axis, int64_t weight) {
  const ExprArray sums(zorv_array_var_vector_sum(x, axis));
  const ExprArray ones(zorv_array_expr_eq_int(sums.get(), Coeff(1)));
  const Expr all(zorv_array_expr_sum(ones.get()));
  const Expr declared(zorv_cons_mark(all.get()));
  zorv_expr_imul_int(declared.get(), Coeff(weight));
  zorv_expr_iadd_expr(energy, declared.get());
}

// The sum of visits[i][k] * minutes[j][l] * x[i][j] * x[k][l].
ExprArray cost_of(const Campus& campus, zorv_array_var* x) {
  const IntArray visits = matrix(campus.visits, campus.size);
  const IntArray minutes = matrix(campus.minutes, campus.size);
  const uint32_t kinds[] = {1, 1, 0, 0};  // two arrays of integers, then two of variables
  void* const inputs[] = {visits.get(), minutes.get(), x, x};
  return ExprArray(
      static_cast<zorv_array_expr*>(zorv_einsum("ik,jl,ij,kl->", 4, kinds, inputs, 1, 0)));
}

// More than any layout costs, so that breaking a rule never pays.
int64_t rule_weight(const Campus& campus) {
  const int64_t visits = std::accumulate(campus.visits.begin(), campus.visits.end(), int64_t{0});
  return visits * *std::max_element(campus.minutes.begin(), campus.minutes.end()) + 1;
}

Model state(const Campus& campus, zorv_array_var* x) {
  const ExprArray cost = cost_of(campus, x);
  const Expr energy(zorv_array_expr_get(cost.get(), 0));
  add_one_hot(energy.get(), x, 0, rule_weight(campus));
  add_one_hot(energy.get(), x, 1, rule_weight(campus));
  const Expr simplified(zorv_expr_simplify_as_binary(energy.get()));
  return Model(zorv_model_create(simplified.get()));
}

int64_t energy_of(zorv_sol* sol, const zorv_array_var* x, const std::vector<uint64_t>& layout) {
  for (uint64_t i = 0; i < layout.size(); ++i) {
    for (uint64_t j = 0; j < layout.size(); ++j) {
      zorv_sol_set(sol, zorv_array_var_get(x, i * layout.size() + j), layout[i] == j);
    }
  }
  CoeffOut energy;
  zorv_sol_compute_energy(sol, energy);
  return energy.value();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: assignment CAMPUS_FILE\n";
    return 2;
  }
  const Campus campus = read_campus(argv[1]);
  const uint64_t shape[] = {campus.size, campus.size};
  const VarArray x(zorv_array_var_create_named("x", shape, 2));
  const Model model = state(campus, x.get());
  std::cout << campus.size << " offices: " << zorv_model_var_count(model.get()) << " variables, "
            << zorv_model_term_count(model.get(), 2) << " quadratic terms, "
            << zorv_model_native_cons_count(model.get()) << " constraints\n";

  const Sol sol(zorv_sol_create(model.get()));
  std::vector<uint64_t> layout(campus.size);
  std::iota(layout.begin(), layout.end(), uint64_t{0});
  std::vector<uint64_t> best = layout;
  int64_t best_energy = energy_of(sol.get(), x.get(), layout);
  uint64_t layouts = 0;
  do {
    ++layouts;
    const int64_t energy = energy_of(sol.get(), x.get(), layout);
    if (energy != walking_time(campus, layout)) {
      std::cerr << "the model gives " << energy << ", walking takes "
                << walking_time(campus, layout) << "\n";
      return 1;
    }
    if (energy < best_energy) {
      best_energy = energy;
      best = layout;
    }
  } while (std::next_permutation(layout.begin(), layout.end()));

  for (uint64_t i = 0; i < campus.size; ++i) {
    std::cout << "office " << i + 1 << " -> building " << best[i] + 1 << "\n";
  }
  std::cout << "best of " << layouts << " layouts: " << best_energy << " minutes a day\n";
}
