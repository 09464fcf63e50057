// Terms in the forms in which exports receive them.
#pragma once

#include <cstdint>

#include "capi/handles.h"

namespace zorv {

inline TermImpl unit_term(uint32_t literal) { return TermImpl(1, VarList(literal)); }

inline TermImpl raw_term(const CoeffWire* c, const uint32_t* literals, uint32_t n) {
  return TermImpl(read_compact(c), VarList(literals, n));
}

// Adopts the overflow block.
inline TermImpl moved_term(const CoeffWire* c, uint64_t head_pair, uint64_t overflow) {
  return TermImpl(read_compact(c),
                  VarList::adopt(head_pair, reinterpret_cast<uint32_t*>(overflow)));
}

// Consumes the handle.
inline TermImpl take(zorv_term* t) {
  TermImpl term = std::move(unwrap(t));
  destroy(t);
  return term;
}

}  // namespace zorv
