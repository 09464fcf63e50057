// Bounds of the values that a polynomial can take, by interval arithmetic term by term.
#pragma once

#include "core/expr.h"

namespace zorv {

struct ReachableBounds {
  coeff_t lo, hi;
};

// Simplifies `e` as binary, then adds up the interval of each term: [0, 1] for a binary variable,
// [min, max] for an atom. How terms hang together is ignored, so these are bounds, not extremes.
// Aborts on an atom that the registry does not know.
ReachableBounds reachable_bounds(const ExprImpl& e);

}  // namespace zorv
