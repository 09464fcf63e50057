// Sets of variables of which exactly one is to be 1, and what follows from them for moves: flips
// alone hardly get from one such assignment to another, since every way leads over penalties.
#pragma once

#include <cstdint>
#include <vector>

#include "common/binary_model.h"
#include "easysolver/tables.h"

namespace zorv::plugin::easy {

// Groups of moves: disjoint sets, the rows; and where each variable of a row is in another set too,
// a column, and these are disjoint as well, permutations, in which two rows exchange their columns.
struct Groups {
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  std::vector<std::vector<uint32_t>> rows;
  std::vector<uint32_t> row_of, column_of;  // by variable, or kNone
  uint32_t columns = 0;                     // 0 where rows are all there is
  std::vector<uint32_t> cells;  // row after row: the variable of a row and a column, or kNone
  // Variables any two of which may exchange their values: those of constraints that stay, and of
  // folded ones that ask for a number of ones.
  std::vector<uint32_t> loose;

  bool is_permutation() const { return columns != 0; }
  uint32_t cell(uint32_t row, uint32_t column) const { return cells[row * columns + column]; }
};

using Sets = std::vector<std::vector<uint32_t>>;

// The sets that declared constraints say; `counts` receives the variables of those that ask for
// more than one 1.
Sets declared_one_hots(const BinaryModel& model, std::vector<uint32_t>& counts);

// Sets that stand in the pairs of the polynomial as squares (sum - 1)^2 of some weight: cliques of
// equal coefficients, the largest of each of their variables, with linear ones to match.
template <typename Num>
Sets recognised_one_hots(const PairTable<Num>& pairs);

extern template Sets recognised_one_hots(const PairTable<int32_t>&);
extern template Sets recognised_one_hots(const PairTable<int64_t>&);
extern template Sets recognised_one_hots(const PairTable<Coeff>&);

// Rows and columns out of any sets.
Groups groups_of(const Sets& sets, uint32_t variables);

}  // namespace zorv::plugin::easy
