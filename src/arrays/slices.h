// Arrays with other shapes, all of them copies.
#pragma once

#include <optional>

#include "arrays/array.h"

namespace zorv {

// Slice i of axis 0, one rank lower; nothing for rank 0.
template <typename T>
std::optional<ArrayImpl<T>> subarray(const ArrayImpl<T>& a, uint64_t i);

// The block of the last `tail` axes that begins at flat position `offset`.
template <typename T>
ArrayImpl<T> tail_block(const ArrayImpl<T>& a, uint64_t offset, uint64_t tail);

// Positions [lo[k], hi[k]) of each axis k below n. An axis with drop[k] not 0 is fixed at lo[k] and
// vanishes from the result, as do the axes from n on, which are fixed at 0.
template <typename T>
ArrayImpl<T> view(const ArrayImpl<T>& a, const uint64_t* lo, const uint64_t* hi,
                  const uint8_t* drop, size_t n);

// `a` and behind it, along one axis, `b`. The other axes are taken from `a` and not compared.
template <typename T>
ArrayImpl<T> concat(const ArrayImpl<T>& a, const ArrayImpl<T>& b, size_t axis);

// -----------------------------------------------------------------------------------------------

template <typename T>
ArrayImpl<T> contiguous(const ArrayImpl<T>& a, uint64_t offset, Shape shape) {
  return make_array<T>(std::move(shape), [&](uint64_t i) -> const T& { return a[offset + i]; });
}

template <typename T>
std::optional<ArrayImpl<T>> subarray(const ArrayImpl<T>& a, uint64_t i) {
  if (a.shape.empty()) return std::nullopt;
  return contiguous(a, i * a.strides[0], without_axis(a.shape, 0));
}

template <typename T>
ArrayImpl<T> tail_block(const ArrayImpl<T>& a, uint64_t offset, uint64_t tail) {
  return contiguous(a, offset,
                    Shape(a.shape.end() - static_cast<std::ptrdiff_t>(tail), a.shape.end()));
}

template <typename T>
ArrayImpl<T> view(const ArrayImpl<T>& a, const uint64_t* lo, const uint64_t* hi,
                  const uint8_t* drop, size_t n) {
  uint64_t base = 0;
  Walk kept;
  for (size_t k = 0; k < n; ++k) {
    base += a.strides[k] * lo[k];
    if (drop[k] != 0) continue;
    kept.extents.push_back(hi[k] - lo[k]);
    kept.strides.push_back(a.strides[k]);
  }
  // An array without elements has nothing to read, though the result may have elements.
  if (a.size == 0) return make_array<T>(kept.extents, [](uint64_t) { return T(); });
  return make_array<T>(kept.extents,
                       [&](uint64_t i) -> const T& { return a[base + offset_of(i, kept)]; });
}

template <typename T>
ArrayImpl<T> concat(const ArrayImpl<T>& a, const ArrayImpl<T>& b, size_t axis) {
  Shape shape = a.shape;
  shape[axis] += b.shape[axis];
  const uint64_t inner = element_count(shape, axis + 1, shape.size());
  const uint64_t from_a = a.shape[axis] * inner;
  const uint64_t from_b = b.shape[axis] * inner;
  const uint64_t block = from_a + from_b;
  return make_array<T>(std::move(shape), [&](uint64_t i) -> const T& {
    const uint64_t outer = i / block;
    const uint64_t r = i % block;
    return r < from_a ? a[outer * from_a + r] : b[outer * from_b + r - from_a];
  });
}

}  // namespace zorv
