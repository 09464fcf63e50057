// An outside program in C++: the least energy of a model that the library solves itself, and of one
// for which it needs a solver library. An enumeration and a search agree on each.
#include <iostream>
#include <zorv/zorv.hpp>

namespace {

zorv::Integer least_energy(const zorv::Expr& e) {
  const zorv::Model model(e);
  const zorv::Integer least = zorv::ExhaustiveSolver(model).search().sol.energy();
  return zorv::EasySolver(model).search({{"target_energy", least}}).sol.energy();
}

}  // namespace

int main() {
  const zorv::IntVar n = zorv::int_var("n", 0, 10);
  const zorv::Var x = zorv::var("x"), y = zorv::var("y");
  std::cout << zorv::const_str("version") << " " << least_energy(n * n - 4 * n) << " "
            << least_energy(10 + x * y - 4 * x) << "\n";
}
