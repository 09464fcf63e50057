// The two number types that the search engine is made for: machine integers where a bound proves
// that nothing can overflow, unbounded integers elsewhere. Both are exact, so both make the same
// moves.
#pragma once

#include <cstdint>

#include "core/coeff.h"

namespace zorv {

template <typename Number>
Number number_from(const coeff_t& value) {
  return static_cast<Number>(value);
}

// Equal for equal values: a magnitude of up to 64 bits is rounded to nearest by both.
inline double to_double(int64_t value) { return static_cast<double>(value); }
inline double to_double(const coeff_t& value) { return value.convert_to<double>(); }

}  // namespace zorv
