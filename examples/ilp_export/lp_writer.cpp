#include "lp_writer.h"

#include <ostream>

#include "program_text.h"

namespace {

// "+ 3 c0" or "- 3 c0", on a line of its own: some readers limit the length of lines.
std::string term(const std::string& coeff, const std::string& name) {
  const bool is_negative = coeff.front() == '-';
  return "  " + (is_negative ? "- " + coeff.substr(1) : "+ " + coeff) + " " + name + "\n";
}

// Zeros too: they number the columns in their order.
void write_objective(const zorv_ilp* ilp, std::ostream& out) {
  out << "Minimize\n cost:\n";
  for (uint64_t c = 0; c < zorv_ilp_ncols(ilp); ++c) {
    out << term(objective_coeff(ilp, c), column_name(c));
  }
  out << term(objective_constant(ilp), kOne);
}

void write_line(const zorv_ilp* ilp, const Line& line, std::ostream& out) {
  out << " " << line.name << ":\n";
  for (uint64_t j = 0; j < zorv_ilp_row_nnz(ilp, line.row); ++j) {
    out << term(row_coeff(ilp, line.row, j), column_name(zorv_ilp_row_col(ilp, line.row, j)));
  }
  out << term("0", kOne);  // a sum must not be empty
  out << "  "
      << (line.relation == 'E'   ? "="
          : line.relation == 'L' ? "<="
                                 : ">=")
      << " " << line.bound << "\n";
}

void write_bounds(const zorv_ilp* ilp, std::ostream& out) {
  out << "Bounds\n";
  for (uint64_t c = 0; c < zorv_ilp_ncols(ilp); ++c) {
    const ColumnBounds bounds = column_bounds(ilp, c);
    out << " " << bounds.lo << " <= " << column_name(c) << " <= " << bounds.hi << "\n";
  }
}

}  // namespace

void write_lp(const zorv_ilp* ilp, std::ostream& out) {
  write_objective(ilp, out);
  out << "Subject To\n unit: " << kOne << " = 1\n";  // as a row: there has to be one
  for (const Line& line : lines_of(ilp, TwoSides::kAsTwoLines)) write_line(ilp, line, out);
  write_bounds(ilp, out);
  out << "Generals\n";
  for (uint64_t c = 0; c < zorv_ilp_ncols(ilp); ++c) out << " " << column_name(c) << "\n";
  out << " " << kOne << "\nEnd\n";
}
