// ArrayImpl: a dense N-dimensional block of elements of one kind, in row-major order.
//
// Kinds of elements: uint32_t (literals), coeff_t, TermImpl and ExprImpl. Every array owns its
// elements; whatever yields another shape copies. No axis at all, rank 0, means one element; an
// extent of 0 means none.
#pragma once

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "arrays/shape.h"
#include "core/block_cache.h"
#include "core/expr.h"
#include "core/parallel.h"
#include "core/sizes.h"

namespace zorv {

// Invariants
//   1. strides[k] is the product of the extents behind axis k.
//   2. data[0 .. size) are alive, what follows up to `capacity` is raw. After construction `size`
//      is the product of `shape` and never changes.
template <typename T>
struct ArrayImpl {
  Shape shape;
  std::vector<uint64_t> strides;
  uint64_t capacity = 0;
  uint64_t size = 0;
  T* data = nullptr;

  // Room for all elements, none of them alive: only make_array() leaves it at that.
  explicit ArrayImpl(Shape extents) : shape(std::move(extents)), strides(row_major_strides(shape)) {
    const uint64_t n = element_count(shape);
    if (n == 0) return;
    const Block block = acquire_block(size_product(n, sizeof(T)));
    capacity = block.bytes / sizeof(T);
    data = static_cast<T*>(block.data);
  }
  ArrayImpl(const ArrayImpl& other);
  ArrayImpl& operator=(const ArrayImpl&) = delete;
  ArrayImpl(ArrayImpl&& other) noexcept
      : shape(std::move(other.shape)),
        strides(std::move(other.strides)),
        capacity(std::exchange(other.capacity, 0)),
        size(std::exchange(other.size, 0)),
        data(std::exchange(other.data, nullptr)) {}
  ArrayImpl& operator=(ArrayImpl&&) = delete;
  ~ArrayImpl() {
    std::destroy_n(data, size);
    release_block({data, capacity * sizeof(T)});
  }

  const T& operator[](uint64_t i) const { return data[i]; }
  T& operator[](uint64_t i) { return data[i]; }
};

// An element count of items that keeps an array on one thread.
inline constexpr uint64_t kInOrder = 0;

// Makes element i by element(scratch, i), in place and each once. The work is spread over threads,
// in no fixed order, if it comes to more than kSerialItems items; an element may count for several.
// Each run of elements that one thread makes has a scratch of its own, made by new_scratch().
template <typename T, typename NewScratch, typename Element>
ArrayImpl<T> make_array_with(NewScratch new_scratch, Shape shape, Element element,
                             uint64_t items_per_element) {
  ArrayImpl<T> array(std::move(shape));
  const uint64_t n = element_count(array.shape);
  const Chunking runs(n, n * items_per_element > kSerialItems ? par_threads(n) : 1);
  const auto make_run = [&](uint64_t run) {
    auto scratch = new_scratch();
    for (uint64_t i = runs.begin(run); i < runs.end(run); ++i) {
      new (array.data + i) T(element(scratch, i));
    }
  };
  if (runs.chunks > 1) {
    detail::par_for_impl(0, runs.chunks, make_run);
  } else if (n > 0) {
    make_run(0);
  }
  array.size = n;
  return array;
}

// The same without a scratch: element(i).
template <typename T, typename Element>
ArrayImpl<T> make_array(Shape shape, Element element, uint64_t items_per_element = 1) {
  struct NoScratch {};
  return make_array_with<T>([] { return NoScratch(); }, std::move(shape),
                            [&](NoScratch, uint64_t i) -> decltype(auto) { return element(i); },
                            items_per_element);
}

template <typename T>
ArrayImpl<T>::ArrayImpl(const ArrayImpl& other)
    : ArrayImpl(make_array<T>(other.shape, [&](uint64_t i) -> const T& { return other[i]; })) {}

// A new array of what `f` makes of each element.
template <typename T, typename F>
auto map_array(const ArrayImpl<T>& a, F f) {
  return make_array<std::decay_t<decltype(f(a[0]))>>(a.shape, [&](uint64_t i) { return f(a[i]); });
}

}  // namespace zorv
