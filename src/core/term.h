// TermImpl: one product term, a coefficient times literals.
#pragma once

#include <cstring>
#include <new>
#include <utility>

#include "core/compact_coeff.h"
#include "core/var_list.h"

namespace zorv {

struct TermImpl {
  CompactCoeff coeff;
  VarList vars;

  // A source that was moved from reads as zero without literals, so that a moved-from first slot
  // of an expression is free.
  TermImpl() = default;
  TermImpl(CompactCoeff c, VarList v) : coeff(std::move(c)), vars(std::move(v)) {}
};

static_assert(sizeof(TermImpl) == 16);

// Moves `n` terms to raw storage; what they leave behind is raw storage too. Neither a coefficient
// nor a literal list holds a pointer into itself, so their bytes are all there is to move.
// The two runs must not overlap.
inline void relocate_terms(TermImpl* to, const TermImpl* from, size_t n) {
  std::memcpy(static_cast<void*>(to), static_cast<const void*>(from), n * sizeof(TermImpl));
}

// a times b: coefficients multiplied, literals of `a` then of `b`.
inline TermImpl product(const TermImpl& a, const TermImpl& b) {
  return TermImpl(a.coeff * b.coeff, VarList::concat(a.vars, b.vars));
}

// Term order: by degree, lower first, then by the sort keys of the literals position by position.
// Meaningful for terms whose own literals are sorted.
bool term_precedes(const VarList& a, const VarList& b);

}  // namespace zorv
