#include "core/merge_terms.h"

#include <bit>
#include <utility>

#include "core/block_cache.h"
#include "core/parallel_sort.h"
#include "core/radix_sort.h"

namespace zorv::detail {

namespace {

// A term as its bytes, so that a sort moves words and resets nothing behind it.
struct alignas(alignof(TermImpl)) TermBytes {
  uint64_t words[sizeof(TermImpl) / sizeof(uint64_t)];
  const VarList& vars() const { return reinterpret_cast<const TermImpl*>(this)->vars; }
} __attribute__((may_alias));
static_assert(sizeof(TermBytes) == sizeof(TermImpl));

bool same_literals(const TermImpl& a, const TermImpl& b) { return a.vars == b.vars; }
bool same_literals(const PackedTerm& a, const PackedTerm& b) { return a.key == b.key; }

VarList take_literals(TermImpl& term, const ClassSlots&) { return std::move(term.vars); }
VarList take_literals(const PackedTerm& term, const ClassSlots& slots) {
  const uint64_t mask = (uint64_t{1} << slots.key_bits) - 1;
  uint64_t key = term.key;
  uint32_t literals[kDegreeClasses];
  for (uint32_t i = slots.degree; i-- > 0; key >>= slots.key_bits) {
    literals[i] = literal_of_key(static_cast<uint32_t>((key & mask) << slots.key_shift));
  }
  return VarList(literals, slots.degree);
}

// Moves the terms of slots [from, from + n) down to slots [to, to + n).
void move_down(TermList& list, uint64_t to, uint64_t from, uint64_t n) {
  if (to == from || n == 0) return;
  if (to == 0) {
    relocate_terms(list.slot(0), list.slot(from), 1);
    ++to, ++from, --n;
  }
  if (n > 0) {
    std::memmove(static_cast<void*>(list.slot(to)), static_cast<const void*>(list.slot(from)),
                 n * sizeof(TermImpl));
  }
}

// Adds up equal neighbours of records[begin .. end), drops zeros and makes terms of what is left,
// from slot `to` on; returns the slot behind the last. The slots may be those of the records, or
// lower ones.
template <typename Record>
uint64_t merge_neighbours(Record* records, uint64_t begin, uint64_t end, TermList& list,
                          uint64_t to, const ClassSlots& slots) {
  for (uint64_t i = begin; i < end;) {
    Record sum = std::move(records[i]);  // what it leaves owns nothing
    for (++i; i < end && same_literals(sum, records[i]); ++i) {
      sum.coeff += records[i].coeff;
      records[i].~Record();
    }
    if (is_zero(sum.coeff)) continue;
    new (list.slot(to++)) TermImpl(std::move(sum.coeff), take_literals(sum, slots));
  }
  return to;
}

// The same for the n sorted records of a class, in parallel segments that no run spans. The terms
// go to slots from `to` on, which is not above the first slot of the class.
template <typename Record>
uint64_t merge_class(Record* records, TermList& list, uint64_t to, const ClassSlots& slots) {
  const uint64_t n = slots.end - slots.begin;
  if (n <= kSerialItems) return merge_neighbours(records, 0, n, list, to, slots);
  const uint64_t segments = par_threads(n);
  if (segments < 2) return merge_neighbours(records, 0, n, list, to, slots);
  std::vector<uint64_t> borders(segments + 1, 0);
  for (uint64_t s = 1; s <= segments; ++s) {
    uint64_t border = std::max(borders[s - 1], n * s / segments);
    while (border > 0 && border < n && same_literals(records[border - 1], records[border])) {
      ++border;
    }
    borders[s] = border;
  }
  std::vector<uint64_t> ends(segments);
  par_for_impl(0, segments, [&](uint64_t s) {
    ends[s] = merge_neighbours(records, borders[s], borders[s + 1], list, slots.begin + borders[s],
                               slots);
  });
  for (uint64_t s = 0; s < segments; ++s) {
    const uint64_t first = slots.begin + borders[s];
    move_down(list, to, first, ends[s] - first);
    to += ends[s] - first;
  }
  return to;
}

// Drops the zeros of a class in order; returns like merge_neighbours.
uint64_t drop_zeros(TermList& list, uint64_t to, const ClassSlots& slots) {
  for (uint64_t i = slots.begin; i < slots.end; ++i) {
    TermImpl* const term = list.slot(i);
    if (is_zero(term->coeff)) {
      term->~TermImpl();
      continue;
    }
    if (to != i) relocate_terms(list.slot(to), term, 1);
    ++to;
  }
  return to;
}

uint64_t sort_and_merge(TermList& list, uint64_t to, const ClassSlots& slots) {
  TermImpl* const terms = list.slot(slots.begin);
  const uint64_t n = slots.end - slots.begin;
  if (!slots.is_packed()) {
    parallel_sort(
        reinterpret_cast<TermBytes*>(terms), reinterpret_cast<TermBytes*>(terms + n),
        [](const TermBytes& a, const TermBytes& b) { return term_precedes(a.vars(), b.vars()); });
    return merge_class(terms, list, to, slots);
  }
  const Block buffer = acquire_block(n * sizeof(PackedTerm));
  PackedTerm* const sorted =
      radix_sort(reinterpret_cast<PackedTerm*>(terms), static_cast<PackedTerm*>(buffer.data), n,
                 slots.degree * slots.key_bits);
  const uint64_t end = merge_class(sorted, list, to, slots);
  release_block(buffer);
  return end;
}

}  // namespace

VarList literals_of(const NormalTerm& term) {
  Keys literals(term.degree);
  for (uint32_t i = 0; i < term.degree; ++i) literals[i] = literal_of_key(term.key(i));
  return VarList(literals.data(), term.degree);
}

uint64_t place_runs(std::vector<ChunkRuns>& chunks, ClassSlots (&classes)[kDegreeClasses]) {
  uint64_t next = 0;
  for (uint32_t c = 1; c < kDegreeClasses; ++c) {
    ClassSlots& slots = classes[c];
    slots.degree = c;
    uint64_t count = 0;
    uint32_t used_bits = 0;
    const Runs* previous = nullptr;
    for (ChunkRuns& chunk : chunks) {
      Runs& runs = chunk.classes[c];
      if (runs.count == 0) continue;
      runs.begin = count;
      runs.joins = previous != nullptr && same_literals(previous->last, runs.first);
      count += runs.count - (runs.joins ? 1 : 0);
      const bool follows =
          previous == nullptr || runs.joins || precedes(previous->last, runs.first);
      slots.ascend = slots.ascend && runs.ascend && follows;
      used_bits |= NormalTerm::used_bits(c, runs.used_head, runs.used_second, runs.used_rest);
      previous = &runs;
    }
    if (count == 0) continue;
    // What is to be sorted lies in the block, without slot 0.
    if (!slots.ascend) next = std::max<uint64_t>(next, 1);
    slots.begin = next;
    for (ChunkRuns& chunk : chunks) chunk.classes[c].begin += next;
    next += count;
    slots.end = next;
    const auto shift = static_cast<uint32_t>(used_bits == 0 ? 0 : std::countr_zero(used_bits));
    const auto bits = std::max(1u, static_cast<uint32_t>(std::bit_width(used_bits >> shift)));
    if (!slots.ascend && c < kDegreeClasses - 1 && c * bits <= 64) {
      slots.key_bits = bits;
      slots.key_shift = shift;
    }
  }
  return next;
}

void add_carries(TermList& list, std::vector<ChunkRuns>& chunks,
                 ClassSlots (&classes)[kDegreeClasses]) {
  for (ChunkRuns& chunk : chunks) {
    for (uint32_t c = 1; c < kDegreeClasses; ++c) {
      const Runs& runs = chunk.classes[c];
      if (runs.count == 0) continue;
      if (runs.joins) {
        // The coefficient stands at the same place in both.
        reinterpret_cast<PackedTerm*>(list.slot(runs.begin - 1))->coeff += runs.carry;
      }
      classes[c].merged = classes[c].merged || runs.merged || runs.joins;
    }
  }
}

uint64_t settle(TermList& list, ClassSlots (&classes)[kDegreeClasses]) {
  uint64_t kept = 0;
  for (uint32_t c = 1; c < kDegreeClasses; ++c) {
    const ClassSlots& slots = classes[c];
    if (slots.begin == slots.end) continue;
    if (!slots.ascend) {
      kept = sort_and_merge(list, kept, slots);
    } else if (slots.merged) {
      kept = drop_zeros(list, kept, slots);
    } else {
      move_down(list, kept, slots.begin, slots.end - slots.begin);
      kept += slots.end - slots.begin;
    }
  }
  if (kept == 0) new (list.slot(0)) TermImpl();
  return kept;
}

TermList gather_extras(std::vector<ChunkRuns>& chunks, CompactCoeff& delta) {
  std::vector<ExtraTerm1> extras;
  for (ChunkRuns& chunk : chunks) {
    delta += chunk.side.delta;
    std::move(chunk.side.extras.begin(), chunk.side.extras.end(), std::back_inserter(extras));
    chunk.side.extras = {};
  }
  parallel_sort(extras.begin(), extras.end(),
                [](const ExtraTerm1& a, const ExtraTerm1& b) { return a.var < b.var; });
  TermList sums;
  for (size_t i = 0; i < extras.size();) {
    TermImpl sum(std::move(extras[i].coeff), VarList(extras[i].var));
    for (++i; i < extras.size() && extras[i].var == sum.vars[0]; ++i) sum.coeff += extras[i].coeff;
    if (!is_zero(sum.coeff)) sums.append(std::move(sum));
  }
  return sums;
}

}  // namespace zorv::detail
