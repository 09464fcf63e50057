#include "core/expr.h"

#include <algorithm>

#include "core/attr_rules.h"

namespace zorv {

ExprImpl::ExprImpl(const ExprImpl& other)
    : constant(other.constant), list(other.list), attr(other.attr) {
  mark_shared(attr);
}

ExprImpl& ExprImpl::operator=(const ExprImpl& other) {
  if (this == &other) return *this;
  constant = other.constant;
  list = other.list;
  attr = other.attr;
  mark_shared(attr);
  return *this;
}

ExprImpl::ExprImpl(ExprImpl&& other) noexcept
    : constant(std::move(other.constant)),
      list(std::move(other.list)),
      attr(std::exchange(other.attr, kPlainAttr)) {}

ExprImpl& ExprImpl::operator=(ExprImpl&& other) noexcept {
  if (this == &other) return *this;
  constant = std::move(other.constant);
  list = std::move(other.list);
  attr = std::exchange(other.attr, kPlainAttr);
  return *this;
}

ExprImpl plain_copy(const ExprImpl& e) {
  ExprImpl copy;
  copy.constant = e.constant;
  copy.list = e.list;
  return copy;
}

uint64_t term_count_of_degree(const ExprImpl& e, uint32_t degree) {
  uint64_t n = 0;
  e.list.for_each([&](const TermImpl& t) { n += t.vars.degree() == degree; });
  return n;
}

uint32_t max_degree(const ExprImpl& e) {
  uint32_t highest = 0;
  e.list.for_each([&](const TermImpl& t) { highest = std::max(highest, t.vars.degree()); });
  return highest;
}

namespace {

template <typename Predicate>
bool any_literal(const TermImpl& t, Predicate holds) {
  for (const uint32_t literal : t.vars) {
    if (holds(literal)) return true;
  }
  return false;
}

template <typename Predicate>
bool any_literal(const TermList& list, Predicate holds) {
  if (list.has_first() && any_literal(list.first, holds)) return true;
  return std::any_of(list.terms, list.terms + list.count,
                     [&](const TermImpl& t) { return any_literal(t, holds); });
}

}  // namespace

bool has_variable(const ExprImpl& e, uint32_t literal) {
  const uint32_t variable = identity_of(literal);
  return any_literal(e.list, [=](uint32_t other) { return identity_of(other) == variable; });
}

bool has_int_atom(const ExprImpl& e) {
  return any_literal(e.list, [](uint32_t literal) { return is_atom(literal); });
}

bool is_canonical(const ExprImpl& e) {
  if (!e.list.has_first()) return e.list.count == 0;
  const TermImpl* previous = nullptr;
  bool canonical = true;
  e.list.for_each([&](const TermImpl& t) {
    const uint32_t degree = t.vars.degree();
    bool sorted = degree > 0 && !is_zero(t.coeff);
    for (uint32_t i = 1; i < degree; ++i) {
      sorted = sorted && sort_key(t.vars[i - 1]) <= sort_key(t.vars[i]);
    }
    const bool ascends = previous == nullptr || term_precedes(previous->vars, t.vars);
    canonical = canonical && sorted && ascends;
    previous = &t;
  });
  return canonical;
}

}  // namespace zorv
