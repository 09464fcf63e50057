// Sums over arrays, and one-hot rows read as indices. A sum is an expression whatever the kind of
// the elements; nothing is merged.
#pragma once

#include <optional>

#include "arrays/array.h"
#include "core/sum.h"

namespace zorv {

// The sum of all elements, in flat order.
template <typename T>
ExprImpl sum(const ArrayImpl<T>& a) {
  return sum_of(a.size, [&](uint64_t i) -> const T& { return a[i]; });
}

// The sums along one axis, in an array without it.
template <typename T>
ArrayImpl<ExprImpl> vector_sum(const ArrayImpl<T>& a, size_t axis) {
  const Walk walk = walk_around(a.shape, axis);
  const uint64_t length = a.shape[axis];
  const uint64_t stride = a.strides[axis];
  return make_array<ExprImpl>(
      walk.extents,
      [&](uint64_t i) {
        const uint64_t base = offset_of(i, walk);
        return sum_of(length, [&](uint64_t j) -> const T& { return a[base + j * stride]; });
      },
      length);
}

// The same for elements that stand in no array, at(0), at(1), ... in row-major order: calls
// put(i, sum) for each element i of the result, from several threads if the whole has more than
// kSerialItems elements. The shape has at least one axis.
template <typename At, typename Put>
void vector_sum(const Shape& shape, size_t axis, At at, Put put) {
  const Walk walk = walk_around(shape, axis);
  const uint64_t stride = row_major_strides(shape)[axis];
  const uint64_t sums = element_count(walk.extents);
  const uint32_t threads = sums * shape[axis] > kSerialItems ? num_threads() : 1;
  for_chunks_on_fresh_threads(
      Chunking(sums, threads), threads, [&](uint32_t, uint64_t, uint64_t begin, uint64_t end) {
        for (uint64_t i = begin; i < end; ++i) {
          const uint64_t base = offset_of(i, walk);
          put(i, sum_of(shape[axis],
                        [&](uint64_t j) -> decltype(auto) { return at(base + j * stride); }));
        }
      });
}

// For each slice along `axis`, which counts from the end if it is negative: the position of its
// only 1, or -1 unless it holds a single 1 and otherwise zeros. Shape (1) if no axis remains;
// nothing if there is no such axis.
std::optional<ArrayImpl<coeff_t>> onehot_to_int(const ArrayImpl<coeff_t>& a, int axis);

// For each row of the last axis: the last position that holds a 1 if the row adds up to 1, else -1.
// Only the sum is tested, so (1, 1, -1) gives 1. Does nothing for rank 0.
//   bits  [product of shape]; out  [product of all extents but the last]
void onehot_to_int(const int32_t* bits, const Shape& shape, int32_t* out);

}  // namespace zorv
