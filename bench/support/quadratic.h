// A large quadratic polynomial for benchmarks.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/expr.h"
#include "core/var_registry.h"

namespace zorv {

inline constexpr uint64_t kVariables = 10'000;

inline uint32_t first_variable() {
  static const uint32_t first = new_var_array("x", &kVariables, 1);
  return first;
}

// `n` different terms c*x_i*x_j in term order, i over all variables, j spread behind i, with
// coefficients that are not 0.
inline ExprImpl quadratic(uint64_t n) {
  const uint32_t x = first_variable();
  const uint64_t stride = std::max<uint64_t>(1, kVariables * (kVariables - 1) / 2 / n);
  ExprImpl e;
  e.list.allocate_slots(n);
  uint64_t made = 0;
  for (uint64_t i = 0; made < n; ++i) {
    for (uint64_t j = i + 1 + i % stride; j < kVariables && made < n; j += stride) {
      const auto a = static_cast<uint32_t>(x + i);
      const auto b = static_cast<uint32_t>(x + j);
      new (e.list.slot(made)) TermImpl(static_cast<int64_t>(made % 2000) - 2000, VarList(a, b));
      ++made;
    }
  }
  e.list.commit_slots(made);
  return e;
}

}  // namespace zorv
