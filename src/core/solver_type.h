// The name of the coefficient type that solver libraries are asked for.
#pragma once

namespace zorv {

// Coefficients are unbounded, so no expression needs another one, however small its numbers are.
inline constexpr const char kSolverType[] = "cppint";

}  // namespace zorv
