#include "campus.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

namespace {

[[noreturn]] void refuse(const std::string& path, const std::string& what) {
  std::cerr << path << ": " << what << "\n";
  std::exit(1);
}

std::stringstream without_comments(std::istream& file) {
  std::stringstream numbers;
  for (std::string line; std::getline(file, line);)
    numbers << line.substr(0, line.find('#')) << "\n";
  return numbers;
}

std::vector<int64_t> read_matrix(std::istream& numbers, uint64_t size, const std::string& path) {
  std::vector<int64_t> matrix(size * size);
  for (int64_t& entry : matrix) {
    if (!(numbers >> entry)) refuse(path, "a matrix is too short");
  }
  return matrix;
}

}  // namespace

Campus read_campus(const std::string& path) {
  std::ifstream file(path);
  if (!file) refuse(path, "cannot be read");
  std::stringstream numbers = without_comments(file);
  Campus campus;
  if (!(numbers >> campus.size) || campus.size < 1 || campus.size > 9) {
    refuse(path, "the size is not a number from 1 to 9");
  }
  campus.visits = read_matrix(numbers, campus.size, path);
  campus.minutes = read_matrix(numbers, campus.size, path);
  return campus;
}

int64_t walking_time(const Campus& campus, const std::vector<uint64_t>& layout) {
  int64_t time = 0;
  for (uint64_t i = 0; i < campus.size; ++i) {
    for (uint64_t k = 0; k < campus.size; ++k) {
      time +=
          campus.visits[i * campus.size + k] * campus.minutes[layout[i] * campus.size + layout[k]];
    }
  }
  return time;
}
