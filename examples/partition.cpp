// Splits numbers of any size into two heaps whose sums differ as little as possible. The energy is
// the square of the difference, exact to its last digit however long that is, and the search looks
// at every split, so nothing is better than what it prints.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

using namespace zorv;

// A number a line; "#" begins a comment.
std::vector<Integer> read_numbers(std::istream& file) {
  std::vector<Integer> numbers;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') numbers.emplace_back(line);
  }
  return numbers;
}

// The sum of the left heap less that of the right one; 2*x - 1 is +1 for the left and -1 for the
// right. To swap the heaps changes nothing, so the first number stays on the left.
Expr difference_of(const std::vector<Integer>& numbers, const Array<Var, 1>& is_left) {
  Expr difference = numbers[0];
  for (size_t i = 1; i < numbers.size(); ++i) difference += numbers[i] * (2 * is_left[i - 1] - 1);
  return difference;
}

int main(int argc, char** argv) {
  std::ifstream file(argc == 2 ? argv[1] : "");
  const std::vector<Integer> numbers = read_numbers(file);
  if (numbers.size() < 2 || numbers.size() > 30) {
    std::cerr << "usage: partition FILE_WITH_2_TO_30_NUMBERS\n";
    return 2;
  }
  const Array<Var, 1> is_left = var_array("is_left", {numbers.size() - 1});
  const Expr difference = difference_of(numbers, is_left);
  const Sol best = ExhaustiveSolver(Model(sqr(difference))).search().sol;
  const Array<Integer, 1> chosen = best[is_left];

  Expr left, right;
  for (size_t i = 0; i < numbers.size(); ++i) {
    const bool goes_left = i == 0 || chosen[i - 1] == 1;
    (goes_left ? left : right) += numbers[i];
    std::cout << (goes_left ? "left   " : " right ") << numbers[i] << "\n";
  }
  const Integer least = best[difference];
  std::cout << "\nleft   " << left << "\n right " << right << "\nThe sums differ by "
            << (least.sign() < 0 ? -least : least) << ", and by no less in any of "
            << (uint64_t{1} << is_left.size()) << " splits.\n";
}
