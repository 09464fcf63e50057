// Remainder by a divisor that is known long before the dividend, for random draws: a
// multiplication, a shift and a correction in the place of a 64-bit division.
//
// With m = floor((2^64 - 1) / d), which lies in [2^64 / d - 1, 2^64 / d), the product
// draw * m / 2^64 falls short of draw / d by less than 1. So its floor is the quotient or one less,
// and one conditional subtraction makes the remainder exact.
#pragma once

#include <cassert>
#include <cstdint>

namespace zorv {

class FastModulo {
 public:
  FastModulo() = default;
  explicit FastModulo(uint64_t divisor) : divisor_(divisor), reciprocal_(~0ull / divisor) {
    assert(divisor != 0);
  }

  uint64_t divisor() const { return divisor_; }
  uint64_t operator()(uint64_t draw) const {
    const uint64_t quotient = static_cast<uint64_t>(Wide(draw) * reciprocal_ >> 64);
    const uint64_t rest = draw - quotient * divisor_;
    return rest >= divisor_ ? rest - divisor_ : rest;
  }

 private:
  __extension__ typedef unsigned __int128 Wide;

  uint64_t divisor_ = 1;
  uint64_t reciprocal_ = ~0ull;
};

}  // namespace zorv
