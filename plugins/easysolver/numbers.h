// What the engine is generic in: the number of a field, and with it that of an energy. Fields of 32
// bits serve where a bound of all sums proves that they suffice, then those of 64 bits, and the
// unbounded type always.
#pragma once

#include <cstdint>
#include <type_traits>

#include "common/coeff.h"

namespace zorv::plugin::easy {

template <typename Num>
using EnergyOf = std::conditional_t<std::is_integral_v<Num>, int64_t, Coeff>;

// All bits of a sign are set where a field counts with a minus.
template <typename Num>
using SignOf = std::conditional_t<std::is_integral_v<Num>, Num, int32_t>;

template <typename Num>
Num signed_value(const Num& value, SignOf<Num> sign) {
  if constexpr (std::is_integral_v<Num>) {
    return static_cast<Num>((value ^ sign) - sign);
  } else {
    return sign != 0 ? Num(-value) : value;
  }
}

template <typename Num>
double to_double(const Num& value) {
  return static_cast<double>(value);
}

}  // namespace zorv::plugin::easy
