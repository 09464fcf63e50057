// Sums of many things, in order and not merged. The size of a sum is known before it is made: its
// block is allocated once, and long sums are filled by several threads.
#pragma once

#include <type_traits>
#include <vector>

#include "core/attr_rules.h"
#include "core/expr.h"
#include "core/parallel.h"

namespace zorv {

namespace detail {

// Copies the entries of `from` to raw storage, or moves them there and leaves `from` empty.
inline void put_entries(TermImpl* to, const TermList& from) {
  par_for(from.count, [&](uint64_t i) { construct_copy(to + i, from.terms[i]); });
}
inline void put_entries(TermImpl* to, TermList& from) {
  if (from.count > 0) relocate_terms(to, from.terms, from.count);
  from.count = 0;
}

}  // namespace detail

// The polynomial at(0) + ... + at(n - 1), at(i) being references. Expressions that are not const
// are used up. The result's first slot is the first one that is a term.
template <typename At>
ExprImpl sum_of_polys(uint64_t n, At at) {
  uint64_t leader = 0;  // the expression whose `first` opens the sum
  while (leader < n && !at(leader).list.has_first()) ++leader;
  const uint32_t threads = n > kSerialItems ? num_threads() : 1;
  const Chunking chunking(n, threads);
  std::vector<uint64_t> starts(chunking.chunks + 1);
  starts[0] = 1;
  for (uint64_t c = 0; c < chunking.chunks; ++c) {
    starts[c + 1] = starts[c];
    for (uint64_t i = chunking.begin(c); i < chunking.end(c); ++i) {
      starts[c + 1] += at(i).list.size() - (i == leader ? 1 : 0);
    }
  }
  ExprImpl sum;
  for (uint64_t i = 0; i < n; ++i) sum.constant += at(i).constant;
  TermList& to = sum.list;
  to.allocate_slots(starts.back());
  if (leader < n) to.first = at(leader).list.first;
  for_chunks_on_fresh_threads(chunking, threads,
                              [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
                                uint64_t slot = starts[c];
                                for (uint64_t i = begin; i < end; ++i) {
                                  auto& list = at(i).list;
                                  if (i != leader && list.has_first()) {
                                    construct_copy(to.slot(slot++), list.first);
                                  }
                                  const uint64_t entries = list.count;
                                  detail::put_entries(to.slot(slot), list);
                                  slot += entries;
                                }
                              });
  to.commit_slots(starts.back());
  return sum;
}

// The same by the kind of what is added: literals, integers, terms, or expressions, whose
// constraints the sum then carries too.
template <typename At>
ExprImpl sum_of(uint64_t n, At at) {
  using T = std::decay_t<decltype(at(0))>;
  ExprImpl sum;
  if constexpr (std::is_same_v<T, ExprImpl>) {
    sum = sum_of_polys(n, at);
    sum.attr = sum_attr(n, at);
  } else if constexpr (std::is_same_v<T, coeff_t>) {
    for (uint64_t i = 0; i < n; ++i) sum.constant += at(i);
  } else if constexpr (std::is_same_v<T, TermImpl>) {
    // A term of coefficient 0 does not fill the first slot, so the next one takes its place.
    uint64_t skipped = 0;
    while (skipped < n && is_zero(at(skipped).coeff)) ++skipped;
    const uint64_t terms = n - skipped;
    sum.list.allocate_slots(terms);
    par_for(terms, [&](uint64_t i) { construct_copy(sum.list.slot(i), at(skipped + i)); });
    sum.list.commit_slots(terms);
  } else {
    sum.list.allocate_slots(n);
    par_for(n, [&](uint64_t i) { new (sum.list.slot(i)) TermImpl(1, VarList(at(i))); });
    sum.list.commit_slots(n);
  }
  return sum;
}

}  // namespace zorv
