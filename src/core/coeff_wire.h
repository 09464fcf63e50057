// Coefficients on their way across the boundary; the record's contract stands in zorv/wire.h.
#pragma once

#include "core/compact_coeff.h"
#include "zorv/wire.h"

namespace zorv {

coeff_t read_wire(const CoeffWire* wire);
// The same in the type of terms.
inline CompactCoeff read_compact(const CoeffWire* wire) {
  if (wire->sign == 0 || wire->nlimbs != 1 ||
      *wire->limbs > static_cast<uint64_t>(CompactCoeff::kMostSmall)) {
    return read_wire(wire);
  }
  const auto magnitude = static_cast<int64_t>(*wire->limbs);
  return wire->sign < 0 ? -magnitude : magnitude;
}

// Frees the block that `*out` holds, then stores `value` in a fresh one (none for zero).
void write_wire(const coeff_t& value, CoeffWire* out);
inline void write_wire(const CompactCoeff& value, CoeffWire* out) {
  write_wire(value.is_small() ? coeff_t(value.small()) : value.large(), out);
}

}  // namespace zorv
