// Fields as in sparse_fields.h, where a flip adds a whole row of the matrix, eight at a time.
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
      : table_(&table), fields_(table.stride + kLanes), signs_(table.stride + kLanes) {}

  void clear() {
    std::fill(signs_.begin(), signs_.end(), 0);
    std::fill(fields_.begin(), fields_.end(), 0);
    std::copy(table_->linear.begin(), table_->linear.end(), fields_.begin());
  }

  int32_t delta(uint32_t i) const { return signed_value<int32_t>(fields_[i], signs_[i]); }

  void flip(uint32_t j) {
    add_row(j, signs_[j]);
    signs_[j] = ~signs_[j];
  }

  int32_t link(uint32_t i, uint32_t j) const {
    const size_t at = i * table_->stride + j;
    return table_->wide.empty() ? table_->narrow[at] : table_->wide[at];
  }

  const int32_t* fields() const { return fields_.data(); }
  const int32_t* signs() const { return signs_.data(); }
  uint64_t work_of_flip(uint32_t) const { return table_->stride / kLanes; }

 private:
  void add_row(uint32_t j, int32_t sign) {
    const size_t start = j * table_->stride;
    if (table_->wide.empty()) {
      kernels().add_row16(fields_.data(), &table_->narrow[start], sign, table_->stride);
    } else {
      kernels().add_row32(fields_.data(), &table_->wide[start], sign, table_->stride);
    }
  }

  const Table* table_;
  std::vector<int32_t> fields_;
  std::vector<int32_t> signs_;
};

}  // namespace zorv::plugin::easy
