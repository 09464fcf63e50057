// ExhaustiveSolver: looks at every assignment. Binary models go to the solver library
// exhaustive_cppint.so, models with integer variables are enumerated here.
#pragma once

#include "model/model.h"
#include "solvers/library_model.h"
#include "solvers/search_result.h"
#include "zorv/wire.h"

namespace zorv {

class ExhaustiveSolver {
 public:
  // Aborts if a binary model needs a library that is not there or lacks what the model asks for,
  // and on an integer model with more than about 2^32 states.
  explicit ExhaustiveSolver(ModelHandle model);
  ExhaustiveSolver(const ExhaustiveSolver&) = delete;
  ExhaustiveSolver& operator=(const ExhaustiveSolver&) = delete;
  ~ExhaustiveSolver();

  SearchResult search(const ParamPair* params);

 private:
  bool has_int_model() const { return !model_->int_atoms.empty(); }
  void create_solver();
  SearchResult search_binary(const ParamPair* params);

  const ModelHandle model_;
  const TermTables terms_;
  void* solver_ = nullptr;  // the library's; null for an integer model
};

}  // namespace zorv
