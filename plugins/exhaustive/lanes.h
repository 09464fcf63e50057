// Lanes: one number for each assignment of the lowest variables, 2^kLaneBits of them side by side,
// lane l for the assignment whose bits are l. A walk over the other variables moves all lanes at
// once.
//
// Machine integers are kept in vector registers, as many of them as leave the walk enough room for
// an energy and a summand: that spreads the cost of finding out what a step changes over 32 states,
// or 16 with 64 bits. Unbounded integers have one lane.
//
// The length of the vectors is that of the processor's registers: longer ones, which the compiler
// splits, made a walk four times slower. What a walk does is marked for inlining, so that it is
// compiled for the instruction set of the function that it ends up in.
#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "common/coeff.h"
#include "zorv/exact_range.h"

#define ZORV_LANES [[gnu::always_inline]] inline

namespace zorv::plugin {

// The penalty of a constraint as a walk needs it: weight times the distance of a body to the
// nearest of the intervals, or times its square.
template <typename Number>
struct PenaltyRule {
  Number weight;
  std::vector<Range<Number>> intervals;  // at least one; ends may be crossed
  bool is_squared;
};

template <typename Element, int kBytes>
struct MakeVector {
  typedef Element Type __attribute__((vector_size(kBytes)));
};
template <typename Element, int kBytes>
using VectorOf = typename MakeVector<Element, kBytes>::Type;

// Vectors of 32 bytes are for processors with AVX2, those of 16 for all. Aligned as the vectors
// are, which g++ does not see to inside templates.
template <typename NumberType, int kBytes>
struct alignas(kBytes) MachineLanes {
  using Number = NumberType;
  static constexpr int kVectorBytes = kBytes;
  static constexpr int kVectors = 128 / kBytes;
  static constexpr int kLanes = 128 / static_cast<int>(sizeof(Number));
  static constexpr int kLaneBits = std::countr_zero(static_cast<unsigned>(kLanes));
  using Vector = VectorOf<Number, kBytes>;
  using Wrapping = VectorOf<std::make_unsigned_t<Number>, kBytes>;
  using Words = VectorOf<int64_t, kBytes>;

  Vector vectors[kVectors] = {};

  Number lane(int l) const {
    constexpr int kEach = kLanes / kVectors;
    return vectors[l / kEach][l % kEach];
  }

  // Adds `x` in the lanes whose bits have all of `ones` and none of `zeros`. The sum may leave the
  // range of numbers on the way to one within it.
  void add_where(uint64_t ones, uint64_t zeros, Number x) {
    constexpr int kEach = kLanes / kVectors;
    Vector lanes;
    for (int l = 0; l < kEach; ++l) lanes[l] = l;
    for (Vector& vector : vectors) {
      const auto is_met = (lanes & static_cast<Number>(ones | zeros)) == static_cast<Number>(ones);
      const auto sum = reinterpret_cast<Wrapping>(vector) + reinterpret_cast<Wrapping>(is_met & x);
      vector = reinterpret_cast<Vector>(sum);
      lanes += kEach;
    }
  }

  // += x, or -= x
  ZORV_LANES void add(const MachineLanes& x, bool is_minus) {
    const Number sign = -static_cast<Number>(is_minus);  // -y is (y ^ -1) - -1
#pragma GCC unroll 8
    for (int i = 0; i < kVectors; ++i) vectors[i] += (x.vectors[i] ^ sign) - sign;
  }
  ZORV_LANES void add_to_all(const Number& x, bool is_minus) {
    const Number summand = is_minus ? -x : x;
#pragma GCC unroll 8
    for (int i = 0; i < kVectors; ++i) vectors[i] += summand;
  }

  ZORV_LANES bool has_below(const Number& limit) const {
    auto is_below = vectors[0] < limit;
#pragma GCC unroll 8
    for (int i = 1; i < kVectors; ++i) is_below |= vectors[i] < limit;
    const auto words = reinterpret_cast<Words>(is_below);
    if constexpr (kVectorBytes == 16) {
      return (words[0] | words[1]) != 0;
    } else {
      return (words[0] | words[1] | words[2] | words[3]) != 0;
    }
  }

  // Takes the penalty of `body`, and adds to `sum` what it is above the penalty held before.
  ZORV_LANES void take_penalty(const PenaltyRule<Number>& rule, const MachineLanes& body,
                               MachineLanes& sum) {
#pragma GCC unroll 8
    for (int i = 0; i < kVectors; ++i) {
      const Vector s = body.vectors[i];
      Vector nearest, other;
      set_distance(s, rule.intervals[0], nearest);
      for (size_t k = 1; k < rule.intervals.size(); ++k) {
        set_distance(s, rule.intervals[k], other);
        const auto is_nearer = other < nearest;
        nearest = (other & is_nearer) | (nearest & ~is_nearer);
      }
      Vector cost = nearest * rule.weight;
      if (rule.is_squared) cost *= nearest;
      sum.vectors[i] += cost - vectors[i];
      vectors[i] = cost;
    }
  }

 private:
  // Vectors are not returned: how that is done depends on the instruction set.
  ZORV_LANES static void set_distance(const Vector& s, const Range<Number>& interval,
                                      Vector& distance) {
    const auto is_below = s < interval.first;
    const auto is_above = (s > interval.second) & ~is_below;
    distance = ((interval.first - s) & is_below) | ((s - interval.second) & is_above);
  }
};

struct WideLanes {
  using Number = Coeff;
  static constexpr int kLanes = 1;
  static constexpr int kLaneBits = 0;

  Coeff value = 0;

  const Coeff& lane(int) const { return value; }
  void add_where(uint64_t, uint64_t, const Coeff& x) { value += x; }
  void add(const WideLanes& x, bool is_minus) { add_to_all(x.value, is_minus); }
  void add_to_all(const Coeff& x, bool is_minus) { is_minus ? value -= x : value += x; }
  bool has_below(const Coeff& limit) const { return value < limit; }
  void take_penalty(const PenaltyRule<Coeff>& rule, const WideLanes& body, WideLanes& sum) {
    sum.value -= value;
    const Coeff nearest = distance_to_set(body.value, rule.intervals);
    value = penalty(rule.weight, nearest, rule.is_squared ? 2 : 1);
    sum.value += value;
  }
};

}  // namespace zorv::plugin
