// Greedy descent of one walk: every variable in turn tries its moves and takes each one that
// lowers the energy, until a pass over all variables finds none.
#pragma once

#include <cstdint>

#include "solvers/search_walk.h"

namespace zorv {

// Makes the move if it lowers the energy; tells whether it did.
template <typename Number>
bool descend_to(SearchWalk<Number>& walk, uint32_t i, const Number& value) {
  ++walk.proposals;
  const Number delta = walk.state.move_delta(i, value);
  if (delta >= 0) return false;
  walk.apply_move(i, value, delta);
  return true;
}

// All values of a small range in ascending order. What counts as the current value changes with
// every move made on the way.
template <typename Number>
bool descend_small(SearchWalk<Number>& walk, uint32_t i) {
  const VariableRow<Number>& row = walk.tables.variables[i];
  bool has_improved = false;
  for (Number value = row.lo; value <= row.hi; value += 1) {
    if (value != walk.state.x[i]) has_improved |= descend_to(walk, i, value);
  }
  return has_improved;
}

// All steps in ascending order, each up and then down.
template <typename Number>
bool descend_stepped(SearchWalk<Number>& walk, uint32_t i) {
  const VariableRow<Number>& row = walk.tables.variables[i];
  bool has_improved = false;
  for (uint64_t k = 0; k < row.choices.divisor(); ++k) {
    const Number& step = walk.tables.steps[k];
    const Number up = walk.state.x[i] + step;
    if (up <= row.hi) has_improved |= descend_to(walk, i, up);
    const Number down = walk.state.x[i] - step;
    if (row.lo <= down) has_improved |= descend_to(walk, i, down);
  }
  return has_improved;
}

template <typename Number>
bool descend_variable(SearchWalk<Number>& walk, uint32_t i) {
  switch (walk.tables.variables[i].kind) {
    case VariableKind::kBinary:
      return descend_to(walk, i, Number(1 - walk.state.x[i]));
    case VariableKind::kSmall:
      return descend_small(walk, i);
    case VariableKind::kStepped:
      return descend_stepped(walk, i);
  }
  return false;
}

// A stop ends a pass between two variables; the clock is read between passes alone.
template <typename Number>
void descend(SearchWalk<Number>& walk) {
  bool has_improved;
  do {
    has_improved = false;
    for (uint32_t i = 0; i < walk.tables.variable_count && !walk.core.stop_requested(); ++i) {
      has_improved |= descend_variable(walk, i);
    }
  } while (has_improved && !walk.core.stop_requested() && !walk.core.time_is_up());
}

}  // namespace zorv
