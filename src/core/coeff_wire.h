// Coefficients on their way across the boundary; the record's contract stands in zorv/wire.h.
#pragma once

#include "core/coeff.h"
#include "zorv/wire.h"

namespace zorv {

coeff_t read_wire(const CoeffWire* wire);

// Frees the block that `*out` holds, then stores `value` in a fresh one (none for zero).
void write_wire(const coeff_t& value, CoeffWire* out);

}  // namespace zorv
