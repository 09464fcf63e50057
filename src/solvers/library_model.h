// A model as solver libraries receive it: its own tables by pointer, and its constraints by calls.
#pragma once

#include <vector>

#include "model/model.h"
#include "solvers/solver_library.h"

namespace zorv {

// Coefficients in the form of the libraries' interface: the same objects under the type's other
// name.
inline const ::coeff_t* as_abi(const coeff_t* c) { return reinterpret_cast<const ::coeff_t*>(c); }
inline ::coeff_t* as_abi(coeff_t* c) { return reinterpret_cast<::coeff_t*>(c); }
inline const coeff_t* from_abi(const ::coeff_t* c) { return reinterpret_cast<const coeff_t*>(c); }

// The runs of terms by degree. Refers to the model, which must live on.
struct TermTables {
  std::vector<const uint32_t*> vars;
  std::vector<const ::coeff_t*> coeffs;

  explicit TermTables(const ModelImpl& model);
};

// What a family says when its library lacks a function that the constraints of a model need.
struct ConstraintTexts {
  const char* no_shape;
  const char* no_constraints;
  const char* no_nonlinear;
  const char* no_allowed;
  const char* no_remainder;
};

// Hands the constraints and the remainder of a binary model to a solver. Aborts, before anything is
// handed over where that can be told, if the library lacks what they need.
void deliver_constraints(const ModelImpl& model, void* solver, const ConstraintFunctions& functions,
                         const ConstraintTexts& texts);

// The same for the constraints of an integer model with linear bodies, in whose literals integer
// variables follow the binary ones. There is no remainder.
void deliver_integer_constraints(const ModelImpl& model, void* solver,
                                 const ConstraintFunctions& functions,
                                 const ConstraintTexts& texts);

// Literals of an integer model in that numbering.
std::vector<uint32_t> flat_literals(const ModelImpl& model, const std::vector<uint32_t>& literals);

// The allowed values of a constraint as two runs.
struct AllowedRuns {
  std::vector<coeff_t> lows, highs;

  explicit AllowedRuns(const NativeCons& cons);
};

bool has_nonlinear_bodies(const ModelImpl& model);
bool has_allowed_values(const ModelImpl& model);

}  // namespace zorv
