// The parts of an integer linear program as text, for every format.
//
// Names in a file are numbers, c0, c1, ... for columns and r0, r1, ... for rows: formats disagree
// on what else a name may hold. One column more, fixed to 1, carries the constant of the objective:
// formats and readers disagree on the constant as well. It comes last, so that columns in a file
// are numbered as in the program. Numbers are exact; a solver that calculates with doubles rounds
// what is beyond 2^53.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

inline constexpr const char* kOne = "one";

inline std::string column_name(uint64_t c) { return "c" + std::to_string(c); }

// One line of a file for a row or one side of it.
struct Line {
  std::string name;
  std::vector<zorv::Ilp::Entry> entries;
  char relation;                       // 'E' for =, 'L' for <=, 'G' for >=
  zorv::Integer bound;                 // the right-hand side
  std::optional<zorv::Integer> range;  // of an 'L' line: how far below the bound it ends
};

enum class TwoSides { kAsRange, kAsTwoLines };

// Sides that cannot bind are left out, so that a row may have no line at all.
std::vector<Line> lines_of(const zorv::Ilp& ilp, TwoSides two_sides);
