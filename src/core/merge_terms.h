// merge_terms: the terms of an expression, each brought to the rules of its domain, gathered into a
// canonical expression: equal terms added up, zeros dropped, sorted by degree and literals.
//
// Terms arrive nearly in order far more often than not: a square or a product leaves long sorted
// runs, broken only by its few terms of lower degree. So nothing is sorted blindly:
//
//   count   each chunk of the source is walked once. For every degree it notes how many runs of
//           neighbours with equal literals there are, whether they ascend, and the first and last.
//   place   the counts give every chunk its slots in the result, degree by degree.
//   fill    each chunk is walked again and writes its runs, already added up, to their slots. A run
//           that goes on from the chunk before is kept aside and added to that slot afterwards.
//   settle  a degree whose runs ascend through all chunks is finished. Any other is sorted where
//           it lies and its equal neighbours are added up; zeros are dropped, gaps closed.
//
// An input in order therefore costs two readings and one writing of its terms, with no further
// copy, and its memory is the result's own. Where the literals of a degree fit in 64 bits together
// they are sorted as one number, digit by digit, in a second block of the same size; longer ones
// are compared, by boost's block_indirect_sort.
#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "core/expr.h"
#include "core/normal_term.h"
#include "core/parallel.h"

namespace zorv {

// A degree-1 term that a rule made on the side, while it rewrote another.
struct ExtraTerm1 {
  CompactCoeff coeff;
  uint32_t var;  // never negated
};

// What a rule adds besides the term that it rewrites.
struct SideEffects {
  CompactCoeff delta;  // to the constant
  std::vector<ExtraTerm1> extras;
};

// A rule says in kChanging which bits of a literal it may act upon, besides what it does to equal
// ones, and is called as rule(term, normal, side) for terms whose coefficient is not 0 and returns
// whether anything is left of the term. `side` is null on the second walk, since what it collects
// counts once. A rule has scratch space of its own and is copied for every thread.
template <typename Rule>
ExprImpl merge_terms(const TermList& source, const CompactCoeff& constant, const Rule& rule);

namespace detail {

// Degrees below the last class have one each; the last class takes all higher ones.
inline constexpr uint32_t kDegreeClasses = 9;
inline uint32_t degree_class(uint32_t degree) { return std::min(degree, kDegreeClasses - 1); }

// The runs of one degree class in one chunk.
struct Runs {
  uint64_t count = 0;
  bool ascend = true;
  NormalTerm first, last;
  uint64_t used_head = 0, used_second = 0;  // or-ed, for NormalTerm::used_bits
  uint32_t used_rest = 0;
  // Where the runs go. With `joins` the first run belongs to the slot before `begin`.
  uint64_t begin = 0;
  bool joins = false;
  CompactCoeff carry;
  bool merged = false;  // something was added up here, so a sum may have come to zero
};

struct ChunkRuns {
  Runs classes[kDegreeClasses];
  SideEffects side;
};

// The slots of one degree class in the result, and what is known of them.
struct ClassSlots {
  uint64_t begin = 0;
  uint64_t end = 0;
  bool ascend = true;
  bool merged = false;
  uint32_t degree = 0;
  // If key_bits is not 0, the slots are PackedTerms; a key has key_bits bits of which the lowest
  // key_shift, 0 in all keys, are left out.
  uint32_t key_bits = 0;
  uint32_t key_shift = 0;

