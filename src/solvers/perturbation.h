// Where a round starts: a random state, or the last or best one shaken.
//
// Shaking changes each variable with a probability that grows while the best energy stands still.
// Integer variables with a wide range mostly jump by a geometric step, small ones more often than
// large ones, and now and then by a power of two.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "solvers/search_draws.h"
#include "solvers/search_tables.h"

namespace zorv {

// A geometric step above this is given up.
inline constexpr double kLargestJump = 9e18;
// One jump in this many takes a power of two instead.
inline constexpr uint64_t kStepShare = 10;
// Expected number of variables that change when nothing stagnates.
inline constexpr uint64_t kBaseChanges = 10;

template <typename Number>
Number random_value(Generator& generator, const SearchTables<Number>& tables, uint32_t i) {
  const uint64_t draw = generator();
  const VariableRow<Number>& row = tables.variables[i];
  if (row.kind == VariableKind::kBinary) return Number(draw & 1);
  if (const uint64_t count = tables.samples[i].value_count; count != 0) {
    return row.lo + Number(draw % count);
  }
  // A range just above what is sampled by a remainder can still be smaller than the draw.
  const Number range = row.hi - row.lo;
  const Number offset(draw);
  return offset > range ? Number(row.lo + offset % (range + 1)) : Number(row.lo + offset);
}

template <typename Number>
void random_state(Generator& generator, const SearchTables<Number>& tables,
                  std::vector<Number>& x) {
  for (uint32_t i = 0; i < tables.variable_count; ++i) x[i] = random_value(generator, tables, i);
}

// Moves x[i] by a step if the result is within bounds.
template <typename Number>
void jump(Generator& generator, const SearchTables<Number>& tables, uint32_t i, Number& value) {
  const VariableRow<Number>& row = tables.variables[i];
  const SampleRow& sample = tables.samples[i];
  const Number range = row.hi - row.lo;
  Number step;
  if (sample.value_count != 0 && generator() % kStepShare != 0) {
    const double u = (static_cast<double>(generator() >> 11) + 0.5) * 0x1p-53;
    const double k = std::log(u) / sample.log_q;
    // In a range so wide that q rounds to 1 a jump has no length: the variable stays there too.
    if (!(k >= 0.0 && k <= kLargestJump)) return;
    // A step beyond the range leads out of bounds whatever its sign, and may not fit the type.
    const uint64_t length = static_cast<uint64_t>(k) + 1;
    step = length < sample.value_count ? Number(length) : Number(range + 1);
  } else {
    step = tables.steps[row.choices(generator())];
  }
  const Number moved = (generator() & 1) != 0 ? Number(value + step) : Number(value - step);
  if (row.lo <= moved && moved <= row.hi) value = moved;
}

template <typename Number>
void perturb_state(Generator& generator, const SearchTables<Number>& tables, uint64_t stagnation,
                   std::vector<Number>& x) {
  const double share =
      static_cast<double>(stagnation + kBaseChanges) / static_cast<double>(tables.variable_count);
  const uint64_t threshold = share < 1.0 ? static_cast<uint64_t>(share * 0x1p64) : ~uint64_t{0};
  for (uint32_t i = 0; i < tables.variable_count; ++i) {
    if (generator() > threshold) continue;
    const VariableRow<Number>& row = tables.variables[i];
    if (row.kind == VariableKind::kBinary) {
      x[i] = 1 - x[i];
    } else if (row.kind == VariableKind::kSmall) {
      x[i] = row.lo + Number(row.choices(generator()));
    } else {
      jump(generator, tables, i, x[i]);
    }
  }
}

}  // namespace zorv
