// SearchWalk: a worker's state on its way, with its generator, its count of proposals, and the
// filter in front of the shared pool.
#pragma once

#include <cstdint>
#include <memory>

#include "solvers/search_core.h"
#include "solvers/search_draws.h"
#include "solvers/state_history.h"

namespace zorv {

template <typename Number>
class SearchWalk {
 public:
  SearchWalk(IntSearchCore& c, const SearchTables<Number>& t, uint32_t thread)
      : core(c),
        tables(t),
        generator(worker_generator(c.opts.seed, thread)),
        state(c.model, t),
        keeper_(c.add_keeper(
            std::make_unique<StateHistory<Number>>(c.model, state, c.needs_hashes()))) {}

  IntSearchCore& core;
  const SearchTables<Number>& tables;
  Generator generator;
  SearchState<Number> state;
  uint64_t proposals = 0;

  // Sets out from state.x, changed from outside.
  void start() {
    state.evaluate();
    note_candidate();
  }
  uint32_t draw_variable() { return static_cast<uint32_t>(tables.any_variable(generator())); }
  // Draws a new value for variable i; false if the draws lead nowhere.
  bool propose(uint32_t i, Number& value);
  // Makes the move that state.move_delta looked at last.
  void apply_move(uint32_t i, const Number& value, const Number& delta) {
    state.apply_move(i, value, delta);
    note_candidate();
  }

 private:
  // Only a record of this walk, or a tie with it where ties are collected, reaches the pool. The
  // record survives from round to round, so the pool sees each walk's descending records.
  void note_candidate();
  void submit_candidate();

  bool has_record_ = false;
  Number record_energy_{0};
  StateKeeper& keeper_;
};

template <typename Number>
inline bool SearchWalk<Number>::propose(uint32_t i, Number& value) {
  const VariableRow<Number>& row = tables.variables[i];
  const Number& current = state.x[i];
  if (row.kind == VariableKind::kStepped) {
    const Number& step = tables.steps[row.choices(generator())];
    value = (generator() & 1) != 0 ? Number(current + step) : Number(current - step);
    return row.lo <= value && value <= row.hi;
  }
  if (row.kind == VariableKind::kBinary) {
    value = 1 - current;
    return true;
  }
  value = row.lo + Number(row.choices(generator()));
  return value != current;
}

template <typename Number>
inline void SearchWalk<Number>::note_candidate() {
  if (has_record_ && state.energy() >= record_energy_) {
    if (core.opts.has_best_energy_sols && state.energy() == record_energy_) submit_candidate();
    return;
  }
  has_record_ = true;
  record_energy_ = state.energy();
  submit_candidate();
}

template <typename Number>
[[gnu::noinline]] void SearchWalk<Number>::submit_candidate() {
  const coeff_t energy(state.energy());
  const MutexLock lock(core.mutex);
  core.submit(keeper_, energy);
}

}  // namespace zorv
