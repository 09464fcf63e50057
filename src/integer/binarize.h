// Integer atoms written in bits.
#pragma once

#include "core/expr.h"

namespace zorv {

// `e` with every atom replaced by its encoding, so that only binary variables are left, in the
// order of mul() and not merged. Plain tag. Aborts on a tag that names constraints, and on an atom
// that the registry does not know.
ExprImpl binarize(const ExprImpl& e);

}  // namespace zorv
