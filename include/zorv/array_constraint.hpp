/// \file
/// Constraints on all elements of an array.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

#include "zorv/array_operators.hpp"

namespace zorv {

namespace detail {

#define ZORV_CLASSIC(kind)                                                                 \
  inline zorv_array_expr* between(const zorv_array_##kind* a, const zorv_array_int* lo,    \
                                  const zorv_array_int* hi) {                              \
    return zorv_array_##kind##_between_array_int(a, lo, hi);                               \
  }                                                                                        \
  inline zorv_array_expr* at_least(const zorv_array_##kind* a, const zorv_array_int* lo) { \
    return zorv_array_##kind##_ge_array_int(a, lo);                                        \
  }                                                                                        \
  inline zorv_array_expr* at_most(const zorv_array_##kind* a, const zorv_array_int* hi) {  \
    return zorv_array_##kind##_le_array_int(a, hi);                                        \
  }
ZORV_CLASSIC(var)
ZORV_CLASSIC(int)
ZORV_CLASSIC(term)
ZORV_CLASSIC(expr)
#undef ZORV_CLASSIC

/// One bound for all elements, or an array with one for each.
template <typename T>
constexpr bool is_bound() {
  if constexpr (ArrayLike<T>) {
    return std::same_as<typename std::remove_cvref_t<T>::Value, Integer>;
  } else {
    return IntegerLike<T>;
  }
}
template <typename T>
concept Bound = is_bound<T>();

template <size_t N, Bound B>
Array<Integer, N> bounds(const Shape<N>& shape, const B& bound) {
  if constexpr (ArrayLike<B>) {
    Array<Integer, N> ends = to_array(bound);
    if (ends.shape() != shape) {
      throw std::invalid_argument("zorv: bounds of another shape than the array");
    }
    return ends;
  } else {
    auto all = Array<Integer, N>::of_shape(shape);
    all += bound;
    return all;
  }
}

}  // namespace detail

/// What `sum(x, 1) == 1` and its like give: the range of each element of an array, with one end for
/// all or an array of ends, which throws std::invalid_argument if its shape is another. `cons`
/// declares all of them; `classic` makes penalties.
template <typename T, size_t N, bool kHasLow, bool kHasHigh>
class ArrayComparison {
 public:
  /// An end that is not given is an array of any content.
  ArrayComparison(Array<T, N> body, Array<Integer, N> lo, Array<Integer, N> hi)
      : body_(std::move(body)), lo_(std::move(lo)), hi_(std::move(hi)) {}

  const Array<T, N>& body() const { return body_; }
  const Array<Integer, N>& lo() const requires kHasLow { return lo_; }
  const Array<Integer, N>& hi() const requires kHasHigh { return hi_; }

  /// The comparison of element i in row-major order.
  Comparison<kHasLow, kHasHigh> flat(uint64_t i) const {
    return {Expr(body_.flat(i)), kHasLow ? lo_.flat(i) : Integer(),
            kHasHigh ? hi_.flat(i) : Integer()};
  }

  /// An array of penalties, with slack variables where those are needed. An end that is not given
  /// is the bound of the element, which integer variables do not have.
  Array<ExprExpr, N> classic() const {
    if constexpr (!kHasHigh) {
      return Array<ExprExpr, N>(detail::at_least(body_.handle(), lo_.handle()));
    } else if constexpr (!kHasLow) {
      return Array<ExprExpr, N>(detail::at_most(body_.handle(), hi_.handle()));
    } else {
      return Array<ExprExpr, N>(detail::between(body_.handle(), lo_.handle(), hi_.handle()));
    }
  }

 private:
  Array<T, N> body_;
  Array<Integer, N> lo_, hi_;
};

#define ZORV_COMPARE(symbol, kHasLow, kHasHigh)                                               \
  template <typename A, detail::Bound B>                                                      \
  requires detail::ArrayLike<A>                                                               \
  auto operator symbol(const A& a, const B& bound) {                                          \
    const auto& body = detail::to_array(a);                                                   \
    const auto ends = detail::bounds(body.shape(), bound);                                    \
    return ArrayComparison<typename A::Value, A::kRank, kHasLow, kHasHigh>(body, ends, ends); \
  }
ZORV_COMPARE(==, true, true)
ZORV_COMPARE(>=, true, false)
ZORV_COMPARE(<=, false, true)
#undef ZORV_COMPARE

template <detail::IntegerLike B, typename A>
requires detail::ArrayLike<A>
auto operator==(const B& bound, const A& a) { return a == bound; }
template <detail::IntegerLike B, typename A>
requires detail::ArrayLike<A>
auto operator<=(const B& bound, const A& a) { return a >= bound; }
template <detail::IntegerLike B, typename A>
requires detail::ArrayLike<A>
auto operator>=(const B& bound, const A& a) { return a <= bound; }

/// The second end: `1 <= a <= 4`.
template <typename T, size_t N, detail::Bound B>
ArrayComparison<T, N, true, true> operator<=(const ArrayComparison<T, N, true, false>& c,
                                             const B& hi) {
  return {c.body(), c.lo(), detail::bounds(c.body().shape(), hi)};
}
template <typename T, size_t N, detail::Bound B>
ArrayComparison<T, N, true, true> operator>=(const ArrayComparison<T, N, false, true>& c,
                                             const B& lo) {
  return {c.body(), detail::bounds(c.body().shape(), lo), c.hi()};
}

/// Declares the constraints of all elements: `cost + 100 * cons(sum(x, 1) == 1)`.
template <typename T, size_t N, bool kHasLow, bool kHasHigh>
Expr cons(const ArrayComparison<T, N, kHasLow, kHasHigh>& c) {
  Expr all;
  for (uint64_t i = 0; i < c.body().size(); ++i) all += cons(c.flat(i));
  return all;
}
/// Declares each element, as `cons` does for one expression.
template <typename A>
requires detail::ArrayLike<A> Expr cons(const A& a) {
  const auto& array = detail::to_array(a);
  Expr all;
  for (uint64_t i = 0; i < array.size(); ++i) all += cons(Expr(array.flat(i)));
  return all;
}
/// Declares that the value of each element is in a set.
template <typename A>
requires detail::ArrayLike<A> Expr cons(const A& a, const Allowed& allowed) {
  const auto& array = detail::to_array(a);
  Expr all;
  for (uint64_t i = 0; i < array.size(); ++i) all += cons(Expr(array.flat(i)), allowed);
  return all;
}

}  // namespace zorv
