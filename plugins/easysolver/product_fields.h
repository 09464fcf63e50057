// Fields of a polynomial of any degree. For each product the number of its false literals is kept,
// and the exclusive or of these literals, which is the false literal itself where there is but one:
// a flip matters only to the others of a product without false ones, and to the only false one.
#pragma once

#include <algorithm>
#include <vector>

#include "common/literal.h"
#include "easysolver/sparse_fields.h"

namespace zorv::plugin::easy {

template <typename Num>
class ProductFields {
 public:
  using Number = Num;
  using Table = ProductTable<Num>;

  explicit ProductFields(const Table& table)
      : table_(&table),
        fields_(table.size() + kBlock),
        signs_(table.size() + kBlock),
        false_ones_(table.coeffs.size()) {}

  void clear() {
    std::fill(signs_.begin(), signs_.end(), 0);
    std::copy(table_->pairs.linear.begin(), table_->pairs.linear.end(), fields_.begin());
    for (uint64_t t = 0; t < false_ones_.size(); ++t) clear_term(t);
  }

  Num delta(uint32_t i) const { return signed_value<Num>(fields_[i], signs_[i]); }

  void flip(uint32_t j) {
    add_links(j, signs_[j]);
    const bool is_one = signs_[j] != 0;
    for (uint64_t u = table_->use_head[j]; u < table_->use_head[j + 1]; ++u) {
      const uint64_t use = table_->uses[u];
      const bool is_complement = (use & 1) != 0;
      const uint32_t literal = j | static_cast<uint32_t>(is_complement) << 31;
      if (is_one != is_complement) {
        make_false(use >> 1, literal);
      } else {
        make_true(use >> 1, literal);
      }
    }
    signs_[j] = ~signs_[j];
  }

  const Num* fields() const { return fields_.data(); }
  const SignOf<Num>* signs() const { return signs_.data(); }
  bool changes_own_block(uint32_t) const { return true; }
  uint64_t work_of_flip(uint32_t j) const {
    return table_->pairs.head[j + 1] - table_->pairs.head[j] +
           4 * (table_->use_head[j + 1] - table_->use_head[j]);
  }

 private:
  struct FalseOnes {
    uint32_t count, mixed;
  };
  static constexpr uint32_t kNoLiteral = 0xFFFFFFFF;
  static SignOf<Num> sign_of(uint32_t literal) { return -static_cast<SignOf<Num>>(literal >> 31); }

  void add_links(uint32_t j, SignOf<Num> sign) {
    const PairTable<Num>& pairs = table_->pairs;
    for (uint64_t k = pairs.head[j]; k < pairs.head[j + 1]; ++k) {
      fields_[pairs.links[k].variable] += signed_value<Num>(pairs.links[k].coeff, sign);
    }
  }
  // Adds the term, or takes it away where `taken` is -1, to the field of one literal.
  void add(uint64_t t, uint32_t literal, SignOf<Num> taken) {
    fields_[variable_of(literal)] += signed_value<Num>(table_->coeffs[t], sign_of(literal) ^ taken);
  }
  void add_to_others(uint64_t t, uint32_t literal, SignOf<Num> taken) {
    for (uint64_t k = table_->term_head[t]; k < table_->term_head[t + 1]; ++k) {
      if (table_->literals[k] != literal) add(t, table_->literals[k], taken);
    }
  }
  void make_false(uint64_t t, uint32_t literal) {
    FalseOnes& f = false_ones_[t];
    if (f.count == 0) {
      add_to_others(t, literal, -1);
    } else if (f.count == 1) {
      add(t, f.mixed, -1);
    }
    ++f.count;
    f.mixed ^= literal;
  }
  void make_true(uint64_t t, uint32_t literal) {
    FalseOnes& f = false_ones_[t];
    --f.count;
    f.mixed ^= literal;
    if (f.count == 0) {
      add_to_others(t, literal, 0);
    } else if (f.count == 1) {
      add(t, f.mixed, 0);
    }
  }
  void clear_term(uint64_t t) {
    FalseOnes& f = false_ones_[t] = {0, 0};
    for (uint64_t k = table_->term_head[t]; k < table_->term_head[t + 1]; ++k) {
      const uint32_t literal = table_->literals[k];
      if (is_complement(literal)) continue;
      ++f.count;
      f.mixed ^= literal;
    }
    if (f.count == 0) add_to_others(t, kNoLiteral, 0);
    if (f.count == 1) add(t, f.mixed, 0);
  }

  const Table* table_;
  std::vector<Num> fields_;
  std::vector<SignOf<Num>> signs_;
  std::vector<FalseOnes> false_ones_;
};

}  // namespace zorv::plugin::easy
