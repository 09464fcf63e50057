// Sizes of what is to be made. One that no memory could hold is refused as out of memory, before it
// wraps and passes for a small one.
#pragma once

#include <cstdint>
#include <new>

namespace zorv {

inline uint64_t refuse_beyond_memory(uint64_t size, bool has_wrapped) {
  if (has_wrapped || size > uint64_t{INT64_MAX}) throw std::bad_alloc();
  return size;
}

inline uint64_t size_product(uint64_t a, uint64_t b) {
  uint64_t product;
  const bool has_wrapped = __builtin_mul_overflow(a, b, &product);
  return refuse_beyond_memory(product, has_wrapped);
}

inline uint64_t size_sum(uint64_t a, uint64_t b) {
  uint64_t sum;
  const bool has_wrapped = __builtin_add_overflow(a, b, &sum);
  return refuse_beyond_memory(sum, has_wrapped);
}

}  // namespace zorv
