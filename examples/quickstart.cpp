// How many chairs and tables pay best, if 2 chairs + 3 tables may not exceed 50 boards of wood?
#include <iostream>
#include <zorv/zorv.hpp>

int main() {
  const auto chairs = zorv::int_var("chairs", 0, 20);
  const auto tables = zorv::int_var("tables", 0, 20);

  const auto profit = 40 * chairs + 60 * tables - chairs * chairs - 2 * tables * tables;
  const auto wood = zorv::cons(2 * chairs + 3 * tables <= 50);  // kept whole, not squared out

  // Solvers minimise the energy. Breaking a rule costs 100 times the square of the excess.
  const zorv::Model model(100 * wood - profit);
  const auto best = zorv::EasySolver(model).search({{"time_limit", 0.2}}).sol;

  std::cout << best[chairs] << " chairs, " << best[tables] << " tables: profit " << best[profit]
            << ", " << wood.violation_count(best) << " rules broken\n";
}
