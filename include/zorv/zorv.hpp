/// \file
/// zorv in C++: states combinatorial optimisation problems as polynomials over binary and integer
/// variables, with exact coefficients of any size, and solves them.
///
/// Everything is a value that owns what it refers to, and may be copied and moved; variables are
/// small numbers. Misuse that the compiler can see does not compile. Misuse that the library sees
/// writes one line to the standard error stream and aborts. What throws says so: reading and
/// converting integers, rows and axes that do not fit an array, hints of a model with other
/// variables, and a linear program that is none.
///
/// Headers by family: integer.hpp, term.hpp (variables), expr.hpp, constraint.hpp, array.hpp,
/// array_operators.hpp, array_sums.hpp, array_constraint.hpp, model.hpp, ilp.hpp, solver.hpp.
#pragma once

#include "zorv/array_constraint.hpp"
#include "zorv/array_operators.hpp"
#include "zorv/array_sums.hpp"
#include "zorv/ilp.hpp"
#include "zorv/solver.hpp"

namespace zorv {

/// A constant of the library or of the machine: "version", "compilation_date", "author",
/// "cpu_name", "cpu_threads", "total_ram", "hostname".
inline std::string const_str(const std::string& key) { return zorv_const_str(key.c_str()); }

}  // namespace zorv
