// CoeffSum: an exact sum of many coefficients, nearly all of which have one limb.
#pragma once

#include "core/compact_coeff.h"

namespace zorv {

// One-limb values are added up in a 128-bit integer, which has room for 2^63 of them.
class CoeffSum {
 public:
  CoeffSum() = default;
  explicit CoeffSum(const coeff_t& start) : long_sum_(start) {}
  explicit CoeffSum(const CompactCoeff& start) { *this += start; }

  void operator+=(const CompactCoeff& c) {
    if (c.is_small()) {
      short_sum_ += c.small();
    } else {
      long_sum_ += c.large();
    }
  }
  void operator+=(const coeff_t& c) {
    if (c.backend().size() == 1) {
      const auto magnitude = static_cast<wide_t>(*c.backend().limbs());
      short_sum_ += is_negative(c) ? -magnitude : magnitude;
    } else {
      long_sum_ += c;
    }
  }

  coeff_t total() const { return long_sum_ + coeff_t(short_sum_); }

 private:
  using wide_t = boost::multiprecision::signed_double_limb_type;

  wide_t short_sum_ = 0;
  coeff_t long_sum_;
};

}  // namespace zorv
