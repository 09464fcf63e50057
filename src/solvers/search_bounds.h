// How large the numbers of a search can get, worked out from the model before it starts.
#pragma once

#include <cstdint>
#include <vector>

#include "core/literal.h"
#include "model/model.h"
#include "zorv/exact_range.h"

namespace zorv {

// The place of a compiled literal in a whole state: binary variables first, then integer ones.
inline uint32_t flat_index(uint32_t literal, uint64_t bit_count) {
  return is_atom(literal) ? index_of(literal) + static_cast<uint32_t>(bit_count)
                          : identity_of(literal);
}

// For each variable the largest magnitude of its values, at least 1.
std::vector<coeff_t> value_magnitudes(const ModelImpl& model);

// No body of `cons` lies further than this from 0, whatever the state.
coeff_t body_reach(const NativeCons& cons, const std::vector<coeff_t>& magnitudes,
                   uint64_t bit_count);

// The least and the greatest value that interval arithmetic allows the body of `cons`.
Interval body_range(const ModelImpl& model, const NativeCons& cons);

// The intervals of `cons`, joined within `range`.
std::vector<Interval> penalty_intervals(const NativeCons& cons, const Interval& range);

// Whether no step of a search can leave the range of kMachineBits: values and the candidates tried
// before the test of bounds, bodies, violations, penalties, energies, and differences of them.
bool fits_machine_integers(const ModelImpl& model);

}  // namespace zorv
