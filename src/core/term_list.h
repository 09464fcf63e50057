// TermList: the terms of an expression, the first of them inline, so that an expression of one
// term, the commonest intermediate of model building, owns no block.
//
// Invariants
//   1. `first` is a term if its coefficient is not 0; otherwise its slot is free.
//   2. Term i is `first` for i = 0 and terms[i - 1] for i > 0 if `first` is a term, and terms[i]
//      otherwise. Entries of `terms` count as they stand, also with a coefficient of 0.
//   3. An append fills `first` whenever it is free, even when `terms` holds entries. Bulk loading
//      never uses it. So the order of terms depends on how they came in, and whoever adds terms
//      must keep to the way that its contract names.
//   4. `terms` is a block with room for `capacity` entries, `count` of them alive; see
//      core/block_cache.h for where it comes from.
#pragma once

#include <cstdint>

#include "core/term.h"

namespace zorv {

struct TermList {
  TermImpl first;
  uint64_t capacity = 0;
  uint64_t count = 0;
  TermImpl* terms = nullptr;

  TermList() = default;
  TermList(const TermList& other);  // spread over threads when long
  TermList(TermList&& other) noexcept;
  TermList& operator=(const TermList& other);  // keeps the block if it is large enough
  TermList& operator=(TermList&& other) noexcept;
  ~TermList();

  bool has_first() const { return !is_zero(first.coeff); }
  uint64_t size() const { return count + (has_first() ? 1 : 0); }
  const TermImpl& operator[](uint64_t i) const;
  // `first` if it is a term, then `terms`, in order.
  template <typename F>
  void for_each(F f) const;

  // `term` may lie inside this list: appending takes it by value.
  void append(TermImpl term);
  // Makes room for `more` further entries of `terms`, if there is less.
  void reserve(uint64_t more);
  // Copies of `other.terms` behind one's own, by index; never into `first`. Needs the room.
  void append_entries(const TermList& other);

  // Building a list of known size s: allocate_slots(s), construct a term in slot(i) for every
  // i < s, by several threads if need be, then commit_slots(s), or fewer if not all were needed;
  // what lies beyond is given back. Slot 0 is `first`. The list must be empty at the start, and
  // nothing else may be done with it in between.
  void allocate_slots(uint64_t s);
  TermImpl* slot(uint64_t i) { return i == 0 ? &first : terms + (i - 1); }
  void commit_slots(uint64_t s);

  void clear();

 private:
  void resize(uint64_t entries);
};

// A list as one run of terms, for loops by index: where the run starts is worked out once.
class TermView {
 public:
  TermView(const TermList& list)
      : first_(&list.first), terms_(list.terms), skip_(list.has_first() ? 1 : 0) {}
  const TermImpl& operator[](uint64_t i) const { return i < skip_ ? *first_ : terms_[i - skip_]; }
  // Term i, behind which all others lie; i is above 0.
  const TermImpl* run_from(uint64_t i) const { return terms_ + (i - skip_); }

 private:
  const TermImpl* first_;
  const TermImpl* terms_;
  uint64_t skip_;
};

inline const TermImpl& TermList::operator[](uint64_t i) const {
  if (has_first()) return i == 0 ? first : terms[i - 1];
  return terms[i];
}

template <typename F>
void TermList::for_each(F f) const {
  if (has_first()) f(first);
  for (uint64_t i = 0; i < count; ++i) f(terms[i]);
}

}  // namespace zorv
