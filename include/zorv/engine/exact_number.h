// The number type that zorv and its solver libraries share, and what must not be asked of it.
#pragma once

#include <boost/multiprecision/cpp_int.hpp>
#include <concepts>

namespace zorv {

// Expression templates are off: an operator returns a value, so that `auto` and `a * b + c` mean
// what they say. Two 64-bit limbs are held inline; only larger magnitudes own a heap block.
using ExactNumber = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>,
                                                  boost::multiprecision::et_off>;

// Boost 1.74 gets both wrong for negative values of several limbs. These operators are found beside
// Boost's own, and so the compiler refuses every use: write `c += 1`, and divide.
ExactNumber& operator++(ExactNumber&) = delete;
ExactNumber operator++(ExactNumber&, int) = delete;
template <std::integral Count>
ExactNumber operator>>(const ExactNumber&, Count) = delete;
template <std::integral Count>
ExactNumber operator>>(ExactNumber&&, Count) = delete;
template <std::integral Count>
ExactNumber& operator>>=(ExactNumber&, Count) = delete;

}  // namespace zorv
