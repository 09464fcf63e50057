#include "exhaustive/gray_walk.h"

namespace zorv::plugin {

namespace {

// The digits k1 < k2 < ... at which the counter has its lowest ones.
template <int kLevels>
struct Path {
  uint32_t digits[kLevels + 1];

  ZORV_LANES Path(uint64_t counter, uint64_t end_mark) {
    for (uint32_t& digit : digits) {
      digit = static_cast<uint32_t>(std::countr_zero(counter));
      counter = (counter & (counter - 1)) | end_mark;
    }
  }
  // Whether the flip at digit number j goes down.
  ZORV_LANES bool is_fall(int j) const { return digits[j + 1] == digits[j] + 1; }
};

// Brings the slope at `node` and those below it up to date, and adds it to `sum`. A path that ends
// early goes on through node 0, which costs less than to find out.
template <int kLevels, typename Lanes>
ZORV_LANES void add_slope(SlopeTree<Lanes>& tree, const Path<kLevels>& path, uint32_t root,
                          Lanes& sum) {
  uint32_t nodes[kLevels];
  nodes[0] = root;
  for (int j = 1; j < kLevels; ++j) {
    nodes[j] = tree.children[tree.rows[nodes[j - 1]] + path.digits[j]];
  }
  const auto& leaf = tree.leaves[nodes[kLevels - 1]];
  tree.values[nodes[kLevels - 2]].add_to_all(leaf, path.is_fall(kLevels - 1));
  for (int j = kLevels - 2; j > 0; --j) {
    tree.values[nodes[j - 1]].add(tree.values[nodes[j]], path.is_fall(j));
  }
  sum.add(tree.values[root], path.is_fall(0));
}

// The bodies and products that hold the digit which flips.
template <int kLevels, typename Lanes>
ZORV_LANES void change_parts(SlopeTree<Lanes>& tree, const Path<kLevels>& path, uint64_t digits,
                             Lanes& energy) {
  const uint32_t digit = path.digits[0];
  for (uint64_t i = tree.parts_head[digit]; i < tree.parts_head[digit + 1]; ++i) {
    const auto& part = tree.parts[i];
    auto* const body = part.polynomial == 0 ? nullptr : &tree.bodies[part.polynomial - 1];
    Lanes& value = body == nullptr ? energy : body->value;
    for (uint64_t k = part.products_begin; k < part.products_end; ++k) {
      const auto& product = tree.products[k];
      if ((digits & product.ones) != product.ones || (digits & product.zeros) != 0) continue;
      value.add(tree.values[product.node], path.is_fall(0) != product.is_complement);
    }
    if (body == nullptr) continue;
    if (tree.rows[part.node] == 0) {
      value.add(tree.values[part.node], path.is_fall(0));
    } else {
      add_slope(tree, path, part.node, value);
    }
    body->penalty.take_penalty(body->rule, value, energy);
  }
}

// Some 90 instructions for 32 states of a quadratic model: a third finds the nodes, the rest are
// sums of lanes. A comparison at each place costs no more than keeping the least energy of each
// lane, which would have to be looked at again later.
template <int kLevels, bool kHasParts, typename Lanes>
ZORV_LANES uint64_t make_steps(SlopeTree<Lanes>& tree, uint64_t place, uint64_t last,
                               const typename Lanes::Number& limit) {
  const uint64_t end_mark = uint64_t{1} << tree.end_column();
  Lanes energy = tree.energy;
  while (place < last) {
    const uint64_t before = place++;
    const Path<kLevels> path(place, end_mark);
    add_slope(tree, path, tree.roots[path.digits[0]], energy);
    if constexpr (kHasParts) change_parts(tree, path, state_of_rank(before), energy);
    if (energy.has_below(limit)) break;
  }
  tree.energy = energy;
  return place;
}

template <int kLevels, bool kHasParts, typename Lanes>
uint64_t steps_for_any(SlopeTree<Lanes>& tree, uint64_t place, uint64_t last,
                       const typename Lanes::Number& limit) {
  return make_steps<kLevels, kHasParts>(tree, place, last, limit);
}
template <int kLevels, bool kHasParts, typename Lanes>
[[gnu::target("avx2,bmi")]] uint64_t steps_for_avx2(SlopeTree<Lanes>& tree, uint64_t place,
                                                    uint64_t last,
                                                    const typename Lanes::Number& limit) {
  return make_steps<kLevels, kHasParts>(tree, place, last, limit);
}

template <int kLevels, bool kHasParts, typename Lanes>
auto choose_by_lanes() {
  if constexpr (kNeedsAvx2<Lanes>) {
    return steps_for_avx2<kLevels, kHasParts, Lanes>;
  } else {
    return steps_for_any<kLevels, kHasParts, Lanes>;
  }
}

template <int kLevels, typename Lanes>
auto choose_by_parts(const SlopeTree<Lanes>& tree) {
  return tree.parts.empty() ? choose_by_lanes<kLevels, false, Lanes>()
                            : choose_by_lanes<kLevels, true, Lanes>();
}

template <typename Lanes>
auto choose_steps(const SlopeTree<Lanes>& tree) {
  switch (tree.levels) {
    case 2:
      return choose_by_parts<2>(tree);
    case 3:
      return choose_by_parts<3>(tree);
    case 4:
      return choose_by_parts<4>(tree);
    default:
      return choose_by_parts<kMostLevels>(tree);
  }
}

}  // namespace

template <typename Lanes>
GrayWalk<Lanes>::GrayWalk(const MaskModel<Number>& model, const Segment& segment)
    : tree_(model, segment), steps_(choose_steps(tree_)) {}

template class GrayWalk<MachineLanes<int32_t, 16>>;
template class GrayWalk<MachineLanes<int32_t, 32>>;
template class GrayWalk<MachineLanes<int64_t, 16>>;
template class GrayWalk<MachineLanes<int64_t, 32>>;
template class GrayWalk<WideLanes>;

}  // namespace zorv::plugin
