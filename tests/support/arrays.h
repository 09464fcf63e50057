// Arrays as owned handles, and elements of all kinds as values.
#pragma once

#include <ostream>
#include <utility>
#include <variant>
#include <vector>

#include "capi/handles.h"
#include "constraints/describe.h"
#include "reference/plain_rewrites.h"
#include "support/support.h"

namespace zorv::test {

// An array handle that is destroyed at the end of its scope.
template <typename T>
class Array {
 public:
  using Raw = typename HandleOf<ArrayImpl<T>>::Type;

  Array(Raw* raw) : raw_(raw) {}
  // element(i) at each flat position i.
  template <typename Element>
  Array(const Shape& shape, Element element)
      : raw_(wrap(make_array<T>(
            shape, [&](uint64_t i) { return T(element(i)); }, 0))) {}
  Array(const std::vector<T>& elements)
      : Array({elements.size()}, [&](uint64_t i) { return elements[i]; }) {}
  Array(Array&& other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
  Array& operator=(Array&&) = delete;
  ~Array() { destroy(raw_); }

  operator Raw*() const { return raw_; }
  const Shape& shape() const { return unwrap(raw_).shape; }
  uint64_t size() const { return unwrap(raw_).size; }
  T& operator[](uint64_t i) const { return unwrap(raw_)[i]; }

 private:
  Raw* raw_;
};
template <typename Raw>
Array(Raw*) -> Array<std::decay_t<decltype(std::declval<typename RecordOf<Raw>::Type>()[0])>>;

// The shapes that tests go through: ranks 0 to 3, and extents of 0.
inline const std::vector<Shape> kShapes = {{}, {1}, {3}, {2, 3}, {2, 1, 3}, {0}, {2, 0, 3}};

// An element of any kind; index() is the kind's number in einsum.
using Value = std::variant<uint32_t, coeff_t, TermImpl, ExprImpl>;

// e + v or e - v, appended in the plainest way.
inline void add_to(ExprImpl& e, const Value& v, int sign = 1) {
  if (const auto* literal = std::get_if<uint32_t>(&v)) {
    e.list.append(TermImpl(sign, VarList(*literal)));
  } else if (const auto* c = std::get_if<coeff_t>(&v)) {
    e.constant += sign * *c;
  } else if (const auto* t = std::get_if<TermImpl>(&v)) {
    e.list.append(TermImpl(sign * t->coeff, t->vars));
  } else if (sign > 0) {
    add_poly(e, std::get<ExprImpl>(v));
  } else {
    sub_poly(e, std::get<ExprImpl>(v));
  }
}

inline ExprImpl as_expr(const Value& v) {
  ExprImpl e;
  add_to(e, v);
  return e;
}

// Equal values, terms in the same order and places; tags are left aside.
template <typename T>
::testing::AssertionResult same_value(const T& a, const T& b) {
  if constexpr (std::is_same_v<T, ExprImpl>) {
    return same_terms(a, b);
  } else {
    bool same;
    if constexpr (std::is_same_v<T, TermImpl>) {
      same = a.coeff == b.coeff && a.vars == b.vars;
    } else {
      same = a == b;
    }
    if (same) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << text(as_expr(a)) << " is not " << text(as_expr(b));
  }
}
// And equal kinds.
inline ::testing::AssertionResult same_value(const Value& a, const Value& b) {
  if (a.index() != b.index()) {
    return ::testing::AssertionFailure() << "kinds " << a.index() << " and " << b.index();
  }
  return std::visit(
      [&](const auto& value) {
        return same_value(value, std::get<std::decay_t<decltype(value)>>(b));
      },
      a);
}

inline uint32_t tag_of(const Value& v) {
  const auto* e = std::get_if<ExprImpl>(&v);
  return e == nullptr ? kPlainAttr : e->attr;
}

inline TermImpl term_of(const coeff_t& c, const std::vector<uint32_t>& literals) {
  return TermImpl(c, VarList(literals.data(), static_cast<uint32_t>(literals.size())));
}

// An expression whose first slot is free, as bulk loading leaves it.
inline ExprImpl bulk_built(const coeff_t& c, const std::vector<TermImpl>& terms) {
  ExprImpl with_first = var(0), e(c);
  for (const TermImpl& t : terms) with_first.list.append(t);
  e.list.reserve(terms.size());
  e.list.append_entries(with_first.list);
  return e;
}

// Elements of every kind, with everything that deserves attention.
struct Pools {
  std::vector<uint32_t> vars;
  std::vector<coeff_t> ints;
  std::vector<TermImpl> terms;
  std::vector<ExprImpl> exprs;

  template <typename T>
  const std::vector<T>& of() const {
    if constexpr (std::is_same_v<T, uint32_t>) return vars;
    if constexpr (std::is_same_v<T, coeff_t>) return ints;
    if constexpr (std::is_same_v<T, TermImpl>) return terms;
    if constexpr (std::is_same_v<T, ExprImpl>) return exprs;
  }
};

// Without tags: terms of coefficient 0, of degree 0 and 3, repeated and negated literals, and
// expressions with a free first slot, with terms of coefficient 0, and with nothing at all.
inline Pools plain_pools() {
  const uint32_t x = fresh("x"), y = fresh("y"), z = fresh("z"), nx = x | kNegationBit;
  const coeff_t wide = (coeff_t(1) << 64) - 1;
  return {{x, nx, y, x},
          {3, 0, -1, wide, -wide * wide},
          {term_of(2, {y, x}), term_of(-wide, {x}), term_of(0, {z}), term_of(7, {}),
           term_of(1, {z, nx, x})},
          {var(x) - 2 * var(y) * var(z) + 5, ExprImpl(), constant(-wide), var(nx) - 1,
           bulk_built(4, {term_of(3, {z}), term_of(0, {x}), term_of(-3, {z})}),
           ExprImpl(term_of(6, {}))}};
}

}  // namespace zorv::test
