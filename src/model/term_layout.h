// Lays the terms of an expression out in one table for each degree, in the order that they have in
// the expression, whatever the number of threads.
//
// The terms are walked in chunks, twice. The first walk counts how many terms of each degree every
// chunk holds; sums over the chunks before it then say where the chunk's terms go, so that in the
// second walk each chunk writes to places of its own. No term needs a lock or an allocation.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "core/parallel.h"
#include "core/term_list.h"
#include "model/dense_index.h"

namespace zorv {

class TermLayout {
 public:
  // `terms` ascend by degree, so the last entry tells the highest one. The list is kept by
  // reference.
  explicit TermLayout(const TermList& terms);

  uint32_t max_degree() const { return max_degree_; }
  // For how many threads the terms are cut into chunks.
  uint32_t threads() const { return threads_; }

  // In this order:
  // Counts, and marks the variables. Aborts on a term that is not simplified as binary or names an
  // unknown variable; on several threads that may be any of those that fail.
  void count_and_check(UsedVariables& used);
  // Sizes the model's tables and turns the counts into positions.
  void allocate(ModelImpl& m);
  // Copies coefficients and raw literals to their places.
  void fill(ModelImpl& m);

 private:
  // One number for each degree, from degree 1 on. Row 0 belongs to the term in the first slot, row
  // c + 1 to chunk c. A gap keeps the rows of different threads off each other's cache lines.
  uint64_t* row(uint64_t r) { return rows_.data() + r * (max_degree_ + kRowGap); }
  uint64_t row_count() const { return chunking_.chunks + 1; }
  // visit(row, first term, end of terms) for each row that has terms.
  template <typename Visit>
  void for_each_row(Visit visit);
  const char* count_term(const VarList& vars, uint64_t* row, UsedVariables& used) const;

  static constexpr uint64_t kRowGap = 64 / sizeof(uint64_t);

  const TermList& terms_;
  uint32_t max_degree_ = 0;
  uint32_t threads_ = 1;
  Chunking chunking_;
  std::vector<uint64_t> rows_;  // counts, later the next free position
};

// Renumbers the literals of all tables.
void renumber_terms(ModelImpl& m);

}  // namespace zorv
