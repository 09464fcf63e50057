#include "lp_writer.h"

#include <ostream>

#include "program_text.h"

namespace {

// "+ 3 c0" or "- 3 c0", on a line of its own: some readers limit the length of lines.
void write_term(const zorv::Integer& coeff, const std::string& name, std::ostream& out) {
  const bool is_negative = coeff.sign() < 0;
  out << (is_negative ? "  - " : "  + ") << (is_negative ? -coeff : coeff) << " " << name << "\n";
}

// Zeros too: they number the columns in their order.
void write_objective(const zorv::Ilp& ilp, std::ostream& out) {
  out << "Minimize\n cost:\n";
  for (uint64_t c = 0; c < ilp.column_count(); ++c) {
    write_term(ilp.column(c).objective, column_name(c), out);
  }
  write_term(ilp.constant(), kOne, out);
}

const char* sign_of(char relation) { return relation == 'E' ? "=" : relation == 'L' ? "<=" : ">="; }

void write_line(const Line& line, std::ostream& out) {
  out << " " << line.name << ":\n";
  for (const auto& [column, coeff] : line.entries) write_term(coeff, column_name(column), out);
  write_term(0, kOne, out);  // a sum must not be empty
  out << "  " << sign_of(line.relation) << " " << line.bound << "\n";
}

void write_bounds(const zorv::Ilp& ilp, std::ostream& out) {
  out << "Bounds\n";
  for (uint64_t c = 0; c < ilp.column_count(); ++c) {
    const zorv::Ilp::Column column = ilp.column(c);
    out << " " << column.lo << " <= " << column_name(c) << " <= " << column.hi << "\n";
  }
}

}  // namespace

void write_lp(const zorv::Ilp& ilp, std::ostream& out) {
  write_objective(ilp, out);
  out << "Subject To\n unit: " << kOne << " = 1\n";  // as a row: there has to be one
  for (const Line& line : lines_of(ilp, TwoSides::kAsTwoLines)) write_line(line, out);
  write_bounds(ilp, out);
  out << "Generals\n";
  for (uint64_t c = 0; c < ilp.column_count(); ++c) out << " " << column_name(c) << "\n";
  out << " " << kOne << "\nEnd\n";
}
