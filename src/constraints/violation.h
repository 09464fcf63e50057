// How far a value lies from what a constraint asks. One definition for expressions, models and
// search engines, whatever number type they count in.
#pragma once

#include <cstdint>

#include "core/coeff.h"

namespace zorv {

// Distance of `s` to [lo, hi].
template <typename Number>
Number distance(const Number& s, const Number& lo, const Number& hi) {
  if (s < lo) return lo - s;
  if (hi < s) return s - hi;
  return Number(0);
}

// Distance of `s` to the nearest of the intervals, pairs of (low, high); there is at least one.
template <typename Number, typename Intervals>
Number distance_to_set(const Number& s, const Intervals& allowed) {
  Number best = distance(s, allowed[0].first, allowed[0].second);
  for (const auto& [low, high] : allowed) {
    const Number d = distance(s, low, high);
    if (d < best) best = d;
    if (best == 0) break;
  }
  return best;
}

// weight * violation^k: k = 1 takes the violation itself, any other k its square.
template <typename Number>
Number penalty(const Number& weight, const Number& violation, uint8_t k) {
  return k == 1 ? Number(weight * violation) : Number(weight * violation * violation);
}

}  // namespace zorv
