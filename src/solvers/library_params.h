// Search parameters on their way to a solver library, which reads them itself.
#pragma once

#include <vector>

#include "model/model.h"
#include "zorv/wire.h"

namespace zorv {

// The pairs in their order, and the null key that ends them; null is an empty list.
std::vector<ParamPair> copy_params(const ParamPair* params);

// Whether a search in integers is to run on a library's own engine: ZORV_INT_UNIFIED begins with
// "1", and neither parameters nor model ask for what only the native engine has, which is lists of
// solutions, a remainder, nonlinear bodies.
bool wants_unified_search(const ModelImpl& model, const ParamPair* params);

}  // namespace zorv
