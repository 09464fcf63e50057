// The visit of every assignment of a model with integer variables, on the calling thread.
#pragma once

#include "solvers/search_result.h"
#include "zorv/wire.h"

namespace zorv {

// Aborts if the model has more than about 2^32 assignments, counted in doubles.
void refuse_large_space(const ModelImpl& model);

// The best assignment; of several, the one that the walk visits first (enumeration_walk.h). With
// the parameter "best_energy_sols" all of them, in the order of the walk and up to the cap that its
// value gives, are the further solutions. Nothing stops the walk; see refuse_large_space.
//   params  null or ended by a null key; a null value reads as "", of equal keys the last counts
//   force_wide_numbers  counts in unbounded integers even where machine integers suffice. The
//           result is the same, only slower to get; set by tests and benchmarks.
// Aborts on any other parameter.
SearchResult enumerate_states(const ModelImpl& model, const ParamPair* params,
                              bool force_wide_numbers = false);

}  // namespace zorv
