#include "core/term.h"

namespace zorv {

bool term_precedes(const VarList& a, const VarList& b) {
  const uint32_t degree = a.degree();
  const uint32_t other_degree = b.degree();
  if (degree != other_degree) return degree < other_degree;
  for (uint32_t i = 0; i < degree; ++i) {
    if (a[i] != b[i]) return sort_key(a[i]) < sort_key(b[i]);
  }
  return false;
}

}  // namespace zorv
