// The model as the engine takes it over, in 64-bit numbers where these are proved to suffice: one
// list of terms for each purpose, from which the tables of the loops are made.
#pragma once

#include <cstdint>
#include <vector>

#include "easysolver/bodies.h"

namespace zorv::plugin::easy {

template <typename E>
struct Source {
  struct Pair {
    uint32_t i, j;
    E coeff;
  };
  std::vector<E> linear;
  std::vector<Pair> pairs;
  // Terms of degree 3 and more, literals as in the model.
  std::vector<E> product_coeffs;
  std::vector<uint64_t> product_head = {0};
  std::vector<uint32_t> product_literals;
  BodyTable<E> bodies;

  uint32_t size() const { return static_cast<uint32_t>(linear.size()); }
};

// Energies of tables are those of the model less `constant`, times `scale`.
struct EnergyUnit {
  Coeff constant;
  uint64_t scale = 1;
};

}  // namespace zorv::plugin::easy
