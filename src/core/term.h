// TermImpl: one product term, a coefficient times literals.
#pragma once

#include <cstring>
#include <new>
#include <utility>

#include "core/coeff.h"
#include "core/var_list.h"

namespace zorv {

struct TermImpl {
  coeff_t coeff;
  VarList vars;

  TermImpl() = default;
  TermImpl(coeff_t c, VarList v) : coeff(std::move(c)), vars(std::move(v)) {}
  TermImpl(const TermImpl&) = default;
  TermImpl& operator=(const TermImpl&) = default;
  // A source that was moved from reads as zero without literals, so that a moved-from first slot
  // of an expression is free.
  TermImpl(TermImpl&& other) noexcept;
  TermImpl& operator=(TermImpl&& other) noexcept;
};

static_assert(sizeof(TermImpl) == 48);

// Moves `n` terms to raw storage; what they leave behind is raw storage too. Neither a coefficient
// nor a literal list holds a pointer into itself, so their bytes are all there is to move.
// The two runs must not overlap.
inline void relocate_terms(TermImpl* to, const TermImpl* from, size_t n) {
  std::memcpy(static_cast<void*>(to), static_cast<const void*>(from), n * sizeof(TermImpl));
}

inline TermImpl::TermImpl(TermImpl&& other) noexcept {
  relocate_terms(this, &other, 1);
  new (&other) TermImpl();
}

inline TermImpl& TermImpl::operator=(TermImpl&& other) noexcept {
  if (this != &other) {
    this->~TermImpl();
    new (this) TermImpl(std::move(other));
  }
  return *this;
}

inline void construct_copy(TermImpl* raw, const TermImpl& t) {
  construct_copy(&raw->coeff, t.coeff);
  new (&raw->vars) VarList(t.vars);
}

// a times b: coefficients multiplied, literals of `a` then of `b`.
inline void construct_product(TermImpl* raw, const TermImpl& a, const TermImpl& b) {
  construct_product(&raw->coeff, a.coeff, b.coeff);
  new (&raw->vars) VarList(VarList::concat(a.vars, b.vars));
}

// Term order: by degree, lower first, then by the sort keys of the literals position by position.
// Meaningful for terms whose own literals are sorted.
bool term_precedes(const VarList& a, const VarList& b);

}  // namespace zorv
