// Decides which office goes to which building, so that people spend the least time on foot: a
// quadratic assignment problem. x[i][j] says that office i goes to building j, each row and each
// column of x holds one 1, and one einsum is the whole cost.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

using namespace zorv;

using Matrix = std::vector<std::vector<int>>;

struct Campus {
  Matrix visits;   // a day, from office to office
  Matrix minutes;  // from building to building
};

Matrix read_matrix(std::istream& numbers, size_t size) {
  Matrix matrix(size, std::vector<int>(size));
  for (auto& row : matrix) {
    for (int& entry : row) numbers >> entry;
  }
  return matrix;
}

// The number of offices and buildings, and the two matrices; "#" begins a comment.
Campus read_campus(std::istream& file) {
  std::stringstream numbers;
  for (std::string line; std::getline(file, line);)
    numbers << line.substr(0, line.find('#')) << "\n";
  size_t size = 0;
  numbers >> size;
  if (size > 9) return {};  // too many layouts to try them all
  Campus campus = {read_matrix(numbers, size), read_matrix(numbers, size)};
  return numbers ? campus : Campus();
}

// By the definition: office i is in building layout[i].
int walking_time(const Campus& campus, const std::vector<int>& layout) {
  int time = 0;
  for (size_t i = 0; i < layout.size(); ++i) {
    for (size_t k = 0; k < layout.size(); ++k) {
      time += campus.visits[i][k] * campus.minutes[layout[i]][layout[k]];
    }
  }
  return time;
}

// The slow and plain way: all layouts.
int least_walking_time(const Campus& campus) {
  std::vector<int> layout(campus.visits.size());
  std::iota(layout.begin(), layout.end(), 0);
  int least = walking_time(campus, layout);
  while (std::next_permutation(layout.begin(), layout.end())) {
    least = std::min(least, walking_time(campus, layout));
  }
  return least;
}

int main(int argc, char** argv) {
  std::ifstream file(argc == 2 ? argv[1] : "");
  const Campus campus = read_campus(file);
  const size_t n = campus.visits.size();
  if (n == 0) {
    std::cerr << "usage: assignment FILE_WITH_UP_TO_9_OFFICES\n";
    return 2;
  }
  const auto visits = Array<Integer, 2>::from(campus.visits);
  const auto minutes = Array<Integer, 2>::from(campus.minutes);
  const auto x = var_array("x", {n, n});
  const Expr cost = einsum<0>("ik,jl,ij,kl->", visits, minutes, x, x);
  const Expr rules = cons(sum(x, 0) == 1) + cons(sum(x, 1) == 1);
  const Model model(cost + upper_bound(cost) * rules);  // no way saved is worth a broken rule
  std::cout << n << " offices: " << model.var_count() << " variables, " << model.term_count(2)
            << " quadratic terms, " << model.cons_count() << " constraints\n";

  const int least = least_walking_time(campus);
  EasySolver solver(model);
  const Sol sol =
      solver.search({{"target_energy", least}, {"time_limit", 20}, {"seed", 1}, {"threads", 1}})
          .sol;
  const auto building = onehot_to_int(sol[x]);
  for (size_t i = 0; i < n; ++i) {
    std::cout << "office " << i + 1 << " -> building " << building[i].to<int>() + 1 << "\n";
  }
  std::cout << sol.energy() << " minutes a day; no layout takes less than " << least << "\n";
  return sol.energy() == least ? 0 : 1;
}
