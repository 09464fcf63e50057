#include "mps_writer.h"

#include <ostream>

#include "program_text.h"

namespace {

// The entries of each column, which is how the format wants them: " line coefficient".
std::vector<std::string> entries_by_column(const zorv_ilp* ilp, const std::vector<Line>& lines) {
  std::vector<std::string> columns(zorv_ilp_ncols(ilp));
  for (const Line& line : lines) {
    for (uint64_t j = 0; j < zorv_ilp_row_nnz(ilp, line.row); ++j) {
      const uint32_t c = zorv_ilp_row_col(ilp, line.row, j);
      columns[c] +=
          " " + column_name(c) + " " + line.name + " " + row_coeff(ilp, line.row, j) + "\n";
    }
  }
  return columns;
}

// Every column has an entry in the objective, also a 0: it is what makes the column known.
void write_columns(const zorv_ilp* ilp, const std::vector<Line>& lines, std::ostream& out) {
  const std::vector<std::string> entries = entries_by_column(ilp, lines);
  out << "COLUMNS\n M0 'MARKER' 'INTORG'\n";
  for (uint64_t c = 0; c < entries.size(); ++c) {
    out << " " << column_name(c) << " cost " << objective_coeff(ilp, c) << "\n" << entries[c];
  }
  out << " " << kOne << " cost " << objective_constant(ilp) << "\n M1 'MARKER' 'INTEND'\n";
}

// Both bounds of every column: what is assumed without them depends on the reader.
void write_bounds(const zorv_ilp* ilp, std::ostream& out) {
  out << "BOUNDS\n";
  for (uint64_t c = 0; c < zorv_ilp_ncols(ilp); ++c) {
    const ColumnBounds bounds = column_bounds(ilp, c);
    out << " LO BND " << column_name(c) << " " << bounds.lo << "\n"
        << " UP BND " << column_name(c) << " " << bounds.hi << "\n";
  }
  out << " FX BND " << kOne << " 1\n";
}

}  // namespace

void write_mps(const zorv_ilp* ilp, std::ostream& out) {
  const std::vector<Line> lines = lines_of(ilp, TwoSides::kAsRange);
  out << "NAME zorv\nROWS\n N cost\n";
  for (const Line& line : lines) out << " " << line.relation << " " << line.name << "\n";
  write_columns(ilp, lines, out);
  out << "RHS\n";
  for (const Line& line : lines) out << " RHS " << line.name << " " << line.bound << "\n";
  out << "RANGES\n";
  for (const Line& line : lines) {
    if (!line.range.empty()) out << " RNG " << line.name << " " << line.range << "\n";
  }
  write_bounds(ilp, out);
  out << "ENDATA\n";
}
