#include "core/bulk.h"

#include <vector>

#include "core/coeff_wire.h"
#include "core/parallel.h"

namespace zorv {

void append_bulk(ExprImpl& e, uint64_t n, const CoeffWire* coeffs, const uint32_t* degrees,
                 const uint32_t* literals) {
  if (n == 0) return;
  std::vector<uint64_t> offsets(n);
  uint64_t offset = 0;
  for (uint64_t i = 0; i < n; ++i) {
    offsets[i] = offset;
    offset += degrees[i];
  }
  e.list.reserve(n);
  TermImpl* to = e.list.terms + e.list.count;
  par_for(n, [&](uint64_t i) {
    new (to + i) TermImpl(read_compact(coeffs + i), VarList(literals + offsets[i], degrees[i]));
  });
  e.list.count += n;
}

}  // namespace zorv