  bool is_packed() const { return key_bits != 0; }
};

// A term whose literals are one number, in the slot of a term.
struct PackedTerm {
  CompactCoeff coeff;
  uint64_t key;
} __attribute__((may_alias));
static_assert(sizeof(PackedTerm) == sizeof(TermImpl));

// Assigns slots to the runs of all chunks; returns how many there are.
uint64_t place_runs(std::vector<ChunkRuns>& chunks, ClassSlots (&classes)[kDegreeClasses]);
VarList literals_of(const NormalTerm& term);
// Brings every class to its final form; returns how many terms remain, from slot 0 on.
uint64_t settle(TermList& list, ClassSlots (&classes)[kDegreeClasses]);
// Adds the carries of `chunks` to their slots.
void add_carries(TermList& list, std::vector<ChunkRuns>& chunks,
                 ClassSlots (&classes)[kDegreeClasses]);
// The extra terms of all chunks with equal variables added up, and the sum of their deltas.
TermList gather_extras(std::vector<ChunkRuns>& chunks, CompactCoeff& delta);

// Extra terms are in their final form.
struct ExtraRule {
  static constexpr uint32_t kChanging = kNegationBit;
  bool operator()(const TermImpl& term, NormalTerm& normal, SideEffects*) const {
    normal.set(sort_key(term.vars[0]));
    return true;
  }
};

inline uint64_t packed_key(const NormalTerm& term, const ClassSlots& slots) {
  uint64_t packed = 0;
  for (uint32_t i = 0; i < term.degree; ++i) {
    packed = packed << slots.key_bits | term.key(i) >> slots.key_shift;
  }
  return packed;
}

// The same for the head of two literals.
inline uint64_t packed_pair(uint64_t head, const ClassSlots& slots) {
  const uint64_t low = static_cast<uint32_t>(head) >> slots.key_shift;
  return head >> 32 >> slots.key_shift << slots.key_bits | low;
}

inline void add_signed(CompactCoeff& sum, const CompactCoeff& c, bool is_negated) {
  if (is_negated) {
    sum -= c;
  } else {
    sum += c;
  }
}

// Constructs a term in raw storage, its literals packed if the class asks for it.
[[gnu::always_inline]] inline void construct_run(TermImpl* slot, const CompactCoeff& coeff,
                                                 const NormalTerm& term, const ClassSlots& slots) {
  new (&slot->coeff) CompactCoeff(coeff);
  if (term.is_negated) slot->coeff.negate();
  if (slots.is_packed()) {
    reinterpret_cast<PackedTerm*>(slot)->key = packed_key(term, slots);
  } else if (term.degree == 1) {
    new (&slot->vars) VarList(literal_of_key(term.key(0)));
  } else if (term.degree == 2) {
    new (&slot->vars) VarList(literal_of_key(term.key(0)), literal_of_key(term.key(1)));
  } else {
    new (&slot->vars) VarList(literals_of(term));
  }
}

// Long stretches of most inputs are terms of two literals, in order and without negation: no rule
// changes them, and they need no more than a look at their bits. `changing` are the bits of a
// literal that a rule may act upon. Returns the head of such a term, and 0 for any other.
inline uint64_t settled_pair(const TermImpl& term, uint32_t changing) {
  const uint64_t pair = term.vars.word();
  const auto low = static_cast<uint32_t>(pair), high = static_cast<uint32_t>(pair >> 32);
  if (((low | high) & changing) != 0 || low >= high || is_zero(term.coeff)) return 0;
  return std::rotl(pair, 32) << 1;  // as sort keys
}

// The end of the stretch of settled pairs from `term` on that ascend behind `last`, which becomes
// the head of the last one.
template <typename F>
const TermImpl* for_settled_pairs(const TermImpl* term, const TermImpl* end, uint32_t changing,
                                  uint64_t& last, F f) {
  uint64_t before = last;
  for (; term != end; ++term) {
    const uint64_t head = settled_pair(*term, changing);
    if (head <= before) break;
    before = head;
    f(*term, head);
  }
  last = before;
  return term;
}

template <typename Rule>
void count_runs(const TermView& source, uint64_t begin, uint64_t end, Rule rule, ChunkRuns& chunk) {
  Runs& pairs = chunk.classes[2];
  NormalTerm normal;
  for (uint64_t i = begin; i < end; ++i) {
    if (pairs.count > 0 && i > 0) {
      uint64_t used = 0;
      const TermImpl* const from = source.run_from(i);
      const auto stretch = static_cast<uint64_t>(
          for_settled_pairs(from, from + (end - i), Rule::kChanging, pairs.last.head,
                            [&](const TermImpl&, uint64_t head) { used |= head; }) -
          from);
      pairs.count += stretch;
      pairs.used_head |= used;
      i += stretch;
      if (i == end) break;
    }
    const TermImpl& term = source[i];
    if (is_zero(term.coeff) || !rule(term, normal, &chunk.side)) continue;
    if (normal.degree == 0) {
      add_signed(chunk.side.delta, term.coeff, normal.is_negated);
      continue;
    }
    Runs& runs = chunk.classes[degree_class(normal.degree)];
    if (runs.count == 0) {
      runs.first = normal;
    } else if (same_literals(runs.last, normal)) {
      continue;
    } else {
      runs.ascend = runs.ascend && precedes(runs.last, normal);
    }
    ++runs.count;
    runs.last = normal;
    runs.used_head |= normal.head;
    runs.used_second |= normal.second;
    for (uint32_t i = 4; i < normal.degree; ++i) runs.used_rest |= normal.key(i);
  }
}

template <typename Rule>
void fill_runs(const TermView& source, uint64_t begin, uint64_t end, Rule rule, ChunkRuns& chunk,
               const ClassSlots (&classes)[kDegreeClasses], TermList& to) {
  struct Cursor {
    CompactCoeff* sum = nullptr;  // of the run that is being written
    uint64_t next = 0;
    NormalTerm last;
  } cursors[kDegreeClasses];
  Cursor& pairs = cursors[2];
  NormalTerm normal;
  for (uint64_t i = begin; i < end; ++i) {
    if (pairs.sum != nullptr && i > 0) {
      const TermImpl* const from = source.run_from(i);
      TermImpl* const first_slot = to.slot(pairs.next);
      TermImpl* slot = first_slot;
      i += static_cast<uint64_t>(
          for_settled_pairs(from, from + (end - i), Rule::kChanging, pairs.last.head,
                            [&](const TermImpl& term, uint64_t head) {
                              if (classes[2].is_packed()) {
                                new (slot++) PackedTerm{term.coeff, packed_pair(head, classes[2])};
                              } else {
                                new (slot++) TermImpl(term);
                              }
                            }) -
          from);
      if (slot != first_slot) {
        pairs.next += static_cast<uint64_t>(slot - first_slot);
        pairs.sum = &slot[-1].coeff;
      }
      if (i == end) break;
    }
    const TermImpl& term = source[i];
    if (is_zero(term.coeff) || !rule(term, normal, nullptr) || normal.degree == 0) continue;
    const uint32_t c = degree_class(normal.degree);
    Runs& runs = chunk.classes[c];
    Cursor& cursor = cursors[c];
    if (cursor.sum != nullptr && same_literals(cursor.last, normal)) {
      add_signed(*cursor.sum, term.coeff, normal.is_negated);
      runs.merged = true;
      continue;
    }
    cursor.last = normal;
    if (cursor.sum == nullptr) {
      cursor.next = runs.begin;
      if (runs.joins) {
        add_signed(runs.carry, term.coeff, normal.is_negated);
        cursor.sum = &runs.carry;
        continue;
      }
    }
    TermImpl* slot = to.slot(cursor.next++);
    construct_run(slot, term.coeff, normal, classes[c]);
    cursor.sum = &slot->coeff;
  }
}

}  // namespace detail

template <typename Rule>
ExprImpl merge_terms(const TermList& source, const CompactCoeff& constant, const Rule& rule) {
  const uint64_t n = source.size();
  const uint32_t threads = n > kSerialItems ? num_threads() : 1;
  const Chunking chunking(n, threads);
  const TermView terms(source);
  std::vector<detail::ChunkRuns> chunks(chunking.chunks);
  for_chunks_on_fresh_threads(chunking, threads,
                              [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
                                detail::count_runs(terms, begin, end, rule, chunks[c]);
                              });

  ExprImpl merged(constant);
  const TermList extras = detail::gather_extras(chunks, merged.constant);
  if (extras.size() > 0) {
    chunks.emplace_back();
    detail::count_runs(extras, 0, extras.size(), detail::ExtraRule{}, chunks.back());
  }
  detail::ClassSlots classes[detail::kDegreeClasses];
  const uint64_t slots = detail::place_runs(chunks, classes);
  if (slots == 0) return merged;

  merged.list.allocate_slots(slots);
  for_chunks_on_fresh_threads(
      chunking, threads, [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
        detail::fill_runs(terms, begin, end, rule, chunks[c], classes, merged.list);
      });
  if (extras.size() > 0) {
    detail::fill_runs(extras, 0, extras.size(), detail::ExtraRule{}, chunks.back(), classes,
                      merged.list);
  }
  detail::add_carries(merged.list, chunks, classes);
  merged.list.commit_slots(detail::settle(merged.list, classes));
  return merged;
}

}  // namespace zorv
