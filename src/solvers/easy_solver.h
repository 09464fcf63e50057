// EasySolver: the everyday heuristic solver, one wrapper for all kinds of models.
//
// A model with native integer variables runs on the search engine of this library and needs nothing
// else; the wrapper then holds no solver state between searches. Models of binary variables alone
// are the work of solver libraries, which this build does not load: making a wrapper for one
// aborts.
#pragma once

#include "model/model.h"
#include "solvers/search_result.h"
#include "zorv/wire.h"

namespace zorv {

class EasySolver {
 public:
  explicit EasySolver(ModelHandle model);

  // Hints have no room for integer values here, so one aborts.
  SearchResult search(const ParamPair* params, const uint64_t* hint) const;
  // The hint, if `hint_bits` is not null, is where the first thread starts.
  //   hint_bits  [(variables + 63) / 64]    hint_ints  [hint_int_count], within the bounds
  SearchResult search_int(const ParamPair* params, const uint64_t* hint_bits,
                          const coeff_t* hint_ints, uint64_t hint_int_count) const;

 private:
  bool has_int_model() const { return !model_->int_atoms.empty(); }

  const ModelHandle model_;
};

}  // namespace zorv
