// From the column values that a solver found back to a solution of the model.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

using ColumnValues = std::vector<zorv::Integer>;

// Reads the plain file that `glpsol -w` writes:
//   s mip ROWS COLUMNS STATUS OBJECTIVE   status o for optimal, f for feasible
//   j NUMBER VALUE                        for each column, numbered from 1
// and any other lines. Returns nothing for another status: the solver found no point. Throws
// UserError if the file is anything else, or not of a program with this many columns and the one
// that is fixed to 1.
std::optional<ColumnValues> read_solution(const std::string& path, uint64_t columns);

// Throws UserError on a value out of its column's bounds.
zorv::Sol decode(const zorv::Ilp& ilp, const ColumnValues& values);
