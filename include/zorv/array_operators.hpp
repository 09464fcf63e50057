/// \file
/// Arithmetic of arrays, element by element.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>

#include "zorv/array.hpp"

namespace zorv {

namespace detail {

// One name for the functions of the C interface that combine an array with an array or a scalar.
#define ZORV_PAIR(op, a, b)                                           \
  inline auto* op(const zorv_array_##a* x, const zorv_array_##b* y) { \
    return zorv_array_##a##_##op##_array_##b(x, y);                   \
  }
#define ZORV_SCALARS(op, a)                                      \
  inline auto* op(const zorv_array_##a* x, uint32_t s) {         \
    return zorv_array_##a##_##op##_var(x, s);                    \
  }                                                              \
  inline auto* op(const zorv_array_##a* x, const CoeffWire* s) { \
    return zorv_array_##a##_##op##_int(x, s);                    \
  }                                                              \
  inline auto* op(const zorv_array_##a* x, const zorv_term* s) { \
    return zorv_array_##a##_##op##_term(x, s);                   \
  }                                                              \
  inline auto* op(const zorv_array_##a* x, const zorv_expr* s) { \
    return zorv_array_##a##_##op##_expr(x, s);                   \
  }
#define ZORV_ROW(op, a)  \
  ZORV_PAIR(op, a, var)  \
  ZORV_PAIR(op, a, int)  \
  ZORV_PAIR(op, a, term) \
  ZORV_PAIR(op, a, expr) \
  ZORV_SCALARS(op, a)
#define ZORV_OPERATION(op) ZORV_ROW(op, var) ZORV_ROW(op, int) ZORV_ROW(op, term) ZORV_ROW(op, expr)
ZORV_OPERATION(add)
ZORV_OPERATION(sub)
ZORV_OPERATION(mul)
#undef ZORV_OPERATION
#undef ZORV_ROW
#undef ZORV_SCALARS
#undef ZORV_PAIR

// The same in place.
#define ZORV_IN_PLACE(op)                                                                       \
  inline void op(zorv_array_expr* x, const zorv_array_var* y) {                                 \
    zorv_array_expr_##op##_array_var(x, y);                                                     \
  }                                                                                             \
  inline void op(zorv_array_expr* x, const zorv_array_int* y) {                                 \
    zorv_array_expr_##op##_array_int(x, y);                                                     \
  }                                                                                             \
  inline void op(zorv_array_expr* x, const zorv_array_term* y) {                                \
    zorv_array_expr_##op##_array_term(x, y);                                                    \
  }                                                                                             \
  inline void op(zorv_array_expr* x, const zorv_array_expr* y) {                                \
    zorv_array_expr_##op##_array_expr(x, y);                                                    \
  }                                                                                             \
  inline void op(zorv_array_expr* x, uint32_t s) { zorv_array_expr_##op##_var(x, s); }          \
  inline void op(zorv_array_expr* x, const CoeffWire* s) { zorv_array_expr_##op##_int(x, s); }  \
  inline void op(zorv_array_expr* x, const zorv_term* s) { zorv_array_expr_##op##_term(x, s); } \
  inline void op(zorv_array_expr* x, const zorv_expr* s) { zorv_array_expr_##op##_expr(x, s); } \
  inline void op(zorv_array_int* x, const zorv_array_int* y) {                                  \
    zorv_array_int_##op##_array_int(x, y);                                                      \
  }                                                                                             \
  inline void op(zorv_array_int* x, const CoeffWire* s) { zorv_array_int_##op##_int(x, s); }
ZORV_IN_PLACE(add_eq)
ZORV_IN_PLACE(sub_eq)
ZORV_IN_PLACE(mul_eq)
#undef ZORV_IN_PLACE

inline auto* negate(const zorv_array_var* a) { return zorv_array_var_negate(a); }
inline auto* negate(const zorv_array_int* a) { return zorv_array_int_negate(a); }
inline auto* negate(const zorv_array_term* a) { return zorv_array_term_negate(a); }
inline auto* negate(const zorv_array_expr* a) { return zorv_array_expr_negate(a); }

/// Calls `use` with a scalar in the form of the C interface.
template <typename T, typename Use>
auto with_scalar(const T& value, Use&& use) {
  if constexpr (IntegerLike<T>) {
    const Integer integer(value);
    const CoeffWire wire = integer.wire();
    return use(&wire);
  } else if constexpr (Literal<T>) {
    return use(value.literal());
  } else if constexpr (std::same_as<T, Term>) {
    return use(static_cast<const zorv_term*>(TermHandle(value).get()));
  } else {
    return use(static_cast<const zorv_expr*>(canonical(value).handle()));
  }
}

template <typename A, typename B>
concept ArrayPair = ArrayLike<A> && ArrayLike<B> && kRankOf<A>
== kRankOf<B>;

}  // namespace detail

// ---- Element by element
//
// Two arrays combine if their shapes are equal, and abort otherwise; a scalar combines with every
// element. Nothing is broadcast and nothing is merged.

#define ZORV_ARRAY_OPERATOR(symbol, op)                                                            \
  template <typename A, typename B>                                                                \
  requires detail::ArrayPair<A, B>                                                                 \
  auto operator symbol(const A& a, const B& b) {                                                   \
    return detail::adopt_array<detail::kRankOf<A>>(                                                \
        detail::op(detail::to_array(a).handle(), detail::to_array(b).handle()));                   \
  }                                                                                                \
  template <typename A, detail::Operand S>                                                         \
  requires detail::ArrayLike<A>                                                                    \
  auto operator symbol(const A& a, const S& scalar) {                                              \
    return detail::with_scalar(scalar, [&](auto s) {                                               \
      return detail::adopt_array<detail::kRankOf<A>>(detail::op(detail::to_array(a).handle(), s)); \
    });                                                                                            \
  }                                                                                                \
  template <typename T, size_t N, typename B>                                                      \
  requires(detail::ArrayLike<B> || detail::Operand<B>) Array<T, N>                                 \
  &operator symbol##=(Array<T, N>& a, const B& b) {                                                \
    if constexpr (detail::ArrayLike<B>) {                                                          \
      detail::op##_eq(a.handle(), detail::to_array(b).handle());                                   \
    } else {                                                                                       \
      detail::with_scalar(b, [&](auto s) { detail::op##_eq(a.handle(), s); });                     \
    }                                                                                              \
    return a;                                                                                      \
  }
ZORV_ARRAY_OPERATOR(+, add)
ZORV_ARRAY_OPERATOR(-, sub)
ZORV_ARRAY_OPERATOR(*, mul)
#undef ZORV_ARRAY_OPERATOR

template <detail::Operand S, typename B>
requires detail::ArrayLike<B>
auto operator+(const S& scalar, const B& b) { return b + scalar; }
template <detail::Operand S, typename B>
requires detail::ArrayLike<B>
auto operator*(const S& scalar, const B& b) { return b * scalar; }
template <typename A>
requires detail::ArrayLike<A>
auto operator-(const A& a) {
  return detail::adopt_array<detail::kRankOf<A>>(detail::negate(detail::to_array(a).handle()));
}
template <detail::Operand S, typename B>
requires detail::ArrayLike<B>
auto operator-(const S& scalar, const B& b) { return -b + scalar; }
/// The complement of each variable.
template <size_t N>
Array<Var, N> operator~(const Array<Var, N>& a) {
  return Array<Var, N>(zorv_array_var_invert(a.handle()));
}

/// Division by an integer. Terms and expressions divide exactly and abort on a remainder, integers
/// are cut towards 0.
template <size_t N>
Array<Expr, N> operator/(const Array<Expr, N>& a, const Integer& divisor) {
  const CoeffWire wire = divisor.wire();
  return Array<Expr, N>(zorv_array_expr_div_int(a.handle(), &wire));
}
template <size_t N>
Array<Term, N> operator/(const Array<Term, N>& a, const Integer& divisor) {
  const CoeffWire wire = divisor.wire();
  return Array<Term, N>(zorv_array_term_div_int(a.handle(), &wire));
}
template <size_t N>
Array<Integer, N> operator/(Array<Integer, N> a, const Integer& divisor) {
  const CoeffWire wire = divisor.wire();
  zorv_array_int_div_eq_int(a.handle(), &wire);
  return a;
}

/// Each element by itself, without its constraints; see the functions for one expression.
template <size_t N>
Array<Expr, N> sqr(const Array<Expr, N>& a) {
  return Array<Expr, N>(zorv_array_expr_sqr(a.handle()));
}
template <size_t N>
Array<Expr, N> simplify(const Array<Expr, N>& a) {
  return Array<Expr, N>(zorv_array_expr_simplify(a.handle()));
}
template <size_t N>
Array<Expr, N> simplify_as_binary(const Array<Expr, N>& a) {
  return Array<Expr, N>(zorv_array_expr_simplify_as_binary(a.handle()));
}
template <size_t N>
Array<Expr, N> simplify_as_spin(const Array<Expr, N>& a) {
  return Array<Expr, N>(zorv_array_expr_simplify_as_spin(a.handle()));
}
template <size_t N>
Array<Expr, N> reduce(const Array<Expr, N>& a) {
  return Array<Expr, N>(zorv_array_expr_reduce(a.handle()));
}

}  // namespace zorv
