// Sequences of numbers with weights that never change, and share what they have in common.
//
// A list is named by its last node, and a node names the list without it, so a list with one more
// item costs one node, whatever else was built on the same list before. Equal lists are one list.
// Each node also names a much shorter list, chosen so that item i of n is found in O(log n) steps.
// A sequence is two lists, and thereby grows at both ends: `front`, in reverse order, then `back`.
//
// Thread rules: as for InternedSet; what returns a sequence needs the owner's lock.
#pragma once

#include <cstdint>
#include <vector>

#include "constraints/interned_set.h"
#include "core/coeff.h"

namespace zorv {

struct Sequence {
  uint32_t front = 0;  // 0: the empty list
  uint32_t back = 0;

  bool is_empty() const { return front == 0 && back == 0; }
  bool operator==(const Sequence&) const = default;
};

// The last item of a list.
struct SequenceNode {
  uint32_t before = 0;  // the list without it
  uint32_t jump = 0;    // a shorter list
  uint32_t length = 0;
  uint32_t what = 0;  // anything but ~0
  coeff_t weight;
};
uint64_t hash_of(const SequenceNode& node);
bool same(const SequenceNode& a, const SequenceNode& b);

class SequenceTable {
 public:
  explicit SequenceTable(const char* full_message);

  uint64_t node_count() const { return nodes_.size(); }
  uint64_t length(Sequence s) const { return length_of(s.front) + length_of(s.back); }
  // Item i, below the length.
  const SequenceNode& at(Sequence s, uint64_t i) const;
  // f(item) for all items in order.
  template <typename F>
  void for_each(Sequence s, F f) const;

  Sequence pushed(Sequence s, uint32_t what, coeff_t weight);
  // The items of `a`, then those of `b`: as many new nodes as the shorter one has items.
  Sequence joined(Sequence a, Sequence b);
  Sequence scaled(Sequence s, const coeff_t& factor);

 private:
  uint64_t length_of(uint32_t list) const { return nodes_[list].length; }
  uint32_t extended(uint32_t list, uint32_t what, coeff_t weight);
  const SequenceNode& nth(uint32_t list, uint64_t n) const;
  // The nodes of a list, the first item's first.
  std::vector<uint32_t> from_first(uint32_t list) const;

  InternedSet<SequenceNode> nodes_;  // number 0 closes every list
};

template <typename F>
void SequenceTable::for_each(Sequence s, F f) const {
  for (uint32_t node = s.front; node != 0; node = nodes_[node].before) f(nodes_[node]);
  if (nodes_[s.back].length == 1) return f(nodes_[s.back]);
  for (const uint32_t node : from_first(s.back)) f(nodes_[node]);
}

}  // namespace zorv
