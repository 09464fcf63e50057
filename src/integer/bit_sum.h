// An integer written in bits: a base plus coefficient times fresh binary variable.
#pragma once

#include <string>
#include <vector>

#include "core/expr.h"

namespace zorv {

struct BitSum {
  coeff_t base;
  std::vector<coeff_t> coeffs;
  std::vector<uint32_t> vars;  // binary literals, parallel to `coeffs`
};

// Makes n variables: a single one bears the name itself, several are the elements of a block of
// that name.
std::vector<uint32_t> new_bits(const std::string& name, uint64_t n);

// A value of [lo, hi] that no constraint pins down, with encoding_series(lo, hi, start) over new
// variables. With start 2 only every second value is reached. The constant lo if hi is not above.
BitSum new_slack(const std::string& name, const coeff_t& lo, const coeff_t& hi,
                 const coeff_t& start);

// base + c0*v0 + c1*v1 + ..., in this order.
ExprImpl polynomial_of(const coeff_t& base, const std::vector<coeff_t>& coeffs,
                       const std::vector<uint32_t>& vars);

}  // namespace zorv
