// The coefficient type: an exact, unbounded, signed integer.
#pragma once

#include <boost/multiprecision/cpp_int.hpp>
#include <cstring>

namespace zorv {

// Expression templates are off: an operator returns a value, so that `auto` and `a * b + c` mean
// what they say. Two 64-bit limbs are held inline; only larger magnitudes own a heap block.
using coeff_t = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>,
                                              boost::multiprecision::et_off>;
using energy_t = coeff_t;

// Terms are laid out, copied and handed to solver libraries on the strength of these two numbers.
static_assert(sizeof(coeff_t) == 32);
static_assert(alignof(coeff_t) == 16);

inline bool is_zero(const coeff_t& c) {
  return c.backend().size() == 1 && *c.backend().limbs() == 0;
}

inline bool is_negative(const coeff_t& c) { return c.backend().sign(); }

inline void negate(coeff_t& c) { c.backend().negate(); }

}  // namespace zorv
