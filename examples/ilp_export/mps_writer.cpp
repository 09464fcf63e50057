#include "mps_writer.h"

#include <ostream>
#include <sstream>

#include "program_text.h"

namespace {

// The entries of each column, which is how the format wants them: " column line coefficient".
std::vector<std::ostringstream> entries_by_column(const zorv::Ilp& ilp,
                                                  const std::vector<Line>& lines) {
  std::vector<std::ostringstream> columns(ilp.column_count());
  for (const Line& line : lines) {
    for (const auto& [c, coeff] : line.entries) {
      columns[c] << " " << column_name(c) << " " << line.name << " " << coeff << "\n";
    }
  }
  return columns;
}

// Every column has an entry in the objective, also a 0: it is what makes the column known.
void write_columns(const zorv::Ilp& ilp, const std::vector<Line>& lines, std::ostream& out) {
  const std::vector<std::ostringstream> entries = entries_by_column(ilp, lines);
  out << "COLUMNS\n M0 'MARKER' 'INTORG'\n";
  for (uint64_t c = 0; c < entries.size(); ++c) {
    out << " " << column_name(c) << " cost " << ilp.column(c).objective << "\n" << entries[c].str();
  }
  out << " " << kOne << " cost " << ilp.constant() << "\n M1 'MARKER' 'INTEND'\n";
}

// Both bounds of every column: what is assumed without them depends on the reader.
void write_bounds(const zorv::Ilp& ilp, std::ostream& out) {
  out << "BOUNDS\n";
  for (uint64_t c = 0; c < ilp.column_count(); ++c) {
    const zorv::Ilp::Column column = ilp.column(c);
    out << " LO BND " << column_name(c) << " " << column.lo << "\n"
        << " UP BND " << column_name(c) << " " << column.hi << "\n";
  }
  out << " FX BND " << kOne << " 1\n";
}

}  // namespace

void write_mps(const zorv::Ilp& ilp, std::ostream& out) {
  const std::vector<Line> lines = lines_of(ilp, TwoSides::kAsRange);
  out << "NAME zorv\nROWS\n N cost\n";
  for (const Line& line : lines) out << " " << line.relation << " " << line.name << "\n";
  write_columns(ilp, lines, out);
  out << "RHS\n";
  for (const Line& line : lines) out << " RHS " << line.name << " " << line.bound << "\n";
  out << "RANGES\n";
  for (const Line& line : lines) {
    if (line.range) out << " RNG " << line.name << " " << *line.range << "\n";
  }
  write_bounds(ilp, out);
  out << "ENDATA\n";
}
