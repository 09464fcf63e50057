// A parallel loop over chunks whose length is decided beforehand, for passes that keep something
// for each chunk.
#pragma once

#include "core/parallel.h"

namespace zorv {

// f(chunk) for each chunk, spread over the pool if the chunks hold enough items between them.
template <typename F>
void for_each_chunk(const Chunking& chunking, F f) {
  if (chunking.items > kSerialItems) {
    detail::par_for_impl(0, chunking.chunks, f);
  } else {
    for (uint64_t c = 0; c < chunking.chunks; ++c) f(c);
  }
}

}  // namespace zorv
