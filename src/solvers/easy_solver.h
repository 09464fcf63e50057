// EasySolver: the everyday heuristic solver, one wrapper for all kinds of models.
//
//   binary variables alone   the solver library easysolver_cppint.so
//   integer variables        the search engine of this library; or, if ZORV_INT_UNIFIED begins with
//                            "1" and the search is eligible, the integer engine of the library
#pragma once

#include "model/model.h"
#include "solvers/library_model.h"
#include "solvers/search_result.h"
#include "zorv/wire.h"

namespace zorv {

// For a binary model the wrapper holds one solver of the library from its construction on, which
// has the model's tables by pointer, and one search runs at a time. For an integer model it holds
// no solver state between searches.
class EasySolver {
 public:
  // Aborts if a binary model needs a library that is not there or lacks what the model asks for.
  explicit EasySolver(ModelHandle model);
  EasySolver(const EasySolver&) = delete;
  EasySolver& operator=(const EasySolver&) = delete;
  ~EasySolver();

  //   hint  [(variables + 63) / 64] or null; aborts for an integer model, since it has no room for
  //         integer values
  SearchResult search(const ParamPair* params, const uint64_t* hint);
  // For integer models alone. The hint, if `hint_bits` is not null, is where the first thread of
  // the native engine starts.
  //   hint_bits  [(variables + 63) / 64]    hint_ints  [hint_int_count], within the bounds
  SearchResult search_int(const ParamPair* params, const uint64_t* hint_bits,
                          const coeff_t* hint_ints, uint64_t hint_int_count);

 private:
  bool has_int_model() const { return !model_->int_atoms.empty(); }
  void create_solver();
  SearchResult search_binary(const ParamPair* params, const uint64_t* hint);
  SearchResult search_native(const ParamPair* params, const uint64_t* hint_bits,
                             const coeff_t* hint_ints, uint64_t hint_int_count) const;
  SearchResult search_unified(const ParamPair* params) const;

  const ModelHandle model_;
  const TermTables terms_;
  void* solver_ = nullptr;  // the library's; null for an integer model
};

}  // namespace zorv
