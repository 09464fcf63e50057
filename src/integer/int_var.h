// IntVarRegistry: the native integer variables ("atoms") of the process.
//
// Thread rules: everything is added under `mutex`. Groups are ascending by `first` and never change
// once made, and looking one up takes no lock: `next_index` is published after the group of the
// atoms below it. Where both registries are locked, this one comes first.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/coeff.h"
#include "core/stable_blocks.h"
#include "zorv/engine/mutex.h"

namespace zorv {

// What one call made: `count` atoms with common bounds. No shape means a single atom.
struct IntVarGroup {
  uint32_t first;
  uint64_t count;
  std::string name;
  std::vector<uint64_t> shape;
  coeff_t lo, hi;
};

struct IntVarRegistry {
  StableBlocks<IntVarGroup> groups;
  std::atomic<uint64_t> next_index{0};
  std::atomic<uint64_t> bit_total{0};  // sum of the bit widths of all atoms
  Mutex mutex;
  // The bits of an atom as (coefficient, binary variable), filled when it is first binarized.
  std::map<uint32_t, std::vector<std::pair<coeff_t, uint32_t>>> encodings ZORV_GUARDED_BY(mutex);

  static IntVarRegistry& instance();
  // The group that holds the atom with this index; null if there is none.
  const IntVarGroup* find(uint32_t index) const;
};

// Both return the literal of the (first) new atom. They abort unless lo < hi and when the index
// space is full. A null or empty name draws a generated one.
uint32_t new_int_var(const char* name, const coeff_t& lo, const coeff_t& hi);
uint32_t new_int_var_array(const char* name, const uint64_t* shape, size_t ndim, const coeff_t& lo,
                           const coeff_t& hi);

// The group of an atom literal, for the export that reads bounds; aborts if `literal` is no atom.
const IntVarGroup& int_var_bounds(uint32_t literal);

// An atom as lo + sum of coefficient times bit: the (coefficient, binary variable) pairs. The bits
// "<name>#<j>" are made when the atom is first asked for and shared by all later users. Aborts if
// `literal` is no atom; its negation plays no part.
std::vector<std::pair<coeff_t, uint32_t>> encoding_of(uint32_t literal);

// How many bits the values 0 .. hi - lo need, at least 1.
uint64_t bit_width(const coeff_t& lo, const coeff_t& hi);

}  // namespace zorv
