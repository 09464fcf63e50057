// Declared constraints that stay constraints: the values of their bodies are kept, and what a flip
// does to their penalties is computed where it is asked for.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "easysolver/numbers.h"

namespace zorv::plugin::easy {

template <typename E>
struct BodyTable {
  struct Constraint {
    E lo, hi;  // of the body without its constant, which is taken off
    E weight;
    bool is_squared;
    uint32_t first_interval, intervals;  // none where lo and hi apply
  };
  struct Interval {
    E lo, hi;
  };
  // What a variable has to do with one constraint: its coefficient, and the products that hold it.
  struct Use {
    uint32_t constraint;
    uint32_t products;
    uint64_t first_product;  // in product_uses
    E coeff;
  };
  std::vector<Constraint> constraints;
  std::vector<Interval> intervals;
  std::vector<uint64_t> use_head = {0};  // by variable
  std::vector<Use> uses;
  // Products, with literals as in the model, and by variable and constraint the ones that hold it:
  // doubled, plus 1 where the complement is meant.
  std::vector<E> product_coeffs;
  std::vector<uint32_t> product_literals;  // how many of each, at the assignment of zeros false
  std::vector<E> start;                    // values at the assignment of zeros
  std::vector<uint64_t> product_uses;
};

template <typename E>
class Bodies {
 public:
  using Table = BodyTable<E>;

  explicit Bodies(const Table& table)
      : table_(&table),
        values_(table.constraints.size()),
        penalties_(table.constraints.size()),
        weights_(weights_of(table)),
        false_literals_(table.product_coeffs.size()) {}

  bool empty() const { return values_.empty(); }

  // Starts anew from the assignment of zeros; returns the sum of the penalties.
  E clear() {
    values_ = table_->start;
    false_literals_ = table_->product_literals;
    E sum = 0;
    for (size_t c = 0; c < values_.size(); ++c) {
      penalties_[c] = penalty(c, values_[c]);
      sum += penalties_[c];
    }
    return sum;
  }

  bool is_violated(uint32_t c) const { return penalties_[c] != 0; }
  uint64_t uses() const { return table_->uses.size(); }
  const std::vector<E>& weights() const { return weights_; }
  // What a violation as large as a constraint's mean coefficient costs, for each constraint.
  std::vector<double> usual_penalties() const {
    std::vector<double> sums(values_.size()), counts(values_.size());
    for (const auto& use : table_->uses) {
      sums[use.constraint] += std::abs(to_double(use.coeff));
      ++counts[use.constraint];
    }
    for (size_t c = 0; c < sums.size(); ++c) {
      const double size = std::max(1.0, sums[c] / std::max(1.0, counts[c]));
      sums[c] = to_double(weights_[c]) * (table_->constraints[c].is_squared ? size * size : size);
    }
    return sums;
  }
  // From now on other weights than the table's; returns by how much that raises the sum.
  E set_weights(const std::vector<E>& weights) {
    weights_ = weights;
    E rise = 0;
    for (size_t c = 0; c < values_.size(); ++c) {
      const E now = penalty(c, values_[c]);
      rise += now - penalties_[c];
      penalties_[c] = now;
    }
    return rise;
  }

  // The rise of all penalties by the flip of variable i, which has the value `is_one`.
  E delta(uint32_t i, bool is_one) const {
    E sum = 0;
    for (uint64_t u = table_->use_head[i]; u < table_->use_head[i + 1]; ++u) {
      const auto& use = table_->uses[u];
      sum += penalty(use.constraint, values_[use.constraint] + step(use, is_one)) -
             penalties_[use.constraint];
    }
    return sum;
  }

  // Flips, and returns the same.
  E flip(uint32_t i, bool is_one) {
    E sum = 0;
    for (uint64_t u = table_->use_head[i]; u < table_->use_head[i + 1]; ++u) {
      const auto& use = table_->uses[u];
      E& value = values_[use.constraint];
      E& kept = penalties_[use.constraint];
      value += step(use, is_one);
      const E now = penalty(use.constraint, value);
      sum += now - kept;
      kept = now;
      for (uint32_t p = 0; p < use.products; ++p) {
        const uint64_t product = table_->product_uses[use.first_product + p];
        const bool was_true = is_one != ((product & 1) != 0);
        false_literals_[product >> 1] += was_true ? 1u : ~0u;
      }
    }
    return sum;
  }

  bool has_products() const { return !table_->product_coeffs.empty(); }

  // The rise by the flips of both i and j, where no body has products.
  E delta_of_two(uint32_t i, bool i_is_one, uint32_t j, bool j_is_one) const {
    E sum = 0;
    const auto* u = table_->uses.data() + table_->use_head[i];
    const auto* v = table_->uses.data() + table_->use_head[j];
    const auto* const u_end = table_->uses.data() + table_->use_head[i + 1];
    const auto* const v_end = table_->uses.data() + table_->use_head[j + 1];
    while (u != u_end || v != v_end) {
      const uint32_t c = u != u_end ? u->constraint : kNone;
      const uint32_t d = v != v_end ? v->constraint : kNone;
      const uint32_t first = std::min(c, d);
      E value = values_[first];
      if (c == first) value += signed_step(*u++, i_is_one);
      if (d == first) value += signed_step(*v++, j_is_one);
      sum += penalty(first, value) - penalties_[first];
    }
    return sum;
  }

 private:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  static E signed_step(const typename Table::Use& use, bool is_one) {
    return is_one ? E(-use.coeff) : use.coeff;
  }
  E step(const typename Table::Use& use, bool is_one) const {
    E change = signed_step(use, is_one);
    for (uint32_t p = 0; p < use.products; ++p) {
      const uint64_t product = table_->product_uses[use.first_product + p];
      const bool is_true = is_one != ((product & 1) != 0);
      const uint32_t other_false_ones =
          false_literals_[product >> 1] - static_cast<uint32_t>(!is_true);
      if (other_false_ones != 0) continue;
      const E& coeff = table_->product_coeffs[product >> 1];
      change += is_true ? E(-coeff) : coeff;
    }
    return change;
  }

  static std::vector<E> weights_of(const Table& table) {
    std::vector<E> weights;
    for (const auto& constraint : table.constraints) weights.push_back(constraint.weight);
    return weights;
  }

  E penalty(size_t c, const E& value) const {
    const auto& constraint = table_->constraints[c];
    const E violation = constraint.intervals == 0 ? distance(value, constraint.lo, constraint.hi)
                                                  : distance_to_intervals(value, constraint);
    if (violation == 0) return 0;
    return weights_[c] * (constraint.is_squared ? E(violation * violation) : violation);
  }
  static E distance(const E& value, const E& lo, const E& hi) {
    if (value < lo) return lo - value;
    return value > hi ? E(value - hi) : E(0);
  }
  E distance_to_intervals(const E& value, const typename Table::Constraint& constraint) const {
    const auto* interval = &table_->intervals[constraint.first_interval];
    E least = distance(value, interval->lo, interval->hi);
    for (uint32_t k = 1; k < constraint.intervals; ++k) {
      least = std::min(least, distance(value, interval[k].lo, interval[k].hi));
    }
    return least;
  }

  const Table* table_;
  std::vector<E> values_;
  std::vector<E> penalties_;
  std::vector<E> weights_;
  std::vector<uint32_t> false_literals_;
};

}  // namespace zorv::plugin::easy
