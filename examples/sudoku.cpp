// Solves a sudoku: an integer variable for each empty field, and for any two fields of a row, a
// column or a box the constraint that their difference is not 0.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

using namespace zorv;

using Digits = std::vector<int>;   // [81] row by row, 0 for an empty field
using Fields = std::vector<Expr>;  // [81] a given digit is a constant

// Digits, and "." for empty fields; what else is drawn between them does not count.
Digits read_sudoku(std::istream& file) {
  Digits digits;
  for (std::string line; std::getline(file, line);) {
    for (const char c : line.substr(0, line.find('#'))) {
      if (c == '.' || ('1' <= c && c <= '9')) digits.push_back(c == '.' ? 0 : c - '0');
    }
  }
  return digits;
}

Fields fields_of(const Digits& given) {
  Fields fields;
  for (const int digit : given) {
    fields.push_back(digit != 0 ? Expr(digit) : Expr(int_var(1, 9)));
  }
  return fields;
}

bool see_each_other(int a, int b) {
  const bool same_row = a / 9 == b / 9, same_column = a % 9 == b % 9;
  const bool same_box = a / 27 == b / 27 && a % 9 / 3 == b % 9 / 3;
  return same_row || same_column || same_box;
}

// The energy is the number of pairs of equal digits that see each other.
Expr clashes(const Fields& fields) {
  const Allowed not_0 = equal({{-8, -1}, {1, 8}});
  Expr clashes;
  for (int a = 0; a < 81; ++a) {
    for (int b = 0; b < a; ++b) {
      if (see_each_other(a, b)) clashes += cons(fields[a] - fields[b], not_0);
    }
  }
  return clashes;
}

std::string row_of(const Digits& digits, int row) {
  std::string text;
  for (int column = 0; column < 9; ++column) {
    const int digit = digits[9 * row + column];
    text += column % 3 == 0 && column != 0 ? " | " : " ";
    text += digit == 0 ? '.' : static_cast<char>('0' + digit);
  }
  return text;
}

void print(const Digits& given, const Digits& solved) {
  const std::string line = " ------+-------+------";
  for (int row = 0; row < 9; ++row) {
    if (row % 3 == 0 && row != 0) std::cout << line << "    " << line << "\n";
    std::cout << row_of(given, row) << "    " << row_of(solved, row) << "\n";
  }
}

int main(int argc, char** argv) {
  std::ifstream file(argc == 2 ? argv[1] : "");
  const Digits given = read_sudoku(file);
  if (given.size() != 81) {
    std::cerr << "usage: sudoku FILE_WITH_81_FIELDS\n";
    return 2;
  }
  const Fields fields = fields_of(given);
  EasySolver solver{Model(clashes(fields))};
  const Sol sol =
      solver.search({{"target_energy", 0}, {"time_limit", 20}, {"seed", 1}, {"threads", 1}}).sol;

  Digits digits;
  for (const Expr& field : fields) digits.push_back(sol[field].to<int>());
  print(given, digits);
  std::cout << "\n" << sol.energy() << " clashes\n";
  return sol.energy() == 0 ? 0 : 1;
}
