#include "core/merge_terms.h"

#include <bit>
#include <utility>

#include "core/parallel_sort.h"

namespace zorv::detail {

namespace {

// A term as its bytes, so that the sort moves words and resets nothing behind it.
struct alignas(alignof(TermImpl)) TermBytes {
  uint64_t words[sizeof(TermImpl) / sizeof(uint64_t)];
  const VarList& vars() const { return reinterpret_cast<const TermImpl*>(this)->vars; }
} __attribute__((may_alias));
static_assert(sizeof(TermBytes) == sizeof(TermImpl));

// Objects rather than functions, so that the sort can inline them.
constexpr auto kPackedPrecedes = [](const VarList& a, const VarList& b) {
  return a.head_pair() < b.head_pair();
};
constexpr auto kTermPrecedes = [](const VarList& a, const VarList& b) {
  return term_precedes(a, b);
};

bool same_literals(const VarList& a, const VarList& b, const ClassSlots& slots) {
  return slots.is_packed() ? a.head_pair() == b.head_pair() : a == b;
}

template <typename Precedes>
void sort_block(TermImpl* begin, TermImpl* end, Precedes precedes) {
  parallel_sort(
      reinterpret_cast<TermBytes*>(begin), reinterpret_cast<TermBytes*>(end),
      [=](const TermBytes& a, const TermBytes& b) { return precedes(a.vars(), b.vars()); });
}

// Sorts the slots of a class where they lie. Slot 0 is outside the block: it takes the smallest.
template <typename Precedes>
void sort_slots(TermList& list, const ClassSlots& slots, Precedes precedes) {
  uint64_t begin = slots.begin;
  if (begin == 0) {
    TermImpl* smallest = list.slot(0);
    for (uint64_t i = 1; i < slots.end; ++i) {
      if (precedes(list.slot(i)->vars, smallest->vars)) smallest = list.slot(i);
    }
    if (smallest != list.slot(0)) std::swap(*smallest, *list.slot(0));
    begin = 1;
  }
  if (slots.end > begin) {
    sort_block(list.slot(begin), list.terms + (slots.end - 1), precedes);
  }
}

// Makes the literals of a packed list. Those that need a block of their own get it here, once for
// each term that is left and in the order of the result.
void unpack(VarList& vars, const ClassSlots& slots) {
  uint64_t key = vars.head_pair();
  const uint64_t mask = (uint64_t{1} << slots.key_bits) - 1;
  uint32_t literals[kDegreeClasses];
  for (uint32_t i = slots.degree; i-- > 0; key >>= slots.key_bits) {
    literals[i] = literal_of_key(static_cast<uint32_t>(key & mask));
  }
  vars = VarList(literals, slots.degree);
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

// Adds up equal neighbours of [begin, end), drops zeros and closes the gaps; returns the new end.
uint64_t merge_neighbours(TermList& list, uint64_t begin, uint64_t end, const ClassSlots& slots) {
  uint64_t to = begin;
  for (uint64_t i = begin; i < end;) {
    TermImpl* leader = list.slot(i);
    for (++i; i < end && same_literals(leader->vars, list.slot(i)->vars, slots); ++i) {
      leader->coeff += list.slot(i)->coeff;
      list.slot(i)->~TermImpl();
    }
    if (is_zero(leader->coeff)) {
      leader->~TermImpl();
      continue;
    }
    if (slots.is_packed()) unpack(leader->vars, slots);
    if (list.slot(to) != leader) relocate_terms(list.slot(to), leader, 1);
    ++to;
  }
  return to;
}

// merge_neighbours over all slots of a class, in parallel segments that no run spans.
uint64_t merge_class(TermList& list, const ClassSlots& slots) {
  const uint64_t n = slots.end - slots.begin;
  if (n <= kSerialItems) return merge_neighbours(list, slots.begin, slots.end, slots);
  const uint64_t segments = par_threads(n);
  std::vector<uint64_t> borders(segments + 1, slots.begin);
  for (uint64_t s = 1; s <= segments; ++s) {
    uint64_t border = std::max(borders[s - 1], slots.begin + n * s / segments);
    while (border > slots.begin && border < slots.end &&
           same_literals(list.slot(border - 1)->vars, list.slot(border)->vars, slots)) {
      ++border;
    }
    borders[s] = border;
  }
  std::vector<uint64_t> ends(segments);
  par_for_impl(0, segments, [&](uint64_t s) {
    ends[s] = merge_neighbours(list, borders[s], borders[s + 1], slots);
  });
  uint64_t end = ends[0];
  for (uint64_t s = 1; s < segments; ++s) {
    const uint64_t kept = ends[s] - borders[s];
    move_down(list, end, borders[s], kept);
    end += kept;
  }
  return end;
}

}  // namespace

VarList literals_of(const NormalTerm& term) {
  std::vector<uint32_t> literals(term.degree);
  for (uint32_t i = 0; i < term.degree; ++i) literals[i] = literal_of_key(term.key(i));
  return VarList(literals.data(), term.degree);
}

uint64_t packed_key(const NormalTerm& term, uint32_t key_bits) {
  uint64_t packed = 0;
  for (uint32_t i = 0; i < term.degree; ++i) packed = packed << key_bits | term.key(i);
  return packed;
}

uint64_t place_runs(std::vector<ChunkRuns>& chunks, ClassSlots (&classes)[kDegreeClasses]) {
  uint64_t next = 0;
  for (uint32_t c = 1; c < kDegreeClasses; ++c) {
    ClassSlots& slots = classes[c];
    slots.begin = next;
    slots.degree = c;
    uint32_t highest_key = 0;
    const Runs* previous = nullptr;
    for (ChunkRuns& chunk : chunks) {
      Runs& runs = chunk.classes[c];
      if (runs.count == 0) continue;
      runs.begin = next;
      runs.joins = previous != nullptr && same_literals(previous->last, runs.first);
      next += runs.count - (runs.joins ? 1 : 0);
      const bool follows =
          previous == nullptr || runs.joins || precedes(previous->last, runs.first);
      slots.ascend = slots.ascend && runs.ascend && follows;
      highest_key = std::max(highest_key, runs.highest_key);
      previous = &runs;
    }
    slots.end = next;
    // Literals of one degree that fit in 64 bits together are sorted as one number.
    const auto bits = static_cast<uint32_t>(std::bit_width(highest_key));
    if (!slots.ascend && c < kDegreeClasses - 1 && c * bits <= 64) slots.key_bits = bits;
  }
  return next;
}

void add_carries(TermList& list, std::vector<ChunkRuns>& chunks,
                 ClassSlots (&classes)[kDegreeClasses]) {
  for (ChunkRuns& chunk : chunks) {
    for (uint32_t c = 1; c < kDegreeClasses; ++c) {
      const Runs& runs = chunk.classes[c];
      if (runs.count == 0) continue;
      if (runs.joins) list.slot(runs.begin - 1)->coeff += runs.carry;
      classes[c].merged = classes[c].merged || runs.merged || runs.joins;
    }
  }
}

uint64_t settle(TermList& list, ClassSlots (&classes)[kDegreeClasses]) {
  uint64_t kept = 0;
  for (uint32_t c = 1; c < kDegreeClasses; ++c) {
    ClassSlots& slots = classes[c];
    if (slots.begin == slots.end) continue;
    if (!slots.ascend) {
      if (slots.is_packed()) {
        sort_slots(list, slots, kPackedPrecedes);
      } else {
        sort_slots(list, slots, kTermPrecedes);
      }
    }
    const uint64_t end = slots.ascend && !slots.merged ? slots.end : merge_class(list, slots);
    move_down(list, kept, slots.begin, end - slots.begin);
    kept += end - slots.begin;
  }
  if (kept == 0) new (list.slot(0)) TermImpl();
  return kept;
}

TermList gather_extras(std::vector<ChunkRuns>& chunks, coeff_t& delta) {
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
