// The number type that crosses the boundary: an exact, unbounded, signed integer.
#pragma once

#include "zorv/engine/exact_number.h"
#include "zorv/solver_abi.h"

namespace zorv::plugin {

using Coeff = ExactNumber;

// One coefficient of a caller, or an array of them.
inline const Coeff* as_coeffs(const ::coeff_t* coeffs) {
  return reinterpret_cast<const Coeff*>(coeffs);
}

// Frees the block that `*out` holds, then stores `value` in a fresh one (none for zero).
void write_wire(const Coeff& value, CoeffWire* out);

}  // namespace zorv::plugin
