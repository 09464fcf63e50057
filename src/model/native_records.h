// From the constraints of a declared sum to the native records of a model.
#pragma once

#include <vector>

#include "model/dense_index.h"
#include "model/model.h"

namespace zorv {

// The items of a list by the kind of their bodies, each kind in the order of the list. Points into
// the list.
struct SplitConstraints {
  std::vector<const ConstraintItem*> linear;
  std::vector<const ConstraintItem*> nonlinear;
};

// Checks every item and sorts it into its kind; `constraints` may be null. Aborts on a constraint
// without bounds, a body that is not simplified as binary, and a shaped constraint whose body is
// not linear.
SplitConstraints split_constraints(const ConstraintListImpl* constraints);

// The records, linear bodies first, with literals as the bodies have them.
//
// A nonlinear record takes neither the allowed values nor the shape of its constraint: engines
// see its bounds alone, with the square of the violation.
std::vector<NativeCons> native_records(const SplitConstraints& split);

void mark_variables(const std::vector<NativeCons>& records, UsedVariables& used);
// Moves the records into the model, literals renumbered.
void adopt_records(std::vector<NativeCons> records, ModelImpl& m);

}  // namespace zorv
