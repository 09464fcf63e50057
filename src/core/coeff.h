// The coefficient type: an exact, unbounded, signed integer.
#pragma once

#include <cstdint>
#include <cstring>
#include <new>

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

// Whether the value owns no heap block, so that its bytes are the value.
inline bool is_inline(const coeff_t& c) {
  return static_cast<const void*>(c.backend().limbs()) == static_cast<const void*>(&c);
}

// The three below construct a coefficient in raw storage. They are the inner loops of model
// building, where nearly every value has one limb: that case is a handful of word moves.
inline void construct_copy(coeff_t* raw, const coeff_t& c) {
  if (is_inline(c)) {
    std::memcpy(static_cast<void*>(raw), static_cast<const void*>(&c), sizeof(coeff_t));
  } else {
    new (raw) coeff_t(c);
  }
}

inline void construct_negated(coeff_t* raw, const coeff_t& c) {
  construct_copy(raw, c);
  negate(*raw);
}

inline void construct_product(coeff_t* raw, const coeff_t& a, const coeff_t& b) {
  if (a.backend().size() == 1 && b.backend().size() == 1) {
    using wide_t = boost::multiprecision::double_limb_type;
    const wide_t magnitude = static_cast<wide_t>(*a.backend().limbs()) * *b.backend().limbs();
    new (raw) coeff_t(magnitude);
    if (is_negative(a) != is_negative(b)) negate(*raw);
  } else {
    new (raw) coeff_t();
    boost::multiprecision::multiply(*raw, a, b);
  }
}

}  // namespace zorv
