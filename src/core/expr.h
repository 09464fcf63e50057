// ExprImpl: one polynomial, and the tag that says what else it carries.
//
// Nothing in the record says whether it is canonical. Arithmetic never merges; only a
// simplification does, and its result satisfies is_canonical.
#pragma once

#include "core/attr.h"
#include "core/term_list.h"

namespace zorv {

struct ExprImpl {
  CompactCoeff constant;
  TermList list;
  uint32_t attr = kPlainAttr;  // see core/attr.h

  ExprImpl() = default;
  explicit ExprImpl(CompactCoeff c) : constant(std::move(c)) {}
  explicit ExprImpl(TermImpl term) { list.append(std::move(term)); }
  // A copy keeps the tag; the constraint sum that it names is then marked as shared.
  ExprImpl(const ExprImpl& other);
  ExprImpl& operator=(const ExprImpl& other);
  ExprImpl(ExprImpl&& other) noexcept;
  ExprImpl& operator=(ExprImpl&& other) noexcept;

  bool is_zero_polynomial() const { return is_zero(constant) && list.size() == 0; }
};

// The polynomial alone, with the plain tag; marks nothing.
ExprImpl plain_copy(const ExprImpl& e);

// Questions. A free `first` is no term; entries of `terms` count also with a coefficient of 0.
uint64_t term_count_of_degree(const ExprImpl& e, uint32_t degree);
uint32_t max_degree(const ExprImpl& e);
// Whether any term holds the variable of `literal`, negated or not.
bool has_variable(const ExprImpl& e, uint32_t literal);
bool has_int_atom(const ExprImpl& e);
// Whether every term is sorted, non-zero and of degree 1 or more, and the terms ascend strictly
// in term order from `first` on.
bool is_canonical(const ExprImpl& e);

}  // namespace zorv
