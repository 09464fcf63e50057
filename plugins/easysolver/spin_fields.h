// Fields of a polynomial in spins. Each term's value is kept; the flip of a spin negates the values
// of its terms, and raises the energy by -2 times their sum. Kept are these rises themselves. The
// flipped spin is updated like all others of its terms: that adds up to its rise negated, as it has
// to be. So is the variable that fills up short terms, but what it adds up to means nothing, and no
// bound holds for it: sums wrap around.
#pragma once

#include <algorithm>
#include <type_traits>
#include <vector>

#include "easysolver/kernels.h"
#include "easysolver/tables.h"

namespace zorv::plugin::easy {

template <typename Num>
class SpinFields {
 public:
  using Number = Num;
  using Table = SpinTable<Num>;

  explicit SpinFields(const Table& table)
      : table_(&table), fields_(table.size() + kBlock), values_(table.coeffs.size()) {}

  void clear() {
    std::fill(fields_.begin(), fields_.end(), 0);
    values_ = table_->coeffs;
    for (uint64_t t = 0; t < values_.size(); ++t) {
      for (uint32_t k = 0; k < table_->degree; ++k) {
        add(fields_[table_->variables[t * table_->degree + k]], -2 * values_[t]);
      }
    }
    fields_[table_->size()] = 0;
  }

  Num delta(uint32_t i) const { return fields_[i]; }

  void flip(uint32_t j) {
    switch (table_->degree) {
      case 3:
        return negate_terms<3>(j);
      case 4:
        return negate_terms<4>(j);
      case 5:
        return negate_terms<5>(j);
      default:
        return negate_terms<kMaxSpinDegree>(j);
    }
  }

  const Num* fields() const { return fields_.data(); }
  const SignOf<Num>* signs() const { return nullptr; }
  bool changes_own_block(uint32_t) const { return true; }
  uint64_t work_of_flip(uint32_t j) const {
    return table_->degree * (table_->use_head[j + 1] - table_->use_head[j]);
  }

 private:
  static void add(Num& sum, Num step) {
    using Wrapping = std::make_unsigned_t<Num>;
    sum = static_cast<Num>(static_cast<Wrapping>(sum) + static_cast<Wrapping>(step));
  }

  template <uint32_t kDegree>
  void negate_terms(uint32_t j) {
    Num* const fields = fields_.data();
    const uint32_t* const end = table_->uses.data() + table_->use_head[j + 1];
    for (const uint32_t* use = table_->uses.data() + table_->use_head[j]; use != end; ++use) {
      const Num step = 4 * values_[*use];
      values_[*use] = -values_[*use];
      const uint32_t* const variables = &table_->variables[uint64_t{*use} * kDegree];
      for (uint32_t k = 0; k < kDegree; ++k) add(fields[variables[k]], step);
    }
    fields[table_->size()] = 0;
  }

  const Table* table_;
  std::vector<Num> fields_;
  std::vector<Num> values_;
};

}  // namespace zorv::plugin::easy
