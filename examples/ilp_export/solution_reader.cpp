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

void check_bounds(const zorv_ilp* ilp, uint64_t c, const CoeffWire* value) {
  CoeffOut lo, hi;
  zorv_ilp_col_bounds(ilp, c, lo, hi);
  if (difference(value, lo).front() == '-' || difference(hi, value).front() == '-') {
    throw UserError("column " + column_name(c) + " has the value " + decimal(value) +
                    " out of its bounds");
  }
}

// A collapsed integer: the library finds the bits.
void set_bits(const zorv_ilp* ilp, uint64_t c, const CoeffWire* value, zorv_sol* sol) {
  std::vector<uint8_t> bits(zorv_ilp_col_nbits(ilp, c));
  zorv_ilp_col_decode(ilp, c, value, bits.data());
  for (uint64_t b = 0; b < bits.size(); ++b) {
    const uint32_t variable = zorv_sol_model_var(sol, zorv_ilp_col_bit_var(ilp, c, b));
    zorv_sol_set(sol, variable, bits[b]);
  }
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

Sol decode(const zorv_model* model, const zorv_ilp* ilp, const ColumnValues& values) {
  Sol sol(zorv_sol_create(model));
  for (uint64_t c = 0; c < values.size(); ++c) {
    const Coeff value(values[c]);
    check_bounds(ilp, c, value);
    const int32_t number = zorv_ilp_col_model_var(ilp, c);
    if (number < 0) {
      set_bits(ilp, c, value, sol.get());
    } else if (zorv_ilp_col_kind(ilp, c) == 0) {
      zorv_sol_set(sol.get(), zorv_model_var(model, number), static_cast<int>(values[c]));
    } else {
      zorv_sol_set_int(sol.get(), zorv_model_int_var_orig(model, number), value);
    }
  }
  return sol;
}
