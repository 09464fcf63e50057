#include "constraints/weighted_sequence.h"

#include <utility>

#include "core/hash.h"

namespace zorv {

namespace {
// Keeps the node that closes every list apart from an item of weight 0.
constexpr uint32_t kNothing = ~0u;
}  // namespace

// `jump` and `length` follow from `before`.
uint64_t hash_of(const SequenceNode& node) {
  return hash_with(hash_with(node.before, uint64_t{node.what}), node.weight);
}

bool same(const SequenceNode& a, const SequenceNode& b) {
  return a.before == b.before && a.what == b.what && a.weight == b.weight;
}

SequenceTable::SequenceTable(const char* full_message) : nodes_(full_message) {
  nodes_.number_of({0, 0, 0, kNothing, 0});
}

uint32_t SequenceTable::extended(uint32_t list, uint32_t what, coeff_t weight) {
  // Jumps span complete subtrees of a skew-binary counter: two spans of one size that meet become
  // one, so that a walk from any node needs O(log n) steps.
  const SequenceNode& last = nodes_[list];
  const SequenceNode& skipped = nodes_[last.jump];
  const bool spans_meet =
      last.length - skipped.length == skipped.length - nodes_[skipped.jump].length;
  return nodes_.number_of(
      {list, spans_meet ? skipped.jump : list, last.length + 1, what, std::move(weight)});
}

const SequenceNode& SequenceTable::nth(uint32_t list, uint64_t n) const {
  const SequenceNode* node = &nodes_[list];
  while (node->length != n) {
    const SequenceNode& skipped = nodes_[node->jump];
    node = skipped.length >= n ? &skipped : &nodes_[node->before];
  }
  return *node;
}

std::vector<uint32_t> SequenceTable::from_first(uint32_t list) const {
  std::vector<uint32_t> nodes(length_of(list));
  for (; list != 0; list = nodes_[list].before) nodes[nodes_[list].length - 1] = list;
  return nodes;
}

const SequenceNode& SequenceTable::at(Sequence s, uint64_t i) const {
  const uint64_t in_front = length_of(s.front);
  return i < in_front ? nth(s.front, in_front - i) : nth(s.back, i - in_front + 1);
}

Sequence SequenceTable::pushed(Sequence s, uint32_t what, coeff_t weight) {
  return {s.front, extended(s.back, what, std::move(weight))};
}

Sequence SequenceTable::joined(Sequence a, Sequence b) {
  if (a.is_empty()) return b;
  if (length(b) <= length(a)) {
    for_each(b, [&](const SequenceNode& item) { a = pushed(a, item.what, item.weight); });
    return a;
  }
  const auto put_before_b = [&](uint32_t node) {
    b.front = extended(b.front, nodes_[node].what, nodes_[node].weight);
  };
  for (uint32_t node = a.back; node != 0; node = nodes_[node].before) put_before_b(node);
  for (const uint32_t node : from_first(a.front)) put_before_b(node);
  return b;
}

Sequence SequenceTable::scaled(Sequence s, const coeff_t& factor) {
  Sequence scaled;
  for_each(s, [&](const SequenceNode& item) {
    scaled = pushed(scaled, item.what, item.weight * factor);
  });
  return scaled;
}

}  // namespace zorv
