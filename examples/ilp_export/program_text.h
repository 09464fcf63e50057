// The parts of an integer linear program as text, for every format.
//
// Names in a file are numbers, c0, c1, ... for columns and r0, r1, ... for rows: formats disagree
// on what else a name may hold. One column more, fixed to 1, carries the constant of the objective:
// formats and readers disagree on the constant as well. It comes last, so that columns in a file
// are numbered as in the program.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zorv/zorv.h"

inline constexpr const char* kOne = "one";

inline std::string column_name(uint64_t c) { return "c" + std::to_string(c); }

// All decimal; a solver that calculates with doubles rounds what is beyond 2^53.
std::string decimal(const CoeffWire* value);
// a - b
std::string difference(const CoeffWire* a, const CoeffWire* b);
std::string objective_coeff(const zorv_ilp* ilp, uint64_t c);
std::string objective_constant(const zorv_ilp* ilp);
std::string row_coeff(const zorv_ilp* ilp, uint64_t r, uint64_t j);

struct ColumnBounds {
  std::string lo, hi;
};
ColumnBounds column_bounds(const zorv_ilp* ilp, uint64_t c);

// One line of a file for a row or one side of it.
struct Line {
  std::string name;
  uint64_t row;
  char relation;      // 'E' for =, 'L' for <=, 'G' for >=
  std::string bound;  // the right-hand side
  std::string range;  // of an 'L' line: how far below the bound it ends; empty for anywhere
};

enum class TwoSides { kAsRange, kAsTwoLines };

// Sides that cannot bind are left out, so that a row may have no line at all.
std::vector<Line> lines_of(const zorv_ilp* ilp, TwoSides two_sides);
