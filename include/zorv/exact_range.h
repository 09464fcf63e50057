// For authors of engines and solver libraries: how far a body lies from what its constraint asks,
// what that costs, and how large the numbers of a search can get, from which follows whether
// machine integers compute it exactly. Templates over the number type; the standard library is all
// they need. C++17.
#ifndef ZORV_EXACT_RANGE_H
#define ZORV_EXACT_RANGE_H

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace zorv {

// All integers from the first to the second, both inside. A constraint may have its ends crossed:
// no value holds it then, and distances are those that the functions below give.
template <typename Number>
using Range = std::pair<Number, Number>;

// Distance of `s` to [lo, hi].
template <typename Number>
Number distance(const Number& s, const Number& lo, const Number& hi) {
  if (s < lo) return lo - s;
  if (hi < s) return s - hi;
  return Number(0);
}

// Distance of `s` to the nearest of the intervals, pairs of (low, high); there is at least one.
template <typename Number, typename Intervals>
Number distance_to_set(const Number& s, const Intervals& allowed) {
  Number best = distance(s, allowed[0].first, allowed[0].second);
  for (const auto& [low, high] : allowed) {
    const Number d = distance(s, low, high);
    if (d < best) best = d;
    if (best == 0) break;
  }
  return best;
}

// weight * violation^k: k = 1 takes the violation itself, any other k its square.
template <typename Number>
Number penalty(const Number& weight, const Number& violation, uint8_t k) {
  return k == 1 ? Number(weight * violation) : Number(weight * violation * violation);
}

template <typename Number>
bool has_crossed_ends(const std::vector<Range<Number>>& intervals) {
  return std::any_of(intervals.begin(), intervals.end(),
                     [](const auto& interval) { return interval.second < interval.first; });
}

// The same intervals sorted and joined, with ends beyond `range` drawn in to it, which changes no
// violation of a body within the range. Where one has its ends crossed, all come back as they are.
template <typename Number>
std::vector<Range<Number>> joined_within(std::vector<Range<Number>> intervals,
                                         const Range<Number>& range) {
  if (has_crossed_ends(intervals)) return intervals;
  std::sort(intervals.begin(), intervals.end());
  std::vector<Range<Number>> joined;
  for (auto& [low, high] : intervals) {
    low = std::max(low, std::min(high, range.first));
    high = std::min(high, std::max(low, range.second));
    if (!joined.empty() && low <= joined.back().second) {
      joined.back().second = std::max(joined.back().second, high);
    } else {
      joined.emplace_back(low, high);
    }
  }
  return joined;
}

template <typename Number>
Number magnitude(const Number& value) {
  return value < 0 ? Number(-value) : value;
}

template <typename Number>
Number largest_end(const std::vector<Range<Number>>& intervals) {
  Number largest(0);
  for (const auto& [low, high] : intervals) {
    largest = std::max({largest, magnitude(low), magnitude(high)});
  }
  return largest;
}

// Between what values a body lies, and how far any of its partial sums can be from 0.
template <typename Number>
struct BodyExtent {
  Range<Number> range;
  Number reach;
};

// No body of that extent violates the intervals, which come from joined_within, by more than this.
template <typename Number>
Number largest_violation(const std::vector<Range<Number>>& intervals,
                         const BodyExtent<Number>& body) {
  if (has_crossed_ends(intervals)) return largest_end(intervals) * 2 + body.reach;
  const auto& [first, last] = body.range;
  Number farthest = std::max(distance_to_set(first, intervals), distance_to_set(last, intervals));
  for (size_t k = 0; k + 1 < intervals.size(); ++k) {
    const Number half_gap = (intervals[k + 1].first - intervals[k].second) / 2;
    const Number middle = intervals[k].second + half_gap;
    if (first <= middle && middle <= last) farthest = std::max(farthest, half_gap);
  }
  return farthest;
}

// With this number of bits 64-bit machine integers are exact: one bit under what a sum of two such
// numbers needs.
inline constexpr unsigned kMachineBits = 62;

// Gathers, part by part, how large the numbers of a search get that goes from state to state by
// changing sums. Number is an unbounded type.
template <typename Number>
class SearchBound {
 public:
  // Terms of the energy whose magnitudes sum up to `reach`.
  void add_terms(const Number& reach) { energy_ += reach; }

  // A constraint; `intervals` come from joined_within.
  void add_constraint(const Number& weight, uint8_t shape_k,
                      const std::vector<Range<Number>>& intervals, const BodyExtent<Number>& body) {
    const Number size = magnitude(weight);
    // A move changes a body by up to twice its reach before the sum is back within it.
    add_value(
        std::max({size, Number(body.reach * 3), Number(largest_end(intervals) + body.reach)}));
    energy_ += penalty(size, largest_violation(intervals, body), shape_k);
  }

  // Any other value that a search computes with.
  void add_value(const Number& size) { largest_ = std::max(largest_, size); }

  // No energy lies further than this from 0.
  const Number& energy() const { return energy_; }
  // Whether all values, and differences of two energies, stay within 2 to the power `bits`.
  bool fits(unsigned bits) const {
    const Number limit = Number(1) << bits;
    return largest_ <= limit && energy_ * 2 <= limit;
  }

 private:
  Number energy_{0}, largest_{0};
};

}  // namespace zorv

#endif  // ZORV_EXACT_RANGE_H
