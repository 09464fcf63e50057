// Rises by flips of a quadratic polynomial with most pairs there. The flip of j adds q_ij or -q_ij
// to the rise by the flip of i, in whole rows of the matrix; kept are the rises themselves, since
// the searches read all of them for each row that is added.
#pragma once

#include <algorithm>
#include <vector>

#include "easysolver/kernels.h"
#include "easysolver/tables.h"

namespace zorv::plugin::easy {

class DenseFields {
 public:
  using Number = int32_t;
  using Table = DenseTable;

  explicit DenseFields(const Table& table)
      : table_(&table), rises_(table.stride + kBlock), spins_(table.stride) {}

  void clear() {
    std::fill(spins_.begin(), spins_.end(), 1);
    std::fill(rises_.begin(), rises_.end(), 0);
    std::copy(table_->linear.begin(), table_->linear.end(), rises_.begin());
  }

  int32_t delta(uint32_t i) const { return rises_[i]; }

  void flip(uint32_t j) {
    add_row(j);
    rises_[j] = -rises_[j];
    spins_[j] = static_cast<int16_t>(-spins_[j]);
  }

  int32_t link(uint32_t i, uint32_t j) const {
    const size_t at = i * table_->stride + j;
    return table_->wide.empty() ? table_->narrow[at] : table_->wide[at];
  }

  const int32_t* fields() const { return rises_.data(); }
  const int32_t* signs() const { return nullptr; }
  bool changes_own_block(uint32_t) const { return true; }
  uint64_t work_of_flip(uint32_t) const { return table_->stride / kLanes; }

 private:
  void add_row(uint32_t j) {
    const size_t start = j * table_->stride;
    const bool is_minus = spins_[j] < 0;
    if (table_->wide.empty()) {
      kernels().add_row16(rises_.data(), &table_->narrow[start], spins_.data(), is_minus,
                          table_->stride);
    } else {
      kernels().add_row32(rises_.data(), &table_->wide[start], spins_.data(), is_minus,
                          table_->stride);
    }
  }

  const Table* table_;
  std::vector<int32_t> rises_;
  std::vector<int16_t> spins_;  // 1 where the variable is 0, else -1
};

}  // namespace zorv::plugin::easy
