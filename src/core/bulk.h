// Many terms in flat arrays, as callers hand them over.
#pragma once

#include <cstdint>

#include "core/expr.h"
#include "zorv/wire.h"

namespace zorv {

// Appends `n` terms behind e.terms, never into `first`; equal terms stay apart and literals
// unsorted. The tag is left alone.
//   coeffs [n], degrees [n], literals [sum of degrees] term after term
void append_bulk(ExprImpl& e, uint64_t n, const CoeffWire* coeffs, const uint32_t* degrees,
                 const uint32_t* literals);

}  // namespace zorv
