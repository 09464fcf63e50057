#include "solution_reader.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "program_text.h"
#include "user_error.h"

namespace {

constexpr double kMostExact = 9007199254740992;  // 2^53

// The words after "s".
std::string read_status(std::istream& words, uint64_t columns) {
  std::string kind, status;
  uint64_t rows = 0, file_columns = 0;
  if (!(words >> kind >> rows >> file_columns >> status) || kind != "mip" ||
      file_columns != columns) {
    throw UserError("not a solution of this program");
  }
  return status;
}

// The words after "j". Solvers calculate with doubles.
void read_column(std::istream& words, ColumnValues& values) {
  uint64_t number = 0;
  double value = 0;
  if (!(words >> number >> value) || number < 1 || number > values.size()) {
    throw UserError("a line is no column");
  }
  if (std::abs(value) > kMostExact || value != std::floor(value)) {
    throw UserError("column " + std::to_string(number) + " is no exact whole number");
  }
  values[number - 1] = static_cast<int64_t>(value);
}

std::optional<ColumnValues> read_lines(std::istream& lines, uint64_t columns) {
  ColumnValues values(columns);
  uint64_t columns_read = 0;
  std::string status;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string key;
    words >> key;
    if (key == "s") status = read_status(words, columns);
    if (key != "j") continue;
    read_column(words, values);
    ++columns_read;
  }
  if (status.empty()) throw UserError("there is no status");
  if (status != "o" && status != "f") return std::nullopt;
  if (columns_read != columns) throw UserError("not all columns are there");
  return values;
}

}  // namespace

std::optional<ColumnValues> read_solution(const std::string& path, uint64_t columns) {
  std::ifstream file(path);
  if (!file || std::filesystem::is_directory(path)) throw UserError("cannot read '" + path + "'");
  try {
    std::optional<ColumnValues> values = read_lines(file, columns + 1);
    if (values) values->pop_back();  // the one that is fixed to 1
    return values;
  } catch (const UserError& error) {
    throw UserError(path + ": " + error.what());
  }
}

zorv::Sol decode(const zorv::Ilp& ilp, const ColumnValues& values) {
  for (uint64_t c = 0; c < values.size(); ++c) {
    const zorv::Ilp::Column column = ilp.column(c);
    if (values[c] < column.lo || values[c] > column.hi) {
      throw UserError("column " + column_name(c) + " has the value " + values[c].str() +
                      " out of its bounds");
    }
  }
  return ilp.solution(values);
}
