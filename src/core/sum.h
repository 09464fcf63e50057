// Sums of many things, in order and not merged. The size of a sum is known before it is made: its
// block is allocated once, and long sums are filled by several threads.
#pragma once

#include <type_traits>
#include <vector>

#include "core/attr_rules.h"
#include "core/coeff_sum.h"
#include "core/expr.h"
#include "core/parallel.h"
#include "core/sizes.h"

namespace zorv {

namespace detail {

// Copies the entries of `from` to raw storage, or moves them there and leaves `from` empty.
inline void put_entries(TermImpl* to, const TermList& from) {
  par_for(from.count, [&](uint64_t i) { new (to + i) TermImpl(from.terms[i]); });
}
inline void put_entries(TermImpl* to, TermList& from) {
  if (from.count > 0) relocate_terms(to, from.terms, from.count);
  from.count = 0;
}

}  // namespace detail

// The expression at(0) + ... + at(n - 1), at(i) being references, with the constraints of all of
// them. Expressions that are not const are used up. The sum's first slot is the first one that is a
// term.
template <typename At>
ExprImpl sum_of_exprs(uint64_t n, At at) {
  uint64_t leader = 0;  // the expression whose `first` opens the sum
  while (leader < n && !at(leader).list.has_first()) ++leader;

  struct Part {
    uint64_t terms = 0;
    CoeffSum constant;
    bool has_constraints = false;
  };
  const uint32_t threads = n > kSerialItems ? num_threads() : 1;
  const Chunking chunking(n, threads);
  std::vector<Part> parts(chunking.chunks);
  for_chunks_on_fresh_threads(
      chunking, threads, [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
        Part part;
        for (uint64_t i = begin; i < end; ++i) {
          part.terms = size_sum(part.terms, at(i).list.size() - (i == leader ? 1 : 0));
          part.constant += at(i).constant;
          part.has_constraints = part.has_constraints || is_constraint_attr(at(i).attr);
        }
        parts[c] = part;
      });
  ExprImpl sum;
  bool has_constraints = false;
  std::vector<uint64_t> starts = {1};  // the first slot of each chunk; slot 0 is the leader's
  for (const Part& part : parts) {
    starts.push_back(size_sum(starts.back(), part.terms));
    sum.constant += part.constant.total();
    has_constraints = has_constraints || part.has_constraints;
  }
  if (has_constraints) sum.attr = sum_attr(n, at);

  TermList& to = sum.list;
  to.allocate_slots(starts.back());
  if (leader < n) to.first = at(leader).list.first;
  for_chunks_on_fresh_threads(chunking, threads,
                              [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
                                uint64_t slot = starts[c];
                                for (uint64_t i = begin; i < end; ++i) {
                                  auto& list = at(i).list;
                                  if (i != leader && list.has_first()) {
                                    new (to.slot(slot++)) TermImpl(list.first);
                                  }
                                  const uint64_t entries = list.count;
                                  detail::put_entries(to.slot(slot), list);
                                  slot += entries;
                                }
                              });
  to.commit_slots(starts.back());
  return sum;
}

// The same by the kind of what is added: literals, integers, terms or expressions.
template <typename At>
ExprImpl sum_of(uint64_t n, At at) {
  using T = std::decay_t<decltype(at(0))>;
  ExprImpl sum;
  if constexpr (std::is_same_v<T, ExprImpl>) {
    sum = sum_of_exprs(n, at);
  } else if constexpr (std::is_same_v<T, coeff_t>) {
    for (uint64_t i = 0; i < n; ++i) sum.constant += at(i);
  } else if constexpr (std::is_same_v<T, TermImpl>) {
    // A term of coefficient 0 does not fill the first slot, so the next one takes its place.
    uint64_t skipped = 0;
    while (skipped < n && is_zero(at(skipped).coeff)) ++skipped;
    const uint64_t terms = n - skipped;
    sum.list.allocate_slots(terms);
    par_for(terms, [&](uint64_t i) { new (sum.list.slot(i)) TermImpl(at(skipped + i)); });
    sum.list.commit_slots(terms);
  } else {
    sum.list.allocate_slots(n);
    par_for(n, [&](uint64_t i) { new (sum.list.slot(i)) TermImpl(1, VarList(at(i))); });
    sum.list.commit_slots(n);
  }
  return sum;
}

}  // namespace zorv
