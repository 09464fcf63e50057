// Hash and equality of polynomials as they stand, for tables that store equal values once: the
// order of the terms counts, and whether `first` is a term, since both decide where an append goes.
#pragma once

#include <cstdint>

#include "core/expr.h"

namespace zorv {

// Mixes one more word into a hash.
inline uint64_t hash_with(uint64_t hash, uint64_t word) {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
  return hash ^ hash >> 29;
}

inline uint64_t hash_with(uint64_t hash, const coeff_t& c) {
  const auto& limbs = c.backend();
  hash = hash_with(hash, uint64_t{limbs.size()} << 1 | (limbs.sign() ? 1 : 0));
  for (unsigned i = 0; i < limbs.size(); ++i) hash = hash_with(hash, uint64_t{limbs.limbs()[i]});
  return hash;
}

inline uint64_t hash_with(uint64_t hash, const CompactCoeff& c) {
  return c.is_small() ? hash_with(hash, static_cast<uint64_t>(c.small()))
                      : hash_with(hash, c.large());
}

inline uint64_t hash_with(uint64_t hash, const TermImpl& term) {
  hash = hash_with(hash_with(hash, term.coeff), term.vars.head_pair());
  for (uint32_t i = 2; i < term.vars.degree(); ++i) hash = hash_with(hash, uint64_t{term.vars[i]});
  return hash;
}

inline uint64_t hash_of(const ExprImpl& e) {
  uint64_t hash = hash_with(e.list.size(), e.constant);
  e.list.for_each([&](const TermImpl& term) { hash = hash_with(hash, term); });
  return hash;
}

inline bool same(const TermImpl& a, const TermImpl& b) {
  return a.coeff == b.coeff && a.vars == b.vars;
}

inline bool same(const ExprImpl& a, const ExprImpl& b) {
  if (a.constant != b.constant || a.list.count != b.list.count) return false;
  if (a.list.has_first() != b.list.has_first()) return false;
  if (a.list.has_first() && !same(a.list.first, b.list.first)) return false;
  for (uint64_t i = 0; i < a.list.count; ++i) {
    if (!same(a.list.terms[i], b.list.terms[i])) return false;
  }
  return true;
}

}  // namespace zorv
