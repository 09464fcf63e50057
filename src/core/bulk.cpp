#include "core/bulk.h"

#include <numeric>
#include <vector>

#include "core/coeff_wire.h"
#include "core/parallel.h"

namespace zorv {

void append_bulk(ExprImpl& e, uint64_t n, const CoeffWire* coeffs, const uint32_t* degrees,
                 const uint32_t* literals) {
  if (n == 0) return;
  e.list.reserve(n);
  TermImpl* const to = e.list.terms + e.list.count;
  const uint32_t threads = n > kSerialItems ? num_threads() : 1;
  const Chunking chunking(n, threads);
  std::vector<uint64_t> starts(chunking.chunks + 1);  // of the chunks' literals
  for (uint64_t c = 0; c < chunking.chunks && threads > 1; ++c) {
    starts[c + 1] =
        std::accumulate(degrees + chunking.begin(c), degrees + chunking.end(c), starts[c]);
  }
  for_chunks_on_fresh_threads(
      chunking, threads, [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
        const uint32_t* next = literals + starts[c];
        for (uint64_t i = begin; i < end; ++i) {
          new (to + i) TermImpl(read_compact(coeffs + i), VarList(next, degrees[i]));
          next += degrees[i];
        }
      });
  e.list.count += n;
}

}  // namespace zorv
