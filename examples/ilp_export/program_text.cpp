#include "program_text.h"

namespace {

void append_lines(const zorv::Ilp::Row& row, const std::string& name, TwoSides two_sides,
                  std::vector<Line>& lines) {
  const auto& [entries, lo, hi] = row;
  if (lo && hi && *lo == *hi) {
    lines.push_back({name, entries, 'E', *lo, {}});
  } else if (lo && hi && *lo < *hi && two_sides == TwoSides::kAsRange) {
    const zorv::Integer width = (zorv::Expr(*hi) - *lo).constant();
    lines.push_back({name, entries, 'L', *hi, width});
  } else {
    // Also a row that ends before it begins: it has no points, as a range it would have some.
    if (lo) lines.push_back({name + "lo", entries, 'G', *lo, {}});
    if (hi) lines.push_back({name + "hi", entries, 'L', *hi, {}});
  }
}

}  // namespace

std::vector<Line> lines_of(const zorv::Ilp& ilp, TwoSides two_sides) {
  std::vector<Line> lines;
  for (uint64_t r = 0; r < ilp.row_count(); ++r) {
    append_lines(ilp.row(r), "r" + std::to_string(r), two_sides, lines);
  }
  return lines;
}
