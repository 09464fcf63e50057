#include "program_text.h"

#include "common/zorv_handles.h"

namespace {

void append_lines(const zorv_ilp* ilp, uint64_t r, TwoSides two_sides, std::vector<Line>& lines) {
  CoeffOut lo, hi;
  uint32_t lo_free = 0, hi_free = 0;
  zorv_ilp_row_bounds(ilp, r, lo, hi, &lo_free, &hi_free);
  const std::string name = "r" + std::to_string(r);
  const std::string width = difference(hi, lo);
  const bool is_two_sided = lo_free == 0 && hi_free == 0;
  // A row that ends before it begins has no points; as a range it would have some.
  const bool is_range = is_two_sided && two_sides == TwoSides::kAsRange && width.front() != '-';
  if (is_two_sided && width == "0") {
    lines.push_back({name, r, 'E', decimal(lo), ""});
  } else if (is_range) {
    lines.push_back({name, r, 'L', decimal(hi), width});
  } else {
    if (lo_free == 0) lines.push_back({name + "lo", r, 'G', decimal(lo), ""});
    if (hi_free == 0) lines.push_back({name + "hi", r, 'L', decimal(hi), ""});
  }
}

}  // namespace

// An expression that is only a constant prints as that number, whatever its length.
std::string decimal(const CoeffWire* value) {
  const Expr constant(zorv_expr_create_int(value));
  return zorv_expr_str(constant.get());
}

std::string difference(const CoeffWire* a, const CoeffWire* b) {
  const Expr constant(zorv_expr_create_int(a));
  zorv_expr_isub_int(constant.get(), b);
  return zorv_expr_str(constant.get());
}

std::string objective_coeff(const zorv_ilp* ilp, uint64_t c) {
  CoeffOut value;
  zorv_ilp_obj(ilp, c, value);
  return decimal(value);
}

std::string objective_constant(const zorv_ilp* ilp) {
  CoeffOut value;
  zorv_ilp_obj_constant(ilp, value);
  return decimal(value);
}

std::string row_coeff(const zorv_ilp* ilp, uint64_t r, uint64_t j) {
  CoeffOut value;
  zorv_ilp_row_coeff(ilp, r, j, value);
  return decimal(value);
}

ColumnBounds column_bounds(const zorv_ilp* ilp, uint64_t c) {
  CoeffOut lo, hi;
  zorv_ilp_col_bounds(ilp, c, lo, hi);
  return {decimal(lo), decimal(hi)};
}

std::vector<Line> lines_of(const zorv_ilp* ilp, TwoSides two_sides) {
  std::vector<Line> lines;
  for (uint64_t r = 0; r < zorv_ilp_nrows(ilp); ++r) append_lines(ilp, r, two_sides, lines);
  return lines;
}
