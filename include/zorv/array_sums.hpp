/// \file
/// Sums of arrays, and contractions along labelled axes.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "zorv/array.hpp"

namespace zorv {

namespace detail {

#define ZORV_SUMS(kind)                                                                    \
  inline zorv_expr* sum(const zorv_array_##kind* a) { return zorv_array_##kind##_sum(a); } \
  inline zorv_array_expr* sum(const zorv_array_##kind* a, int axis) {                      \
    return zorv_array_##kind##_vector_sum(a, axis);                                        \
  }
ZORV_SUMS(var)
ZORV_SUMS(int)
ZORV_SUMS(term)
ZORV_SUMS(expr)
#undef ZORV_SUMS

}  // namespace detail

/// The sum of all elements.
template <typename A>
requires detail::ArrayLike<A> Expr sum(const A& a) {
  return Expr(detail::sum(detail::to_array(a).handle()));
}
/// The sums along one axis, which the result does not have any more. A negative axis counts from
/// the end; throws std::out_of_range if there is no such axis.
template <typename A>
requires(detail::ArrayLike<A>&& detail::kRankOf<A> >= 2) Array < Expr, detail::kRankOf<A>
- 1 > sum(const A& a, int axis) {
  return detail::adopt_array<detail::kRankOf<A> - 1>(
      detail::sum(detail::to_array(a).handle(), detail::checked_axis<detail::kRankOf<A>>(axis)));
}

namespace detail {

inline uint32_t einsum_tag(const zorv_array_var*) { return 0; }
inline uint32_t einsum_tag(const zorv_array_int*) { return 1; }
inline uint32_t einsum_tag(const zorv_array_term*) { return 2; }
inline uint32_t einsum_tag(const zorv_array_expr*) { return 3; }

template <size_t kOutDim, typename... Arrays>
auto einsum_of(const std::string& subscript, const Arrays&... arrays) {
  constexpr bool is_integer = (std::same_as<typename Arrays::Value, Integer> && ...);
  using Value = std::conditional_t<is_integer, Integer, Expr>;
  using Handle = typename Element<Value>::Handle;
  const uint32_t tags[] = {einsum_tag(arrays.handle())...};
  void* const inputs[] = {arrays.handle()...};
  auto* handle = static_cast<Handle*>(
      zorv_einsum(subscript.c_str(), sizeof...(arrays), tags, inputs, is_integer ? 0 : 1, kOutDim));
  if constexpr (kOutDim == 0) {
    Value value = Element<Value>::get(handle, 0);
    destroy(handle);
    return value;
  } else {
    return Array<Value, kOutDim>(handle);
  }
}

}  // namespace detail

/// Contracts arrays along labelled axes: `einsum<2>("ij,jk->ik", a, b)` multiplies matrices,
/// `einsum<0>("ij,ij->", a, b)` is one value. Integers if all arrays hold integers, otherwise
/// expressions. Aborts on a subscript that does not fit the arrays or the rank.
template <size_t kOutDim, typename... Arrays>
requires(sizeof...(Arrays) >= 1 &&
         (detail::ArrayLike<Arrays> && ...)) auto einsum(const std::string& subscript,
                                                         const Arrays&... arrays) {
  return detail::einsum_of<kOutDim>(subscript, detail::to_array(arrays)...);
}

/// One-hot slices along an axis as positions: that of the only 1, and -1 for any other slice. A
/// negative axis counts from the end; throws std::out_of_range if there is no such axis.
template <size_t N>
requires(N >= 2) Array<Integer, N - 1> onehot_to_int(const Array<Integer, N>& a, int axis = -1) {
  return Array<Integer, N - 1>(
      zorv_array_int_onehot_to_int(a.handle(), detail::checked_axis<N>(axis)));
}

}  // namespace zorv
