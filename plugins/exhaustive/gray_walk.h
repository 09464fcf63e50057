// GrayWalk: visits the places of a segment in Gray order and knows the energies at each: those of
// all assignments of the lane variables.
#pragma once

#include <cstdint>

#include "exhaustive/slope_tree.h"

namespace zorv::plugin {

// Whether these lanes are for processors that have_avx2() only.
template <typename Lanes>
inline constexpr bool kNeedsAvx2 = false;
template <typename Number>
inline constexpr bool kNeedsAvx2<MachineLanes<Number, 32>> = true;

inline bool have_avx2() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi"); }

template <typename Lanes>
class GrayWalk {
 public:
  using Number = typename Lanes::Number;

  // Stands at place 0.
  GrayWalk(const MaskModel<Number>& model, const Segment& segment);

  uint64_t places() const { return uint64_t{1} << tree_.digits; }
  uint64_t place() const { return place_; }
  const Lanes& energy() const { return tree_.energy; }
  // Lanes in use; beyond them small models have copies.
  uint32_t lanes() const { return uint32_t{1} << tree_.lane_bits; }
  // Goes on to the next place that has an energy below `limit`, but not beyond `last`.
  void advance(uint64_t last, const Number& limit) { place_ = steps_(tree_, place_, last, limit); }

 private:
  using Steps = uint64_t (*)(SlopeTree<Lanes>& tree, uint64_t place, uint64_t last,
                             const Number& limit);

  SlopeTree<Lanes> tree_;
  const Steps steps_;  // for the levels and parts of the tree
  uint64_t place_ = 0;
};

extern template class GrayWalk<MachineLanes<int32_t, 16>>;
extern template class GrayWalk<MachineLanes<int32_t, 32>>;
extern template class GrayWalk<MachineLanes<int64_t, 16>>;
extern template class GrayWalk<MachineLanes<int64_t, 32>>;
extern template class GrayWalk<WideLanes>;

}  // namespace zorv::plugin
