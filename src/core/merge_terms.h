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
// copy, and its memory is the result's own. The sort is boost's block_indirect_sort.
#pragma once

#include <cstdint>
#include <vector>

#include "core/expr.h"
#include "core/normal_term.h"
#include "core/parallel.h"

namespace zorv {

// A degree-1 term that a rule made on the side, while it rewrote another.
struct ExtraTerm1 {
  coeff_t coeff;
  uint32_t var;  // never negated
};

// What a rule adds besides the term that it rewrites.
struct SideEffects {
  coeff_t delta;  // to the constant
  std::vector<ExtraTerm1> extras;
};

// A rule is called as rule(term, normal, side) for terms whose coefficient is not 0 and returns
// whether anything is left of the term. `side` is null on the second walk, since what it collects
// counts once. A rule has scratch space of its own and is copied for every thread.
template <typename Rule>
ExprImpl merge_terms(const TermList& source, const coeff_t& constant, const Rule& rule);

namespace detail {

// Degrees below the last class have one each; the last class takes all higher ones.
inline constexpr uint32_t kDegreeClasses = 9;
inline uint32_t degree_class(uint32_t degree) { return std::min(degree, kDegreeClasses - 1); }

// The runs of one degree class in one chunk.
struct Runs {
  uint64_t count = 0;
  bool ascend = true;
  NormalTerm first, last;
  uint32_t highest_key = 0;
  // Where the runs go. With `joins` the first run belongs to the slot before `begin`.
  uint64_t begin = 0;
  bool joins = false;
  coeff_t carry;
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
  uint32_t key_bits = 0;  // if not 0, the slots' head pairs hold all literals as one number

  bool is_packed() const { return key_bits != 0; }
};

// Assigns slots to the runs of all chunks; returns how many there are.
uint64_t place_runs(std::vector<ChunkRuns>& chunks, ClassSlots (&classes)[kDegreeClasses]);
VarList literals_of(const NormalTerm& term);
uint64_t packed_key(const NormalTerm& term, uint32_t key_bits);
// Brings every class to its final form; returns how many terms remain, from slot 0 on.
uint64_t settle(TermList& list, ClassSlots (&classes)[kDegreeClasses]);
// Adds the carries of `chunks` to their slots.
void add_carries(TermList& list, std::vector<ChunkRuns>& chunks,
                 ClassSlots (&classes)[kDegreeClasses]);
// The extra terms of all chunks with equal variables added up, and the sum of their deltas.
TermList gather_extras(std::vector<ChunkRuns>& chunks, coeff_t& delta);

// Extra terms are in their final form.
struct ExtraRule {
  bool operator()(const TermImpl& term, NormalTerm& normal, SideEffects*) const {
    normal.set(sort_key(term.vars[0]));
    return true;
  }
};

inline void add_signed(coeff_t& sum, const coeff_t& c, bool is_negated) {
  if (is_negated) {
    sum -= c;
  } else {
    sum += c;
  }
}

// Constructs a term in raw storage, its literals packed if the class asks for it.
[[gnu::always_inline]] inline void construct_run(TermImpl* slot, const coeff_t& coeff,
                                                 const NormalTerm& term, const ClassSlots& slots) {
  if (term.is_negated) {
    construct_negated(&slot->coeff, coeff);
  } else {
    construct_copy(&slot->coeff, coeff);
  }
  if (slots.is_packed()) {
    new (&slot->vars) VarList(VarList::adopt(packed_key(term, slots.key_bits), nullptr));
  } else if (term.degree == 1) {
    new (&slot->vars) VarList(literal_of_key(term.key(0)));
  } else if (term.degree == 2) {
    new (&slot->vars) VarList(literal_of_key(term.key(0)), literal_of_key(term.key(1)));
  } else {
    new (&slot->vars) VarList(literals_of(term));
  }
}

template <typename Rule>
void count_runs(const TermView& source, uint64_t begin, uint64_t end, Rule rule, ChunkRuns& chunk) {
  NormalTerm normal;
  for (uint64_t i = begin; i < end; ++i) {
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
    runs.highest_key = std::max(runs.highest_key, normal.highest_key());
  }
}

template <typename Rule>
void fill_runs(const TermView& source, uint64_t begin, uint64_t end, Rule rule, ChunkRuns& chunk,
               const ClassSlots (&classes)[kDegreeClasses], TermList& to) {
  struct Cursor {
    coeff_t* sum = nullptr;  // of the run that is being written
    uint64_t next = 0;
    NormalTerm last;
  } cursors[kDegreeClasses];
  NormalTerm normal;
  for (uint64_t i = begin; i < end; ++i) {
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
ExprImpl merge_terms(const TermList& source, const coeff_t& constant, const Rule& rule) {
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
