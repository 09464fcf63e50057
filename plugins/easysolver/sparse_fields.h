// Fields of a quadratic polynomial by lists of neighbours. The field of variable i is the energy
// with x_i = 1 minus that with x_i = 0, so that its flip raises the energy by the field or, where
// x_i is 1, by its negative. A flip of j adds q_ij or -q_ij to the fields of its neighbours.
#pragma once

#include <algorithm>
#include <vector>

#include "easysolver/kernels.h"
#include "easysolver/tables.h"

namespace zorv::plugin::easy {

template <typename Num, typename Link = WideLink<Num>>
class SparseFields {
 public:
  using Number = Num;
  using Table = PairTable<Num, Link>;

  explicit SparseFields(const Table& table)
      : table_(&table), fields_(table.size() + kBlock), signs_(table.size() + kBlock) {}

  // Starts anew from the assignment of zeros.
  void clear() {
    std::fill(signs_.begin(), signs_.end(), 0);
    std::copy(table_->linear.begin(), table_->linear.end(), fields_.begin());
  }

  Num delta(uint32_t i) const { return signed_value<Num>(fields_[i], signs_[i]); }

  void flip(uint32_t j) {
    add_links(j, signs_[j]);
    signs_[j] = ~signs_[j];
  }

  // The coefficient of the pair, 0 where there is none.
  Num link(uint32_t i, uint32_t j) const {
    const auto* const end = table_->links.data() + table_->head[i + 1];
    const auto* const at =
        std::lower_bound(table_->links.data() + table_->head[i], end, j,
                         [](const Link& l, uint32_t variable) { return l.variable < variable; });
    return at != end && at->variable == j ? at->coeff : Num(0);
  }

  const Num* fields() const { return fields_.data(); }
  const SignOf<Num>* signs() const { return signs_.data(); }
  // Whether the flip of j changes the field of a later variable of the same block.
  bool changes_own_block(uint32_t j) const { return table_->links_on[j] != 0; }
  // What flips cost, in touched fields.
  uint64_t work_of_flip(uint32_t j) const { return table_->head[j + 1] - table_->head[j]; }

 private:
  void add_links(uint32_t j, SignOf<Num> sign) {
    Num* const fields = fields_.data();
    const auto* const end = table_->links.data() + table_->head[j + 1];
    for (const auto* link = table_->links.data() + table_->head[j]; link != end; ++link) {
      fields[link->variable] += signed_value<Num>(Num(link->coeff), sign);
    }
  }

  const Table* table_;
  std::vector<Num> fields_;
  std::vector<SignOf<Num>> signs_;
};

}  // namespace zorv::plugin::easy
