// Lanes: one number for each assignment of the lowest variables, 2^kLaneBits of them side by side,
// lane l for the assignment whose bits are l. A walk over the other variables moves all lanes at
// once.
//
// Machine integers are kept in vector registers, as many of them as leave the walk enough room for
// an energy and a summand: that spreads the cost of finding out what a step changes over 32 states,
// or 16 with 64 bits. Unbounded integers have one lane.
//
// Everything here is for inlining into functions that are compiled for several instruction sets,
// hence the attribute. Sums wrap around: partial sums may, results that fit are right anyway.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
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
  std::vector<Range<Number>> intervals;  // at least one; only a single one may have crossed ends
  bool is_squared;
};

template <typename NumberType>
struct alignas(32) MachineLanes {
  using Number = NumberType;
  static constexpr int kVectorBytes = 32;
  static constexpr int kVectors = 4;
  static constexpr int kLanes = kVectors * kVectorBytes / static_cast<int>(sizeof(Number));
  static constexpr int kLaneBits = std::countr_zero(static_cast<unsigned>(kLanes));
  typedef Number Vector __attribute__((vector_size(kVectorBytes)));
  typedef int64_t Words __attribute__((vector_size(kVectorBytes)));

  Vector vectors[kVectors] = {};

  Number lane(int l) const {
    constexpr int kEach = kLanes / kVectors;
    return vectors[l / kEach][l % kEach];
  }

  // Adds `x` in the lanes whose bits have all of `ones` and none of `zeros`.
  void add_where(uint64_t ones, uint64_t zeros, Number x) {
    constexpr int kEach = kLanes / kVectors;
    for (int l = 0; l < kLanes; ++l) {
      const auto bits = static_cast<uint64_t>(l);
      if ((bits & ones) != ones || (bits & zeros) != 0) continue;
      Vector summand = {};
      summand[l % kEach] = x;
      vectors[l / kEach] += summand;
    }
  }

  // += x, or -= x
  ZORV_LANES void add(const MachineLanes& x, bool is_minus) {
    const Number sign = -static_cast<Number>(is_minus);  // -y is (y ^ -1) - -1
#pragma GCC unroll 4
    for (int i = 0; i < kVectors; ++i) vectors[i] += (x.vectors[i] ^ sign) - sign;
  }
  ZORV_LANES void add_to_all(const Number& x, bool is_minus) {
    const Number summand = is_minus ? -x : x;
#pragma GCC unroll 4
    for (int i = 0; i < kVectors; ++i) vectors[i] += summand;
  }

  ZORV_LANES bool has_below(const Number& limit) const {
    auto is_below = vectors[0] < limit;
#pragma GCC unroll 4
    for (int i = 1; i < kVectors; ++i) is_below |= vectors[i] < limit;
    const auto words = reinterpret_cast<Words>(is_below);
    return (words[0] | words[1] | words[2] | words[3]) != 0;
  }

  // Takes the penalty of `body`, and adds to `sum` what it is above the penalty held before.
  ZORV_LANES void take_penalty(const PenaltyRule<Number>& rule, const MachineLanes& body,
                               MachineLanes& sum) {
#pragma GCC unroll 4
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
