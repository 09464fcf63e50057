// StateKeeper: one source of states, a walk or the GPU rounds, that keeps those of its states which
// others may want to read, so that a state is copied only when somebody does.
#pragma once

#include <cstdint>
#include <vector>

#include "solvers/progress.h"

namespace zorv {

// All calls are made under the mutex of the search. The candidate is the state in which the source
// stood at its last catch_up(), which only the source's own submissions call: a keeper outlives its
// source.
class StateKeeper {
 public:
  virtual ~StateKeeper() = default;

  // Makes the state in which the source stands now the candidate.
  virtual void catch_up() = 0;
  // Equal for equal candidates of one search. For keepers that were made to hash.
  virtual uint64_t hash() const = 0;
  // Of the candidate, right after catch_up(). After the first call the source keeps count, and is
  // slower for it.
  virtual ConstraintTally tally() = 0;

  // Keeps the candidate, under the number returned, until it is released as often as it was kept.
  virtual uint64_t keep() = 0;
  virtual void release(uint64_t number) = 0;
  // Whether a state kept here equals the candidate of `other`, of the same search.
  virtual bool is_candidate(uint64_t number, const StateKeeper& other) = 0;
  // Binary variables as 0 and 1, then the integer variables.
  virtual std::vector<coeff_t> read(uint64_t number) const = 0;
};

// A state that somebody keeps.
struct KeptState {
  StateKeeper* keeper = nullptr;  // null: none
  uint64_t number = 0;

  static KeptState of(StateKeeper& keeper) { return {&keeper, keeper.keep()}; }
  bool operator==(const KeptState&) const = default;
  bool is_candidate(const StateKeeper& other) const { return keeper->is_candidate(number, other); }
  std::vector<coeff_t> read() const { return keeper->read(number); }
  void release() {
    if (keeper != nullptr) keeper->release(number);
    keeper = nullptr;
  }
};

}  // namespace zorv
