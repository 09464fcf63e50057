// What a term must look like to count as simplified as binary: literals in ascending order without
// repeats, and none of them negated while the degree is 1 or 2. Only an atom may repeat, as a
// power of itself, since an integer is not its own square.
#pragma once

#include "core/literal.h"
#include "core/var_list.h"

namespace zorv {

enum class FormFault { kNone, kNegated, kUnsorted };

// What is wrong with `literal` in a term of this degree, behind `previous`; kNoLiteral stands
// before the first.
inline FormFault form_fault(uint32_t literal, uint32_t previous, uint32_t degree) {
  if (degree <= 2 && is_negated(literal)) return FormFault::kNegated;
  if (previous == kNoLiteral) return FormFault::kNone;
  const uint32_t id = identity_of(literal);
  const uint32_t id_before = identity_of(previous);
  if (id < id_before || (id == id_before && !is_atom(literal))) return FormFault::kUnsorted;
  return FormFault::kNone;
}

}  // namespace zorv
