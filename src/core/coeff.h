// The coefficient type: an exact, unbounded, signed integer.
#pragma once

#include "zorv/engine/exact_number.h"

namespace zorv {

using coeff_t = ExactNumber;
using energy_t = coeff_t;

// Terms are laid out, copied and handed to solver libraries on the strength of these two numbers.
static_assert(sizeof(coeff_t) == 32);
static_assert(alignof(coeff_t) == 16);

inline bool is_zero(const coeff_t& c) {
  return c.backend().size() == 1 && *c.backend().limbs() == 0;
}

inline bool is_one(const coeff_t& c) {
  return c.backend().size() == 1 && *c.backend().limbs() == 1 && !c.backend().sign();
}

inline bool is_negative(const coeff_t& c) { return c.backend().sign(); }

inline void negate(coeff_t& c) { c.backend().negate(); }

}  // namespace zorv
